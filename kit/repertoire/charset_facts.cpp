#include "kit/repertoire/charset_facts.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#include "common/utf16.h"
#include "ksv_cconv.h"

namespace ksv_kit {
namespace {

constexpr RegistryEntry kRegistry[] = {
#include "kit/repertoire/charset_registry.inc"
};

constexpr uint32_t kLastCodePoint = 0x10FFFF;
constexpr uint32_t kEscape = 0x1B;
constexpr size_t kUnit = 4;  // bytes of UCS-4

// Encodes single characters, each as if it stood at the beginning of a text.
class SingleCharacters {
 public:
  explicit SingleCharacters(const CharsetChoice& charset) {
    std::memset(&record_, 0, sizeof record_);
    ConvertOptions options{};
    options.outputBigEndian = 1;
    uint32_t parameters[3] = {1, 0, 0};
    isSetUp_ = cconvInitConvert(&record_, &options, charset.name.c_str()) == KSV_STATUS_DONE &&
               cconvChgCharset(&record_, parameters, "iso-10646-ucs-4") == KSV_STATUS_DONE;
    prepared_ = record_;
  }

  // The bytes of the character so many times; 0 when the charset does not have it.
  size_t encodedLength(uint32_t character, size_t times) {
    for (size_t i = 0; i < times * kUnit; ++i)
      input_[i] = static_cast<uint8_t>(character >> (8 * (kUnit - 1 - i % kUnit)));
    record_.input = input_.data();
    record_.inputPosition = 0;
    record_.inputLength = static_cast<int32_t>(times * kUnit);
    record_.output = output_.data();
    record_.outputPosition = 0;
    record_.outputCapacity = static_cast<int32_t>(output_.size());
    record_.designatedGroup = prepared_.designatedGroup;
    record_.designatedPlane = prepared_.designatedPlane;
    if (!isSetUp_ || cconvConvert(&record_) != KSV_STATUS_DONE) return 0;
    return static_cast<size_t>(record_.outputPosition);
  }

 private:
  ConverterRecord record_;
  ConverterRecord prepared_;
  bool isSetUp_ = false;
  std::array<uint8_t, 2 * kUnit> input_{};
  std::array<uint8_t, 64> output_{};
};

// What of a character's bytes switches to its set is there once however often it stands.
uint32_t lengthOfSecond(SingleCharacters& characters, uint32_t character, size_t length) {
  return static_cast<uint32_t>(characters.encodedLength(character, 2) - length);
}

}  // namespace

const RegistryEntry* registryEntryOf(std::string_view charset) {
  const auto found = std::find_if(std::begin(kRegistry), std::end(kRegistry),
                                  [&](const RegistryEntry& row) { return charset == row.charset; });
  return found == std::end(kRegistry) ? nullptr : found;
}

const RegistryEntry* registryEntryOfCodePage(uint32_t codePage) {
  const auto found =
      std::find_if(std::begin(kRegistry), std::end(kRegistry), [&](const RegistryEntry& row) {
        return row.codePage != 0 && row.codePage == codePage;
      });
  return found == std::end(kRegistry) ? nullptr : found;
}

std::optional<CharsetChoice> findWrittenOrRead(const CharsetNames& names, std::string_view name) {
  const std::optional<CharsetChoice> written = names.find(name);
  return written ? written : names.findSource(name);
}

std::vector<NamedCharset> namedCharsets(const CharsetNames& names) {
  std::vector<NamedCharset> charsets;
  for (CharsetListing& listing : names.list()) {
    CharsetChoice choice = findWrittenOrRead(names, listing.display).value();
    const RegistryEntry* const registered = registryEntryOf(choice.name);
    charsets.push_back({std::move(listing), std::move(choice), registered});
  }
  return charsets;
}

bool Repertoire::has(uint32_t character) const {
  const auto behind = std::upper_bound(ranges.begin(), ranges.end(), character);
  const bool isInside = (behind - ranges.begin()) % 2 == 1;
  return isInside || (behind != ranges.begin() && *(behind - 1) == character);
}

// In the codes of an encoding with shifts a byte stands in front of each pair that its shift is.
constexpr uint32_t kLongestBetweenShifts = 2;

Repertoire repertoireOf(const CharsetChoice& charset) {
  Repertoire repertoire;
  SingleCharacters characters(charset);
  for (uint32_t character = 0; character <= kLastCodePoint; ++character) {
    const bool isEscape = charset.kind == CharsetKind::kIso2022 && character == kEscape;
    if (ksv::isSurrogate(character) || isEscape) continue;
    const size_t length = characters.encodedLength(character, 1);
    if (length == 0) continue;
    repertoire.longestCharacter =
        std::max(repertoire.longestCharacter, lengthOfSecond(characters, character, length));
    if (!repertoire.ranges.empty() && repertoire.ranges.back() + 1 == character)
      repertoire.ranges.back() = character;
    else
      repertoire.ranges.insert(repertoire.ranges.end(), {character, character});
  }
  if (charset.kind == CharsetKind::kShifts)
    repertoire.longestCharacter = std::min(repertoire.longestCharacter, kLongestBetweenShifts);
  return repertoire;
}

}  // namespace ksv_kit
