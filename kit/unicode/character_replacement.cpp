#include "kit/unicode/character_replacement.h"

#include <algorithm>
#include <utility>

#include "common/byte_blocks.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

// With more of them affected, each byte of ASCII is looked at.
constexpr size_t kMostSoughtInBlocks = 4;

size_t prefixOf(std::string_view text) {
  return size_t{static_cast<uint8_t>(text[0])} << 8 | static_cast<uint8_t>(text[1]);
}

}  // namespace

CharacterReplacement::CharacterReplacement(const std::vector<Replacement>& replacements) {
  for (const Replacement& replacement : replacements) {
    const std::u32string& from = replacement.from;
    entries_.push_back({from[0], from.size() > 1 ? from[1] : kAlone, utf8Of(replacement.to)});
    addAffected(from[0]);
  }
  std::sort(entries_.begin(), entries_.end(), [](const Entry& left, const Entry& right) {
    return std::pair(left.first, left.second) < std::pair(right.first, right.second);
  });
}

void CharacterReplacement::addAffected(char32_t character) {
  if (character >= 0x80) {
    prefixes_[prefixOf(utf8Of({&character, 1}))] = true;
  } else if (!ascii_[character]) {
    ascii_[character] = true;
    affectedAscii_.push_back(static_cast<uint8_t>(character));
  }
}

void CharacterReplacement::change(std::string_view text, bool isEnd, std::string& out) {
  output_.beginCall();
  if (!waiting_.empty() && (isEnd || !text.empty())) takeWaiting(text, out);
  while (!text.empty()) {
    const size_t unaffected = unaffectedBytes(text);
    if (unaffected > 0) output_.copy(text.substr(0, unaffected), out);
    text.remove_prefix(unaffected);
    if (!text.empty()) takeAffected(text, isEnd, out);
  }
}

void CharacterReplacement::restart() {
  output_.restart();
  waiting_.clear();
}

// The character that waited, alone or with the one in front of the text.
void CharacterReplacement::takeWaiting(std::string_view& text, std::string& out) {
  const size_t length = text.empty() ? 0 : utf8LengthOf(text[0]);
  std::string pair = std::exchange(waiting_, {});
  const size_t waited = pair.size();
  pair += text.substr(0, length);
  std::string_view rest = pair;
  takeAffected(rest, true, out);
  // Of a pair that is none only the first character was taken.
  if (rest.size() != pair.size() - waited) text.remove_prefix(length);
}

void CharacterReplacement::takeAffected(std::string_view& text, bool isEnd, std::string& out) {
  const char32_t first = firstCharacter(text);
  const size_t length = utf8LengthOf(text[0]);
  if (beginsPair(first)) {
    if (text.size() == length && !isEnd) {
      waiting_ = std::exchange(text, {});
      return;
    }
    const std::string_view rest = text.substr(length);
    const char32_t second = rest.empty() ? kAlone : firstCharacter(rest);
    const Entry* pair = second == kAlone ? nullptr : find(first, second);
    if (pair != nullptr) {
      const size_t both = length + utf8LengthOf(rest[0]);
      output_.replace(both, pair->to, out);
      text.remove_prefix(both);
      return;
    }
  }
  replaceSingle(text.substr(0, length), out);
  text.remove_prefix(length);
}

void CharacterReplacement::replaceSingle(std::string_view character, std::string& out) {
  const Entry* single = find(firstCharacter(character), kAlone);
  if (single == nullptr) {
    output_.copy(character, out);
  } else {
    output_.replace(character.size(), single->to, out);
  }
}

const CharacterReplacement::Entry* CharacterReplacement::find(char32_t first,
                                                              char32_t second) const {
  const auto entry =
      std::lower_bound(entries_.begin(), entries_.end(), std::pair(first, second),
                       [](const Entry& before, const std::pair<char32_t, char32_t>& wanted) {
                         return std::pair(before.first, before.second) < wanted;
                       });
  const bool isFound = entry != entries_.end() && entry->first == first && entry->second == second;
  return isFound ? &*entry : nullptr;
}

// An entry of the character alone, if there is one, stands in front of its pairs.
bool CharacterReplacement::beginsPair(char32_t character) const {
  const auto behind =
      std::upper_bound(entries_.begin(), entries_.end(), character,
                       [](char32_t wanted, const Entry& entry) { return wanted < entry.first; });
  return behind != entries_.begin() && (behind - 1)->first == character &&
         (behind - 1)->second != kAlone;
}

bool CharacterReplacement::mayBeAffected(std::string_view text) const {
  const auto lead = static_cast<uint8_t>(text[0]);
  return lead < 0x80 ? ascii_[lead] : prefixes_[prefixOf(text)];
}

bool CharacterReplacement::isUnaffectedBlock(const char* at) const {
  const uint64_t block = ksv::blockAt(at);
  if ((block & ksv::kHighBits) != 0) return false;
  return std::none_of(affectedAscii_.begin(), affectedAscii_.end(),
                      [block](uint8_t character) { return ksv::hasByte(block, character); });
}

size_t CharacterReplacement::unaffectedBytes(std::string_view text) const {
  const bool looksAtBlocks = affectedAscii_.size() <= kMostSoughtInBlocks;
  size_t at = 0;
  while (at < text.size()) {
    const bool isAscii = static_cast<uint8_t>(text[at]) < 0x80;
    if (isAscii && looksAtBlocks && text.size() - at >= ksv::kBlock &&
        isUnaffectedBlock(text.data() + at)) {
      at += ksv::kBlock;
    } else if (!mayBeAffected(text.substr(at))) {
      at += utf8LengthOf(text[at]);
    } else {
      break;
    }
  }
  return at;
}

}  // namespace ksv_kit
