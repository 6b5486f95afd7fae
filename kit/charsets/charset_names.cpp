#include "kit/charsets/charset_names.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <set>
#include <utility>

#include "kit/charsets/name_matching.h"

namespace ksv_kit {
namespace {

struct UsualAlias {
  std::string_view alias;
  std::string_view charset;
  ByteOrder order;
};

constexpr UsualAlias kWrittenAliases[] = {
#include "charset_aliases.inc"
};

// The same without an address in it, none of which the loader then has to correct at each start.
struct PlacedAlias {
  uint16_t alias;    // in the names, up to the charset
  uint16_t charset;  // up to the end
  uint16_t end;
  ByteOrder order;
};

constexpr size_t writtenLength() {
  size_t length = 0;
  for (const UsualAlias& row : kWrittenAliases) length += row.alias.size() + row.charset.size();
  return length;
}

struct UsualAliases {
  std::array<char, writtenLength()> names{};
  std::array<PlacedAlias, std::size(kWrittenAliases)> rows{};

  std::string_view between(size_t begin, size_t end) const {
    return {names.data() + begin, end - begin};
  }
};

constexpr UsualAliases placed() {
  static_assert(writtenLength() <= UINT16_MAX);
  UsualAliases aliases;
  uint16_t end = 0;
  const auto put = [&](std::string_view name) {
    const uint16_t begin = end;
    for (const char c : name) aliases.names[end++] = c;
    return begin;
  };
  for (size_t i = 0; i < aliases.rows.size(); ++i) {
    const UsualAlias& row = kWrittenAliases[i];
    const uint16_t alias = put(row.alias);
    const uint16_t charset = put(row.charset);
    aliases.rows[i] = {alias, charset, end, row.order};
  }
  return aliases;
}

constexpr UsualAliases kUsualAliases = placed();

UnicodeForm unicodeFormOf(std::string_view lowerName) {
  if (lowerName == "utf-8") return UnicodeForm::kUtf8;
  if (lowerName == "utf-16") return UnicodeForm::kUtf16;
  if (lowerName == "iso-10646-ucs-2") return UnicodeForm::kUcs2;
  if (lowerName == "iso-10646-ucs-4") return UnicodeForm::kUcs4;
  return UnicodeForm::kNone;
}

CharsetKind kindOf(std::string_view lowerName) {
  const bool isIso2022 = lowerName.starts_with("iso-2022-jp") || lowerName.starts_with("cp50220");
  return isIso2022 ? CharsetKind::kIso2022 : CharsetKind::kCharset;
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

// How the directory names the codes of an encoding with shifts.
constexpr std::string_view kStateless = "x-stateless-";

// What other programs take behind the name of a charset.
struct Suffix {
  const char* text;
  const char* instead;
};
constexpr Suffix kSuffixes[] = {
    {"//translit",
     "'ksv convert --unmappable replace' writes a replacement for what the charset lacks"},
    {"//ignore", "'ksv convert --invalid skip' leaves out what is invalid"},
};

}  // namespace

CharsetNames::CharsetNames(std::vector<std::string> directoryNames,
                           std::vector<CharsetAlias> aliases)
    : directoryNames_(std::move(directoryNames)), aliases_(std::move(aliases)) {
  for (std::string& name : directoryNames_) {
    name = lowered(name);
    if (!name.starts_with(kStateless)) continue;
    name.erase(0, kStateless.size());
    withoutShifts_.push_back(name);
  }
}

bool CharsetNames::isWithoutShifts(const std::string& lowerName) const {
  return std::ranges::find(withoutShifts_, lowerName) != withoutShifts_.end();
}

template <class Visit>
bool CharsetNames::anyAlias(Visit visit) const {
  for (const CharsetAlias& row : aliases_)
    if (visit(row.alias, row.charset, row.order)) return true;
  for (const PlacedAlias& row : kUsualAliases.rows) {
    const std::string_view alias = kUsualAliases.between(row.alias, row.charset);
    if (visit(alias, kUsualAliases.between(row.charset, row.end), row.order)) return true;
  }
  return false;
}

// The directory knows its charsets by lower-case names; the usual spelling
// stands with the aliases.
std::string CharsetNames::displayName(const std::string& lowerName) const {
  std::string display = lowerName;
  anyAlias([&](std::string_view, std::string_view charset, ByteOrder) {
    if (!isSameButForCase(charset, lowerName)) return false;
    display = charset;
    return true;
  });
  return display;
}

CharsetChoice CharsetNames::makeChoice(const std::string& lowerName, ByteOrder order) const {
  CharsetChoice choice = {lowerName, displayName(lowerName), unicodeFormOf(lowerName), order,
                          kindOf(lowerName)};
  if (!isWithoutShifts(lowerName)) return choice;
  choice.name = std::string(kStateless) + lowerName;
  choice.kind = CharsetKind::kShifts;
  choice.shifts = lowerName;
  return choice;
}

bool CharsetNames::isNameOf(std::string_view name, const char* charset) const {
  const std::string wanted = foldedName(name);
  if (foldedName(charset) == wanted) return true;
  return anyAlias([&](std::string_view alias, std::string_view named, ByteOrder) {
    return named == charset && foldsTo(alias, wanted);
  });
}

bool CharsetNames::holds(std::string_view name) const {
  return std::ranges::any_of(
      directoryNames_, [&](const std::string& charset) { return isSameButForCase(charset, name); });
}

std::optional<CharsetChoice> CharsetNames::findBy(SameName isSame, std::string_view wanted) const {
  if (wanted.empty()) return std::nullopt;
  for (const std::string& charset : directoryNames_)
    if (isSame(charset, wanted)) return makeChoice(charset, ByteOrder::kOpen);
  std::optional<CharsetChoice> choice;
  anyAlias([&](std::string_view alias, std::string_view named, ByteOrder order) {
    if (!isSame(alias, wanted) || !holds(named)) return false;
    choice = makeChoice(lowered(named), order);
    return true;
  });
  return choice;
}

std::optional<CharsetChoice> CharsetNames::find(std::string_view name) const {
  std::optional<CharsetChoice> choice = findBy(isSameButForCase, name);
  return choice ? choice : findBy(foldsTo, foldedName(name));
}

std::optional<CharsetChoice> CharsetNames::findReadOnly(std::string_view name) const {
  for (const ReadOnlyEncoding& encoding : kReadOnly)
    if (holds(encoding.through) && isNameOf(name, encoding.name))
      return CharsetChoice{encoding.name, encoding.name, UnicodeForm::kNone, ByteOrder::kOpen,
                           encoding.kind};
  return std::nullopt;
}

std::optional<CharsetChoice> CharsetNames::findSource(std::string_view name) const {
  std::optional<CharsetChoice> choice = find(name);
  if (!choice) return findReadOnly(name);
  for (const std::string_view charset : kMailCharsets)
    if (choice->name == charset && holds(choice->name + std::string(kWithKana)))
      choice->name += kWithKana;
  return choice;
}

std::vector<CharsetListing> CharsetNames::list() const {
  std::vector<CharsetListing> listings;
  for (const std::string& name : directoryNames_)
    listings.push_back({displayName(name), aliasesOf(name), false});
  for (const ReadOnlyEncoding& encoding : kReadOnly)
    if (holds(encoding.through) && !holds(encoding.name))
      listings.push_back({encoding.name, aliasesOf(lowered(encoding.name)), true});
  return listings;
}

std::vector<std::string> CharsetNames::allNames() const {
  std::vector<std::string> names;
  for (const CharsetListing& charset : list()) {
    names.push_back(charset.display);
    names.insert(names.end(), charset.aliases.begin(), charset.aliases.end());
  }
  return names;
}

std::string CharsetNames::unknown(const std::string& name) const {
  std::string instead;
  for (const Suffix& suffix : kSuffixes)
    if (lowered(name).find(suffix.text) != std::string::npos)
      instead += (instead.empty() ? "" : "; ") + std::string(suffix.instead);
  if (!instead.empty()) return name + " is more than the name of a charset: " + instead;

  std::string meant;
  for (const std::string& near : nearestNames(name, allNames()))
    meant += (meant.empty() ? "; did you mean " : " or ") + near;
  return "unknown charset " + name + meant + (meant.empty() ? "" : "?") +
         (meant.empty() ? "; " : " ") + "'ksv charsets' lists them";
}

// A name that the directory brings, and the usual ones as well, is listed once.
std::vector<std::string> CharsetNames::aliasesOf(std::string_view lowerName) const {
  std::vector<std::string> aliases;
  std::set<std::string> taken;
  anyAlias([&](std::string_view alias, std::string_view charset, ByteOrder) {
    const bool isFirst = taken.insert(lowered(alias)).second;
    if (isFirst && isSameButForCase(charset, lowerName) && !holds(alias))
      aliases.emplace_back(alias);
    return false;
  });
  return aliases;
}

}  // namespace ksv_kit
