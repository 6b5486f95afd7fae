// What runs by vectors say they have read has to be well-formed, whatever stands around it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cconv/bulk/vector_level.h"
#include "cconv/engine/run_watch.h"
#include "tests/convert/bulk_comparison.h"

namespace ksv_test {
namespace {

using ksv::vector_runs::VectorLevel;

class ReadParts : public BulkTest {};

// The parts of a text that runs tell while it is converted.
class Recorder : public ksv::RunWatch {
 public:
  struct Part {
    Bytes bytes;
    bool beginsInPairs;
    bool endsInPairs;
  };

  Recorder()
      : RunWatch{[](RunWatch& watch, const ksv::ReadPart& part) noexcept {
          const auto length = static_cast<size_t>(part.end - part.begin);
          static_cast<Recorder&>(watch).parts.push_back(
              {Bytes(reinterpret_cast<const char*>(part.begin), length), part.beginsInPairs,
               part.endsInPairs});
        }} {
    ksv::watchRuns(this);
  }
  ~Recorder() { ksv::watchRuns(nullptr); }

  std::vector<Part> parts;
};

uint8_t at(const Bytes& text, size_t place) {
  return place < text.size() ? static_cast<uint8_t>(text[place]) : 0;
}

// RFC 3629, by its grammar.
bool isUtf8(const Bytes& text) {
  const auto isTail = [&](size_t place, int low, int high) {
    return at(text, place) >= low && at(text, place) <= high;
  };
  for (size_t i = 0; i < text.size();) {
    const int lead = at(text, i);
    size_t length = 0;
    if (lead < 0x80) {
      length = 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      length = isTail(i + 1, 0x80, 0xBF) ? 2 : 0;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      const int low = lead == 0xE0 ? 0xA0 : 0x80;
      const int high = lead == 0xED ? 0x9F : 0xBF;
      length = isTail(i + 1, low, high) && isTail(i + 2, 0x80, 0xBF) ? 3 : 0;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      const int low = lead == 0xF0 ? 0x90 : 0x80;
      const int high = lead == 0xF4 ? 0x8F : 0xBF;
      const bool isWhole = isTail(i + 1, low, high) && isTail(i + 2, 0x80, 0xBF);
      length = isWhole && isTail(i + 3, 0x80, 0xBF) ? 4 : 0;
    }
    if (length == 0) return false;
    i += length;
  }
  return true;
}

bool isUtf16LittleEndian(const Bytes& text) {
  const auto unit = [&](size_t i) { return at(text, i) | at(text, i + 1) << 8; };
  if (text.size() % 2 != 0) return false;
  for (size_t i = 0; i < text.size(); i += 2) {
    const bool isHigh = unit(i) >= 0xD800 && unit(i) < 0xDC00;
    const bool isLow = unit(i) >= 0xDC00 && unit(i) < 0xE000;
    if (isLow || (isHigh && (unit(i + 2) < 0xDC00 || unit(i + 2) >= 0xE000))) return false;
    if (isHigh) i += 2;
  }
  return true;
}

// RFC 1468, of the groups that runs take.
bool isIso2022Jp(const Recorder::Part& part) {
  bool inPairs = part.beginsInPairs;
  const Bytes& text = part.bytes;
  for (size_t i = 0; i < text.size();) {
    const Bytes three = text.substr(i, 3);
    if (three == "\x1B(B" || three == "\x1B(J" || three == "\x1B$B") {
      inPairs = three == "\x1B$B";
      i += 3;
    } else if (inPairs) {
      for (size_t place : {i, i + 1})
        if (at(text, place) < 0x21 || at(text, place) > 0x7E) return false;
      i += 2;
    } else {
      if (at(text, i) >= 0x80 || at(text, i) == 0x1B) return false;
      ++i;
    }
  }
  return inPairs == part.endsInPairs;
}

// A long text of the words, with one of the strangers here and there.
Bytes textOf(Random& random, const std::vector<Bytes>& words, const std::vector<Bytes>& strangers) {
  Bytes text;
  while (text.size() < 6000) {
    const Bytes& word = words[below(random, static_cast<uint32_t>(words.size()))];
    for (uint32_t count = below(random, 60); count > 0; --count) text += word;
    if (below(random, 3) == 0)
      text += strangers[below(random, static_cast<uint32_t>(strangers.size()))];
  }
  return text;
}

// Calls the function with each part of many texts; how many bytes the parts had.
template <typename Check>
size_t forEachPart(const Conversion& conversion, const std::vector<Bytes>& words,
                   const std::vector<Bytes>& strangers, Check check) {
  Random random(31);
  size_t read = 0;
  for (int round = 0; round < 60; ++round) {
    const Bytes text = textOf(random, words, strangers);
    Converter converter(conversion);
    converter.give(text, 65536);
    Recorder recorder;
    cconvConvert(&converter.record);
    for (const Recorder::Part& part : recorder.parts) {
      read += part.bytes.size();
      check(part);
    }
  }
  return read;
}

constexpr VectorLevel kLevels[] = {VectorLevel::kSse41, VectorLevel::kAvx2, VectorLevel::kAvx512};

class WithVectorsUpTo {
 public:
  explicit WithVectorsUpTo(VectorLevel level) {
    ksv::vector_runs::limitVectorsForTests(level);
    startAnew();
  }
  ~WithVectorsUpTo() { ksv::vector_runs::limitVectorsForTests(VectorLevel::kAvx512); }
};

bool has(VectorLevel level) { return ksv::vector_runs::vectorLevel() >= level; }

const std::vector<Bytes> kUtf8Words = {"\xE3\x81\x82",
                                       "\xE6\xBC\xA2\xE5\xAD\x97",
                                       "plain ASCII, of a line that is long enough for a block; ",
                                       "\xC3\xA9t\xC3\xA9",
                                       "\xD0\xB6\xD0\xB0",
                                       "\xEA\xB0\x80"};
// Too long: of two, three and four bytes. A surrogate; a pair of them. Strays. Cut short.
const std::vector<Bytes> kUtf8Strangers = {"\xC0\xAF",
                                           "\xC1\xBF",
                                           "\xE0\x81\x82",
                                           "\xE0\x9F\xBF",
                                           "\xF0\x83\x81\x82",
                                           "\xED\xA0\x80",
                                           "\xED\xBF\xBF",
                                           "\xED\xA0\xBD\xED\xB8\x80",
                                           "\x81",
                                           "\xBF\x80",
                                           "\xE3\x81",
                                           "\xE6",
                                           "\xC3",
                                           "\xF0\x9F\x98\x80",
                                           "\xFF",
                                           "\xF4\x90\x80\x80",
                                           "\xE3\x41\x82",
                                           "\xE3\x81\x41",
                                           "\xC3\x41"};

TEST_F(ReadParts, of_utf8_are_well_formed) {
  Conversion little{"UTF-8", "UTF-16"};
  little.options.outputBigEndian = 0;
  for (const VectorLevel level : kLevels) {
    if (!has(level)) continue;
    const WithVectorsUpTo limited(level);
    for (const Conversion& conversion :
         {little, Conversion{"UTF-8", "UTF-16"}, Conversion{"UTF-8", "Shift_JIS"},
          Conversion{"UTF-8", "UTF-8"}, Conversion{"UTF-8", "ISO-2022-JP"},
          Conversion{"UTF-8", "ISO-8859-1"}, Conversion{"UTF-8", "ISO-10646-UCS-4"}}) {
      const size_t read =
          forEachPart(conversion, kUtf8Words, kUtf8Strangers, [&](const Recorder::Part& part) {
            EXPECT_TRUE(isUtf8(part.bytes)) << conversion.target << ": " << hex(part.bytes);
          });
      if (conversion.target == "UTF-16") {
        EXPECT_GT(read, 100'000u);
      }
    }
  }
}

TEST_F(ReadParts, of_utf16_are_well_formed) {
  const std::vector<Bytes> words = {bytes("42 30"), bytes("22 6F 57 5B"), bytes("41 00 42 00"),
                                    bytes("3D D8 00 DE")};
  const std::vector<Bytes> strangers = {bytes("3D D8"), bytes("00 DE"), bytes("00 DE 3D D8"),
                                        bytes("FF DF 41 00")};
  Conversion conversion{"UTF-16", "UTF-8"};
  conversion.parameters[0] = 0;
  for (const VectorLevel level : kLevels) {
    if (!has(level)) continue;
    const WithVectorsUpTo limited(level);
    for (const char* target : {"UTF-8", "Shift_JIS", "UTF-16", "ISO-2022-JP", "ISO-8859-1"}) {
      conversion.target = target;
      const size_t read =
          forEachPart(conversion, words, strangers, [&](const Recorder::Part& part) {
            EXPECT_TRUE(isUtf16LittleEndian(part.bytes)) << target << ": " << hex(part.bytes);
          });
      EXPECT_GT(read, 1'000u) << target;
    }
  }
}

TEST_F(ReadParts, of_iso_2022_jp_are_well_formed) {
  const std::vector<Bytes> words = {"\x1B$B$\"$$\x1B(B", "text in ASCII\r\n", "\x1B$B4A;z\x1B(J",
                                    "\x1B$B$\"", "\x1B(B"};
  const std::vector<Bytes> strangers = {"\x1B", "\x1B$A",   "\x1B(I1\x1B(B",  "\x80", "\xFF",
                                        "\x7F", "\x1B$B$ ", "\x1B$B\x7F\x30", "\n",   "\x1B$@0!"};
  for (const VectorLevel level : kLevels) {
    if (!has(level)) continue;
    const WithVectorsUpTo limited(level);
    const size_t read = forEachPart(
        {"ISO-2022-JP", "UTF-8"}, words, strangers,
        [&](const Recorder::Part& part) { EXPECT_TRUE(isIso2022Jp(part)) << hex(part.bytes); });
    EXPECT_GT(read, 20'000u);
  }
}

// Words of a script with ASCII of all lengths between them, in a charset.
Bytes mixedText(const std::vector<Bytes>& words, const char* charset) {
  Random random(41);
  Bytes text;
  while (text.size() < 60'000) {
    for (uint32_t count = 1 + below(random, 9); count > 0; --count)
      text += words[below(random, static_cast<uint32_t>(words.size()))];
    text += Bytes(below(random, 40), 'a') + " ";
  }
  Conversion conversion{"UTF-8", charset};
  return convertWhole(conversion, text).output;
}

// How much of a text runs by vectors read, once what it consists of is known.
double shareRead(const Conversion& conversion, const Bytes& text) {
  Converter converter(conversion);
  converter.give(text, 400'000);
  cconvConvert(&converter.record);
  Converter again(conversion);
  again.give(text, 400'000);
  const Recorder recorder;
  cconvConvert(&again.record);
  size_t read = 0;
  for (const Recorder::Part& part : recorder.parts) read += part.bytes.size();
  return static_cast<double>(read) / static_cast<double>(text.size());
}

TEST_F(ReadParts, are_nearly_all_of_an_ordinary_text) {
  const std::vector<Bytes> japanese = {"\xE3\x81\x82", "\xE6\xBC\xA2\xE5\xAD\x97",
                                       "\xE3\x82\xA2\xE3\x83\x91"};
  const std::vector<Bytes> halfWidth = {"\xE3\x81\x82", "\xEF\xBD\xB1", "\xE6\xBC\xA2"};
  const std::vector<Bytes> korean = {"\xEA\xB0\x80", "\xED\x95\x9C\xEA\xB5\xAD"};
  const std::vector<Bytes> french = {"\xC3\xA9t\xC3\xA9", "\xC3\x87", "\xC2\xAB"};
  struct Case {
    const std::vector<Bytes>& words;
    const char* source;
    const char* target;
  };
  const Case cases[] = {{halfWidth, "Shift_JIS", "UTF-8"},      {halfWidth, "WINDOWS31J", "UTF-16"},
                        {japanese, "EUC-JP", "UTF-8"},          {japanese, "Shift_JIS", "EUC-JP"},
                        {japanese, "Shift_JIS", "ISO-2022-JP"}, {japanese, "GB18030", "UTF-8"},
                        {korean, "KoreanKSC", "UTF-8"},         {french, "ISO-8859-1", "UTF-8"},
                        {french, "ISO-8859-1", "UTF-16"},       {french, "ISO-8859-15", "UTF-8"},
                        {french, "UTF-8", "ISO-8859-1"},        {french, "UTF-8", "UTF-16"},
                        {halfWidth, "UTF-8", "UTF-16"},         {halfWidth, "UTF-8", "Shift_JIS"},
                        {japanese, "UTF-8", "ISO-2022-JP"},     {halfWidth, "UTF-16", "WINDOWS31J"},
                        {japanese, "UTF-16", "ISO-2022-JP"},    {japanese, "ISO-2022-JP", "UTF-8"},
                        {japanese, "ISO-2022-JP", "UTF-16"}};
  for (const VectorLevel level : kLevels) {
    if (!has(level)) continue;
    const WithVectorsUpTo limited(level);
    for (const Case& some : cases) {
      const Conversion conversion{some.source, some.target};
      EXPECT_GT(shareRead(conversion, mixedText(some.words, some.source)), 0.95)
          << some.source << " to " << some.target << ", level " << static_cast<int>(level);
    }
  }
}

}  // namespace
}  // namespace ksv_test
