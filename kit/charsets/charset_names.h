// The names under which a charset can be given on the command line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/charsets/unicode_form.h"

namespace ksv_kit {

enum class ByteOrder { kOpen, kLittle, kBig };

// What has to be known of a charset beyond its name.
enum class CharsetKind {
  kCharset,  // nothing
  kIso2022,  // escape sequences switch between sets
  kUtf7,     // the library reads these two as a whole, and they are no
  kHz,       // charsets of the directory
  kShifts    // the directory has its codes without the shifts between them
};

struct CharsetChoice {
  std::string name;  // as the charset directory has it
  std::string display;
  UnicodeForm form = UnicodeForm::kNone;
  ByteOrder order = ByteOrder::kOpen;  // the one that the name given fixes
  CharsetKind kind = CharsetKind::kCharset;
  std::string shifts{};  // of kShifts: the encoding, in lower case

  // Whether the bytes of a unit have an order at all.
  bool hasByteOrder() const { return form != UnicodeForm::kNone && form != UnicodeForm::kUtf8; }
};

// UTF-8, called in messages by that name.
inline CharsetChoice utf8ShownAs(const std::string& display) {
  return {"utf-8", display, UnicodeForm::kUtf8, ByteOrder::kOpen, CharsetKind::kCharset};
}

// Another name of a charset.
struct CharsetAlias {
  std::string alias;
  std::string charset;  // in its usual spelling
  ByteOrder order;      // the one that the alias fixes
};

struct CharsetListing {
  std::string display;
  std::vector<std::string> aliases;
  bool sourceOnly = false;  // it can be read, but not written
};

class CharsetNames {
 public:
  // directoryNames: what the charset directory holds, in its order. aliases: those that
  // it brings, which come before the usual ones.
  explicit CharsetNames(std::vector<std::string> directoryNames,
                        std::vector<CharsetAlias> aliases = {});

  // By exactly that name but for case, or else by what is left of it without punctuation
  // (foldedName). A name of the directory comes before an alias of the same spelling.
  std::optional<CharsetChoice> find(std::string_view name) const;

  // The same for a text to be read: UTF-7 and HZ-GB-2312 besides, and of ISO-2022-JP
  // the form that has half-width katakana, which real mail holds.
  std::optional<CharsetChoice> findSource(std::string_view name) const;

  // What is wrong with a name that names no charset, and what may have been meant.
  std::string unknown(const std::string& name) const;

  // The charsets of the directory, then those that can be read only.
  std::vector<CharsetListing> list() const;

 private:
  // Whether visit(alias, charset, order) is true for one, those of the directory first.
  template <class Visit>
  bool anyAlias(Visit visit) const;
  // Whatever the case of the name.
  bool holds(std::string_view name) const;
  using SameName = bool (*)(std::string_view name, std::string_view wanted);
  std::optional<CharsetChoice> findBy(SameName isSame, std::string_view wanted) const;
  std::optional<CharsetChoice> findReadOnly(std::string_view name) const;
  std::vector<std::string> allNames() const;
  std::vector<std::string> aliasesOf(std::string_view lowerName) const;

  std::string displayName(const std::string& lowerName) const;
  CharsetChoice makeChoice(const std::string& lowerName, ByteOrder order) const;
  bool isNameOf(std::string_view name, const char* charset) const;

  bool isWithoutShifts(const std::string& lowerName) const;

  std::vector<std::string> directoryNames_;  // those of encodings with shifts as their names are
  std::vector<std::string> withoutShifts_;   // of these, those that the directory has so
  std::vector<CharsetAlias> aliases_;        // of the directory
};

}  // namespace ksv_kit
