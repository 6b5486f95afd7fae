#include "kit/unicode/normalization.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <memory>
#include <vector>

#include "common/byte_blocks.h"
#include "kit/unicode/change_output.h"
#include "kit/unicode/normalization_system.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

constexpr uint32_t kPage = 256;
constexpr uint32_t kPages = 0x110000 / kPage;

// What a form makes of characters, asked of the system once for each page of them.
class CharactersInForm {
 public:
  explicit CharactersInForm(NormalizationForm form) : form_(form) {}

  bool begins(char32_t character) { return pageOf(character).begins[character % kPage]; }
  bool stays(char32_t character) { return pageOf(character).stays[character % kPage]; }

  // Stays as it is, whatever stands in front of it.
  bool isPlain(char32_t character) {
    const Page& page = pageOf(character);
    return page.isPlain || (page.begins[character % kPage] && page.stays[character % kPage]);
  }

  bool isPagePlain(uint32_t number) { return pageOf(number * kPage).isPlain; }

 private:
  struct Page {
    std::bitset<kPage> begins;
    std::bitset<kPage> stays;
    bool isPlain;
  };

  const Page& pageOf(char32_t character) {
    std::unique_ptr<Page>& page = pages_[character / kPage];
    if (page == nullptr) page = readPage(character / kPage * kPage);
    return *page;
  }

  std::unique_ptr<Page> readPage(char32_t first) const {
    auto page = std::make_unique<Page>();
    for (uint32_t at = 0; at < kPage; ++at) {
      const CharacterInForm found = inForm(first + at);
      page->begins[at] = found.begins;
      page->stays[at] = found.stays;
    }
    page->isPlain = page->begins.all() && page->stays.all();
    return page;
  }

  CharacterInForm inForm(char32_t character) const {
    if (form_ != NormalizationForm::kComposed) return characterInForm(form_, character);
    return {true, characterInForm(NormalizationForm::kNfc, character).begins};
  }

  NormalizationForm form_;
  std::array<std::unique_ptr<Page>, kPages> pages_;
};

// The text is a row of segments, each of a character that begins one and of those behind it that
// do not. What becomes of a segment depends on nothing else. The last one is kept, since it may go
// on.
class Normalization : public TextChange {
 public:
  explicit Normalization(NormalizationForm form) : form_(form), characters_(form) {}

  void change(std::string_view text, bool isEnd, std::string& out) override {
    output_.beginCall();
    while (!text.empty()) {
      const size_t plain = plainBytes(text);
      if (plain > 0) {
        takePlain(text.substr(0, plain), out);
        text.remove_prefix(plain);
      } else {
        const size_t length = utf8LengthOf(text[0]);
        take(text.substr(0, length), out);
        text.remove_prefix(length);
      }
    }
    if (isEnd) finishSegment(out);
  }

  void restart() override {
    output_.restart();
    segment_.clear();
    charactersOfSegment_ = 0;
  }

  uint64_t originOf(uint64_t made) const override { return output_.originOf(made); }

 private:
  // How many bytes in front are of characters that stay whatever stands in front of them. ASCII
  // is that in every form.
  size_t plainBytes(std::string_view text) {
    size_t at = 0;
    while (at < text.size()) {
      const auto lead = static_cast<uint8_t>(text[at]);
      if (lead < 0x80) {
        at += asciiBytes(text.substr(at));
      } else if (lead >= 0xE0 && lead < 0xF0 && isPagePlain(text.substr(at))) {
        at += 3;
      } else if (characters_.isPlain(firstCharacter(text.substr(at)))) {
        at += utf8LengthOf(text[at]);
      } else {
        break;
      }
    }
    return at;
  }

  static size_t asciiBytes(std::string_view text) {
    size_t at = 0;
    while (text.size() - at >= ksv::kBlock &&
           (ksv::blockAt(text.data() + at) & ksv::kHighBits) == 0) {
      at += ksv::kBlock;
    }
    while (at < text.size() && static_cast<uint8_t>(text[at]) < 0x80) ++at;
    return at;
  }

  // Of a character of three bytes, of which two say what page it is on.
  bool isPagePlain(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    const auto second = static_cast<uint8_t>(text[1]);
    return characters_.isPagePlain((first & 0x0FU) << 4 | (second >> 2 & 0x0FU));
  }

  void takePlain(std::string_view text, std::string& out) {
    finishSegment(out);
    const size_t last = lastCharacterAt(text);
    if (last > 0) output_.copy(text.substr(0, last), out);
    segment_ = text.substr(last);
    charactersOfSegment_ = 1;
  }

  void take(std::string_view character, std::string& out) {
    if (charactersOfSegment_ == kMostCharactersPutInOrder ||
        characters_.begins(firstCharacter(character))) {
      finishSegment(out);
    }
    segment_ += character;
    ++charactersOfSegment_;
  }

  void finishSegment(std::string& out) {
    if (charactersOfSegment_ == 0) return;
    if (charactersOfSegment_ == 1 && characters_.stays(firstCharacter(segment_))) {
      output_.copy(segment_, out);
    } else {
      changed_.clear();
      appendNormalized(systemForm(), segment_, changed_);
      // What is the same keeps its places.
      if (changed_ == segment_) {
        output_.copy(segment_, out);
      } else {
        output_.replace(segment_.size(), changed_, out);
      }
    }
    segment_.clear();
    charactersOfSegment_ = 0;
  }

  NormalizationForm systemForm() const {
    return form_ == NormalizationForm::kComposed ? NormalizationForm::kNfc : form_;
  }

  NormalizationForm form_;
  CharactersInForm characters_;
  ChangeOutput output_;
  std::string segment_;
  std::string changed_;
  size_t charactersOfSegment_ = 0;
};

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// The characters of combining class 0 with NFC_Quick_Check=Maybe in the Unicode Character
// Database, DerivedNormalizationProps.txt (a test compares the two).
constexpr CharacterRange kJoined[] = {
    {0x09BE, 0x09BE},   {0x09D7, 0x09D7},   {0x0B3E, 0x0B3E},   {0x0B56, 0x0B57},
    {0x0BBE, 0x0BBE},   {0x0BD7, 0x0BD7},   {0x0CC2, 0x0CC2},   {0x0CD5, 0x0CD6},
    {0x0D3E, 0x0D3E},   {0x0D57, 0x0D57},   {0x0DCF, 0x0DCF},   {0x0DDF, 0x0DDF},
    {0x102E, 0x102E},   {0x1161, 0x1175},   {0x11A8, 0x11C2},   {0x1B35, 0x1B35},
    {0x11127, 0x11127}, {0x1133E, 0x1133E}, {0x11357, 0x11357}, {0x114B0, 0x114B0},
    {0x114BA, 0x114BA}, {0x114BD, 0x114BD}, {0x115AF, 0x115AF}, {0x11930, 0x11930},
};

}  // namespace

bool joinsWithFormer(char32_t character) {
  const auto* range = std::lower_bound(
      std::begin(kJoined), std::end(kJoined), character,
      [](const CharacterRange& before, char32_t wanted) { return before.last < wanted; });
  return range != std::end(kJoined) && range->first <= character;
}

std::unique_ptr<TextChange> normalization(NormalizationForm form) {
  return std::make_unique<Normalization>(form);
}

std::string normalized(NormalizationForm form, std::string_view text) {
  std::string out;
  normalization(form)->change(text, true, out);
  return out;
}

}  // namespace ksv_kit
