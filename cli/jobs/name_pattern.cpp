#include "cli/jobs/name_pattern.h"

#include <algorithm>

#include "cli/system/name_characters.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

constexpr char kSeparator = '/';

// Removes it from the front of the text.
uint32_t nextCharacter(std::string_view& text) {
  const NameCharacter character = firstCharacterOf(text);
  text.remove_prefix(character.length);
  return character.value;
}

uint32_t withoutCase(uint32_t character) {
  const bool isCapital = character >= 'A' && character <= 'Z';
  return isCapital ? character - 'A' + 'a' : character;
}

uint32_t otherCase(uint32_t character) {
  const bool isSmall = character >= 'a' && character <= 'z';
  return isSmall ? character - 'a' + 'A' : withoutCase(character);
}

std::string withOneSeparator(std::string_view pattern) {
  std::string text(pattern);
  if (platform::backslashSeparates()) std::replace(text.begin(), text.end(), '\\', kSeparator);
  return text;
}

}  // namespace

NamePattern::NamePattern(std::string_view pattern) {
  const std::string text = withOneSeparator(pattern);
  std::string_view rest = text;
  isOfDirectories_ = rest.ends_with(kSeparator);
  while (rest.ends_with(kSeparator)) rest.remove_suffix(1);
  isOfPath_ = rest.find(kSeparator) != rest.npos;
  while (rest.starts_with(kSeparator)) rest.remove_prefix(1);
  while (!rest.empty()) {
    if (rest.front() == '*')
      addStars(rest);
    else if (rest.front() != '[' || !addSet(rest))
      addCharacter(rest);
  }
}

void NamePattern::addStars(std::string_view& rest) {
  const size_t count = std::min(rest.find_first_not_of('*'), rest.size());
  rest.remove_prefix(count);
  const bool isBegin = tokens_.empty() || (tokens_.back().kind == Token::Kind::kCharacter &&
                                           tokens_.back().character == kSeparator);
  if (count == 1) {
    tokens_.push_back({Token::Kind::kAnyInComponent});
    return;
  }
  if (isBegin && rest.starts_with(kSeparator)) tokens_.push_back({Token::Kind::kMayLack});
  tokens_.push_back({Token::Kind::kAny});
}

// False: the bracket is not closed. The first character may be a closing bracket itself.
bool NamePattern::addSet(std::string_view& rest) {
  std::string_view text = rest.substr(1);
  Token set{Token::Kind::kSet};
  if (text.starts_with('!') || text.starts_with('^')) {
    set.isNegated = true;
    text.remove_prefix(1);
  }
  const auto next = [&text] {
    if (text.starts_with('\\') && text.size() > 1) text.remove_prefix(1);
    return nextCharacter(text);
  };
  do {
    if (text.empty() || text.front() == kSeparator) return false;
    Range range{next(), 0};
    range.last = range.first;
    if (text.starts_with('-') && text.size() > 1 && text[1] != ']') {
      text.remove_prefix(1);
      range.last = next();
    }
    set.ranges.push_back(range);
  } while (!text.starts_with(']'));
  rest = text.substr(1);
  tokens_.push_back(std::move(set));
  return true;
}

void NamePattern::addCharacter(std::string_view& rest) {
  const bool isAny = rest.front() == '?';
  if (rest.front() == '\\' && rest.size() > 1) rest.remove_prefix(1);
  const uint32_t character = nextCharacter(rest);
  if (isAny)
    tokens_.push_back({Token::Kind::kAnyCharacter});
  else
    tokens_.push_back({Token::Kind::kCharacter, character});
}

bool NamePattern::matches(std::string_view path, bool isDirectory) const {
  if (isOfDirectories_ && !isDirectory) return false;
  const size_t separator = path.rfind(kSeparator);
  const bool isWhole = isOfPath_ || separator == path.npos;
  return matchesWhole(isWhole ? path : path.substr(separator + 1));
}

// All ways through the pattern at once: its stars cost no more than its other characters.
bool NamePattern::matchesWhole(std::string_view text) const {
  States states(tokens_.size() + 1);
  enter(states, 0);
  while (!text.empty()) {
    const uint32_t character = nextCharacter(text);
    States behind(states.size());
    for (size_t i = 0; i < tokens_.size(); ++i) {
      if (!states[i] || !takes(tokens_[i], character)) continue;
      const Token::Kind kind = tokens_[i].kind;
      const bool stays = kind == Token::Kind::kAnyInComponent || kind == Token::Kind::kAny;
      enter(behind, stays ? i : i + 1);
    }
    states = std::move(behind);
  }
  return states.back();
}

// With all tokens that may stand for nothing.
void NamePattern::enter(States& states, size_t token) const {
  constexpr size_t kLengthOfWholeComponents = 3;  // kMayLack, kAny and the separator
  for (; !states[token]; ++token) {
    states[token] = true;
    if (token == tokens_.size()) return;
    const Token::Kind kind = tokens_[token].kind;
    if (kind == Token::Kind::kMayLack)
      enter(states, token + kLengthOfWholeComponents);
    else if (kind != Token::Kind::kAnyInComponent && kind != Token::Kind::kAny)
      return;
  }
}

bool NamePattern::takes(const Token& token, uint32_t character) const {
  const bool hasNoCase = platform::namesHaveNoCase();
  switch (token.kind) {
    case Token::Kind::kCharacter:
      return token.character == character ||
             (hasNoCase && withoutCase(token.character) == withoutCase(character));
    case Token::Kind::kAnyCharacter:
    case Token::Kind::kAnyInComponent:
      return character != kSeparator;
    case Token::Kind::kSet: {
      const auto holds = [&](uint32_t wanted) {
        return std::ranges::any_of(token.ranges, [&](const Range& range) {
          return wanted >= range.first && wanted <= range.last;
        });
      };
      const bool isHeld = holds(character) || (hasNoCase && holds(otherCase(character)));
      return character != kSeparator && isHeld != token.isNegated;
    }
    case Token::Kind::kAny:
      return true;
    case Token::Kind::kMayLack:
      return false;
  }
  return false;
}

}  // namespace ksv_cli
