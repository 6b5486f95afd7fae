// Compares the library with the reference converter, field by field, after every
// call: over random charset directories and over the shipped one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cconv/bulk/registry.h"
#include "differential_generate.h"
#include "differential_harness.h"
#include "reference/rule_directory.h"
#include "reference/rules.h"
#include "tests/common/temporary_directory.h"

namespace ksv_differential {
namespace {

constexpr size_t kMaxOutput = 1 << 16;
constexpr int kMostCalls = 600;

uint64_t baseSeed() {
  const char* text = std::getenv("KSV_TEST_SEED");
  return text == nullptr ? 20240611 : std::strtoull(text, nullptr, 10);
}

// KSV_TEST_PERCENT: so much of the usual number of cases.
int scaled(int count) {
  const char* text = std::getenv("KSV_TEST_PERCENT");
  return text == nullptr ? count : std::max(1, count * std::atoi(text) / 100);
}

struct Totals {
  uint64_t cases = 0;
  uint64_t calls = 0;
  uint64_t longCases = 0;
  std::map<std::string, int> differences;      // by field
  std::map<std::string, std::string> reports;  // the shortest by field

  void print(const char* name) const {
    std::printf("%s: seed %llu, %llu cases (%llu of them long), %llu calls compared\n", name,
                static_cast<unsigned long long>(baseSeed()), static_cast<unsigned long long>(cases),
                static_cast<unsigned long long>(longCases), static_cast<unsigned long long>(calls));
    for (const auto& [field, count] : differences) {
      std::printf("  %d cases differ in %s\n", count, field.c_str());
    }
    for (const auto& [field, report] : reports) {
      std::printf("----- %s\n%s\n", field.c_str(), report.c_str());
    }
  }
};

enum class Kind { kShort, kLong, kTags };

// One conversion, decided by its seed alone: text, options, cuts and what is called
// in between.
class Case {
 public:
  Case(Pair& pair, const ksv_reference::RuleDirectory& rules, uint64_t seed, Kind kind)
      : pair_(pair), rules_(rules), random_(seed), kind_(kind), long_(kind == Kind::kLong) {}

  void run() {
    if (random_.percent(30)) pair_.reset();
    chooseText();
    pair_.setBuffers(text_, chooseCapacity());
    setUp();
    const int32_t length = static_cast<int32_t>(text_.size());
    chooseCuts();
    int32_t given = nextCut(0);
    pair_.setInputLength(given);
    for (int call = 0; call < kMostCalls; ++call) {
      const uint32_t status = pair_.convert();
      if (!pair_.difference().empty()) return;
      const bool more = given < length;
      if (status == KSV_STATUS_DONE || status == KSV_STATUS_INCOMPLETE) {
        if (!more) break;
        given = nextCut(given);
        pair_.setInputLength(given);
      } else if (status == KSV_STATUS_INVALID) {
        if (!stepOverInvalid()) break;
      } else if (status == KSV_STATUS_FULL) {
        if (!makeRoom()) break;
      } else if (status != KSV_STATUS_UNMAPPABLE) {
        break;
      }
      interfere();
      if (!pair_.difference().empty()) return;
    }
    finish();
  }

 private:
  void chooseText() {
    source_ = random_.pick(sourceNames(rules_));
    target_ = random_.pick(targetNames(rules_));
    for (uint32_t& parameter : parameters_) parameter = random_.percent(50) ? 1 : 0;
    const bool bigEndian = source_ != "UTF-7" && parameters_[0] != 0;
    if (kind_ == Kind::kTags) {
      source_ = random_.pick(std::vector<std::string>{"UTF-8", "UTF-16", "ISO-10646-UCS-4"});
      text_ = randomTagText(random_, rules_, source_, bigEndian);
      return;
    }
    const auto bytes =
        static_cast<size_t>(long_ ? random_.between(1100, 6000) : random_.between(0, 60));
    const std::vector<uint32_t> wildness =
        long_ ? std::vector<uint32_t>{0, 0, 1, 5} : std::vector<uint32_t>{0, 20, 50, 90};
    text_ = randomText(random_, rules_, source_, bigEndian, bytes, random_.pick(wildness));
  }

  int32_t chooseCapacity() {
    if (long_)
      return random_.percent(50) ? static_cast<int32_t>(kMaxOutput) - 1024
                                 : random_.between(500, 20000);
    return random_.percent(30) ? 2000 : random_.between(0, 24);
  }

  void setUp() {
    ConvertOptions options = randomOptions(random_);
    if (long_ && random_.percent(50)) options.replaceUnmappable = 1;
    if (random_.percent(3)) pair_.convert();
    if (random_.percent(10)) pair_.scramble(random_);
    if (random_.percent(3)) pair_.init(&options, unknownName());
    pair_.init(random_.percent(3) ? nullptr : &options, target_.c_str());
    if (random_.percent(2)) pair_.convert();
    if (random_.percent(3)) pair_.chgCharset(parameters_, unknownName());
    pair_.chgCharset(random_.percent(3) ? nullptr : parameters_, source_.c_str());
    if (random_.percent(3)) pair_.chgCharset(parameters_, unknownName());
    if (random_.percent(20)) pair_.chgLang(randomLanguage(random_));
  }

  const char* unknownName() {
    static const std::string kLongName(260, 'a');
    const std::vector<const char*> names = {"utf-7", "", "No-Such-Charset", kLongName.c_str(),
                                            nullptr};
    return random_.pick(names);
  }

  // Short texts: whole, cut once, byte by byte, or at random. Long ones seldom.
  void chooseCuts() { cuts_ = long_ ? random_.below(3) : random_.below(4); }

  int32_t nextCut(int32_t given) {
    const int32_t length = static_cast<int32_t>(text_.size());
    if (cuts_ == 0 || given >= length) return length;
    if (cuts_ == 1) return given == 0 ? random_.between(0, length) : length;
    if (cuts_ == 2) {
      return std::min(length, given + (long_ ? random_.between(900, 3000) : random_.between(1, 9)));
    }
    return given + 1;
  }

  bool stepOverInvalid() {
    const int32_t position = pair_.record().inputPosition;
    if (position != lastInvalid_) {
      lastInvalid_ = position;
      return true;
    }
    if (position >= pair_.record().inputLength) return false;
    pair_.setInputPosition(position + 1);
    return true;
  }

  bool makeRoom() {
    const int32_t capacity = pair_.record().outputCapacity;
    if (random_.percent(15)) {
      pair_.emptyOutput();
      if (capacity > 600) return true;
    }
    const int32_t step = long_ ? random_.between(1, 4000) : random_.between(1, 9);
    const int32_t most = static_cast<int32_t>(long_ ? kMaxOutput - 1024 : 2000);
    if (capacity >= most) return false;
    pair_.setCapacity(std::min(most, capacity + step));
    return true;
  }

  void interfere() {
    if (random_.percent(6)) pair_.chgLang(randomLanguage(random_));
    if (!random_.percent(3)) return;
    for (uint32_t& parameter : parameters_) parameter = random_.percent(50) ? 1 : 0;
    pair_.chgCharset(parameters_, random_.pick(sourceNames(rules_)).c_str());
  }

  // A record that no caller would make.
  void convertOddly() {
    const int32_t length = static_cast<int32_t>(text_.size());
    pair_.setInputLength(random_.percent(50) ? -1 : 0);
    pair_.convert();
    pair_.setInputLength(length);
    pair_.setCapacity(random_.percent(50) ? -7 : 0);
    pair_.convert();
    pair_.setInputPosition(length + random_.between(0, 3));
    pair_.convert();
  }

  void finish() {
    if (random_.percent(4)) convertOddly();
    const int32_t end = pair_.record().outputPosition;
    pair_.setCapacity(random_.percent(50) ? end : end + random_.between(-2, 9));
    if (pair_.term() == KSV_STATUS_FULL) {
      pair_.setCapacity(end + 8);
      pair_.term();
    }
  }

  Pair& pair_;
  const ksv_reference::RuleDirectory& rules_;
  Random random_;
  Kind kind_;
  bool long_;
  std::string source_;
  std::string target_;
  std::vector<uint8_t> text_;
  uint32_t parameters_[3] = {};
  uint32_t cuts_ = 0;
  int32_t lastInvalid_ = -1;
};

// The library and the model with one charset directory loaded.
class Session {
 public:
  Session(const ksv_reference::RuleDirectory& rules, const std::filesystem::path& directory,
          uint16_t blockSize) {
    ksv::test::setVariable("Charsetpath", ksv::test::textOf(directory) + "/");
    EXPECT_EQ(startProcess(), 1);
    setBlockSize(blockSize);
    EXPECT_EQ(cconvLoadRule(), 1);
    model_.blockSize = blockSize;
    model_.load(rules);
  }
  ~Session() {
    endProcess();
    ksv::setBulkPathForTests(ksv::BulkPath::kWhereItPays);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // One record after another conversion, until a difference spoils it.
  Pair& pair() {
    if (pair_ == nullptr || !pair_->difference().empty()) {
      pair_ = std::make_unique<Pair>(model_, kMaxOutput);
    }
    return *pair_;
  }

  void compareNames() const {
    char name[KSV_NAME_SIZE];
    for (size_t i = 0; i < model_.charsets.size(); ++i) {
      ASSERT_EQ(cconvEnumGroup(static_cast<int32_t>(i), name), 1U);
      EXPECT_EQ(std::string(name), model_.charsets[i].name);
    }
    EXPECT_EQ(cconvEnumGroup(static_cast<int32_t>(model_.charsets.size()), name), 0U);
  }

 private:
  ksv_reference::RuleBase model_;
  std::unique_ptr<Pair> pair_;
};

// The charsets that a case names.
std::string membersText(const ksv_reference::RuleDirectory& rules, const Pair& pair) {
  std::string text;
  const std::string log = pair.reproduction();
  for (const auto& [file, charset] : rules.charsets) {
    if (log.find(charset.name) == std::string::npos) continue;
    text += "  " + charset.name + " " + charset.construle + " " + charset.destrule + ":";
    for (const auto& member : charset.members) {
      const ksv_reference::SubsetFile& subset = rules.subsets.at(member.subsetFile);
      text += " " + subset.name + "(" + std::to_string(member.kind) + "," +
              std::to_string(subset.bytesPerCode) + "," + subset.tableFile + "," +
              std::to_string(member.destTables.size()) + ")";
    }
    text += "\n";
  }
  return text;
}

void runCase(Session& session, const ksv_reference::RuleDirectory& rules, uint64_t seed, Kind kind,
             bool bulk, Totals& totals) {
  ksv::setBulkPathForTests(bulk ? ksv::BulkPath::kAlways : ksv::BulkPath::kNever);
  Pair& pair = session.pair();
  const uint64_t callsBefore = pair.calls();
  Case(pair, rules, seed, kind).run();
  ++totals.cases;
  totals.longCases += kind == Kind::kLong ? 1 : 0;
  totals.calls += pair.calls() - callsBefore;
  if (pair.difference().empty()) return;
  const std::string field = pair.field() + (bulk ? " (bulk)" : "");
  ++totals.differences[field];
  const std::string report =
      "case " + std::to_string(seed) + "\n" + membersText(rules, pair) + pair.reproduction();
  std::string& shortest = totals.reports[field];
  if (shortest.empty() || report.size() < shortest.size()) shortest = report;
}

void runBothPaths(Session& session, const ksv_reference::RuleDirectory& rules, uint64_t seed,
                  Kind kind, Totals& totals) {
  for (bool bulk : {true, false}) {
    runCase(session, rules, seed, kind, bulk, totals);
  }
}

TEST(Differential, random_directories) {
  startWatchdog();
  Totals totals;
  const int directories = scaled(40);
  const ksv::test::TemporaryDirectory temporary("ksv_differential");
  const std::filesystem::path root = temporary.path() / "charset";
  for (int i = 0; i < directories; ++i) {
    const uint64_t seed = baseSeed() * 1000003 + static_cast<uint64_t>(i) * 100000;
    Random random(seed);
    const ksv_reference::RuleDirectory rules = randomRules(random);
    writeRuleDirectory(rules, root);
    const std::vector<uint32_t> sizes = {0, 0, 1, 7, 256, 65535};
    Session session(rules, root, static_cast<uint16_t>(random.pick(sizes)));
    session.compareNames();
    for (uint64_t k = 0; k < 150; ++k) runBothPaths(session, rules, seed + k, Kind::kShort, totals);
    for (uint64_t k = 0; k < 20; ++k)
      runBothPaths(session, rules, seed + 5000 + k, Kind::kLong, totals);
    std::filesystem::remove_all(root);
  }
  totals.print("random directories");
  EXPECT_TRUE(totals.differences.empty());
}

TEST(Differential, language_tags) {
  startWatchdog();
  Totals totals;
  const int directories = scaled(4);
  const ksv::test::TemporaryDirectory temporary("ksv_differential");
  const std::filesystem::path root = temporary.path() / "charset";
  for (int i = 0; i < directories; ++i) {
    const uint64_t seed = baseSeed() * 2654435761 + static_cast<uint64_t>(i) * 100000;
    Random random(seed);
    const ksv_reference::RuleDirectory rules = randomTagRules(random);
    writeRuleDirectory(rules, root);
    {
      Session session(rules, root, 0);
      for (uint64_t k = 0; k < 400; ++k) {
        runCase(session, rules, seed + k, Kind::kTags, true, totals);
      }
    }
    std::filesystem::remove_all(root);
  }
  totals.print("language tags");
  EXPECT_TRUE(totals.differences.empty());
}

TEST(Differential, shipped_directory) {
  startWatchdog();
  Totals totals;
  const char* named = std::getenv("KSV_TEST_CHARSET_DIRECTORY");
  const std::filesystem::path directory = named == nullptr ? KSV_TEST_CHARSET_DIRECTORY : named;
  const ksv_reference::RuleDirectory rules = ksv_reference::readRuleDirectory(directory);
  ASSERT_FALSE(rules.charsets.empty());
  Session session(rules, directory, 0);
  session.compareNames();
  const uint64_t seed = baseSeed() * 7919 + 5;
  const int shortCases = scaled(2500);
  for (int k = 0; k < shortCases; ++k) {
    runBothPaths(session, rules, seed + static_cast<uint64_t>(k), Kind::kShort, totals);
  }
  const int longCases = scaled(250);
  for (int k = 0; k < longCases; ++k) {
    runBothPaths(session, rules, seed + 1000000 + static_cast<uint64_t>(k), Kind::kLong, totals);
  }
  totals.print("shipped directory");
  EXPECT_TRUE(totals.differences.empty());
}

}  // namespace
}  // namespace ksv_differential
