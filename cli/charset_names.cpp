#include "charset_names.h"

#include <algorithm>
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

CharsetChoice makeChoice(const std::string& lowerName, ByteOrder order) {
  return {lowerName, displayName(lowerName), formOf(lowerName), order};
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

std::vector<CharsetListing> CharsetNames::list() const {
  std::vector<CharsetListing> listings;
  for (const std::string& name : directoryNames_) {
    CharsetListing listing{displayName(name), {}};
    for (const Alias& row : kAliases)
      if (lowered(row.charset) == name && !holds(lowered(row.alias)))
        listing.aliases.emplace_back(row.alias);
    listings.push_back(std::move(listing));
  }
  return listings;
}

}  // namespace ksv_cli
