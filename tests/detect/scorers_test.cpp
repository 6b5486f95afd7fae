// What the scorers do at the edges: the bytes are in the tests.
#include "detect/scorers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

using namespace std::string_literals;
using ksv::detect::Candidate;
using ksv::detect::Scorer;

constexpr uint32_t kCrlf = KSV_TEXT_CRLF;
constexpr uint32_t kCr = KSV_TEXT_CR;
constexpr uint32_t kLf = KSV_TEXT_LF;

// A text in chunks: more of the file follows all but the last.
struct Outcome {
  uint32_t good;
  uint32_t bad;
  uint32_t lineEnd;
  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend void PrintTo(const Outcome& o, std::ostream* out) {
    *out << o.good << " good, " << o.bad << " bad, line end " << std::hex << o.lineEnd;
  }
};

Candidate scoreChunks(Scorer score, const std::vector<std::string>& chunks) {
  Candidate candidate;
  for (size_t i = 0; i < chunks.size(); ++i) {
    const Bytes bytes = bytesOf(chunks[i]);
    score(candidate, {bytes.data(), bytes.size(), i + 1 < chunks.size()}, 0);
  }
  return candidate;
}

Outcome chunks(Scorer score, const std::vector<std::string>& texts) {
  const Candidate candidate = scoreChunks(score, texts);
  return {candidate.good, candidate.bad, candidate.lineEnd};
}

Outcome file(Scorer score, const std::string& text) { return chunks(score, {text}); }

const Scorer kByteScorers[] = {ksv::detect::scoreAscii,
                               ksv::detect::scoreShiftJis,
                               ksv::detect::scoreShiftJisCodes,
                               ksv::detect::scoreEucJp,
                               ksv::detect::scoreSimplifiedChinese,
                               ksv::detect::scoreTraditionalChinese,
                               ksv::detect::scoreKorean,
                               ksv::detect::scoreIso2022Jp,
                               ksv::detect::scoreUtf8};

TEST(LineEnds, only_the_first_convention_is_kept) {
  for (const Scorer score : kByteScorers) {
    EXPECT_EQ(file(score, "a\r\nb\nc\rd"), (Outcome{8, 0, kCrlf}));
    EXPECT_EQ(file(score, "a\nb\r\nc\rd"), (Outcome{8, 0, kLf}));
    EXPECT_EQ(file(score, "a\rb\r\nc\nd"), (Outcome{8, 0, kCr}));
    EXPECT_EQ(file(score, "a\r\rb\n"), (Outcome{5, 0, kCr}));
    EXPECT_EQ(file(score, "a\n\rb\n"), (Outcome{5, 0, kLf}));
  }
}

TEST(LineEnds, at_the_end_of_a_file_are_told) {
  for (const Scorer score : kByteScorers) {
    EXPECT_EQ(file(score, "a\r"), (Outcome{2, 0, kCr}));
    EXPECT_EQ(file(score, "a\n"), (Outcome{2, 0, kLf}));
    EXPECT_EQ(file(score, "a\r\n"), (Outcome{3, 0, kCrlf}));
    EXPECT_EQ(file(score, "\r"), (Outcome{1, 0, kCr}));
  }
}

TEST(LineEnds, are_carried_over_a_chunk_border_by_scorers_that_carry) {
  for (const Scorer score :
       {ksv::detect::scoreShiftJis, ksv::detect::scoreShiftJisCodes, ksv::detect::scoreEucJp,
        ksv::detect::scoreSimplifiedChinese, ksv::detect::scoreTraditionalChinese,
        ksv::detect::scoreKorean, ksv::detect::scoreIso2022Jp}) {
    EXPECT_EQ(chunks(score, {"abcdef\r", "\nx"}).lineEnd, kCrlf);
    EXPECT_EQ(chunks(score, {"abcdef\r", "xy"}).lineEnd, kCr);
    EXPECT_EQ(chunks(score, {"abcdef\r", "\r\n"}).lineEnd, kCr);
  }
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"abcdef\r", "\nx"}), (Outcome{9, 0, kCrlf}));
}

TEST(LineEnds, at_a_chunk_border_go_unseen_in_scorers_that_do_not_carry) {
  EXPECT_EQ(chunks(ksv::detect::scoreAscii, {"abc\r", "\nx"}), (Outcome{6, 0, kLf}));
  EXPECT_EQ(chunks(ksv::detect::scoreAscii, {"abc\r", "x"}), (Outcome{5, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"abcd\r", "\nx"}), (Outcome{5, 0, kLf}));
  EXPECT_EQ(chunks(ksv::detect::scoreUtf16BigEndian, {"\0a\0\r"s, "\0\n"s}), (Outcome{3, 0, kLf}));
  EXPECT_EQ(chunks(ksv::detect::scoreUtf16BigEndian, {"\0a\0\r"s, "\0b"s}), (Outcome{3, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreEucJpFix, {"\0a\0\r"s, "\0b"s}), (Outcome{3, 0, 0}));
}

TEST(LineEnds, left_over_in_front_of_more_text_set_no_flag) {
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"ab\r\nc", "xyz"}).lineEnd, kCrlf) << "read whole";
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"abcd\r\n", "xyz"}).lineEnd, 0u) << "two left over";
  EXPECT_EQ(chunks(ksv::detect::scoreIso2022Jp, {"abcd\r\n", "xyz"}).lineEnd, 0u);
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"abcd\n", "xyz"}).lineEnd, 0u) << "one left over";
}

TEST(Ascii, is_dropped_with_all_that_was_counted_at_a_byte_above_7E) {
  for (const std::string& stop : {"\0"s, "\x1B"s, "\x7F"s, "\x80"s, "\xFF"s}) {
    EXPECT_EQ(chunks(ksv::detect::scoreAscii, {"abcd", "ab" + stop}), (Outcome{0, 0, 0}));
  }
  EXPECT_EQ(file(ksv::detect::scoreAscii, "ab\x01\x0B"), (Outcome{2, 2, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreAscii, {"abcd", "\x01"}), (Outcome{0, 0, 0}));
}

TEST(Utf8, takes_sequences_of_two_to_six_bytes_by_their_form_only) {
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80"),
            (Outcome{3, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "\xF9\x80\x80\x80\x80\xFD\x80\x80\x80\x80\x80"),
            (Outcome{2, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "\xC0\x80\xE0\x80\x80\xED\xA0\x80"), (Outcome{3, 0, 0}))
      << "overlong forms and a surrogate";
}

TEST(Utf8, uses_up_a_sequence_with_a_wrong_continuation_when_it_lies_in_the_chunk) {
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "a\xE3\x81Xb"), (Outcome{2, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "a\xE3X\x81\x62"), (Outcome{2, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "a\xE3X"), (Outcome{2, 1, 0})) << "only the lead";
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "a\xE3"), (Outcome{1, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "a\x80\xBF\x7F"), (Outcome{1, 3, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "a\xFE\xFFz"), (Outcome{2, 0, 0}));
}

TEST(Utf8, counts_a_sequence_that_a_chunk_border_cuts_as_bad) {
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"ab\xF0\x9F\x98", "\x80yz"}), (Outcome{4, 2, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"ab\xE3\x81", "\x82yz"}), (Outcome{4, 1, 0}))
      << "the lead is left over and passed over";
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"abcd", "xyz"}), (Outcome{5, 0, 0}));
}

TEST(Utf8, with_a_NUL_scores_what_earlier_chunks_counted) {
  EXPECT_EQ(chunks(ksv::detect::scoreUtf8, {"abcdef", "xyz\0xyz"s}), (Outcome{4, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "abc\0def"s), (Outcome{0, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf8, "abc\x1B$B"), (Outcome{0, 0, 0}));
}

TEST(Utf16, counts_4EA6_and_FB3E_as_bad) {
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\x4E\xA5\x4E\xA6\xFB\x3E\xFB\x3C"),
            (Outcome{2, 2, 0}));
}

TEST(Utf16, takes_the_unit_behind_a_CR_with_it) {
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\0\r\0\n"s), (Outcome{2, 0, kCrlf}));
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\0\r\0A"s), (Outcome{2, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\0\r\0\r\0\n"s), (Outcome{3, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\0\r\xD8\x3D\xDE\0\0A"s), (Outcome{2, 2, 0}))
      << "a refused unit behind a CR sets no flag";
  const Candidate separator = scoreChunks(ksv::detect::scoreUtf16BigEndian, {"\0\r\x20\x28"s});
  EXPECT_EQ(separator.separators, 0u);
  EXPECT_EQ(separator.lineEnd, kCr);
}

TEST(Utf16, notes_both_separators) {
  const std::string text = "\x28\x20\x29\x20";
  EXPECT_EQ(scoreChunks(ksv::detect::scoreUtf16LittleEndian, {text}).separators,
            KSV_TEXT_LINE_SEPARATOR | KSV_TEXT_PARAGRAPH_SEPARATOR);
}

TEST(Utf16, reads_surrogates_in_pairs) {
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\xD8\x3D\xDE\x00"s), (Outcome{1, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\xD8\x3D\0A"s), (Outcome{0, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\xDE\0\0A"s), (Outcome{1, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\0A\xD8\x3D"s), (Outcome{1, 0, 0}))
      << "cut off, it counts nothing";
}

TEST(Utf16, drops_the_good_characters_of_an_odd_chunk_and_keeps_the_bad) {
  EXPECT_EQ(file(ksv::detect::scoreUtf16BigEndian, "\0A\0B\0\x01x"s), (Outcome{0, 1, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreUtf16BigEndian, {"\0A\0B"s, "\0\x01\0Ax"s}),
            (Outcome{2, 1, 0}));
}

TEST(Ucs4, stops_at_planes_that_no_text_has) {
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, "\0\0\0A\0\x11\0\0\0\0\0A"s), (Outcome{0, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, "\0\0\0A\0\x80\0\0"s), (Outcome{1, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, "\0\0\0A\0\x04\0\0"s), (Outcome{1, 1, 0}));
}

TEST(Ucs4, takes_the_unit_behind_a_CR_with_it) {
  const std::string cr = "\0\0\0\r"s;
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, cr + "\0\0\0\n"s), (Outcome{2, 0, kCrlf}));
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, cr + "\0\x02\0\0"s), (Outcome{2, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, cr + "\0\x20\0\0"s), (Outcome{1, 1, 0}))
      << "a plane of 17 to 127 is bad there and stops nothing";
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, cr), (Outcome{1, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreUcs4BigEndian, cr + "xyz"), (Outcome{1, 0, 0}))
      << "not the last of the file";
}

TEST(EucJpFix, is_dropped_with_a_byte_left_over) {
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0A\xA4\xA2"s), (Outcome{2, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0A\xA4\xA2\0"s), (Outcome{0, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "x\0A"s), (Outcome{0, 0, 0})) << "an odd position";
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "x\0Ax\0B"s), (Outcome{2, 2, 0}))
      << "only one byte of what begins nothing is used";
}

TEST(EucJpFix, confirms_a_CR_by_the_pair_behind_it) {
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0\r\0\n"s), (Outcome{2, 0, kCrlf}));
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0\r\0\r"s), (Outcome{2, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0\r\xA4\xA2"s), (Outcome{2, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0\rx"s).lineEnd, 0u);
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0A\0\r"s), (Outcome{2, 0, kCr}));
  EXPECT_EQ(file(ksv::detect::scoreEucJpFix, "\0A\x1B\0"s), (Outcome{0, 0, 0}));
}

TEST(ShiftJis, gives_a_wrong_trail_behind_FA_to_FC_back) {
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "\xFA\x21\x62"), (Outcome{2, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "\xFC\x4C\x62"), (Outcome{2, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "\xFC\x82\xA0"), (Outcome{1, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "a\x81\x21\x62"), (Outcome{2, 1, 0})) << "others not";
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"ab\xFB", "\r\nc"}), (Outcome{5, 1, kCrlf}))
      << "over a chunk border, too";
}

TEST(ShiftJis, carries_a_lead_over_a_chunk_border) {
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"ab\x82", "\xA0xyz"}), (Outcome{6, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"ab\x82", "\x20xyz"}), (Outcome{5, 1, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"abc", "xyz"}), (Outcome{5, 0, 0}))
      << "the last byte in front of more text is not counted";
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"ab\0"s, "xyz"}), (Outcome{5, 0, 0}))
      << "and stops nothing there";
}

TEST(ShiftJis, drops_the_chunk_in_which_the_file_ends_with_a_lead) {
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "ab\x82"), (Outcome{0, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"abcd", "xyz\x82"}), (Outcome{3, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreShiftJis, {"ab\x82", "\xA0"}), (Outcome{3, 0, 0}));
}

TEST(ShiftJis, stops_at_DEL_where_a_character_begins_only) {
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "ab\x7F"), (Outcome{0, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "ab\xED\x7F"), (Outcome{3, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreShiftJis, "ab\x81\x7F"), (Outcome{2, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreShiftJisCodes, "ab\x7F\0\x1B"s), (Outcome{2, 3, 0}));
}

TEST(EucJp, carries_one_and_two_bytes_over_a_chunk_border) {
  EXPECT_EQ(chunks(ksv::detect::scoreEucJp, {"ab\xA4", "\xA2xy"}), (Outcome{5, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreEucJp, {"ab\x8E", "\xB1xy"}), (Outcome{5, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreEucJp, {"ab\x8F", "\xB0\xA1xy"}), (Outcome{5, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreEucJp, {"ab\x8F\xB0", "\xA1xy"}), (Outcome{5, 0, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreEucJp, {"ab\x8F\xB0", "\x41xy"}), (Outcome{4, 1, 0}));
  EXPECT_EQ(chunks(ksv::detect::scoreEucJp, {"ab\x8F", "\x41\xA4\xA2x"}), (Outcome{4, 1, 0}))
      << "a wrong second byte leaves the third";
  EXPECT_EQ(file(ksv::detect::scoreEucJp, "ab\x8F\xB0"), (Outcome{0, 0, 0}));
}

TEST(EucJp, takes_any_trail_from_A1_and_uses_up_a_lower_one) {
  EXPECT_EQ(file(ksv::detect::scoreEucJp, "\xA4\xFF\xF4\xA1"), (Outcome{2, 0, 0}));
  EXPECT_EQ(file(ksv::detect::scoreEucJp, "a\xA4\x41\x62"), (Outcome{2, 1, 0}));
  EXPECT_EQ(file(ksv::detect::scoreEucJp, "a\xF5\xFF\x80"), (Outcome{1, 3, 0}));
}

TEST(Iso2022Jp, knows_six_escape_sequences) {
  const Scorer score = ksv::detect::scoreIso2022Jp;
  for (const char* pairs : {"\x1B$B", "\x1B$@", "\x1B$(D"}) {
    EXPECT_EQ(file(score, pairs + "\x24\x22"s), (Outcome{1, 0, 0}));
    EXPECT_EQ(file(score, pairs + "\r\n\x24\x22"s), (Outcome{1, 1, 0}))
        << "a line end is a bad pair";
  }
  for (const char* single : {"\x1B(B", "\x1B(J"}) {
    EXPECT_EQ(file(score, "\x1B$B\x24\x22"s + single + "abc\n"), (Outcome{5, 0, kLf}));
  }
  EXPECT_EQ(file(score, "\x1B(I\xB1\xDF \r\nA\x80"), (Outcome{5, 2, kCrlf}));
}

TEST(Iso2022Jp, counts_all_behind_an_unknown_escape_sequence_as_bad) {
  const Scorer score = ksv::detect::scoreIso2022Jp;
  EXPECT_EQ(file(score, "ab\x1B$Axy\x1B(Bz\n"), (Outcome{2, 7, 0}));
  EXPECT_EQ(file(score, "ab\x1B$(Cx"), (Outcome{2, 2, 0})) << "the third byte is one of them";
  EXPECT_EQ(chunks(score, {"ab\x1B$Axyz", "abc"}), (Outcome{5, 1, 0}))
      << "up to the bytes left over in the chunk";
  EXPECT_EQ(chunks(score, {"\x1B$Axyz\x1B", "$Babc"}), (Outcome{5, 2, 0}))
      << "and an ESC left over there is not carried";
}

TEST(Iso2022Jp, begins_every_chunk_in_Roman) {
  const Scorer score = ksv::detect::scoreIso2022Jp;
  EXPECT_EQ(chunks(score, {"\x1B$B\x24\x22\x24\x22\x24", "\x22\x24\x22"}), (Outcome{5, 0, 0}))
      << "a carried pair, then two letters";
  // Of the two bytes left over the first is passed over, and the ESC is carried.
  EXPECT_EQ(chunks(score, {"abcd\x1B", "$B\x24\x22"}), (Outcome{5, 0, 0}));
  EXPECT_EQ(chunks(score, {"abcd\x1B$", "B\x24\x22"}), (Outcome{6, 0, 0}));
  EXPECT_EQ(chunks(score, {"abcd\x1B$(", "D\x24\x22"}), (Outcome{6, 0, 0}));
  EXPECT_EQ(chunks(score, {"abcd\x1B", "$A\x24\x22"}), (Outcome{5, 0, 0})) << "even an unknown one";
  EXPECT_EQ(chunks(score, {"abcd\x1B", "$(X\x24\x22"}), (Outcome{5, 1, 0}));
}

TEST(Iso2022Jp, keeps_bad_characters_of_a_file_that_ends_in_a_sequence) {
  const Scorer score = ksv::detect::scoreIso2022Jp;
  EXPECT_EQ(file(score, "a\x80\x1B"), (Outcome{0, 1, 0}));
  EXPECT_EQ(file(score, "a\x80\x1B$"), (Outcome{0, 1, 0}));
  EXPECT_EQ(file(score, "a\x80\x1B$("), (Outcome{0, 1, 0}));
  EXPECT_EQ(file(score, "a\x80\x1B$B\x24"), (Outcome{0, 1, 0}));
}

TEST(Iso2022Jp, passes_over_what_is_left_over_and_whole) {
  const Scorer score = ksv::detect::scoreIso2022Jp;
  EXPECT_EQ(chunks(score, {"\x1B$B\x24\x22\x24\x22", "xyz"}), (Outcome{4, 0, 0})) << "a pair";
  EXPECT_EQ(chunks(score, {"abc\rx", "\nyz"}), (Outcome{6, 0, kLf})) << "a CR before another byte";
  EXPECT_EQ(chunks(score, {"abcx\r", "\nyz"}), (Outcome{7, 0, kCrlf}));
  EXPECT_EQ(chunks(score, {"\x1B(I\xB1\xB1\xB1\r", "\nyz"}), (Outcome{6, 0, kCrlf}));
}

TEST(Korean, takes_trails_of_UHC_for_every_lead) {
  EXPECT_EQ(file(ksv::detect::scoreKorean, "\xA5\x41\xA5\xA0\xA5\xAB\xAC\x80"), (Outcome{3, 1, 0}));
}

TEST(Scores, are_cut_off_to_whole_percent_and_0_without_a_good_character) {
  Candidate candidate;
  EXPECT_EQ(candidate.score(), 0);
  candidate.bad = 7;
  EXPECT_EQ(candidate.score(), 0);
  candidate.good = 1999;
  candidate.bad = 1;
  EXPECT_EQ(candidate.score(), 99);
}

}  // namespace
}  // namespace ksv_detect_tests
