#include "cli/mail/header_words.h"

#include <algorithm>
#include <cstdint>

#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

constexpr size_t kLongestCharsetName = 75;  // as long as a whole word may be

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

int sixBitsOf(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '+' ? 62 : c == '/' ? 63 : -1;
}

struct EncodedWord {
  std::string charset;
  char encoding;  // 'b' or 'q'
  std::string_view text;
  size_t length;
};

// "=?CHARSET*LANGUAGE?ENCODING?TEXT?=" at the beginning of the field. Blanks in the text, which
// are forbidden, end no word.
class WordReader {
 public:
  explicit WordReader(std::string_view field) : field_(field) {}

  std::optional<EncodedWord> at(size_t place) {
    if (hasNoMoreEnds_ || !field_.substr(place).starts_with("=?")) return std::nullopt;
    const std::string_view rest = field_.substr(place);
    const size_t nameEnd = rest.substr(0, kLongestCharsetName).find('?', 2);
    if (nameEnd == std::string_view::npos || nameEnd + 2 >= rest.size()) return std::nullopt;
    const char encoding = ksv_kit::lowered(std::string(1, rest[nameEnd + 1]))[0];
    if ((encoding != 'b' && encoding != 'q') || rest[nameEnd + 2] != '?') return std::nullopt;
    const size_t textAt = nameEnd + 3;
    const size_t textEnd = rest.find("?=", textAt);
    hasNoMoreEnds_ = textEnd == std::string_view::npos;
    const std::string_view name = rest.substr(2, nameEnd - 2);
    const std::string_view charset = name.substr(0, name.find('*'));
    const bool isName = !charset.empty() && std::ranges::none_of(charset, isBlank);
    if (hasNoMoreEnds_ || !isName) return std::nullopt;
    return EncodedWord{ksv_kit::lowered(charset), encoding, rest.substr(textAt, textEnd - textAt),
                       textEnd + 2};
  }

 private:
  const std::string_view field_;
  bool hasNoMoreEnds_ = false;  // nothing behind is looked through again
};

std::string decodedWord(const EncodedWord& word) {
  if (word.encoding == 'b') return base64Decoded(word.text);
  std::string text(word.text);
  std::ranges::replace(text, '_', ' ');
  return hexDecoded(text, '=');
}

class RunList {
 public:
  void addPlain(std::string_view text) {
    const bool parts = std::ranges::all_of(text, isBlank);
    if (parts)
      blanks_ += text;
    else
      append(blanks() + std::string(text), std::nullopt);
  }

  // Blanks between two words are no characters of the field.
  void addWord(const EncodedWord& word) {
    const bool isBehindWord = !runs_.empty() && runs_.back().charset;
    if (!isBehindWord && !blanks_.empty()) append(blanks(), std::nullopt);
    blanks_.clear();
    append(decodedWord(word), word.charset);
  }

  std::vector<HeaderRun> take() {
    if (!blanks_.empty()) append(blanks(), std::nullopt);
    return std::move(runs_);
  }

 private:
  std::string blanks() {
    std::string blanks;
    blanks.swap(blanks_);
    return blanks;
  }

  void append(const std::string& bytes, const std::optional<std::string>& charset) {
    if (runs_.empty() || runs_.back().charset != charset)
      runs_.push_back({bytes, charset});
    else
      runs_.back().bytes += bytes;
  }

  std::vector<HeaderRun> runs_;
  std::string blanks_;
};

}  // namespace

std::vector<HeaderRun> headerRuns(std::string_view field) {
  WordReader words(field);
  RunList runs;
  size_t at = 0;
  while (at < field.size()) {
    const std::optional<EncodedWord> word = words.at(at);
    if (word) {
      runs.addWord(*word);
      at += word->length;
    } else {
      const size_t next = std::min(field.find("=?", at + 1), field.size());
      runs.addPlain(field.substr(at, next - at));
      at = next;
    }
  }
  return runs.take();
}

std::string unfolded(std::string_view value) {
  std::string text;
  text.reserve(value.size());
  for (const char c : value)
    if (!isLineEnd(c)) text += c;
  const auto isAround = [](char c) { return isBlank(c); };
  text.erase(std::find_if_not(text.rbegin(), text.rend(), isAround).base(), text.end());
  text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isAround));
  return text;
}

std::string base64Decoded(std::string_view text) {
  std::string bytes;
  uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    if (c == '=') count = 0;  // what follows begins anew
    const int value = sixBitsOf(c);
    if (value < 0) continue;
    bits = bits << 6 | static_cast<uint32_t>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

std::string hexDecoded(std::string_view text, char sign) {
  std::string bytes;
  for (size_t at = 0; at < text.size(); ++at) {
    const int high = at + 2 < text.size() ? digitOf(text[at + 1]) : -1;
    const int low = high < 0 ? -1 : digitOf(text[at + 2]);
    if (text[at] != sign || low < 0) {
      bytes += text[at];
      continue;
    }
    bytes += static_cast<char>(high << 4 | low);
    at += 2;
  }
  return bytes;
}

}  // namespace ksv_cli
