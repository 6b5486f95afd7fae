#include "charset_names.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ksv_cli {
namespace {

struct Alias {
  const char* alias;
  const char* charset;
  ByteOrder order;
};

constexpr Alias kAliases[] = {
#include "charset_aliases.inc"
};

// Only A to Z have a case, whatever the locale.
std::string lowered(std::string_view name) {
  std::string result(name);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

UnicodeForm formOf(std::string_view lowerName) {
  if (lowerName == "utf-8") return UnicodeForm::kUtf8;
  if (lowerName == "utf-16") return UnicodeForm::kUtf16;
  if (lowerName == "iso-10646-ucs-2") return UnicodeForm::kUcs2;
  if (lowerName == "iso-10646-ucs-4") return UnicodeForm::kUcs4;
  return UnicodeForm::kNone;
}

// The directory knows its charsets by lower-case names; the usual spelling
// stands with the aliases.
std::string displayName(const std::string& lowerName) {
  for (const Alias& row : kAliases)
    if (lowered(row.charset) == lowerName) return row.charset;
  return lowerName;
}

CharsetKind kindOf(std::string_view lowerName) {
  const bool isIso2022 = lowerName.starts_with("iso-2022-jp") || lowerName.starts_with("cp50220");
  return isIso2022 ? CharsetKind::kIso2022 : CharsetKind::kCharset;
}

CharsetChoice makeChoice(const std::string& lowerName, ByteOrder order) {
  return {lowerName, displayName(lowerName), formOf(lowerName), order, kindOf(lowerName)};
}

// What the library reads by way of a charset of the directory.
struct ReadOnlyEncoding {
  const char* name;  // as the library compares it
  CharsetKind kind;
  const char* through;
};
constexpr ReadOnlyEncoding kReadOnly[] = {
    {"UTF-7", CharsetKind::kUtf7, "iso-10646-ucs-4"},
    {"HZ-GB-2312", CharsetKind::kHz, "chinesegbk"},
};

// Charsets of mail that are read by a form of theirs that has half-width katakana.
constexpr std::string_view kMailCharsets[] = {"iso-2022-jp", "cp50220"};
constexpr std::string_view kWithKana = "-kana";

bool isNameOf(const std::string& wanted, const char* charset) {
  if (lowered(charset) == wanted) return true;
  return std::any_of(std::begin(kAliases), std::end(kAliases), [&](const Alias& row) {
    return lowered(row.alias) == wanted && std::string_view(row.charset) == charset;
  });
}

}  // namespace

CharsetNames::CharsetNames(std::vector<std::string> directoryNames)
    : directoryNames_(std::move(directoryNames)) {
  for (std::string& name : directoryNames_) name = lowered(name);
}

bool CharsetNames::holds(std::string_view lowerName) const {
  return std::find(directoryNames_.begin(), directoryNames_.end(), lowerName) !=
         directoryNames_.end();
}

std::optional<CharsetChoice> CharsetNames::find(std::string_view name) const {
  const std::string wanted = lowered(name);
  if (holds(wanted)) return makeChoice(wanted, ByteOrder::kOpen);
  for (const Alias& row : kAliases) {
    const std::string charset = lowered(row.charset);
    if (lowered(row.alias) == wanted && holds(charset)) return makeChoice(charset, row.order);
  }
  return std::nullopt;
}

std::optional<CharsetChoice> CharsetNames::findSource(std::string_view name) const {
  std::optional<CharsetChoice> choice = find(name);
  if (choice) {
    for (const std::string_view charset : kMailCharsets)
      if (choice->name == charset && holds(choice->name + std::string(kWithKana)))
        choice->name += kWithKana;
    return choice;
  }
  const std::string wanted = lowered(name);
  for (const ReadOnlyEncoding& encoding : kReadOnly)
    if (holds(encoding.through) && isNameOf(wanted, encoding.name))
      return CharsetChoice{encoding.name, encoding.name, UnicodeForm::kNone, ByteOrder::kOpen,
                           encoding.kind};
  return std::nullopt;
}

std::vector<CharsetListing> CharsetNames::list() const {
  std::vector<CharsetListing> listings;
  for (const std::string& name : directoryNames_)
    listings.push_back({displayName(name), aliasesOf(name), false});
  for (const ReadOnlyEncoding& encoding : kReadOnly)
    if (holds(encoding.through) && !holds(lowered(encoding.name)))
      listings.push_back({encoding.name, aliasesOf(lowered(encoding.name)), true});
  return listings;
}

std::string unknownCharset(const std::string& name) {
  return "unknown charset " + name + "; 'ksv charsets' lists them";
}

std::vector<std::string> CharsetNames::aliasesOf(std::string_view lowerName) const {
  std::vector<std::string> aliases;
  for (const Alias& row : kAliases)
    if (lowered(row.charset) == lowerName && !holds(lowered(row.alias)))
      aliases.emplace_back(row.alias);
  return aliases;
}

}  // namespace ksv_cli
