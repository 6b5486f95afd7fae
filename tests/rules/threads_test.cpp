// Converters that threads start at once on tables that nobody has filled yet.
#include <atomic>
#include <string>
#include <thread>

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

class ColdTables : public RuleBaseTest {
 protected:
  ColdTables() {
    // One-byte codes 21 to 7E stand for U+3041 and up in one charset, and for
    // U+30A1 and up behind a destination table in the other.
    Pairs hiragana;
    Pairs katakana;
    for (uint32_t code = 0x21; code <= 0x7E; ++code) {
      hiragana.emplace_back(code, 0x3041 + code - 0x21);
      katakana.emplace_back(code, 0x30A1 + code - 0x21);
    }
    directory_.writeTable("h.txt", tableLines(hiragana));
    directory_.writeTable("k.txt", tableLines(katakana));
    for (const char* name : {"hira", "kata"}) {
      directory_.writeRule(std::string(name) + ".set",
                           "<subseta><name>set" + std::string(name) +
                               "</name><lang x=\"\"/>"
                               "<code bytenum=\"1\"/><srtable>&codes;</srtable></subseta>");
      directory_.writeRule(
          std::string(name) + ".xml",
          charset(entity("own", std::string(name) + ".set") +
                      entity("codes", std::string(1, name[0]) + ".txt") + entity("other", "h.txt"),
                  "<name>" + std::string(name) +
                      "</name><rule construle=\"constSAME\" destrule=\"destSAME\"/>"
                      "<baseset>&own;<dstable bytenum=\"1\">&other;</dstable></baseset>"));
    }
    EXPECT_EQ(cconvLoadRule(), 1);
  }

  // The status and the output of a conversion by a new converter.
  static std::string convert(const char* source, const char* target, const std::string& text) {
    ConverterRecord record = {};
    if (cconvInitConvert(&record, nullptr, target) != 0) return "no target";
    if (cconvChgCharset(&record, nullptr, source) != 0) return "no source";
    std::string output(text.size() * 4 + 16, '\0');
    record.input = reinterpret_cast<const uint8_t*>(text.data());
    record.inputLength = static_cast<int32_t>(text.size());
    record.output = reinterpret_cast<uint8_t*>(output.data());
    record.outputCapacity = static_cast<int32_t>(output.size());
    const uint32_t status = cconvConvert(&record);
    cconvTermConvert(&record);
    return std::to_string(status) + " " +
           output.substr(0, static_cast<size_t>(record.outputPosition));
  }

  void forgetWhatIsLoaded() {
    endProcess();
    for (const char* file : {"h.cmp", "k.cmp"}) std::filesystem::remove(directory_.path(file));
    EXPECT_EQ(startProcess(), 1);
    EXPECT_EQ(cconvLoadRule(), 1);
  }
};

TEST_F(ColdTables, give_eight_threads_the_same_results) {
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> waiting = 8;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
      threads.emplace_back([&, t] {
        const char* const source = t % 2 == 0 ? "hira" : "kata";
        --waiting;
        while (waiting > 0) std::this_thread::yield();
        for (int i = 0; i < 10; ++i) {
          EXPECT_EQ(convert("hira", "hira", "!AZ~"), "0 !AZ~");
          EXPECT_EQ(convert(source, "kata", "!AZ~"), "0 !AZ~");
          EXPECT_EQ(convert("kata", "hira", "A").substr(0, 2), "23");
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& group : ruleBase.lists->groups()) {
      EXPECT_TRUE(group->toUcs.isLoaded());
      EXPECT_EQ(group->toUcs.reading, CodeTable::Reading::kAskedFor) << "filled once";
    }
    forgetWhatIsLoaded();
  }
}

TEST_F(ColdTables, are_filled_once_by_all_who_ask_at_once) {
  const Pairs pairs = manyPairs(3000);
  directory_.writeTable("t.txt", tableLines(pairs));
  for (int round = 0; round < 20; ++round) {
    std::filesystem::remove(directory_.path("t.cmp"));
    auto table = tableOf("t.txt");
    std::atomic<int> waiting = 8;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
      threads.emplace_back([&] {
        --waiting;
        while (waiting > 0) std::this_thread::yield();
        EXPECT_TRUE(ensureTableLoaded(table.get()));
        EXPECT_TRUE(mapsAll(*table, pairs));
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(table->reading, CodeTable::Reading::kAskedFor);
  }
}

TEST_F(ColdTables, answer_look_ups_while_they_are_filled_with_the_code_itself_or_the_value) {
  const Pairs pairs = manyPairs(20000);
  directory_.writeTable("t.txt", tableLines(pairs));
  auto table = tableOf("t.txt");
  std::atomic<bool> stop = false;
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t) {
    readers.emplace_back([&] {
      while (!stop) {
        for (size_t i = 0; i < pairs.size(); i += 997) {
          uint32_t value = 0;
          EXPECT_TRUE(tableLookup(*table, pairs[i].first, value));
          EXPECT_TRUE(value == pairs[i].first || value == pairs[i].second);
        }
      }
    });
  }
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  stop = true;
  for (std::thread& reader : readers) reader.join();
}

}  // namespace
}  // namespace ksv::test
