#include "cconv/rules/rule_reader.h"

#include <algorithm>

#include "cconv/limits.h"
#include "cconv/rules/text_units.h"

namespace ksv {
namespace {

// Searches that look at no more places are cheaper to repeat than to remember.
constexpr size_t kNearPlaces = 256;

bool matchesAt(const RuleText& text, size_t index, std::string_view pattern) {
  if (pattern.size() > text.chars.size() - index) return false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (text.chars[index + i] != static_cast<uint8_t>(pattern[i])) return false;
  }
  return true;
}

// Where the first occurrence of a pattern at or after a position begins, and how many
// places were looked at.
struct Search {
  std::optional<size_t> start;
  size_t places;
};

Search searchFor(const RuleText& text, size_t from, std::string_view pattern) {
  size_t places = 0;
  if (pattern[0] == '<' || pattern[0] == '/') {
    const auto first = std::lower_bound(text.markers.begin(), text.markers.end(), from);
    for (auto marker = first; marker != text.markers.end(); ++marker, ++places) {
      if (matchesAt(text, *marker, pattern)) return {*marker, places};
    }
    // Every '<' is a marker, so there is nothing left to find.
    if (pattern[0] == '<') return {std::nullopt, places};
  }
  // A pattern that ends exactly at the end of the text is not found here.
  for (size_t i = from; i + pattern.size() < text.chars.size(); ++i, ++places) {
    if (matchesAt(text, i, pattern)) return {i, places};
  }
  return {std::nullopt, places};
}

// The position just past the first occurrence of the pattern at or after from.
std::optional<size_t> findString(const RuleText& text, size_t from, std::string_view pattern) {
  if (pattern.empty() || pattern.size() > limits::kLongestPattern) return std::nullopt;
  const auto behind = [&](std::optional<size_t> start) {
    return start ? std::optional(*start + pattern.size()) : std::nullopt;
  };
  const auto known = text.lastSearches.find(pattern);
  if (known != text.lastSearches.end()) {
    const LastSearch& last = known->second;
    if (last.answers(from)) return behind(last.start);
  }
  const Search search = searchFor(text, from, pattern);
  if (known != text.lastSearches.end()) {
    known->second = {from, search.start};
  } else if (search.places > kNearPlaces) {
    text.lastSearches.emplace(pattern, LastSearch{from, search.start});
  }
  return behind(search.start);
}

std::string narrow(const RuleText& text, size_t start, size_t end) {
  std::string narrowed;
  for (size_t i = start; i < end && i < text.chars.size(); ++i) {
    const char low = static_cast<char>(text.chars[i]);
    if (low == '\0') break;
    narrowed.push_back(low);
  }
  return narrowed;
}

// Up to an end, which is one of the text or in front of it.
std::optional<size_t> findChar(const RuleText& text, size_t from, size_t end, char wanted) {
  for (size_t i = from; i < end; ++i) {
    if (text.chars[i] == static_cast<uint8_t>(wanted)) return i;
  }
  return std::nullopt;
}

std::optional<size_t> findQuote(const RuleText& text, size_t from, LastSearch& last) {
  if (!last.answers(from)) last = {from, findChar(text, from, text.chars.size(), '"')};
  return last.start;
}

}  // namespace

std::string RuleElement::content() const { return narrow(*text_, start_, end_); }

std::optional<std::string> RuleElement::attribute(std::string_view word) const {
  for (size_t i = start_; i + word.size() <= end_; ++i) {
    if (matchesAt(*text_, i, word)) return RuleReader(*text_, i + word.size()).findQuoted();
  }
  return std::nullopt;
}

std::optional<std::string> RuleElement::entityReference() const {
  const RuleText& text = *text_;
  const size_t end = std::min(end_, text.chars.size());
  const auto ampersand = findChar(text, start_, end, '&');
  if (!ampersand) return std::nullopt;
  size_t start = *ampersand + 1;
  while (start < end && text.chars[start] == ' ') ++start;
  const auto semicolon = findChar(text, start, end, ';');
  if (!semicolon) return std::nullopt;
  return narrow(text, start, *semicolon);
}

bool RuleReader::isAt(char wanted) const {
  return position_ < text_->chars.size() && text_->chars[position_] == static_cast<uint8_t>(wanted);
}

std::optional<RuleElement> RuleReader::findElement(std::string_view tag) const {
  const RuleText& text = *text_;
  std::string pattern = "<";
  pattern.append(tag).push_back('>');
  const auto plain = findString(text, position_, pattern);
  pattern.back() = ' ';
  const auto withAttributes = findString(text, position_, pattern);
  if (!plain && !withAttributes) return std::nullopt;
  const size_t start = std::min(plain.value_or(SIZE_MAX), withAttributes.value_or(SIZE_MAX));
  pattern.back() = '>';
  pattern.insert(1, 1, '/');
  if (const auto end = findString(text, start, pattern))
    return RuleElement(text, start, *end - pattern.size());
  if (const auto emptyEnd = findString(text, start, "/>"))
    return RuleElement(text, start, *emptyEnd - 2);
  return std::nullopt;
}

std::optional<RuleElement> RuleReader::enterElement(std::string_view tag) {
  const auto element = findElement(tag);
  if (element) position_ = element->start();
  return element;
}

std::optional<RuleElement> RuleReader::passElement(std::string_view tag) {
  const auto element = findElement(tag);
  if (element) passElement(*element);
  return element;
}

bool RuleReader::passString(std::string_view pattern) {
  const auto behind = findString(*text_, position_, pattern);
  position_ = behind.value_or(position_);
  return behind.has_value();
}

std::optional<std::string> RuleReader::findQuoted() const {
  const auto open = findQuote(*text_, position_, text_->lastOpeningQuote);
  if (!open) return std::nullopt;
  const auto close = findQuote(*text_, *open + 1, text_->lastClosingQuote);
  if (!close) return std::nullopt;
  return narrow(*text_, *open + 1, *close);
}

std::optional<uint32_t> RuleReader::passHexNumber(size_t end) {
  const std::vector<uint32_t>& chars = text_->chars;
  end = std::min(end, chars.size());
  size_t i = position_;
  while (i < end && hexDigit(chars[i]) < 0) ++i;
  if (i >= end) return std::nullopt;
  uint32_t value = 0;
  for (; i < end && hexDigit(chars[i]) >= 0; ++i)
    value = value << 4 | static_cast<uint32_t>(hexDigit(chars[i]));
  position_ = i;
  return value;
}

bool RuleReader::passCharacter(char wanted, size_t end) {
  if (position_ >= end || !isAt(wanted)) return false;
  ++position_;
  return true;
}

uint32_t parseHex(std::string_view digits) {
  size_t i = digits.find_first_not_of(" \t");
  uint32_t value = 0;
  for (; i < digits.size(); ++i) {
    const int digit = hexDigit(static_cast<uint8_t>(digits[i]));
    if (digit < 0) break;
    value = value << 4 | static_cast<uint32_t>(digit);
  }
  return value;
}

}  // namespace ksv
