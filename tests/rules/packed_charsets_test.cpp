// The packed form of the charset directory: it answers as the files do that it was made of, what
// stands beside it goes before it, and nothing it holds leads outside it.
#include "cconv/rules/packed_charsets.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>
#include <sstream>
#include <thread>

#include "common/faults.h"
#include "ksv_cconv.h"
#include "tests/faults/memory_faults.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

namespace fs = std::filesystem;

// With its drive, where there are drives: the tests work in directories on others.
const std::string kShipped = std::filesystem::absolute(KSV_TEST_CHARSET_DIRECTORY).generic_string();
const std::string kPackName = PackedCharsets::kFileName;

std::unique_ptr<const PackedCharsets> shippedPack() { return PackedCharsets::open(kShipped); }

void copyShipped(const std::string& name, const TempDirectory& directory) {
  writeFile(directory.path() + "/" + name, readFile(kShipped + name));
}

void describe(std::ostream& text, const CodeTable& table) {
  text << ' ' << table.fileName << '/' << table.keyColumn << '/' << table.valueBytes << '/'
       << static_cast<uint32_t>(table.sourceEncoding) << '/' << table.sourceBigEndian;
}

void describe(std::ostream& text, const GroupDef& group) {
  text << " [" << group.name << ' ' << group.id << ' ' << group.type() << ' ' << group.bytesPerCode
       << ' ' << group.lang << ' ' << group.basedon << ' ' << group.defined.ranges.count() << ' '
       << group.defStart << ' ' << group.defNumber;
  describe(text, group.toUcs);
  describe(text, group.fromUcs);
  text << ']';
}

std::string described(const LoadedCharset& charset) {
  std::ostringstream text;
  text << charset.name << ' ' << charset.id << ' ' << charset.construle << ' ' << charset.destrule;
  for (size_t i = 0; i < charset.groups.count(); ++i) {
    text << " [" << charset.groups[i]->name;
    for (const auto& table : *charset.destTablesOf(i)) describe(text, *table);
    text << ']';
  }
  return text.str();
}

std::string described(const GroupDef& group) {
  std::ostringstream text;
  describe(text, group);
  return text.str();
}

// All that the lists of the rule base say, a line a charset and a line a group.
std::vector<std::string> describedLists() {
  std::vector<std::string> lines;
  for (const auto& charset : ruleBase.lists->charsets()) lines.push_back(described(*charset));
  for (const auto& group : ruleBase.lists->groups()) lines.push_back(described(*group));
  return lines;
}

// A rule base that was loaded from a directory: from its files, as where a setting names it, or
// as where it came with the library.
class LoadedFrom {
 public:
  LoadedFrom(const std::string& directory, bool isInstalled) {
    ruleBase.setPath(directory.c_str(), isInstalled);
    result_ = cconvLoadRule();
  }
  int result() const { return result_; }

 private:
  StartedRuleBase started_;
  int result_;
};

std::vector<CodeTable*> tablesOfLists() {
  std::vector<CodeTable*> tables;
  for (const auto& group : ruleBase.lists->groups()) {
    tables.push_back(&group->toUcs);
    tables.push_back(&group->fromUcs);
  }
  for (const auto& charset : ruleBase.lists->charsets())
    for (const auto& list : charset->destTables)
      for (const auto& table : *list) tables.push_back(table.get());
  std::erase_if(tables, [](const CodeTable* table) { return table->fileName.empty(); });
  return tables;
}

std::unique_ptr<CodeTable> blank(const CodeTable& table) {
  auto copy = std::make_unique<CodeTable>(static_cast<CodeTable::KeyColumn>(table.keyColumn),
                                          table.valueBytes);
  copy->fileName = table.fileName;
  return copy;
}

Pairs compiledPairs(const std::string& textName) {
  const std::string bytes = readFile(kShipped + textName.substr(0, textName.size() - 4) + ".cmp");
  Pairs pairs(bytes.size() / 8);
  for (size_t i = 0; i < pairs.size(); ++i) {
    std::memcpy(&pairs[i].first, bytes.data() + 8 * i, 4);
    std::memcpy(&pairs[i].second, bytes.data() + 8 * i + 4, 4);
  }
  return pairs;
}

void expectSameAnswers(const CodeTable& packed, const CodeTable& files, const Pairs& pairs) {
  const std::string name = files.fileName;
  ASSERT_EQ(packed.low, files.low) << name;
  ASSERT_EQ(packed.high, files.high) << name;
  ASSERT_EQ(packed.hasEntries, files.hasEntries) << name;
  ASSERT_EQ(packed.coverage.coversZero(), files.coverage.coversZero()) << name;
  const uint32_t all = std::min<uint32_t>(files.high, 0x10FFFF) + 2000;
  for (uint32_t key = 0; key < all; ++key)
    ASSERT_EQ(packed.values.find(key), files.values.find(key)) << name << ' ' << key;
  for (const auto& [first, second] : pairs)
    for (const uint32_t key : {first, second})
      for (const uint32_t near : {key - 16, key - 1, key, key + 1, key + 16})
        ASSERT_EQ(packed.values.find(near), files.values.find(near)) << name << ' ' << near;
}

TEST(PackedRules, are_those_of_the_rule_files) {
  std::vector<std::string> files;
  {
    const LoadedFrom loaded(kShipped, false);
    files = describedLists();
  }
  TempDirectory alone;
  copyShipped(kPackName, alone);
  const LoadedFrom loaded(alone.path() + "/", true);
  EXPECT_EQ(loaded.result(), 1);
  EXPECT_GT(files.size(), 100u);
  EXPECT_EQ(describedLists(), files);
}

std::vector<std::string> enumeratedNames() {
  std::vector<std::string> names;
  char name[KSV_NAME_SIZE];
  for (int32_t index = 0; cconvEnumGroup(index, name) != 0; ++index) names.emplace_back(name);
  return names;
}

// The packed file alone, as it is installed.
class InstalledPack : public testing::Test {
 protected:
  InstalledPack() { copyShipped(kPackName, directory_); }

  LoadedFrom load() const { return LoadedFrom(directory_.path() + "/", true); }
  static std::vector<std::string> namesOfFiles() {
    const LoadedFrom loaded(kShipped, false);
    return enumeratedNames();
  }
  static std::vector<std::string> listsOfFiles() {
    const LoadedFrom loaded(kShipped, false);
    return describedLists();
  }

  TempDirectory directory_;
};

TEST_F(InstalledPack, tells_the_names_of_its_charsets_in_the_order_of_the_files) {
  const std::vector<std::string> names = namesOfFiles();
  const LoadedFrom loaded = load();
  EXPECT_GT(names.size(), 50u);
  EXPECT_EQ(enumeratedNames(), names);
}

TEST_F(InstalledPack, gives_each_charset_alone_as_the_files_do) {
  const std::vector<std::string> names = namesOfFiles();
  const std::vector<std::string> files = listsOfFiles();
  for (size_t index = 0; index < names.size(); ++index) {
    const LoadedFrom loaded = load();
    std::string spelled = names[index];
    spelled[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(spelled[0])));
    const LoadedCharset* const charset = findCharsetByName(spelled.c_str());
    ASSERT_NE(charset, nullptr) << spelled;
    EXPECT_EQ(charset, findCharsetByName(names[index].c_str()));
    EXPECT_EQ(charset, findCharsetById(charset->id));
    EXPECT_EQ(described(*charset), files[index]);
    for (GroupDef* const group : charset->groups) {
      EXPECT_EQ(findGroupById(group->id), group) << group->name;
      EXPECT_NE(std::ranges::find(files, described(*group)), files.end()) << group->name;
    }
  }
}

TEST_F(InstalledPack, has_the_same_lists_in_whatever_order_it_is_asked) {
  const std::vector<std::string> files = listsOfFiles();
  std::vector<CharsetId> groups;
  {
    const LoadedFrom loaded = load();
    for (const auto& group : ruleBase.lists->groups()) groups.push_back(group->id);
  }
  std::vector<std::string> names = namesOfFiles();
  std::mt19937 random(testSeed());
  for (int round = 0; round < 20; ++round) {
    std::ranges::shuffle(names, random);
    std::ranges::shuffle(groups, random);
    const LoadedFrom loaded = load();
    std::vector<const void*> before;
    for (size_t i = 0; i < 30; ++i) {
      before.push_back(findGroupById(groups[i]));
      before.push_back(findCharsetByName(names[i].c_str()));
    }
    ASSERT_EQ(describedLists(), files);
    for (size_t i = 0; i < 30; ++i) {
      EXPECT_EQ(before[2 * i], findGroupById(groups[i])) << "it stays where it is";
      EXPECT_EQ(before[2 * i + 1], findCharsetByName(names[i].c_str())) << names[i];
    }
  }
}

TEST_F(InstalledPack, knows_no_charset_and_no_group_that_the_files_do_not_have) {
  const LoadedFrom loaded = load();
  EXPECT_EQ(findCharsetByName("utf-9"), nullptr);
  EXPECT_EQ(findCharsetByName(""), nullptr);
  EXPECT_EQ(findCharsetById(1), nullptr);
  EXPECT_EQ(findGroupById(2013), nullptr);
  EXPECT_EQ(findGroupById(0xFFFFFFFF), nullptr);
  char name[KSV_NAME_SIZE];
  EXPECT_EQ(cconvEnumGroup(static_cast<int32_t>(enumeratedNames().size()), name), 0u);
}

// A directory with a charset of its own, which has the name of a shipped one, and another.
void writeOwnCharsets(const CharsetDirectory& directory) {
  directory.writeRule("s.set", baseGroup("jis_x0208-1990", "<srtable>&t;</srtable>"));
  for (const char* name : {"koi8-r", "zzz"})
    directory.writeRule(std::string(name) + ".xml",
                        charset(entity("s", "s.set") + entity("t", "t.txt"),
                                "<name>" + std::string(name) + "</name><baseset>&s;</baseset>"));
}

std::vector<std::string> listsAfter(const std::string& first, bool firstIsInstalled,
                                    const std::string& second, bool secondIsInstalled) {
  const LoadedFrom loaded(first, firstIsInstalled);
  const LoadedCharset* const charset = findCharsetByName("koi8-r");
  const GroupDef* const group = findGroupById(2006);
  ruleBase.setPath(second.c_str(), secondIsInstalled);
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(findCharsetByName("koi8-r"), charset) << "the first one counts";
  EXPECT_EQ(findGroupById(2006), group);
  EXPECT_NE(findCharsetByName("zzz"), nullptr);
  EXPECT_NE(findCharsetByName("koi8-u"), nullptr);
  std::vector<std::string> lists = enumeratedNames();
  for (std::string& line : describedLists()) lists.push_back(std::move(line));
  return lists;
}

TEST_F(InstalledPack, goes_in_front_of_and_behind_other_directories_as_the_files_do) {
  CharsetDirectory own;
  writeOwnCharsets(own);
  const std::string packed = directory_.path() + "/";
  const std::string other = own.path("");
  EXPECT_EQ(listsAfter(packed, true, other, false), listsAfter(kShipped, false, other, false));
  EXPECT_EQ(listsAfter(other, false, packed, true), listsAfter(other, false, kShipped, false));
}

TEST_F(InstalledPack, gives_what_finds_memory_and_the_rest_when_there_is_some) {
  const std::vector<std::string> files = listsOfFiles();
  constexpr uint64_t kMost = 2000;
  uint64_t failing = 0;
  for (bool isWhole = false; !isWhole && failing < kMost; ++failing) {
    const LoadedFrom loaded = load();
    const uint64_t faults = faultCount();
    FailingMemory memory(failing, Refused::kAllFromThere);
    const LoadedCharset* const charset = findCharsetByName("Shift_JIS");
    const GroupDef* const group = findGroupById(2007);
    const LoadedCharset* const longNamed = findCharsetByName("iso-2022-jp-2004-compatible");
    memory.stop();
    isWhole = charset != nullptr && group != nullptr;
    EXPECT_EQ(longNamed, nullptr);
    EXPECT_EQ(faultCount() == faults, isWhole) << failing;
    if (charset != nullptr) {
      EXPECT_EQ(findCharsetByName("shift_jis"), charset);
    }
    ASSERT_EQ(describedLists(), files) << failing;
  }
  EXPECT_GT(failing, 20u);
  EXPECT_LT(failing, kMost);
}

TEST_F(InstalledPack, is_listed_whole_or_left_as_it_is_without_memory) {
  const std::vector<std::string> files = listsOfFiles();
  CharsetDirectory own;
  writeOwnCharsets(own);
  std::vector<std::string> names = namesOfFiles();
  names.push_back("zzz");
  int failures = 0;
  // Not each of them, of which there are some thousands.
  for (uint64_t failing = 0; failing < 100000; failing += 1 + failing / 4) {
    const LoadedFrom loaded = load();
    ruleBase.setPath(own.path("").c_str(), false);
    FailingMemory memory(failing, Refused::kAllFromThere);
    const int result = cconvLoadRule();
    memory.stop();
    EXPECT_NE(findCharsetByName("shift_jis"), nullptr) << failing;
    EXPECT_EQ(cconvLoadRule(), 1);
    ASSERT_EQ(enumeratedNames(), names) << failing;
    failures += result == 0;
  }
  EXPECT_GT(failures, 5);
}

TEST_F(InstalledPack, gives_all_threads_the_same) {
  const std::vector<std::string> names = namesOfFiles();
  for (int round = 0; round < 10; ++round) {
    const LoadedFrom loaded = load();
    constexpr size_t kThreads = 4;
    std::atomic<size_t> waiting = kThreads;
    std::vector<std::vector<const void*>> found(kThreads);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        --waiting;
        while (waiting > 0) std::this_thread::yield();
        for (const std::string& name : names) {
          const LoadedCharset* const charset = findCharsetByName(name.c_str());
          found[t].push_back(charset);
          for (const GroupDef* const group : charset->groups)
            found[t].push_back(findGroupById(group->id));
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (size_t t = 1; t < kThreads; ++t) EXPECT_EQ(found[t], found[0]);
    EXPECT_EQ(std::ranges::count(found[0], nullptr), 0);
  }
}

TEST(PackedRules, do_not_count_where_a_setting_names_the_directory) {
  TempDirectory alone;
  copyShipped(kPackName, alone);
  EXPECT_EQ(LoadedFrom(alone.path() + "/", false).result(), 0);
}

TEST(PackedTables, answer_as_the_compiled_files_do) {
  const auto packed = shippedPack();
  ASSERT_NE(packed, nullptr);
  const LoadedFrom loaded(kShipped, false);
  size_t compared = 0;
  for (CodeTable* table : tablesOfLists()) {
    ASSERT_TRUE(ensureTableLoaded(table)) << table->fileName;
    const auto filled = blank(*table);
    ASSERT_TRUE(packed->fill(*filled, kDefaultBlockSize)) << table->fileName;
    expectSameAnswers(*filled, *table, compiledPairs(table->fileName));
    ++compared;
  }
  EXPECT_GT(compared, 100u);
}

TEST(PackedTables, hold_the_lines_of_each_compiled_file_in_their_order) {
  const auto packed = shippedPack();
  ASSERT_NE(packed, nullptr);
  const auto& files = packed->catalog().tableFiles;
  EXPECT_GT(files.size(), 50u);
  for (uint32_t number = 0; number < files.size(); ++number) {
    const std::optional<Pairs> lines = packed->lines(number);
    ASSERT_TRUE(lines) << files[number].name;
    EXPECT_EQ(*lines, compiledPairs(std::string(files[number].name))) << files[number].name;
  }
}

// In blocks of 16 keys the 109,000 tens of GB18030 are more than the 65,535 blocks of a table: it
// ends within them, in the order of its lines.
TEST(PackedTables, end_where_small_blocks_end_them) {
  const auto packed = shippedPack();
  ASSERT_NE(packed, nullptr);
  const Pairs pairs = compiledPairs("gb18030.txt");
  for (const uint32_t blockSize : {1u, 16u, 256u, 1024u}) {
    for (const auto column : {CodeTable::kFirstColumn, CodeTable::kSecondColumn}) {
      CodeTable wanted(column, 4);
      for (const auto& [first, second] : pairs)
        if (!insertPair(wanted, first, second, blockSize)) break;
      CodeTable table(column, 4);
      table.fileName = "gb18030.txt";
      ASSERT_TRUE(packed->fill(table, blockSize));
      EXPECT_EQ(table.high, wanted.high) << blockSize;
      for (size_t i = 0; i < pairs.size(); i += 7) {
        const uint32_t key = column == CodeTable::kFirstColumn ? pairs[i].first : pairs[i].second;
        ASSERT_EQ(table.values.find(key), wanted.values.find(key)) << blockSize << ' ' << key;
      }
    }
  }
}

TEST(PackedTables, are_filled_line_by_line_for_widths_that_no_rule_file_asks_for) {
  const auto packed = shippedPack();
  ASSERT_NE(packed, nullptr);
  CodeTable table(CodeTable::kSecondColumn, 1);
  table.fileName = "jis_x0208-1990.txt";
  ASSERT_TRUE(packed->fill(table, kDefaultBlockSize));
  EXPECT_EQ(table.values.find(0x3042), 0x22u) << "of 24 22 the last byte";
}

// A directory that came with the library, beside whose packed file something else may stand.
class BesideThePack : public testing::Test {
 protected:
  BesideThePack() { copyShipped(kPackName, directory_); }

  std::string path(const std::string& name) const { return directory_.path() + "/" + name; }
  void write(const std::string& name, const std::string& bytes) const {
    writeFile(path(name), bytes);
  }
  void setAge(const std::string& name, std::chrono::seconds youngerThanPack) const {
    fs::last_write_time(path(name), fs::last_write_time(path(kPackName)) + youngerThanPack);
  }
  LoadedFrom load() const { return LoadedFrom(directory_.path() + "/", true); }

  // What the table to Unicode of the group gives.
  static uint32_t ucsOf(const std::string& group, uint32_t code) {
    std::string name = group;
    GroupDef* const found = findGroupById(nameToId(name.data()));
    if (found == nullptr || !ensureTableLoaded(&found->toUcs)) return 0;
    return found->toUcs.find(code);
  }

  TempDirectory directory_;
};

void replaceOnce(std::string& text, std::string_view before, std::string_view after) {
  const std::string wanted = encode(kUtf16Little, before);
  const size_t at = text.find(wanted);
  ASSERT_NE(at, std::string::npos);
  text.replace(at, wanted.size(), encode(kUtf16Little, after));
}

constexpr std::chrono::seconds kYounger{5};
constexpr std::chrono::seconds kOlder{-5};

TEST_F(BesideThePack, a_charset_of_ones_own_is_added) {
  write("own.xml", ruleFile(kUtf16Little, charset(entity("set.own", "set.own.xml") +
                                                      entity("table.own", "own.txt"),
                                                  "<name>own</name><baseset>&set.own;</baseset>")));
  write("set.own.xml",
        ruleFile(kUtf16Little, baseGroup("own-set", "<srtable>&table.own;</srtable>")));
  write("own.txt", encode(kUtf16Little, "41 E000\r\n\r\n"));
  const LoadedFrom loaded = load();
  EXPECT_NE(findCharsetByName("own"), nullptr);
  EXPECT_NE(findCharsetByName("shift_jis"), nullptr);
  EXPECT_EQ(ucsOf("own-set", 0x41), 0xE000u);
  EXPECT_EQ(ucsOf("jis_x0208-1990", 0x2422), 0x3042u) << "packed, used by packed rule files";
}

TEST_F(BesideThePack, a_rule_file_of_another_size_goes_before_the_packed_one) {
  std::string changed = readFile(kShipped + "set.jis_x0208-1990.xml");
  changed += encode(kUtf16Little, "<!-- changed -->");
  write("set.jis_x0208-1990.xml", changed);
  setAge("set.jis_x0208-1990.xml", kOlder);
  const auto packed = PackedCharsets::open(directory_.path() + "/");
  ASSERT_NE(packed, nullptr);
  const auto* const file = packed->catalog().findRuleFile("set.jis_x0208-1990.xml");
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(packed->isOverridden(*file));
  const LoadedFrom loaded = load();
  EXPECT_NE(findCharsetByName("shift_jis"), nullptr);
}

TEST_F(BesideThePack, a_younger_rule_file_goes_before_the_packed_one_and_an_older_one_does_not) {
  std::string renamed = readFile(kShipped + "utf-8.xml");
  replaceOnce(renamed, "<name>UTF-8", "<name>UTF-9");
  write("utf-8.xml", renamed);
  setAge("utf-8.xml", kOlder);
  {
    const LoadedFrom loaded = load();
    EXPECT_NE(findCharsetByName("utf-8"), nullptr);
    EXPECT_EQ(findCharsetByName("utf-9"), nullptr);
  }
  setAge("utf-8.xml", kYounger);
  const LoadedFrom loaded = load();
  EXPECT_EQ(findCharsetByName("utf-8"), nullptr);
  EXPECT_NE(findCharsetByName("utf-9"), nullptr);
  EXPECT_NE(findCharsetByName("shift_jis"), nullptr);
}

TEST_F(BesideThePack, an_empty_rule_file_takes_its_charset_away) {
  write("koi8-r.xml", "");
  const LoadedFrom loaded = load();
  EXPECT_EQ(findCharsetByName("koi8-r"), nullptr);
  EXPECT_NE(findCharsetByName("koi8-u"), nullptr);
}

TEST_F(BesideThePack, a_table_of_another_size_goes_before_the_packed_one) {
  write("jis_x0208-1990.txt", encode(kUtf16Little, "2422 3044\r\n\r\n"));
  setAge("jis_x0208-1990.txt", kOlder);
  const LoadedFrom loaded = load();
  EXPECT_EQ(ucsOf("jis_x0208-1990", 0x2422), 0x3044u);
  EXPECT_EQ(ucsOf("jis_x0212-1990", 0x3021), 0x4E02u) << "the others are packed";
  EXPECT_TRUE(exists(path("jis_x0208-1990.cmp"))) << "compiled as any table is";
}

TEST_F(BesideThePack, a_compiled_table_of_another_size_goes_before_the_packed_one) {
  write("jis_x0208-1990.cmp", compiledBytes({{0x2422, 0x3044}}));
  const LoadedFrom loaded = load();
  EXPECT_EQ(ucsOf("jis_x0208-1990", 0x2422), 0x3044u);
}

TEST_F(BesideThePack, a_younger_table_goes_before_the_packed_one_and_an_older_one_does_not) {
  std::string text = readFile(kShipped + "jis_x0208-1990.txt");
  replaceOnce(text, "2422 3042", "2422 3044");
  write("jis_x0208-1990.txt", text);
  setAge("jis_x0208-1990.txt", kOlder);
  {
    const LoadedFrom loaded = load();
    EXPECT_EQ(ucsOf("jis_x0208-1990", 0x2422), 0x3042u);
  }
  setAge("jis_x0208-1990.txt", kYounger);
  const LoadedFrom loaded = load();
  EXPECT_EQ(ucsOf("jis_x0208-1990", 0x2422), 0x3044u);
}

// Everything that may be asked of a packed file.
void useAll(const PackedCharsets& packed) {
  std::mt19937 random(7);
  for (const auto& file : packed.catalog().tableFiles) {
    for (const auto column : {CodeTable::kFirstColumn, CodeTable::kSecondColumn}) {
      for (const uint16_t bytes : {uint16_t{1}, uint16_t{2}, uint16_t{4}}) {
        CodeTable table(column, bytes);
        table.fileName = file.name;
        // Line by line takes longer, and tells no more than that it ends.
        if (file.lineCount > 20000 && bytes == 1) continue;
        if (!packed.fill(table, kDefaultBlockSize)) continue;
        for (int i = 0; i < 200; ++i)
          table.values.find(static_cast<uint32_t>(random()) >> (i % 32));
      }
    }
  }
}

class DamagedPack : public testing::Test {
 protected:
  DamagedPack() : bytes_(readFile(kShipped + kPackName)) {}

  // Whether it is taken; if so, it is used.
  bool isTaken(const std::string& bytes) const {
    writeFile(directory_.path() + "/" + kPackName, bytes);
    const auto packed = PackedCharsets::open(directory_.path() + "/");
    if (packed != nullptr) useAll(*packed);
    return packed != nullptr;
  }
  uint32_t headerField(size_t index) const {
    uint32_t value;
    std::memcpy(&value, bytes_.data() + 4 * index, 4);
    return value;
  }

  TempDirectory directory_;
  std::string bytes_;
};

TEST_F(DamagedPack, is_none_wherever_it_is_cut) {
  for (const size_t length : {size_t{0}, size_t{1}, size_t{63}, size_t{64}, size_t{4096},
                              bytes_.size() / 2, bytes_.size() - 4, bytes_.size() - 1})
    EXPECT_FALSE(isTaken(bytes_.substr(0, length))) << length;
  EXPECT_FALSE(isTaken(bytes_ + "x"));
  EXPECT_TRUE(isTaken(bytes_));
}

// The three that say what it is, then places and counts of the parts.
TEST_F(DamagedPack, is_none_or_leads_nowhere_outside_with_any_header) {
  constexpr size_t kFields = 16;
  for (size_t field = 0; field < kFields; ++field) {
    for (const uint32_t value : {0u, 1u, 3u, headerField(field) - 4, headerField(field) + 4,
                                 static_cast<uint32_t>(bytes_.size()), 0x7FFFFFFFu, 0xFFFFFFFFu}) {
      if (value == headerField(field)) continue;
      std::string changed = bytes_;
      std::memcpy(changed.data() + 4 * field, &value, 4);
      const bool taken = isTaken(changed);
      EXPECT_FALSE(field < 3 && taken) << field << ' ' << value;
    }
  }
}

TEST_F(DamagedPack, leads_nowhere_outside_whatever_bytes_it_has) {
  std::mt19937 random(testSeed());
  const size_t tables = headerField(5);
  const size_t end = tables + 36 * headerField(6);
  for (int round = 0; round < 60; ++round) {
    std::string changed = bytes_;
    for (int i = 0; i < 40; ++i) {
      const size_t from = round % 3 == 0 ? 64 : round % 3 == 1 ? tables : end;
      const size_t to = round % 3 == 0 ? tables : round % 3 == 1 ? end : changed.size();
      changed[from + random() % (to - from)] = static_cast<char>(random());
    }
    isTaken(changed);
  }
}

// The number of blocks is put wrong, so that no table leads anywhere; what else there is stays.
TEST_F(DamagedPack, leaves_no_empty_table_behind_that_would_go_before_a_sound_one) {
  const uint32_t none = 1;
  std::memcpy(bytes_.data() + 4 * 8, &none, 4);
  writeFile(directory_.path() + "/" + kPackName, bytes_);
  const LoadedFrom loaded(directory_.path() + "/", true);
  EXPECT_EQ(loaded.result(), 1);
  char name[] = "jis_x0208-1990";
  GroupDef* const group = findGroupById(nameToId(name));
  ASSERT_NE(group, nullptr);
  ensureTableLoaded(&group->toUcs);
  EXPECT_EQ(group->toUcs.values.find(0x2422), 0u);
  EXPECT_FALSE(exists(directory_.path() + "/jis_x0208-1990.cmp"));
}

TEST_F(DamagedPack, leaves_the_files_beside_it_to_be_read) {
  writeFile(directory_.path() + "/" + kPackName, bytes_.substr(0, 1000));
  for (const char* name : {"koi8-r.xml", "set.koi8-r.xml", "koi8-r.txt"})
    copyShipped(name, directory_);
  const LoadedFrom loaded(directory_.path() + "/", true);
  EXPECT_EQ(loaded.result(), 1);
  EXPECT_NE(findCharsetByName("koi8-r"), nullptr);
  EXPECT_EQ(findCharsetByName("shift_jis"), nullptr);
}

}  // namespace
}  // namespace ksv::test
