// Changes of a text between two charsets, and the text of a profile that makes some.
//
// Input: a byte that says which change; two numbers, by which the text is cut; then a string that
// is the text of a profile, ended by a zero, and behind it the text.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support.h"
#include "kit/profiles/profile_change.h"
#include "kit/unicode/look_alikes.h"
#include "kit/unicode/normalization.h"
#include "kit/unicode/utf8_text.h"
#include "kit/unicode/widths.h"

namespace {

using ksv_fuzz::require;
using ksv_kit::NormalizationForm;
using ksv_kit::TextChange;
using ksv_kit::Width;

constexpr NormalizationForm kForms[] = {NormalizationForm::kNfc, NormalizationForm::kNfd,
                                        NormalizationForm::kNfkc, NormalizationForm::kNfkd,
                                        NormalizationForm::kComposed};
constexpr uint8_t kFormCount = std::size(kForms);
constexpr uint8_t kWidthCount = 27;

Width widthOf(int number) { return static_cast<Width>(number % 3); }

// What is no character of UTF-8 is left out.
std::string wellFormed(std::string_view bytes) {
  static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  std::string text;
  while (!bytes.empty()) {
    const auto lead = static_cast<uint8_t>(bytes[0]);
    const size_t length = ksv_kit::utf8LengthOf(bytes[0]);
    bool isGood = lead < 0x80 || (lead >= 0xC2 && lead <= 0xF4 && length <= bytes.size());
    for (size_t at = 1; isGood && at < length; ++at) {
      isGood = (static_cast<uint8_t>(bytes[at]) & 0xC0) == 0x80;
    }
    if (isGood) {
      const char32_t character = ksv_kit::firstCharacter(bytes);
      isGood = character >= kSmallest[length] && character <= 0x10FFFF &&
               !(character >= 0xD800 && character <= 0xDFFF);
    }
    if (isGood) text += bytes.substr(0, length);
    bytes.remove_prefix(isGood ? length : 1);
  }
  return text;
}

struct Made {
  std::string text;
  std::vector<uint64_t> origins;

  bool operator==(const Made&) const = default;
};

// Cut behind so many characters by turns; in one piece where both are 0.
Made made(TextChange& change, std::string_view text, size_t first, size_t second) {
  Made all;
  change.restart();
  bool isFirst = true;
  for (bool isLast = false; !isLast; isFirst = !isFirst) {
    size_t end = 0;
    const size_t most = isFirst ? first : second;
    for (size_t count = 0; end < text.size() && (first + second == 0 || count < most); ++count) {
      end += ksv_kit::utf8LengthOf(text[end]);
    }
    isLast = end == text.size();
    change.change(text.substr(0, end), isLast, all.text);
    while (all.origins.size() < all.text.size()) {
      all.origins.push_back(change.originOf(all.origins.size()));
    }
    text.remove_prefix(end);
  }
  return all;
}

void changeBy(TextChange& change, std::string_view text, size_t first, size_t second) {
  const Made whole = made(change, text, 0, 0);
  require(made(change, text, first, second + 1) == whole, "cuts change nothing");
  require(wellFormed(whole.text) == whole.text, "what comes out is well formed");
  uint64_t before = 0;
  for (const uint64_t origin : whole.origins) {
    require(origin >= before && origin < text.size(), "origins go on, inside of the text");
    before = origin;
  }
}

// Where no run of marks is longer than what is put in order.
void normalizeOnceMore(NormalizationForm form, const std::string& text) {
  const std::string once = ksv_kit::normalized(form, text);
  if (ksv_kit::charactersOf(text).size() > ksv_kit::kMostCharactersPutInOrder / 8) return;
  require(ksv_kit::normalized(form, once) == once, "what is in a form stays");
}

void changeByProfile(const std::string& profileText, const std::string& text, size_t first,
                     size_t second) {
  ksv_kit::ProfileError error{0, ""};
  const auto profile = ksv_kit::Profile::fromText(profileText, error);
  if (!profile) {
    require(error.line > 0 && !error.message.empty(), "a mistake is told with its line");
    return;
  }
  for (const std::string_view charset : profile->charsets()) {
    require(!profile->charsetToRead(charset).empty(), "a charset is read as one");
    for (const auto& change : {ksv_kit::changeAfterDecoding(*profile, charset),
                               ksv_kit::changeBeforeEncoding(*profile, charset)}) {
      if (change != nullptr) changeBy(*change, text, first, second);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ksv_fuzz::Input input(data, size);
  const int kind = input.byte() % (kFormCount + kWidthCount + 1);
  const size_t first = input.byte() % 8;
  const size_t second = input.byte() % 8;
  const std::string_view rest = input.rest();
  const size_t end = std::min(rest.find('\0'), rest.size());
  const std::string text = wellFormed(rest.substr(std::min(end + 1, rest.size())));
  if (kind < kFormCount) {
    changeBy(*ksv_kit::normalization(kForms[kind]), text, first, second);
    normalizeOnceMore(kForms[kind], text);
  } else if (kind < kFormCount + kWidthCount) {
    const int number = kind - kFormCount;
    const auto change = ksv_kit::widthChange(
        {.katakana = widthOf(number), .ascii = widthOf(number / 3), .space = widthOf(number / 9)});
    if (change != nullptr) changeBy(*change, text, first, second);
  } else {
    changeByProfile(std::string(rest.substr(0, end)), text, first, second);
  }
  for (const char32_t character : ksv_kit::charactersOf(text)) ksv_kit::lookAlikes(character);
  return 0;
}
