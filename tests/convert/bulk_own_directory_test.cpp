// The bulk path with charsets that the shipped directory has none of.
#include "tests/convert/bulk_comparison.h"
#include "tests/convert/own_directory.h"

namespace ksv_test {
namespace {

class BulkOfOwnCharsets : public OwnDirectory {
 protected:
  // What it writes, with tables that nobody has asked before.
  static Trace traceAnew(ksv::BulkPath path, const Conversion& setup, const Bytes& input) {
    startAnew();
    const While converting(path, ksv::BulkPath::kWhereItPays);
    Trace result = trace(setup, input, {static_cast<int32_t>(4 * input.size() + 100)});
    // They stand somewhere else each time.
    for (ConverterRecord& record : result.records)
      record.sourceCharset = record.targetCharset = nullptr;
    return result;
  }
  static void expectSame(const Conversion& setup, const Bytes& input, const Trace& steps) {
    EXPECT_EQ(difference(traceAnew(ksv::BulkPath::kAlways, setup, input), steps), "");
    EXPECT_EQ(difference(traceAnew(ksv::BulkPath::kAlwaysWithoutVectors, setup, input), steps), "");
  }

  static std::string lines(uint32_t first, uint32_t last) {
    std::string table;
    for (uint32_t code = first; code <= last; ++code) {
      char line[32];
      std::snprintf(line, sizeof line, "%X %X\r\n", code, code);
      table += line;
    }
    return table;
  }
};

// 41 is written as 00 41, and D5 in the same text as one byte.
TEST_F(BulkOfOwnCharsets, codes_of_one_byte_among_ascii_in_units) {
  const std::string ascii = lines(0, 0x7F);
  const Group kana = {"jis_x0201kana", 1, "D5 FF95"};
  load({{"single", "SAME", {{"ascii", 1, ascii}, kana}},
        {"mixed", "SAME", {{"units", 2, ascii}, kana}}});
  Bytes text;
  for (int i = 0; i < 100; ++i) text += Bytes(20, 'A') + "\xD5" + Bytes(20, 'A');
  const Conversion setup{"single", "mixed"};
  const Trace steps = traceAnew(ksv::BulkPath::kNever, setup, text);
  EXPECT_EQ(steps.output.size(), 8100u);
  expectSame(setup, text, steps);
}

// A destination table whose only key is 0 answers from the second question on. Questions
// that no text has asked must not count.
TEST_F(BulkOfOwnCharsets, a_lone_key_answers_from_the_second_character_on_that_asks_for_it) {
  load({{"iso-10646-ucs-4", "ISO-10646-UCS-4", {{"any-unicode", 4, ""}}},
        {"lone", "SAME", {{"pairs", 2, "2121 3000\r\n2122 3001", "4142 0"}}}});
  Bytes text;
  for (int i = 0; i < 1000; ++i) text += bytes("00 00 30 00");
  const Bytes zero = bytes("00 00 00 00");
  const Conversion setup{"iso-10646-ucs-4", "lone"};
  text += zero + zero + text + zero;
  const Trace steps = traceAnew(ksv::BulkPath::kNever, setup, text);
  EXPECT_EQ(hex(steps.output.substr(2000, 4)), "00 00 41 42");
  EXPECT_EQ(hex(steps.output.substr(4004)), "41 42");
  expectSame(setup, text, steps);
}

}  // namespace
}  // namespace ksv_test
