// Names, their numbers, and the lists that are found by them.
#include "cconv/rules/names.h"

#include <string>

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

CharsetId idOf(std::string name) { return nameToId(name.data()); }

TEST(Names, that_are_built_in_have_fixed_numbers) {
  const struct {
    const char* name;
    CharsetId id;
  } rows[] = {
      {"shift_jis", 1001},       {"windows31j", 1002},     {"iso-10646-ucs-2", 1003},
      {"iso-10646-ucs-4", 1004}, {"utf-16", 1005},         {"utf-8", 1006},
      {"euc-jp", 1007},          {"euc-jp-fix", 1008},     {"iso-2022-jp", 1009},
      {"shift_jis-2004", 1010},  {"euc-jis-2004", 1011},   {"iso-2022-jp-2004", 1012},
      {"iso-646irv", 2001},      {"jis_x0201latin", 2002}, {"jis_x0201kana", 2003},
      {"jis_c6226-1978", 2004},  {"jis_x0208-1983", 2005}, {"jis_x0208-1990", 2006},
      {"jis_x0212-1990", 2007},  {"nec_extset", 2008},     {"ibm_extset", 2009},
      {"jis-78-83", 2010},       {"jis_x0213", 2011},      {"necibm_extset", 2012},
      {"windows31j-usr", 3001},  {"windowsntj-usr", 3002}, {"oasys_extset", 3003},
      {"oasys2_extset", 3004},   {"chinesegbk", 5000},     {"chinesebig5", 5001},
      {"koreanksc", 5002},       {"gb18030", 5003},
  };
  EXPECT_EQ(std::size(rows), 32u);
  for (const auto& row : rows) {
    EXPECT_EQ(idOf(row.name), row.id) << row.name;
    std::string upper = row.name;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    EXPECT_EQ(idOf(upper), row.id) << upper;
    EXPECT_GE(idOf(std::string(row.name) + "x"), 4000u) << row.name;
    EXPECT_NE(idOf(std::string(row.name) + " "), row.id) << row.name;
  }
}

TEST(Names, that_are_not_built_in_have_4000_and_the_sum_of_bytes_times_positions) {
  EXPECT_EQ(idOf(""), 4000u);
  EXPECT_EQ(idOf("ab"), 4293u);  // 4000 + 97 * 1 + 98 * 2
  EXPECT_EQ(idOf("AB"), 4293u);
  EXPECT_EQ(idOf("ba"), 4000u + 98 + 97 * 2);
  EXPECT_EQ(idOf("\x01"), 4001u);
  EXPECT_EQ(idOf("\xFF\xFE"), 4000u + 255 + 254 * 2) << "bytes are unsigned";
  EXPECT_EQ(idOf("\xC1"), 4000u + 0xC1) << "only A to Z are lower-cased";
  EXPECT_EQ(idOf("[@"), 4000u + 0x5B + 0x40 * 2) << "the neighbours of A and Z stay";
}

TEST(Names, that_differ_can_share_a_number) {
  EXPECT_EQ(idOf("ca"), idOf("ab"));  // 99 + 97 * 2 = 97 + 98 * 2
  EXPECT_NE(idOf("ac"), idOf("ab"));
}

TEST(Names, of_the_longest_length_have_their_sum) {
  const std::string name(259, '\xFF');
  EXPECT_EQ(idOf(name), 4000u + 255u * (259 * 260 / 2));
}

TEST(Names, are_lower_cased_in_the_callers_buffer) {
  char name[] = "Shift_JIS@[`{\xC0";
  nameToId(name);
  EXPECT_STREQ(name, "shift_jis@[`{\xC0");
  char known[] = "SHIFT_JIS";
  EXPECT_EQ(nameToId(known), 1001u);
  EXPECT_STREQ(known, "shift_jis");
}

TEST(ControlCodes, are_the_c0_codes_and_delete_but_for_tab_and_line_ends) {
  for (uint32_t code = 0; code < 0x200; ++code) {
    const bool isControl = code == 127 || (code < 32 && code != 9 && code != 10 && code != 13);
    EXPECT_EQ(isControlCode(code), isControl) << code;
  }
  EXPECT_FALSE(isControlCode(0xFFFFFFFF));
}

TEST(RuleListLimits, append_returns_the_new_count) {
  RuleList<int> list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.append(7), 1);
  EXPECT_EQ(list.append(8), 2);
  EXPECT_EQ(list.count(), 2);
  EXPECT_EQ(list[0], 7);
  EXPECT_EQ(list[1], 8);
}

TEST(RuleListLimits, a_list_of_65535_items_takes_no_more_and_stays_as_it_is) {
  RuleList<int> list;
  for (int i = 1; i <= 65535; ++i) ASSERT_EQ(list.append(i), i);
  EXPECT_EQ(list.append(65536), 0);
  EXPECT_EQ(list.count(), 65535);
  EXPECT_EQ(list[65534], 65535);
}

TEST(RuleListsByNumber, give_the_first_record_with_a_number) {
  RuleLists lists;
  const auto charsetNamed = [](const std::string& name) {
    auto charset = std::make_unique<LoadedCharset>();
    charset->name = name;
    charset->id = idOf(name);
    return charset;
  };
  EXPECT_EQ(lists.findCharset(4293), nullptr);
  EXPECT_TRUE(lists.addCharset(charsetNamed("ab")));
  EXPECT_TRUE(lists.addCharset(charsetNamed("ca")));
  EXPECT_EQ(lists.charsets().count(), 2);
  EXPECT_EQ(lists.findCharset(4293)->name, "ab");

  for (const char* name : {"ca", "ab", "JIS_X0208-1990", "jis_x0208-1990", "NEC_extset"}) {
    EXPECT_TRUE(lists.addGroup(std::make_unique<GroupDef>(name, GroupKind::kBase, 2)));
  }
  EXPECT_EQ(lists.findGroup(4293)->name, "ca");
  EXPECT_EQ(lists.findGroup(2006)->name, "JIS_X0208-1990");
  EXPECT_EQ(lists.findGroup(2008)->name, "NEC_extset");
  for (const CharsetId absent : {0u, 2000u, 2001u, 2012u, 2013u, 4294u, 4294967295u}) {
    EXPECT_EQ(lists.findGroup(absent), nullptr) << absent;
  }
}

TEST(RuleListsByNumber, take_65535_charsets_and_65535_groups) {
  RuleLists lists;
  for (uint32_t i = 0; i < 65535; ++i) {
    auto charset = std::make_unique<LoadedCharset>();
    charset->id = i;
    ASSERT_TRUE(lists.addCharset(std::move(charset)));
  }
  auto another = std::make_unique<LoadedCharset>();
  another->id = 65535;
  EXPECT_FALSE(lists.addCharset(std::move(another)));
  EXPECT_EQ(lists.findCharset(65535), nullptr);
  EXPECT_EQ(lists.charsets().count(), 65535);
  another = std::make_unique<LoadedCharset>();
  another->id = 5;
  EXPECT_FALSE(lists.addCharset(std::move(another)));
  EXPECT_EQ(lists.findCharset(5), lists.charsets()[5].get());
}

using EnumeratedCharsets = RuleBaseTest;

TEST_F(EnumeratedCharsets, come_in_load_order) {
  // Names of files in ascending order; the charsets' own names are not.
  directory_.writeRule("1.xml", charset("", "<name>ZZZ</name>"));
  directory_.writeRule("2.xml", charset("", "<name>Shift_JIS</name>"));
  directory_.writeRule("3.xml", charset("", "<name>aaa</name>"));
  EXPECT_EQ(cconvLoadRule(), 1);
  std::vector<std::string> names;
  char name[KSV_NAME_SIZE];
  for (int32_t i = 0; cconvEnumGroup(i, name) == 1; ++i) names.emplace_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"zzz", "shift_jis", "aaa"}));
  name[0] = '!';
  EXPECT_EQ(cconvEnumGroup(-1, name), 0u);
  EXPECT_EQ(cconvEnumGroup(3, name), 0u);
  EXPECT_EQ(cconvEnumGroup(0, nullptr), 0u);
  EXPECT_EQ(name[0], '!');
}

TEST_F(EnumeratedCharsets, are_found_by_name_without_regard_to_case) {
  directory_.writeRule("a.xml", charset("", "<name>Shift_JIS</name>"));
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_NE(findCharsetByName("SHIFT_jis"), nullptr);
  EXPECT_EQ(findCharsetByName("SHIFT_jis"), findCharsetById(1001));
  EXPECT_EQ(findCharsetByName(nullptr), nullptr);
  EXPECT_EQ(findCharsetByName(""), nullptr);
  EXPECT_EQ(findCharsetByName("Shift_JIS "), nullptr);
}

}  // namespace
}  // namespace ksv::test
