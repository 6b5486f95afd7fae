// Whole strings between UCS-2 and Shift_JIS: what is written, byte by byte, where the
// odd lengths end the conversion, and what is left alone.
#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "ksv_sjis.h"
#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

constexpr char kUntouched = '\xEE';

struct StringResult {
  int result;
  Bytes written;  // the whole room; EE where nothing was written
};

// Room for exactly as many bytes as may be written, seen by a sanitizer.
StringResult toSjis(const std::u16string& text) {
  std::vector<uint16_t> source(text.begin(), text.end());
  source.push_back(0);
  std::vector<char> dest(2 * text.size() + 1, kUntouched);
  const int result = KSV_ucs2sjisstr(dest.data(), source.data());
  return {result, {dest.begin(), dest.end()}};
}

// The bytes of this machine's units, the half one at the end included, in the order in which
// the tests show them.
Bytes leastSignificantFirst(Bytes units) {
  if (std::endian::native == std::endian::little) return units;
  for (size_t i = 0; i + 1 < units.size(); i += 2) std::swap(units[i], units[i + 1]);
  return units;
}

StringResult toUcs2(const Bytes& text) {
  const size_t room = 2 * (text.size() + 1) - 1;
  // One byte fewer than whole units: the last unit has half its room.
  std::vector<uint16_t> dest(text.size() + 1, 0xEEEE);
  const int result = KSV_sjis2ucsstr(dest.data(), text.c_str());
  const auto* bytes = reinterpret_cast<const char*>(dest.data());
  EXPECT_EQ(bytes[room], kUntouched);
  return {result, leastSignificantFirst({bytes, room})};
}

void expectBytes(const StringResult& got, int result, const std::string& hexText) {
  EXPECT_EQ(got.result, result);
  EXPECT_EQ(hex(got.written), hexText);
}

using SjisStrings = ConversionTest;

TEST_F(SjisStrings, pairs_are_written_least_significant_byte_first) {
  expectBytes(toSjis(u"あ"), 0, "A0 82 EE");
  expectBytes(toSjis(u"表A"), 0, "5C 95 41 EE EE");
}

TEST_F(SjisStrings, the_lone_byte_of_the_terminator_ends_the_conversion_with_0) {
  expectBytes(toSjis(u""), 0, "EE");
  expectBytes(toSjis(u"A"), 0, "41 EE EE");
  expectBytes(toSjis(u"abc"), 0, "61 62 63 EE EE EE EE");
}

TEST_F(SjisStrings, half_width_katakana_are_single_bytes) {
  expectBytes(toSjis(u"ｱｲ"), 0, "B1 B2 EE EE EE");
}

TEST_F(SjisStrings, extensions_are_written_too) { expectBytes(toSjis(u"①"), 0, "40 87 EE"); }

TEST_F(SjisStrings, line_ends_become_cr_lf_as_far_as_there_is_room) {
  expectBytes(toSjis(u"a\nb"), 0, "61 0D 0A 62 EE EE EE");
  expectBytes(toSjis(u"a\rb\r\nc"), 0, "61 0D 0A 62 0D 0A 63 EE EE EE EE EE EE");
  expectBytes(toSjis(u"あ\n"), 0, "A0 82 0D 0A EE");
}

TEST_F(SjisStrings, what_cannot_be_written_is_replaced) {
  // The converter's own replacement for wide characters: a geta mark or the like.
  const StringResult replaced = toSjis(u"a\u0E01b");
  EXPECT_EQ(replaced.result, 0);
  EXPECT_EQ(hex(replaced.written), "61 AC 81 62 EE EE EE");
}

// Not as they are written: what one of the two functions makes the other does not read.
TEST_F(SjisStrings, pairs_are_read_lead_byte_first) {
  expectBytes(toUcs2("\x82\xA0"), 1, "42 30 00 00 EE");
  expectBytes(toUcs2("\xA0\x82"), 1, "00 00 EE EE EE");
}

TEST_F(SjisStrings, a_terminator_without_room_gives_0) {
  expectBytes(toUcs2(""), 0, "EE");
  expectBytes(toUcs2("A"), 0, "41 00 EE");
  expectBytes(toUcs2("ab"), 0, "61 00 62 00 EE");
}

TEST_F(SjisStrings, a_pair_leaves_room_for_the_terminator) {
  expectBytes(toUcs2("A\x82\xA0"), 1, "41 00 42 30 00 00 EE");
  expectBytes(toUcs2("\x82\xA0\x95\x5C"), 1, "42 30 68 88 00 00 EE EE EE");
  expectBytes(toUcs2("\xB1\x87\x40"), 1, "71 FF 60 24 00 00 EE");
}

TEST_F(SjisStrings, what_cannot_be_read_is_skipped) {
  expectBytes(toUcs2("\xFF\x41"), 1, "41 00 00 00 EE");
}

TEST_F(SjisStrings, line_ends_read_become_cr_lf) {
  expectBytes(toUcs2("\x82\xA0\n"), 0, "42 30 0D 00 0A 00 EE");
  expectBytes(toUcs2("\x82\xA0\x82\xA0\n"), 1, "42 30 42 30 0D 00 0A 00 00 00 EE");
}

TEST_F(SjisStrings, line_ends_alone_fill_the_room) {
  expectBytes(toSjis(u"\n\n\n\n"), 0, "0D 0A 0D 0A 0D 0A 0D 0A EE");
  EXPECT_EQ(toUcs2("\n").result, 0) << "3 bytes for the 4 of a line end";
}

// The same conversion by a converter that is set up by hand.
class ByHand {
 public:
  ByHand(const char* source, const char* target) : setup_{source, target, {}, {0, 0, 1}} {
    setup_.options.replaceUnmappable = 1;
    setup_.options.convertNewlines = 1;
    setup_.options.newlineForm = 1;
  }

  void expectLike(const StringResult& got, const Bytes& source, size_t capacity) const {
    Converter converter(setup_);
    converter.give(source, static_cast<int32_t>(capacity));
    const bool done = converter.convert() == KSV_STATUS_DONE;
    converter.terminate();
    const Bytes wanted = converter.written();
    ASSERT_EQ(got.result, done ? 1 : 0) << hex(source);
    ASSERT_EQ(hex(got.written.substr(0, wanted.size())), hex(wanted)) << hex(source);
  }

 private:
  Conversion setup_;
};

TEST_F(SjisStrings, are_conversions_of_their_bytes_for_every_unit) {
  const ByHand byHand("ISO-10646-UCS-2", "WINDOWS31J");
  for (unsigned unit = 1; unit < 0x10000; ++unit) {
    const std::u16string text = {u'a', static_cast<char16_t>(unit), u'b'};
    Bytes source;
    for (const char16_t c : text) {
      source += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    }
    source += '\0';
    byHand.expectLike(toSjis(text), source, source.size());
  }
}

TEST_F(SjisStrings, are_conversions_of_their_bytes_for_every_pair) {
  const ByHand byHand("WINDOWS31J", "ISO-10646-UCS-2");
  for (unsigned pair = 0x0100; pair < 0x10000; ++pair) {
    if ((pair & 0xFF) == 0) continue;
    const Bytes text = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF), 'b'};
    byHand.expectLike(toUcs2(text), text + '\0', 2 * text.size() + 1);
  }
}

TEST_F(SjisStrings, null_gives_0) {
  uint16_t units[4] = {'a', 0};
  char text[4] = "a";
  EXPECT_EQ(KSV_ucs2sjisstr(nullptr, units), 0);
  EXPECT_EQ(KSV_ucs2sjisstr(text, nullptr), 0);
  EXPECT_EQ(KSV_sjis2ucsstr(nullptr, text), 0);
  EXPECT_EQ(KSV_sjis2ucsstr(units, nullptr), 0);
  EXPECT_EQ(units[0], 'a');
  EXPECT_STREQ(text, "a");
}

TEST(SjisStringsWithoutRules, give_0_and_write_nothing) {
  EXPECT_EQ(hex(toSjis(u"あ").written), "EE EE EE");
  EXPECT_EQ(toSjis(u"あ").result, 0);
  expectBytes(toUcs2("\x82\xA0"), 0, "EE EE EE EE EE");
}

}  // namespace
}  // namespace ksv_test
