// CutStr on any text in each charset: it has to cut where the rules by the letter do, to keep
// to the text and the one unit behind it, and to cut no character of well-formed text.
//
// Input: charset; length less what the text has; limit; the text with what stands behind it.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support.h"
#include "ksv_cut.h"
#include "tests/common/slow_cutting.h"

namespace {

using ksv_fuzz::require;

struct Charset {
  const char* name;
  int32_t unit;
  // The characters of which well-formed text is made, CR LF for one of them; none where even
  // of well-formed text a character may be cut apart.
  std::vector<std::string> characters;
};

const std::vector<Charset>& charsets() {
  using namespace std::string_literals;
  static const std::vector<Charset> all = {
      {"Shift_JIS", 1, {"a", "\r", "\n", "\r\n", "\xB1", "\x82\xA0", "\x95\x5C", "\xFC\x4B"}},
      {"EUC-JP", 1, {"a", "\r", "\n", "\r\n", "\x8E\xB1", "\xA4\xA2", "\xDF\xFE"}},
      {"EUC-JISX0213", 1, {"a", "\r", "\n", "\r\n", "\xA4\xA2", "\xDF\xFE"}},
      {"ISO-2022-JP",
       1,
       {"\x1B(Ba", "\x1B(B\r", "\x1B(B\r\n", "\x1B(J\\", "\x1B$B\x24\x22", "\x1B$@\x30\x21"}},
      {"ISO-2022-JP-3", 1, {}},
      {"ISO-10646-UCS-4", 4, {"a\0\0\0"s, "\r\0\0\0"s, "\n\0\0\0"s, "\r\0\0\0\n\0\0\0"s}},
      {"UTF-16", 2, {"\0a"s, "\0\r"s, "\0\n"s, "\0\r\0\n"s, "\x30\x42"}},
      {"UTF-8", 1, {"a", "\r", "\n", "\r\n", "\xC3\xA9", "\xE3\x81\x82", "\xF0\x9F\x98\x80"}},
      {"ChineseGBK", 1, {"a", "\r", "\n", "\r\n", "\x81\x40", "\xFE\xFE"}},
      {"GB18030", 1, {}},
      {"ISO-8859-1", 1, {"a", "\r", "\n", "\r\n", "\xE9"}},
  };
  return all;
}

int32_t cut(const std::vector<uint8_t>& bytes, int32_t length, int32_t limit, const char* name) {
  return static_cast<int32_t>(CutStr(bytes.data(), length, limit, name));
}

// Pieces put together are the text, as far as it can be cut at all.
void cutToPieces(const std::vector<uint8_t>& bytes, int32_t length, int32_t limit,
                 const char* name) {
  int32_t position = 0;
  while (position < length) {
    const std::vector<uint8_t> rest(bytes.begin() + position, bytes.end());
    const int32_t size = cut(rest, length - position, limit, name);
    require(size >= 0 && size <= std::min(limit, length - position), "a piece is in its limits");
    if (size == 0) return;
    position += size;
  }
}

bool isBetweenCrAndLf(const std::string& text, size_t at, size_t unit) {
  const std::string cr = text.substr(at - unit, unit);
  const std::string lf = text.substr(at, unit);
  return cr.find('\r') != cr.npos && lf.find('\n') != lf.npos;
}

// Each byte of the input is a character of a well-formed text, which is cut at its limit or
// behind the last whole character before it.
void cutWellFormed(const Charset& charset, std::string_view choices, int32_t limit) {
  if (charset.characters.empty()) return;
  const auto unit = static_cast<size_t>(charset.unit);
  std::string text;
  std::vector<size_t> ends = {0};
  for (const char choice : choices) {
    text += charset.characters[static_cast<unsigned char>(choice) % charset.characters.size()];
    ends.push_back(text.size());
  }
  // Without room for its character the first escape sequence is cut byte by byte.
  if (text.starts_with('\x1B') && ends[1] > static_cast<size_t>(limit)) return;
  const std::string behind = text + std::string(unit, '\0');
  size_t expected = 0;
  for (const size_t end : ends) {
    if (end > static_cast<size_t>(limit)) break;
    if (end == 0 || !isBetweenCrAndLf(behind, end, unit)) expected = end;
  }
  const std::vector<uint8_t> bytes(behind.begin(), behind.end());
  require(cut(bytes, static_cast<int32_t>(text.size()), limit, charset.name) ==
              static_cast<int32_t>(expected),
          "well-formed text is cut behind its last whole character");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ksv_fuzz::Input input(data, size);
  const Charset& charset = charsets()[input.byte() % charsets().size()];
  const int32_t kept = input.byte() % 8;
  const int32_t limit = input.word() % 512;
  // Exactly as large as it is, so that the sanitizers see a read behind it.
  const std::vector<uint8_t> bytes(input.rest().begin(), input.rest().end());
  const int32_t length = static_cast<int32_t>(bytes.size()) - charset.unit - kept;
  if (length < 0) return 0;

  const int32_t end = std::min(length, limit);
  const int32_t result = cut(bytes, length, limit, charset.name);
  require(result == ksv::test::slowCut(charset.name, bytes, end), "both cut at the same place");
  require(result >= 0 && result <= end, "a piece is in its limits");
  cutToPieces(bytes, length, limit, charset.name);
  cutWellFormed(charset, input.rest(), limit);
  return 0;
}
