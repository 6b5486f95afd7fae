// Loading of rule files: every element and attribute, and where it is looked for.
#include "cconv/rules/rule_loader.h"

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

class RuleLoading : public RuleBaseTest {
 protected:
  // Writes the charset file, loads it, and gives the charset of that name.
  const CharsetDef* load(const std::string& body, const std::string& name,
                         const TextForm& form = kUtf16Little) {
    directory_.writeRule("charset.xml", body, form);
    EXPECT_TRUE(loadRuleFile("charset.xml"));
    return findCharsetByName(name.c_str());
  }

  bool loads(const std::string& body) {
    directory_.writeRule("charset.xml", body);
    return loadRuleFile("charset.xml");
  }

  static std::vector<std::string> groupNames(const CharsetDef& charset) {
    std::vector<std::string> names;
    for (const GroupDef* group : charset.groups) names.push_back(group->name);
    return names;
  }

  static std::vector<std::string> tableFiles(const TableList& tables) {
    std::vector<std::string> files;
    for (const auto& table : tables) files.push_back(table->fileName);
    return files;
  }

  // The only group of a charset whose group element and group file are given.
  const GroupDef* onlyGroup(const std::string& element, const std::string& group,
                            const std::string& declarations = "") {
    directory_.writeRule("subset.xml", group);
    const CharsetDef* const found = load(
        charset(entity("subset", "subset.xml") + declarations, "<name>cs</name>" + element), "cs");
    EXPECT_NE(found, nullptr);
    if (found == nullptr) return nullptr;
    EXPECT_EQ(found->groups.count(), 1);
    return found->groups[0];
  }

  using Names = std::vector<std::string>;
};

TEST_F(RuleLoading, gives_a_charset_its_name_and_codecs) {
  const CharsetDef* const found = load(
      "<charset><name>Shift_JIS</name>"
      "<rule construle=\"constShift_JIS\" destrule=\"destShift_JIS\"/></charset>",
      "shift_jis");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->name, "shift_jis") << "lower-cased";
  EXPECT_EQ(found->id, 1001u);
  EXPECT_EQ(found->construle, "constShift_JIS") << "its case is kept";
  EXPECT_EQ(found->destrule, "destShift_JIS");
  EXPECT_EQ(found->groups.count(), 0);
  EXPECT_EQ(found->destTables.count(), 0);
}

TEST_F(RuleLoading, works_in_every_encoding_and_byte_order) {
  int number = 0;
  for (const TextForm& form : kAllForms) {
    SCOPED_TRACE(form.label);
    const std::string name = "cs" + std::to_string(++number);
    directory_.writeRule("subset.xml", baseGroup("set" + name, "<srtable>&table;</srtable>"), form);
    const CharsetDef* const found =
        load(charset(entity("subset", "subset.xml") + entity("table", "t.txt"),
                     "<name>" + name +
                         "</name><baseset>&subset;"
                         "<dstable bytenum=\"2\">&table;</dstable></baseset>"),
             name, form);
    ASSERT_NE(found, nullptr);
    const GroupDef& group = *found->groups[0];
    const CodeTable* const destination = (*found->destTables[0])[0].get();
    for (const CodeTable* table : {&group.toUcs, &group.fromUcs, destination}) {
      EXPECT_EQ(table->fileName, "t.txt");
      EXPECT_EQ(table->sourceEncoding, form.kind);
      EXPECT_EQ(table->sourceBigEndian, form.bigEndian);
    }
  }
}

TEST_F(RuleLoading, reads_a_group_file_as_its_charset_file_unless_it_says_otherwise) {
  directory_.write("plain.xml", encode(kUcs2Big, baseGroup("plain", "<srtable>&table;</srtable>")));
  directory_.writeRule("other.xml", baseGroup("other", "<srtable>&table;</srtable>"), kUcs4Little);
  const CharsetDef* const found =
      load(charset(entity("first", "plain.xml") + entity("second", "other.xml") +
                       entity("table", "t.txt"),
                   "<name>cs</name><baseset>&first;</baseset><baseset>&second;</baseset>"),
           "cs", kUcs2Big);
  ASSERT_NE(found, nullptr);
  ASSERT_EQ(groupNames(*found), (Names{"plain", "other"}));
  for (const GroupDef* group : found->groups) {
    EXPECT_EQ(group->toUcs.sourceEncoding, TextEncodingKind::kUcs2) << "as the declaring file";
    EXPECT_TRUE(group->fromUcs.sourceBigEndian);
  }
}

TEST_F(RuleLoading, without_a_rule_element_leaves_the_codecs_empty) {
  const CharsetDef* const found = load("<charset><name>cs</name></charset>", "cs");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->construle, "");
  EXPECT_EQ(found->destrule, "");
}

TEST_F(RuleLoading, searches_destrule_behind_the_word_construle) {
  const CharsetDef* const found = load(
      "<charset><name>cs</name><rule construle=\"c\"></rule>"
      "<other destrule=\"d\"/></charset>",
      "cs");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->construle, "c");
  EXPECT_EQ(found->destrule, "d") << "however far behind";
  EXPECT_FALSE(loads("<charset><name>x</name><rule destrule=\"d\" construle=\"c\"/></charset> "));
}

TEST_F(RuleLoading, keeps_blanks_of_a_name) {
  EXPECT_NE(load("<charset><name> a b </name></charset>", " a b "), nullptr);
  EXPECT_NE(load("<charset><name >ab</name></charset>", ">ab"), nullptr);
}

TEST_F(RuleLoading, fails_without_charset_or_name) {
  EXPECT_FALSE(loads("<name>cs</name>"));
  EXPECT_FALSE(loads("<charsets><name>cs</name></charsets>"));
  EXPECT_FALSE(loads("<charset></charset>"));
  EXPECT_FALSE(loads("<name>cs</name><charset></charset>"));
  EXPECT_FALSE(loads("<charset><name>cs</charset>"));
  EXPECT_FALSE(loads(""));
  EXPECT_FALSE(loadRuleFile("missing.xml"));
  EXPECT_EQ(ruleBase.lists->charsets().count(), 0);
}

TEST_F(RuleLoading, fails_with_a_rule_that_lacks_a_name) {
  for (const char* rule : {"<rule x=\"1\"/>", "<rule construle=\"c\"/>", "<rule destrule=\"d\"/>",
                           "<rule construle=c destrule=d/>", "<rule construle='c' destrule='d'/>",
                           "<rule construle=\"c\" destrule=/>", "<rule></rule>"}) {
    EXPECT_FALSE(loads("<charset><name>cs</name>" + std::string(rule) + "</charset>")) << rule;
  }
  EXPECT_EQ(ruleBase.lists->charsets().count(), 0);
}

TEST_F(RuleLoading, accepts_a_charset_that_is_there_without_adding_or_reading_on) {
  ASSERT_NE(load("<charset><name>Shift_JIS</name></charset>", "shift_jis"), nullptr);
  EXPECT_TRUE(loads("<charset><name>SHIFT_JIS</name><rule bad=\"1\"/></charset>"));
  EXPECT_EQ(ruleBase.lists->charsets().count(), 1);
  ASSERT_NE(load("<charset><name>ab</name></charset>", "ab"), nullptr);
  EXPECT_TRUE(loads("<charset><name>ca</name></charset>")) << "the number of ab";
  EXPECT_EQ(findCharsetByName("ca")->name, "ab");
}

TEST_F(RuleLoading, reads_the_elements_of_a_base_group) {
  const GroupDef* const group =
      onlyGroup("<baseset>&subset;</baseset>",
                "<subseta><name>JIS_X0208-1990</name><lang domain=\"ja\"/><code bytenum=\"3\"/>"
                "<range first=\"21\" last=\"7E\"/><range>8140-9FFC</range>"
                "<defined>8140-84BE 8740</defined><srtable>&table;</srtable></subseta>",
                entity("table", "JIS0208.TXT"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->name, "JIS_X0208-1990");
  EXPECT_EQ(group->id, 2006u);
  EXPECT_EQ(group->kind, GroupKind::kBase);
  EXPECT_EQ(group->bytesPerCode, 3);
  EXPECT_EQ(group->fromUcs.valueBytes, 3);
  EXPECT_EQ(group->toUcs.valueBytes, 4);
  EXPECT_EQ(group->lang, "ja");
  EXPECT_EQ(group->basedon, "");
  ASSERT_EQ(group->defined.ranges.count(), 2);
  EXPECT_EQ(group->defined.ranges[0].first, 0x8140u);
  EXPECT_EQ(group->defined.ranges[0].last, 0x84BEu);
  EXPECT_EQ(group->defined.ranges[1].first, 0x8740u);
  EXPECT_EQ(group->defined.ranges[1].last, 0x8740u);
  EXPECT_EQ(group->defined.low, 0u);
  EXPECT_EQ(group->defined.high, 0x84BEu);
  EXPECT_EQ(group->toUcs.fileName, "JIS0208.TXT") << "its case is kept";
  EXPECT_EQ(group->fromUcs.fileName, "JIS0208.TXT");
}

TEST_F(RuleLoading, reads_the_elements_of_a_difference_group) {
  const GroupDef* const group =
      onlyGroup("<diffset>&subset;</diffset>",
                "<subsetb><name>JIS-78-83</name><lang domain=\"ja\"/>"
                "<codeb bytenum=\"2\" basedon=\"JIS_C6226-1978\"/>"
                "<defined>3021-3022</defined><srtable>&table;</srtable></subsetb>",
                entity("table", "diff.txt"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->id, 2010u);
  EXPECT_EQ(group->kind, GroupKind::kDifference);
  EXPECT_EQ(group->basedon, "JIS_C6226-1978");
  EXPECT_EQ(group->bytesPerCode, 2);
  EXPECT_EQ(group->lang, "ja");
  EXPECT_EQ(group->defined.high, 0x3022u);
  EXPECT_EQ(group->toUcs.fileName, "diff.txt");
}

TEST_F(RuleLoading, reads_the_elements_of_a_user_set) {
  const GroupDef* const group =
      onlyGroup("<eudcset>&subset;</eudcset>",
                "<name>WINDOWS31J-usr</name><codec bytenum=\"2\"/><range>F040-F9FC</range>"
                "<defrange start=\"F040\" number=\"758\"/>"
                "<lang domain=\"ja\"/><defined>1-2</defined><srtable>&table;</srtable>",
                entity("table", "t.txt"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->id, 3001u);
  EXPECT_EQ(group->kind, GroupKind::kUser);
  EXPECT_EQ(group->defStart, 0xF040);
  EXPECT_EQ(group->defNumber, 0x758);
  EXPECT_EQ(group->lang, "") << "not read";
  EXPECT_EQ(group->defined.ranges.count(), 0) << "not read";
  EXPECT_EQ(group->toUcs.fileName, "") << "not read";
  EXPECT_EQ(findCharsetByName("cs")->destTables.count(), 0);
  EXPECT_TRUE(findCharsetByName("cs")->hasUserGroups());
}

TEST_F(RuleLoading, fills_in_what_a_group_leaves_out) {
  const GroupDef* const group = onlyGroup(
      "<baseset>&subset;</baseset>", "<subseta><name>s</name><lang></lang><code></code></subseta>");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->lang, "");
  EXPECT_EQ(group->bytesPerCode, 2);
  EXPECT_EQ(group->defined.ranges.count(), 0);
  EXPECT_EQ(group->defined.high, 0u);
  EXPECT_EQ(group->toUcs.fileName, "");
  uint32_t value = 0;
  EXPECT_TRUE(tableLookup(group->toUcs, 0x3042, value)) << "every code is itself";
  EXPECT_EQ(value, 0x3042u);
}

TEST_F(RuleLoading, fills_in_what_a_user_set_leaves_out) {
  const GroupDef* const group =
      onlyGroup("<eudcset>&subset;</eudcset>", "<name>s</name><codec x=\"\"/>");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->bytesPerCode, 2);
  EXPECT_EQ(group->defStart, 0);
  EXPECT_EQ(group->defNumber, 0);
}

TEST_F(RuleLoading, keeps_16_bits_of_a_user_range) {
  const GroupDef* const group =
      onlyGroup("<eudcset>&subset;</eudcset>",
                "<name>s</name><codec x=\"\"/><defrange start=\" \t1F040g\" number=\"\"/>");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->defStart, 0xF040);
  EXPECT_EQ(group->defNumber, 0);
}

TEST_F(RuleLoading, takes_attributes_of_other_elements_behind_defrange_too) {
  const GroupDef* const group =
      onlyGroup("<eudcset>&subset;</eudcset>",
                "<name>s</name><codec x=\"\"/><defrange number=\"9\"/><x start=\"8\"/>");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->defStart, 8);
  EXPECT_EQ(group->defNumber, 9);
}

TEST_F(RuleLoading, reads_bytenum_as_decimal_on_code_and_hexadecimal_on_dstable) {
  const GroupDef* const group =
      onlyGroup("<baseset>&subset;<dstable bytenum=\"10\">&table;</dstable></baseset>",
                "<subseta><name>s</name><lang x=\"\"/><code bytenum=\"10\"/></subseta>",
                entity("table", "t.txt"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->bytesPerCode, 10);
  const CodeTable& table = *(*findCharsetByName("cs")->destTables[0])[0];
  EXPECT_EQ(table.valueBytes, 16);
  EXPECT_EQ(table.keyColumn, CodeTable::kSecondColumn);
}

TEST_F(RuleLoading, ignores_bytenum_behind_the_code_element) {
  const GroupDef* const group =
      onlyGroup("<baseset>&subset;</baseset>",
                "<subseta><name>s</name><lang x=\"\"/><code></code><x bytenum=\"7\"/></subseta>");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->bytesPerCode, 2);
}

TEST_F(RuleLoading, reads_bytenum_of_a_dstable_that_does_not_end_with_the_word) {
  directory_.writeRule("subset.xml", baseGroup("s"));
  const CharsetDef* const found =
      load(charset(entity("subset", "subset.xml") + entity("table", "t.txt"),
                   "<name>cs</name><baseset>&subset;<dstable>&table; bytenum=</dstable>"
                   "<dstable>&table; bytenum= </dstable><x y=\"10\"/></baseset>"),
           "cs");
  ASSERT_NE(found, nullptr);
  const TableList& tables = *found->destTables[0];
  ASSERT_EQ(tables.count(), 2);
  EXPECT_EQ(tables[0]->valueBytes, 2);
  EXPECT_EQ(tables[1]->valueBytes, 16) << "the quotes may stand behind the element";
}

TEST_F(RuleLoading, keeps_16_bits_of_any_bytenum) {
  const struct {
    const char* written;
    uint16_t decimal;
    uint16_t hexadecimal;
  } rows[] = {{"0", 0, 0},          {"", 0, 0},       {"x", 0, 0},
              {" 3", 3, 3},         {"3x", 3, 3},     {"65535", 65535, 0x5535},
              {"65538", 2, 0x5538}, {"-1", 65535, 0}, {"0x4", 0, 0},
              {"1F", 1, 0x1F}};
  int number = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.written);
    const std::string name = "cs" + std::to_string(++number);
    const std::string value = "bytenum=\"" + std::string(row.written) + "\"";
    directory_.writeRule("subset.xml", "<subseta><name>s" + name + "</name><lang x=\"\"/><code " +
                                           value + "/></subseta>");
    const CharsetDef* const found =
        load(charset(entity("subset", "subset.xml") + entity("table", "t.txt"),
                     "<name>" + name + "</name><baseset>&subset;<dstable " + value +
                         ">&table;</dstable></baseset>"),
             name);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->groups[0]->bytesPerCode, row.decimal);
    EXPECT_EQ((*found->destTables[0])[0]->valueBytes, row.hexadecimal);
  }
}

TEST_F(RuleLoading, tries_groups_in_the_order_of_their_elements) {
  directory_.writeRule("a.xml", baseGroup("sa"));
  directory_.writeRule("b.xml", "<subsetb><name>sb</name><lang x=\"\"/><codeb x=\"\"/></subsetb>");
  directory_.writeRule("c.xml", "<name>sc</name><codec x=\"\"/>");
  const std::string declarations =
      entity("alpha", "a.xml") + entity("beta", "b.xml") + entity("gamma", "c.xml");
  const CharsetDef* found =
      load(charset(declarations,
                   "<name>c1</name><diffset>&beta;</diffset><baseset>&alpha;</baseset>"
                   "<eudcset>&gamma;</eudcset>"),
           "c1");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(groupNames(*found), (Names{"sb", "sa", "sc"}));
  EXPECT_EQ(found->destTables.count(), 2) << "none for the user set";
  found = load(charset(declarations,
                       "<name>c2</name><baseset>&alpha;</baseset><diffset>&beta;</diffset>"
                       "<baseset>&alpha;</baseset>"),
               "c2");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(groupNames(*found), (Names{"sa", "sb", "sa"})) << "one may come twice";
}

TEST_F(RuleLoading, looks_for_the_user_set_behind_the_last_group_only) {
  directory_.writeRule("a.xml", baseGroup("sa"));
  directory_.writeRule("c.xml", "<name>sc</name><codec x=\"\"/>");
  const CharsetDef* const found =
      load(charset(entity("alpha", "a.xml") + entity("gamma", "c.xml"),
                   "<name>cs</name><eudcset>&gamma;</eudcset><baseset>&alpha;</baseset>"),
           "cs");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(groupNames(*found), Names{"sa"});
}

TEST_F(RuleLoading, finds_groups_in_front_of_the_charset_element_too) {
  directory_.writeRule("a.xml", baseGroup("sa"));
  const CharsetDef* const found = load(
      entity("alpha", "a.xml") + "<baseset>&alpha;</baseset><charset><name>cs</name></charset>",
      "cs");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(groupNames(*found), Names{"sa"});
}

TEST_F(RuleLoading, attaches_the_destination_tables_inside_their_group) {
  directory_.writeRule("a.xml", baseGroup("sa"));
  directory_.writeRule("b.xml", baseGroup("sb"));
  const CharsetDef* const found =
      load(charset(entity("alpha", "a.xml") + entity("beta", "b.xml") + entity("one", "1.txt") +
                       entity("two", "2.txt") + entity("three", "3.txt"),
                   "<name>cs</name>"
                   "<baseset>&alpha;<dstable bytenum=\"3\">&one;</dstable>"
                   "<dstable>&two;</dstable></baseset>"
                   "<dstable bytenum=\"4\">&three;</dstable>"
                   "<baseset>&beta;</baseset>"),
           "cs");
  ASSERT_NE(found, nullptr);
  ASSERT_EQ(found->destTables.count(), 2);
  const TableList& first = *found->destTables[0];
  EXPECT_EQ(tableFiles(first), (Names{"1.txt", "2.txt"}));
  EXPECT_EQ(first[0]->valueBytes, 3);
  EXPECT_EQ(first[1]->valueBytes, 2);
  EXPECT_EQ(tableFiles(*found->destTables[1]), Names{});
}

TEST_F(RuleLoading, skips_a_destination_table_that_cannot_be_resolved) {
  directory_.writeRule("a.xml", baseGroup("sa"));
  const CharsetDef* const found =
      load(charset(entity("alpha", "a.xml") + entity("two", "2.txt"),
                   "<name>cs</name><baseset>&alpha;<dstable>&undeclared;</dstable>"
                   "<dstable>none</dstable><dstable>&two;</dstable></baseset>"),
           "cs");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(tableFiles(*found->destTables[0]), Names{"2.txt"});
}

TEST_F(RuleLoading, shares_a_group_among_charsets_and_keeps_the_first_definition) {
  directory_.writeRule("a.xml", baseGroup("Shared", "<defined>1-2</defined>"));
  const std::string declarations = entity("alpha", "a.xml");
  const CharsetDef* const first =
      load(charset(declarations, "<name>c1</name><baseset>&alpha;</baseset>"), "c1");
  directory_.writeRule("a.xml", baseGroup("SHARED", "<defined>1-9</defined>"));
  const CharsetDef* const second =
      load(charset(declarations, "<name>c2</name><baseset>&alpha;</baseset>"), "c2");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->groups[0], second->groups[0]);
  EXPECT_EQ(second->groups[0]->name, "Shared");
  EXPECT_EQ(second->groups[0]->defined.high, 2u);
  EXPECT_EQ(ruleBase.lists->groups().count(), 1);
}

TEST_F(RuleLoading, reads_the_group_table_from_the_declarations_of_the_charset_file) {
  const GroupDef* const group =
      onlyGroup("<baseset>&subset;</baseset>",
                entity("table", "wrong.txt") + baseGroup("s", "<srtable>&table;</srtable>"),
                entity("table", "right.txt"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->toUcs.fileName, "right.txt");
}

TEST_F(RuleLoading, passes_over_ranges_and_looks_for_codes_and_table_behind_them) {
  const GroupDef* const group =
      onlyGroup("<baseset>&subset;</baseset>",
                baseGroup("s",
                          "<defined>1-2</defined><srtable>&table;</srtable>"
                          "<range>3-4</range><range>5-6</range>"),
                entity("table", "t.txt"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->defined.ranges.count(), 0);
  EXPECT_EQ(group->toUcs.fileName, "");
}

TEST_F(RuleLoading, looks_for_the_table_behind_the_defined_codes) {
  const GroupDef* const group = onlyGroup(
      "<baseset>&subset;</baseset>",
      baseGroup("s", "<srtable>&table;</srtable><defined>1-2</defined>"), entity("table", "t.txt"));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->defined.high, 2u);
  EXPECT_EQ(group->toUcs.fileName, "");
}

TEST_F(RuleLoading, does_not_pass_over_ranges_of_a_difference_group) {
  const GroupDef* const group = onlyGroup("<diffset>&subset;</diffset>",
                                          "<subsetb><name>s</name><lang x=\"\"/><codeb x=\"\"/>"
                                          "<defined>1-2</defined><range>3-4</range></subsetb>");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->defined.high, 2u);
}

std::string rangesOf(std::string_view text) {
  const RuleText rules = cleaned(text);
  RangeSet set;
  EXPECT_TRUE(parseDefinedRanges({rules, 0, rules.chars.size()}, set));
  std::string ranges;
  char range[64];
  for (const CodeRange& r : set.ranges) {
    std::snprintf(range, sizeof range, "%X-%X ", r.first, r.last);
    ranges.append(range);
  }
  EXPECT_EQ(set.low, 0u);
  std::snprintf(range, sizeof range, "high %X", set.high);
  return ranges + range;
}

TEST(DefinedRanges, are_single_codes_and_pairs_with_a_hyphen) {
  EXPECT_EQ(rangesOf(""), "high 0");
  EXPECT_EQ(rangesOf("8140-84BE 8740"), "8140-84BE 8740-8740 high 84BE");
  EXPECT_EQ(rangesOf("8740"), "8740-8740 high 0") << "single codes do not raise it";
  EXPECT_EQ(rangesOf("20-7e,a1-df;3"), "20-7E A1-DF 3-3 high DF");
  EXPECT_EQ(rangesOf("5-6 1-2"), "5-6 1-2 high 6");
  EXPECT_EQ(rangesOf("9-1"), "9-1 high 1") << "taken as written";
}

TEST(DefinedRanges, need_the_hyphen_right_behind_the_first_number) {
  EXPECT_EQ(rangesOf("1 -2"), "1-1 2-2 high 0");
  EXPECT_EQ(rangesOf("1- 2"), "1-2 high 2");
  EXPECT_EQ(rangesOf("1-\r\n2 3"), "1-2 3-3 high 2");
  EXPECT_EQ(rangesOf("-5"), "5-5 high 0");
  EXPECT_EQ(rangesOf("1-2-3"), "1-2 3-3 high 2");
}

TEST(DefinedRanges, without_a_second_number_are_single_codes) {
  EXPECT_EQ(rangesOf("5-"), "5-5 high 0");
  EXPECT_EQ(rangesOf("5- xyz"), "5-5 high 0");
}

TEST(DefinedRanges, keep_the_last_eight_digits) {
  EXPECT_EQ(rangesOf("123456789-FFFFFFFF"), "23456789-FFFFFFFF high FFFFFFFF");
}

TEST(DefinedRanges, end_with_the_span) {
  const RuleText rules = cleaned("1-2 3-4");
  RangeSet set;
  EXPECT_TRUE(parseDefinedRanges({rules, 0, 6}, set));
  ASSERT_EQ(set.ranges.count(), 2);
  EXPECT_EQ(set.ranges[1].last, 3u);
}

TEST(DefinedRanges, number_65535_at_most) {
  std::string text;
  for (int i = 0; i < 65535; ++i) text.append("1 ");
  RangeSet set;
  const RuleText full = cleaned(text);
  EXPECT_TRUE(parseDefinedRanges({full, 0, full.chars.size()}, set));
  EXPECT_EQ(set.ranges.count(), 65535);
  const RuleText one = cleaned("1 ");
  EXPECT_FALSE(parseDefinedRanges({one, 0, 2}, set));
  EXPECT_EQ(set.ranges.count(), 65535);
}

// A charset file with a good first and a bad second group.
class FailedLoading : public RuleLoading {
 protected:
  void expectRejected(const std::string& element, const std::string& group,
                      const std::string& declarations = "") {
    SCOPED_TRACE(element + "\n" + group + "\n" + declarations);
    const std::string number = std::to_string(++number_);
    directory_.writeRule("good.xml", baseGroup("good" + number));
    directory_.writeRule("bad.xml", group);
    EXPECT_FALSE(
        loads(charset(entity("fine", "good.xml") + entity("poor", "bad.xml") + declarations,
                      "<name>cs" + number + "</name><baseset>&fine;</baseset>" + element)));
    EXPECT_EQ(ruleBase.lists->charsets().count(), 0);
    EXPECT_EQ(ruleBase.lists->groups().count(), number_) << "the first member stays registered";
    char name[] = "set";
    EXPECT_EQ(findGroupById(nameToId(name)), nullptr);
  }

  int number_ = 0;
};

TEST_F(FailedLoading, by_a_group_without_a_file) {
  const std::string good = baseGroup("set");
  expectRejected("<baseset>none</baseset>", good);
  expectRejected("<baseset>&poor</baseset>", good);
  expectRejected("<baseset>&undeclared;</baseset>", good);
  expectRejected("<diffset>&undeclared;</diffset>", good);
  expectRejected("<eudcset>&undeclared;</eudcset>", good);
  expectRejected("<baseset>&absent;</baseset>", good, entity("absent", "missing.xml"));
  expectRejected("<baseset>&single;</baseset>", good, "<!ENTITY single SYSTEM 'bad.xml'>");
  expectRejected("<baseset>&poor;</baseset>", "");
}

TEST_F(FailedLoading, by_a_base_group_without_a_required_element) {
  const std::string element = "<baseset>&poor;</baseset>";
  const std::string name = "<name>set</name>";
  const std::string lang = "<lang domain=\"ja\"/>";
  const std::string code = "<code bytenum=\"2\"/>";
  expectRejected(element, name + lang + code);
  expectRejected(element, "<subsetb>" + name + lang + code + "</subsetb>");
  expectRejected(element, "<subseta>" + lang + code + "</subseta>");
  expectRejected(element, "<subseta>" + name + code + "</subseta>");
  expectRejected(element, "<subseta>" + name + lang + "</subseta>");
  expectRejected(element, "<subseta>" + name + lang + "<codeb bytenum=\"2\"/></subseta>");
  expectRejected(element, "<subseta>" + lang + name + code + "</subseta>");
  expectRejected(element, "<subseta>" + name + code + lang + "</subseta>");
  expectRejected(element, name + "<subseta>" + lang + code + "</subseta>");
}

TEST_F(FailedLoading, by_a_difference_group_without_a_required_element) {
  const std::string element = "<diffset>&poor;</diffset>";
  const std::string name = "<name>set</name>";
  const std::string lang = "<lang domain=\"ja\"/>";
  const std::string code = "<codeb bytenum=\"2\"/>";
  expectRejected(element, "<subseta>" + name + lang + code + "</subseta>");
  expectRejected(element, "<subsetb>" + lang + code + "</subsetb>");
  expectRejected(element, "<subsetb>" + name + code + "</subsetb>");
  expectRejected(element, "<subsetb>" + name + lang + "<code bytenum=\"2\"/></subsetb>");
}

TEST_F(FailedLoading, by_a_user_set_without_a_required_element) {
  const std::string element = "<eudcset>&poor;</eudcset>";
  expectRejected(element, "<codec bytenum=\"2\"/>");
  expectRejected(element, "<name>set</name>");
  expectRejected(element, "<codec bytenum=\"2\"/><name>set</name>");
  expectRejected(element, "<name>set</name><code bytenum=\"2\"/>");
}

TEST_F(FailedLoading, by_a_user_range_without_start_or_number) {
  const std::string element = "<eudcset>&poor;</eudcset>";
  const std::string start = "<name>set</name><codec bytenum=\"2\"/>";
  expectRejected(element, start + "<defrange start=\"1\"/>");
  expectRejected(element, start + "<defrange number=\"1\"/>");
  expectRejected(element, start + "<defrange start=1 number=2/>");
  expectRejected(element, start + "<defrange x=\"\"/>");
  expectRejected(element, "<x start=\"1\" number=\"2\"/>" + start + "<defrange x=\"\"/>");
}

TEST_F(FailedLoading, by_a_table_that_cannot_be_resolved) {
  const std::string element = "<baseset>&poor;</baseset>";
  expectRejected(element, baseGroup("set", "<srtable>&table;</srtable>"));
  expectRejected(element, baseGroup("set", "<srtable>table</srtable>"), entity("table", "t.txt"));
  expectRejected(element, baseGroup("set", "<srtable>&table;</srtable>"),
                 "<!ENTITY table SYSTEM 't.txt'>");
  expectRejected(element,
                 entity("table", "t.txt") + baseGroup("set", "<srtable>&table;</srtable>"));
}

TEST_F(FailedLoading, by_a_group_whose_markup_is_not_closed) {
  // The element is not found at all, so that the charset is loaded without it.
  directory_.writeRule("good.xml", baseGroup("good"));
  const CharsetDef* const found =
      load(entity("fine", "good.xml") + "<charset><name>cs</name></charset><baseset>&fine;", "cs");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->groups.count(), 0);
}

using LoadingAll = RuleBaseTest;

TEST_F(LoadingAll, of_a_directory_without_rule_files_fails) {
  EXPECT_EQ(cconvLoadRule(), 0);
  directory_.write("table.txt", "x");
  directory_.write("rule.xml.old", "x");
  EXPECT_EQ(cconvLoadRule(), 0);
  EXPECT_EQ(ruleBase.lists->charsets().count(), 0);
}

TEST_F(LoadingAll, of_a_directory_that_is_missing_fails) {
  ScopedVariable setting("Charsetpath", directory_.path("missing/"));
  startProcess();
  EXPECT_EQ(cconvLoadRule(), 0);
  endProcess();
}

TEST_F(LoadingAll, skips_files_that_fail_and_goes_on) {
  directory_.writeRule("1.xml", "<charset></charset>");
  directory_.write("2.xml", "");
  directory_.write("3.xml", "<?xml encoding=\"utf-8\"?><charset><name>u</name></charset>");
  std::filesystem::create_directory(directory_.path("4.xml"));
  directory_.writeRule("5.xml", charset("", "<name>five</name>"));
  directory_.writeRule("6.xml", charset("", "<name>x</name><baseset>&none;</baseset>"));
  directory_.writeRule("7.xml", charset("", "<name>seven</name>"));
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(ruleBase.lists->charsets().count(), 2);
  EXPECT_NE(findCharsetByName("five"), nullptr);
  EXPECT_NE(findCharsetByName("seven"), nullptr);
}

TEST_F(LoadingAll, of_nothing_but_bad_files_fails) {
  directory_.writeRule("1.xml", "<charset></charset>");
  EXPECT_EQ(cconvLoadRule(), 0);
}

TEST_F(LoadingAll, twice_adds_nothing_and_succeeds_again) {
  directory_.writeRule(
      "a.xml", charset(entity("one", "sub.set"), "<name>aaa</name><baseset>&one;</baseset>"));
  directory_.writeRule("sub.set", baseGroup("s"));
  EXPECT_EQ(cconvLoadRule(), 1);
  const CharsetDef* const before = findCharsetByName("aaa");
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(findCharsetByName("aaa"), before);
  EXPECT_EQ(ruleBase.lists->charsets().count(), 1);
  EXPECT_EQ(ruleBase.lists->groups().count(), 1);
  directory_.writeRule("b.xml", charset("", "<name>bbb</name>"));
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(ruleBase.lists->charsets().count(), 2) << "what has come since is added";
}

TEST_F(LoadingAll, counts_a_charset_that_another_file_defined) {
  directory_.writeRule("1.xml", charset("", "<name>Shift_JIS</name>"));
  directory_.writeRule("2.xml", charset("", "<name>SHIFT_JIS</name>"));
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(ruleBase.lists->charsets().count(), 1);
}

TEST_F(LoadingAll, fills_no_table) {
  directory_.writeRule("a.xml", charset(entity("one", "sub.set") + entity("table", "t.txt"),
                                        "<name>aaa</name><baseset>&one;</baseset>"));
  directory_.writeRule("sub.set", baseGroup("s", "<srtable>&table;</srtable>"));
  directory_.writeTable("t.txt", "8140 3000");
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(ruleBase.lists->groups()[0]->toUcs.reading, CodeTable::Reading::kNotRead);
  EXPECT_FALSE(directory_.has("t.cmp"));
}

TEST_F(LoadingAll, takes_a_group_file_that_is_also_met_by_itself) {
  const std::string body =
      charset(entity("one", "b.xml"), "<name>x</name><baseset>&one;</baseset>");
  for (const char* name : {"a.xml", "c.xml"}) {
    std::string own = body;
    own.replace(own.find("<name>x") + 6, 1, name, 1);
    directory_.writeRule(name, own);
  }
  directory_.writeRule("b.xml", baseGroup("s"));
  EXPECT_EQ(cconvLoadRule(), 1);
  ASSERT_EQ(ruleBase.lists->charsets().count(), 2);
  EXPECT_EQ(ruleBase.lists->groups().count(), 1);
  EXPECT_EQ(ruleBase.lists->charsets()[1]->groups[0], ruleBase.lists->groups()[0].get());
}

TEST_F(LoadingAll, reads_a_shared_file_without_a_name_as_each_charset_is_encoded) {
  directory_.write("sub.set", encode(kUtf16Little, baseGroup("s")));
  int number = 0;
  for (const TextForm& form : {kUtf16Big, kUtf16Little, kUcs2Little, kUcs4Little}) {
    const std::string name = std::to_string(number++);
    directory_.writeRule(
        name + ".xml",
        charset(entity("one", "sub.set"), "<name>c" + name + "</name><baseset>&one;</baseset>"),
        form);
  }
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(findCharsetByName("c0"), nullptr);
  EXPECT_NE(findCharsetByName("c1"), nullptr);
  EXPECT_NE(findCharsetByName("c2"), nullptr);
  EXPECT_EQ(findCharsetByName("c3"), nullptr);
}

}  // namespace
}  // namespace ksv::test
