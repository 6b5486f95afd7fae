// Rule files and tables that nobody means well with, and names at their limits.
#include <ctime>

#include "cconv/rules/rule_loader.h"
#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

// Seconds of the processor, since others may be at work on the machine: far more than linear
// work takes under a sanitizer, far less than quadratic work on a million characters.
constexpr double kLinearTime = 5;

constexpr size_t kMillion = 1000000;

std::string repeated(const std::string& piece, size_t length) {
  std::string text;
  while (text.size() < length) text.append(piece);
  return text;
}

template <class Work>
void expectLinear(const Work& work) {
  const std::clock_t begin = std::clock();
  work();
  EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, kLinearTime);
}

TEST(HostileText, of_openings_without_an_end_is_cleaned_in_linear_time) {
  for (const char* piece :
       {"-", "--", "<?", "<", "<!--", "-- ", "<!-- -", "/>", "?>", "<?-", "\r"}) {
    SCOPED_TRACE(piece);
    const std::string text = repeated(piece, kMillion);
    expectLinear([&] { cleaned(text); });
  }
}

TEST(HostileText, of_hyphens_is_all_comments) {
  EXPECT_EQ(asciiOf(cleaned(std::string(kMillion, '-'))), "");
  // 2 * 250000 pairs open and close, one is left open and one hyphen stays.
  EXPECT_EQ(asciiOf(cleaned(std::string(kMillion + 1, '-'))), "-");
  EXPECT_EQ(asciiOf(cleaned(std::string(kMillion + 3, '-'))), "-");
}

TEST(HostileText, of_tags_that_never_close_is_searched_in_linear_time) {
  for (const char* piece :
       {"<charset>", "<name>", "<baseset>", "<a>", "<", "</", "/>", "<baseset "}) {
    SCOPED_TRACE(piece);
    const RuleText text = cleaned(repeated(piece, kMillion));
    expectLinear([&] {
      RuleReader(text).findElement("charset");
      RuleReader(text).findElement("baseset");
      RuleReader(text).findElement("absent");
    });
  }
}

size_t walked(const RuleText& text, const std::string& tag) {
  size_t count = 0;
  RuleReader reader(text);
  while (reader.passElement(tag)) ++count;
  return count;
}

TEST(HostileText, of_elements_without_an_end_tag_is_walked_in_linear_time) {
  const std::string text = repeated("<range />", kMillion);
  const size_t count = text.size() / 9;
  expectLinear([&] { EXPECT_EQ(walked(cleaned(text), "range"), count); });
  const std::string otherFormBehind = text + "<range>x";
  expectLinear([&] { EXPECT_EQ(walked(cleaned(otherFormBehind), "range"), count); });
}

TEST(HostileText, is_searched_anew_before_and_behind_what_was_found_last) {
  const RuleText text = cleaned("<a>1</a><a>2</a><a>3</a> ");
  const auto find = [&](size_t from) {
    RuleReader reader(text, from);
    return reader.passString("<a>") ? reader.position() : SIZE_MAX;
  };
  EXPECT_EQ(find(4), 11u);
  EXPECT_EQ(find(8), 11u) << "the place found last itself";
  EXPECT_EQ(find(9), 19u);
  EXPECT_EQ(find(17), SIZE_MAX);
  EXPECT_EQ(find(16), 19u);
  EXPECT_EQ(find(0), 3u);
}

class HostileFiles : public RuleBaseTest {
 protected:
  bool loads(const std::string& body) {
    directory_.writeRule("charset.xml", body);
    return loadRuleFile("charset.xml");
  }
};

TEST_F(HostileFiles, deeply_nested_are_read_without_recursion) {
  const std::string opened = repeated("<charset><name>", kMillion / 2);
  const std::string closed = repeated("</name></charset>", kMillion / 2);
  // The name runs from the first start tag to the first end tag: too long.
  EXPECT_FALSE(loads(opened + closed));
  EXPECT_FALSE(loads(opened));
  EXPECT_FALSE(loads(closed));
  EXPECT_EQ(ruleBase.lists->charsets().count(), 0);
}

TEST_F(HostileFiles, that_include_themselves_as_a_group_end) {
  EXPECT_FALSE(
      loads(charset(entity("self", "charset.xml"), "<name>cs</name><baseset>&self;</baseset>")));
  EXPECT_TRUE(loads(charset(entity("self", "charset.xml"),
                            "<name>cs</name><baseset>&self;</baseset><subseta><name>s</name>"
                            "<lang x=\"\"/><code x=\"\"/></subseta>")));
  EXPECT_EQ(findCharsetByName("cs")->groups.count(), 1);
}

TEST_F(HostileFiles, with_entities_of_no_name_or_a_huge_one_are_refused) {
  EXPECT_FALSE(loads(charset(entity("", "x.xml"), "<name>cs</name><baseset>&;</baseset>")));
  const std::string name(100000, 'n');
  EXPECT_FALSE(
      loads(charset(entity(name, "x.xml"), "<name>cs</name><baseset>&" + name + ";</baseset>")));
}

// Each entity is declared far from where the search for it begins.
std::string manyEntities(size_t count) {
  std::string declarations;
  std::string groups;
  for (size_t i = 0; i < count; ++i) {
    const std::string name = "n" + std::to_string(100000 + i);
    declarations += entity(name, "s.set");
    groups.insert(0, "<baseset>&" + name + ";</baseset>");
  }
  return charset(declarations, "<name>cs</name>" + groups);
}

TEST_F(HostileFiles, of_thousands_of_entities_are_searched_in_proportion_to_their_size) {
  directory_.writeRule("s.set", baseGroup("s"));
  const std::string most = manyEntities(550);
  ASSERT_GT(most.size(), 30000u);
  EXPECT_TRUE(loads(most)) << "as many as there is room for in 32 Ki characters";
  EXPECT_EQ(findCharsetByName("cs")->groups.count(), 550);
  endProcess();
  ASSERT_EQ(startProcess(), 1);
  const std::string tooMany = manyEntities(20000);
  expectLinear([&] { EXPECT_FALSE(loads(tooMany)); });
}

TEST_F(HostileFiles, that_name_one_entity_thousands_of_times_are_searched_for_it_once) {
  directory_.writeRule("s.set", baseGroup("s"));
  const std::string declarations = repeated("<!-- -->x ", kMillion) + entity("set", "s.set");
  const std::string groups = repeated("<baseset>&set;</baseset>", 24 * 60000);
  expectLinear([&] { EXPECT_TRUE(loads(charset(declarations, "<name>cs</name>" + groups))); });
  EXPECT_EQ(findCharsetByName("cs")->groups.count(), 60000);
}

TEST_F(HostileFiles,
       of_thousands_of_elements_that_lack_what_is_looked_for_are_read_in_linear_time) {
  directory_.writeRule("s.set", baseGroup("s"));
  const std::string declarations = entity("set", "s.set") + entity("t", "t.txt");
  int number = 0;
  for (const char* element : {"<dstable>x</dstable>", "<dstable>&x</dstable>",
                              "<dstable>&t; bytenum= </dstable>", "<dstable>&t;x</dstable>"}) {
    SCOPED_TRACE(element);
    const std::string name = "cs" + std::to_string(++number);
    for (const char* behind : {"", "\""}) {
      expectLinear([&] {
        EXPECT_TRUE(
            loads(charset(declarations, "<name>" + name + behind + "</name><baseset>&set;" +
                                            repeated(element, kMillion) + "</baseset>" + behind)));
      });
    }
  }
}

TEST_F(HostileFiles, with_a_huge_bytenum_convert_nothing_and_allocate_nothing) {
  directory_.writeTable("t.txt", "8140 3000\r\n8141 3001");
  directory_.writeRule("s.xml",
                       "<subseta><name>s</name><lang x=\"\"/>"
                       "<code bytenum=\"4294967295\"/><srtable>&table;</srtable></subseta>");
  ASSERT_TRUE(loads(charset(entity("set", "s.xml") + entity("table", "t.txt"),
                            "<name>cs</name><baseset>&set;<dstable bytenum=\"FFFFFFFFFFFF\">"
                            "&table;</dstable></baseset>")));
  const CharsetDef& found = *findCharsetByName("cs");
  GroupDef& group = *found.groups[0];
  EXPECT_EQ(group.bytesPerCode, 65535);
  EXPECT_TRUE(ensureTableLoaded(&group.fromUcs));
  uint32_t value = 0;
  EXPECT_TRUE(tableLookup(group.fromUcs, 0x3001, value));
  EXPECT_EQ(value, 0x8141u);
  uint16_t bytes = 0;
  EXPECT_TRUE(tableListLookup(*found.destTables[0], 0x3000, value, bytes));
  EXPECT_EQ(value, 0x8140u);
  EXPECT_EQ(bytes, 65535);

  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  cconvInitConvert(&record, &options, "cs");
  cconvChgCharset(&record, nullptr, "cs");
  const uint8_t input[] = {0x81, 0x40, 0x81, 0x41};
  uint8_t output[64];
  record.input = input;
  record.inputLength = sizeof input;
  record.output = output;
  record.outputCapacity = sizeof output;
  cconvConvert(&record);
  EXPECT_LE(record.outputPosition, record.outputCapacity);
}

class NamesAtTheirLimit : public HostileFiles {};

TEST_F(NamesAtTheirLimit, have_259_bytes_for_a_charset) {
  const std::string longest(259, 'n');
  EXPECT_TRUE(loads("<charset><name>" + longest + "</name></charset> "));
  EXPECT_NE(findCharsetByName(longest.c_str()), nullptr);
  char name[KSV_NAME_SIZE];
  EXPECT_EQ(cconvEnumGroup(0, name), 1u);
  EXPECT_EQ(name, longest);
  ConverterRecord record = {};
  EXPECT_EQ(cconvInitConvert(&record, nullptr, longest.c_str()), 0u);

  const std::string tooLong(260, 'n');
  EXPECT_FALSE(loads("<charset><name>" + tooLong + "</name></charset> "));
  EXPECT_EQ(ruleBase.lists->charsets().count(), 1);
  EXPECT_EQ(findCharsetByName(tooLong.c_str()), nullptr);
  EXPECT_EQ(cconvInitConvert(&record, nullptr, tooLong.c_str()), 1u);
  EXPECT_EQ(cconvChgCharset(&record, nullptr, tooLong.c_str()), 1u);
  EXPECT_EQ(cconvInitConvert(&record, nullptr, std::string(kMillion, 'n').c_str()), 1u);
}

TEST_F(NamesAtTheirLimit, have_259_bytes_for_a_group) {
  for (const size_t length : {259u, 260u}) {
    const std::string number = std::to_string(length);
    directory_.writeRule("s.xml", baseGroup(std::string(length, 's')));
    directory_.writeRule("u.xml", "<name>" + std::string(length, 'u') + "</name><codec x=\"\"/>");
    const std::string declarations = entity("set", "s.xml") + entity("user", "u.xml");
    EXPECT_EQ(loads(charset(declarations, "<name>a" + number + "</name><baseset>&set;</baseset>")),
              length == 259);
    EXPECT_EQ(loads(charset(declarations, "<name>b" + number + "</name><eudcset>&user;</eudcset>")),
              length == 259);
  }
}

TEST_F(NamesAtTheirLimit, have_259_bytes_for_a_table_file) {
  directory_.writeRule("s.xml", baseGroup("s", "<srtable>&table;</srtable>"));
  // Long by going nowhere, so that every system opens it.
  const std::string here = repeated("./", 254);
  for (const size_t length : {259u, 260u}) {
    const std::string file = here + std::string(length - here.size() - 4, 'T') + ".TXT";
    ASSERT_EQ(file.size(), length);
    const bool loaded = loads(charset(entity("set", "s.xml") + entity("table", file),
                                      "<name>a" + std::to_string(length) +
                                          "</name><baseset>&set;"
                                          "<dstable>&table;</dstable></baseset>"));
    EXPECT_EQ(loaded, length == 259);
  }
  GroupDef& group = *findCharsetByName("a259")->groups[0];
  directory_.writeTable("t.txt", "8140 3000\r\n8141 3001");
  EXPECT_TRUE(ensureTableLoaded(&group.toUcs));
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes({{0x8140, 0x3000}, {0x8141, 0x3001}}));
}

TEST_F(NamesAtTheirLimit, of_files_that_no_system_opens_are_refused) {
  const std::string file = std::string(5000, 'f') + ".xml";
  EXPECT_FALSE(loads(charset(entity("set", file), "<name>cs</name><baseset>&set;</baseset>")));
  EXPECT_FALSE(loadRuleFile(file));
  auto table = tableOf(std::string(255, 't'));
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_TRUE(ensureTableLoaded(table.get()));
}

TEST_F(HostileFiles, of_random_bytes_are_refused_or_loaded_and_never_more) {
  std::mt19937 random(testSeed());
  const std::string words[] = {
      "<charset>",  "</charset>", "<name>",     "</name>",    "n",           "<rule ",
      "construle=", "destrule=",  "\"",         "/>",         "<baseset>",   "</baseset>",
      "&e;",        "--",         "<?",         "?>",         "<!--",        "-->",
      "\r\n",       "bytenum=",   "<dstable ",  "</dstable>", "e SYSTEM \"", "charset.xml\"",
      ">",          "<subseta>",  "</subseta>", "<lang ",     "<code ",      "<defined>",
      "</defined>", "1-2",        "<eudcset>",  "</eudcset>", "<codec ",     "<defrange ",
      "start=",     "number=",    "<diffset>",  "</diffset>", "<subsetb>",   "</subsetb>",
      "<codeb ",    "<srtable>",  "</srtable>"};
  for (int i = 0; i < 1500; ++i) {
    std::string body;
    const size_t count = random() % 60;
    for (size_t w = 0; w < count; ++w) body.append(words[random() % std::size(words)]);
    const TextForm& form = kAllForms[random() % std::size(kAllForms)];
    std::string bytes = ruleFile(form, body);
    if (i % 3 == 0) bytes[random() % bytes.size()] = static_cast<char>(random());
    if (i % 5 == 0) bytes.resize(random() % bytes.size());
    directory_.write("charset.xml", bytes);
    loadRuleFile("charset.xml");
  }
  for (const auto& found : ruleBase.lists->charsets()) {
    EXPECT_EQ(findCharsetById(found->id), found.get());
    for (const GroupDef* group : found->groups) EXPECT_EQ(findGroupById(group->id), group);
  }
}

TEST_F(HostileFiles, as_compiled_tables_are_read_as_they_are) {
  std::mt19937 random(testSeed());
  for (int i = 0; i < 300; ++i) {
    std::string bytes(random() % 4000, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    directory_.write("t.cmp", bytes);
    auto table = tableOf("t.txt");
    ensureTableLoaded(table.get());
    for (int probe = 0; probe < 20; ++probe) {
      uint32_t value = 0;
      tableLookup(*table, static_cast<uint32_t>(random()), value);
    }
  }
}

}  // namespace
}  // namespace ksv::test
