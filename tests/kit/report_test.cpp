#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "kit.h"
#include "ksv.hpp"

namespace ksv_kit_tests {
namespace {

struct Told {
  ksv_loss_kind kind;
  uint32_t codePoint;
  uint64_t count;
  uint64_t offset;
  uint64_t line;
  uint64_t column;

  bool operator==(const Told&) const = default;
};

void PrintTo(const Told& told, std::ostream* out) {
  *out << told.kind << " U+" << std::hex << told.codePoint << std::dec << " x" << told.count
       << " at " << told.offset << ' ' << told.line << ':' << told.column;
}

std::vector<Told> toldBy(const ksv::Report& report) {
  std::vector<Told> told;
  for (size_t i = 0; i < report.size(); ++i)
    told.push_back({static_cast<ksv_loss_kind>(report[i].kind), report[i].code_point,
                    report[i].count, report[i].offset, report[i].line, report[i].column});
  return told;
}

constexpr uint32_t kNone = KSV_NO_CODE_POINT;

TEST(Report, tells_each_loss_once_with_its_first_place) {
  const std::string input = "a\xC3\xA9\n\xF0\x9F\x98\x80\xC3\xA9\xFF\xE3\x81\x82\xFF\xE3\x81";
  const ksv::Report report("UTF-8", "SJIS", input);
  EXPECT_EQ(toldBy(report), (std::vector<Told>{{KSV_LOSS_UNMAPPABLE, 0xE9, 2, 1, 1, 2},
                                               {KSV_LOSS_UNMAPPABLE, 0x1F600, 1, 4, 2, 1},
                                               {KSV_LOSS_INVALID, kNone, 2, 10, 2, 3},
                                               {KSV_LOSS_TRUNCATED, kNone, 1, 15, 2, 4}}));
  const ksv_loss_totals totals = report.totals();
  EXPECT_EQ(totals.bytes, input.size());
  EXPECT_EQ(totals.characters, 6u);
  EXPECT_EQ(totals.unmappable, 3u);
  EXPECT_EQ(totals.invalid, 3u);
  EXPECT_STREQ(report[1].character_class, "emoji");
  EXPECT_EQ(report[2].bytes[0], 0xFF);
}

TEST(Report, tells_what_each_policy_would_write) {
  const ksv::Report report("UTF-8", "SJIS", "\xC3\xA9\xFF");
  EXPECT_EQ(report.outcome(0, KSV_SKIP), "");
  EXPECT_EQ(report.outcome(0, KSV_REPLACE), "?");
  EXPECT_EQ(report.outcome(0, KSV_HEX_REFERENCE), "&#xE9;");
  EXPECT_EQ(report.outcome(0, KSV_DECIMAL_REFERENCE), "&#233;");
  EXPECT_EQ(report.outcome(0, KSV_ESCAPE), "\\u{E9}");
  EXPECT_EQ(report.outcome(0, KSV_PERCENT), "%C3%A9");
  EXPECT_EQ(report.outcome(0, KSV_LOOK_ALIKE), "e");
  EXPECT_EQ(report.outcome(0, KSV_FAIL), std::nullopt);
  EXPECT_EQ(report.outcome(1, KSV_ESCAPE), "\\xFF");
  EXPECT_EQ(report.outcome(1, KSV_LOOK_ALIKE), std::nullopt);
  EXPECT_EQ(report.outcome(2, KSV_SKIP), std::nullopt);
}

// The wave dash of JIS goes into Shift_JIS and comes back as the one of Windows.
TEST(Report, tells_the_characters_that_return_as_others) {
  const ksv::Report report("UTF-8", "SJIS", "a\xE3\x80\x9C\xE3\x80\x9C\xEF\xBD\x9E");
  ASSERT_EQ(toldBy(report), (std::vector<Told>{{KSV_LOSS_RETURNS, 0x301C, 2, 1, 1, 2}}));
  EXPECT_STREQ(report[0].returns_as, "\xEF\xBD\x9E");
  EXPECT_EQ(report.totals().return_as_other, 2u);
  // By the convention of JIS it is the other one that cannot be written at all.
  const ksv::Report jis("UTF-8", "SJIS", "a\xE3\x80\x9C\xE3\x80\x9C\xEF\xBD\x9E",
                        ksv::Options().profile("jis"));
  EXPECT_EQ(toldBy(jis), (std::vector<Told>{{KSV_LOSS_UNMAPPABLE, 0xFF5E, 1, 7, 1, 4}}));
}

TEST(Report, finds_nothing_where_nothing_is_lost) {
  EXPECT_EQ(ksv::Report("SJIS", "UTF-8", "\x82\xA0\x81\x60\r\n").size(), 0u);
  EXPECT_EQ(ksv::Report("SJIS", "UTF-16", "\x82\xA0").table(), "");
  EXPECT_EQ(ksv::Report("UTF-8", "SJIS", "").size(), 0u);
}

TEST(Report, is_the_same_wherever_the_text_is_cut) {
  const std::string input =
      "a\xE3\x80\x9C\xC3\xA9\r\n\xFF\xE3\x81\x8B\xE3\x82\x99\xF0\x9F\x98\x80\xC3\xA9";
  const ksv::Report whole("UTF-8", "EUC-JP", input);
  for (size_t piece = 1; piece < 6; ++piece) {
    ksv::Report report("UTF-8", "EUC-JP", ksv::Options());
    for (size_t at = 0; at < input.size(); at += piece)
      report.feed(std::string_view(input).substr(at, piece));
    report.finish();
    EXPECT_EQ(toldBy(report), toldBy(whole)) << piece;
    EXPECT_EQ(report.json(), whole.json()) << piece;
  }
}

// Exactly the problems that a conversion comes upon.
TEST(Report, agrees_with_what_the_conversion_does) {
  for (const char* const input : {"ab\xC3\xA9", "\xE3\x81\x82", "a\xFFz", "\xE3\x81"}) {
    const ksv::Report report("UTF-8", "SJIS", input);
    const ksv::Attempt attempt = ksv::try_convert("UTF-8", "SJIS", input);
    ASSERT_EQ(report.size() == 0, bool{attempt}) << input;
    if (attempt) continue;
    EXPECT_EQ(report[0].offset, attempt.error.offset);
    EXPECT_EQ(report[0].line, attempt.error.line);
    EXPECT_EQ(report[0].column, attempt.error.column);
    EXPECT_EQ(report[0].code_point, attempt.error.code_point);
  }
}

// Charsets that share a set hand its codes on, those without a character as well.
TEST(Report, tells_no_loss_of_codes_that_are_handed_on) {
  const struct {
    const char* from;
    const char* to;
    std::string front;
    int first;
    int last;
  } pairs[] = {{"OASYS_ONLINE", "ISO-2022-JP", "", 0x21, 0x7E},
               {"ISO-2022-JP", "EUC-JP", "\x1B$B", 0x21, 0x7E},
               {"EUC-JP", "ISO-2022-JP", "", 0xA1, 0xFE},
               {"SJIS", "EUC-JP", "", 0x81, 0x9F},
               {"EUC-JP", "UTF-8", "", 0xA1, 0xFE},
               {"CP932", "SJIS", "", 0x81, 0xFC}};
  for (const auto& [from, to, front, first, last] : pairs) {
    int whole = 0;
    for (int lead = first; lead <= last; ++lead) {
      for (int trail = first; trail <= last; trail += 3) {
        const std::string text = front + static_cast<char>(lead) + static_cast<char>(trail);
        const ksv_loss_totals totals = ksv::Report(from, to, text).totals();
        const bool isWhole = convert(from, to, text).result == KSV_OK;
        EXPECT_EQ(totals.invalid + totals.unmappable == 0, isWhole)
            << from << " to " << to << std::hex << ' ' << lead << ' ' << trail;
        whole += isWhole ? 1 : 0;
      }
    }
    EXPECT_GT(whole, 200) << from;
  }
}

TEST(Report, is_one_json_object_and_a_table) {
  const ksv::Report report("UTF-8", "SJIS", "x\xC3\xA9\x01\xFF\"");
  EXPECT_EQ(report.json(),
            "{\"source\":\"UTF-8\",\"target\":\"Shift_JIS\",\"bytes\":6,\"characters\":4,"
            "\"invalid\":1,\"unmappable\":1,\"return_as_other\":0,\"losses\":["
            "{\"kind\":\"not in target\",\"code_point\":\"U+00E9\",\"character\":\"\xC3\xA9\","
            "\"class\":\"letter\",\"bytes\":\"C3 A9\",\"count\":1,\"offset\":1,\"line\":1,"
            "\"column\":2,\"becomes\":{\"skip\":\"\",\"replace\":\"?\",\"hex\":\"&#xE9;\","
            "\"decimal\":\"&#233;\",\"escape\":\"\\\\u{E9}\",\"percent\":\"%C3%A9\","
            "\"look-alike\":\"e\",\"built-in\":\"?\"}},"
            "{\"kind\":\"invalid\",\"bytes\":\"FF\",\"count\":1,\"offset\":4,\"line\":1,"
            "\"column\":4,\"becomes\":{\"skip\":\"\",\"replace\":\"?\",\"hex\":\"&#xFF;\","
            "\"decimal\":\"&#255;\",\"escape\":\"\\\\xFF\",\"percent\":\"%FF\"}}]}");
  const std::string table = report.table();
  EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 3);
  EXPECT_NE(table.find("U+00E9 \xC3\xA9, letter, looks like e"), std::string::npos) << table;
}

TEST(Report, has_nothing_to_read_before_it_is_finished) {
  ksv_report* report = nullptr;
  ASSERT_EQ(ksv_report_new("UTF-8", "SJIS", nullptr, &report, nullptr), KSV_OK);
  EXPECT_EQ(ksv_report_feed(report, "\xFF", 1, nullptr), KSV_OK);
  EXPECT_EQ(ksv_report_json(report), nullptr);
  EXPECT_EQ(ksv_report_count(report), 0u);
  EXPECT_EQ(ksv_report_finish(report, nullptr), KSV_OK);
  EXPECT_EQ(ksv_report_count(report), 1u);
  EXPECT_EQ(ksv_report_feed(report, "a", 1, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_report_finish(report, nullptr), KSV_BAD_ARGUMENT);
  ksv_report_free(report);
  EXPECT_EQ(ksv_report_new("UTF-8", "no such", nullptr, &report, nullptr), KSV_UNKNOWN_CHARSET);
  EXPECT_EQ(report, nullptr);
  EXPECT_EQ(ksv_report_feed(nullptr, "a", 1, nullptr), KSV_BAD_ARGUMENT);
}

}  // namespace
}  // namespace ksv_kit_tests
