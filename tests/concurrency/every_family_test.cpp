// Threads that convert, load, detect and read at once, each of which counts its own use of the
// library, get what a single thread gets.
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "cconv/rules/rule_base.h"
#include "ksv_cut.h"
#include "ksv_detect.h"
#include "ksv_file.h"
#include "ksv_ole.h"
#include "ksv_path.h"
#include "tests/common/support.h"
#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

constexpr size_t kThreads = 64;
constexpr int kRounds = 3;

const std::string kSample = std::string(KSV_TEST_SAMPLES) + "kusamakura.sjis.txt";
const std::string kDocument = std::string(KSV_TEST_DOCUMENTS) + "japanese.doc";

// What a thread does between its start and its end, and its result in words.
using Task = std::function<std::string()>;

Task conversion(const char* source, const char* target, const Bytes& text) {
  return [=] {
    const Result result = convertWhole({source, target}, text);
    return std::to_string(result.status) + " " + std::to_string(result.position) + " " +
           result.output;
  };
}

std::string readSample() {
  std::FILE* file = KSV_FileOpen(kSample.c_str(), "rb");
  Bytes text(4000, '\0');
  text.resize(static_cast<size_t>(KSV_FileRead(text.data(), 1, 4000, file)));
  KSV_FileClose(file);
  return text;
}

std::string detectSample() { return std::to_string(dtctText(kSample.c_str(), "Japanese")); }

std::string checkText() {
  static const Bytes text = "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n";
  EncodingCheckRecord record = {};
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.end = static_cast<uint32_t>(text.size());
  return std::to_string(cconvChkEncode(&record)) + " " + record.name;
}

std::string readProperties() {
  KsvSummarySettings settings = {};
  std::strcpy(settings.targetCharset, "UTF-8");
  std::strcpy(settings.language, "Japanese");
  std::string record(KSV_SUMMARY_RECORD_SIZE, '\0');
  const uint16_t parameters[3] = {5000, 0xFFFF, 932};
  const uint32_t result = SummaryInfo(kDocument.c_str(), &settings, record.data(), parameters);
  return std::to_string(result) + " " + record;
}

std::string readStream() {
  Ksv2Ole* file = KSV_2OLEopen(kDocument.c_str());
  Ksv2OleStream* stream = KSV_2OLEopenStream(file, "WordDocument");
  std::string bytes(5000, '\0');
  bytes.resize(KSV_2OLEreadStream(stream, bytes.data(), 5000));
  KSV_2OLEcloseStream(stream);
  KSV_2OLEclose(file);
  return bytes;
}

std::string cutAndSplit() {
  char directory[780], name[780];
  KSV_splitpath("a/b/日本.txt", nullptr, directory, name, nullptr);
  return std::to_string(CutStr("\x82\xA0\x82\xA2", 4, 3, "Shift_JIS")) + directory + name;
}

std::string takeTheLock() {
  const int taken = lockMutex();
  std::this_thread::yield();
  return std::to_string(taken) + (unlockMutex() != 0 ? " released" : " not held");
}

std::vector<Task> everyTask() {
  const Bytes japanese = readSample();
  std::vector<Task> tasks = {
      readSample, detectSample, checkText,   readProperties,
      readStream, cutAndSplit,  takeTheLock, conversion("WINDOWS31J", "UTF-8", japanese)};
  for (const char* charset : {"EUC-JP", "ISO-2022-JP", "UTF-16", "Shift_JIS-2004", "CP50220"}) {
    const Bytes text = convertWhole({"WINDOWS31J", charset}, japanese).output;
    tasks.push_back(conversion("WINDOWS31J", charset, japanese));
    tasks.push_back(conversion(charset, "UTF-8", text));
    tasks.push_back(conversion(charset, "GB18030", text));
  }
  return tasks;
}

std::vector<std::string> resultsOf(const std::vector<Task>& tasks, size_t first) {
  std::vector<std::string> results(tasks.size());
  for (size_t i = 0; i < tasks.size(); ++i) {
    const size_t task = (first + i) % tasks.size();
    results[task] = tasks[task]();
  }
  return results;
}

// What a thread gets in its rounds that begins with one of the tasks. Whoever comes first loads
// the charsets, and whoever leaves last forgets them.
int differencesOfThread(const std::vector<Task>& tasks, const std::vector<std::string>& expected,
                        size_t first) {
  int differences = 0;
  for (int round = 0; round < kRounds; ++round) {
    if (startProcess() != 1 || cconvLoadRule() != 1) ++differences;
    const std::vector<std::string> results = resultsOf(tasks, first + static_cast<size_t>(round));
    for (size_t i = 0; i < tasks.size(); ++i) {
      if (results[i] != expected[i]) ++differences;
    }
    endProcess();
  }
  return differences;
}

int differencesOfThreads(const std::vector<Task>& tasks, const std::vector<std::string>& expected) {
  std::atomic<int> differences = 0;
  std::atomic<size_t> ready = 0;
  std::vector<std::thread> threads;
  for (size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      differences += differencesOfThread(tasks, expected, t);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return differences;
}

TEST(EveryFamily, gives_64_threads_that_start_and_end_what_one_thread_gets) {
  const CharsetPath path(KSV_TEST_CHARSET_DIRECTORY);
  ASSERT_EQ(startProcess(), 1);
  ASSERT_EQ(cconvLoadRule(), 1);
  const std::vector<Task> tasks = everyTask();
  const std::vector<std::string> expected = resultsOf(tasks, 0);
  for (const std::string& result : expected) EXPECT_NE(result, "");
  endProcess();
  EXPECT_EQ(differencesOfThreads(tasks, expected), 0);
  EXPECT_EQ(ksv::ruleBase.refCount, 0u);
  EXPECT_EQ(ksv::ruleBase.lists, nullptr) << "all is freed by the last end";
}

}  // namespace
}  // namespace ksv_test
