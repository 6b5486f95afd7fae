// What threads share and fill while they convert. Whoever comes first, and wherever the
// others are when something is published, each gets what a single thread gets.
#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <string_view>
#include <thread>
#include <vector>

#include "cconv/rules/publication.h"
#include "tests/convert/bulk_comparison.h"
#include "tests/rules/support.h"

namespace ksv_test {
namespace {

// Every way to find characters and to write them, and every kind of table.
constexpr const char* kShared[] = {
    "Shift_JIS",  "EUC-JP",           "ISO-2022-JP",     "UTF-8",      "UTF-16",
    "ChineseGBK", "EUC-JP-FIX",       "ISO-10646-UCS-2", "WINDOWS31J", "KoreanKSC",
    "ISO-8859-1", "ISO-2022-JP-KANA", "ISO-10646-UCS-4"};

// --- Letting others in between the steps of a publication. ---

// The step at which a thread sleeps, and the times that it does so.
constinit thread_local ksv::PublicationStep sleepsAt = ksv::PublicationStep::kMade;
constinit thread_local uint32_t passes = 0;
constinit thread_local uint32_t sleeps = 0;

void pause(ksv::PublicationStep step) {
  if (step != sleepsAt || sleeps == 0) return;
  if (passes > 0) {
    --passes;
    return;
  }
  --sleeps;
  std::this_thread::sleep_for(std::chrono::microseconds(100));
}

// Some threads hurry on while others are held up, at one step or another.
void holdUp(uint32_t draw) {
  constexpr ksv::PublicationStep kSteps[] = {
      ksv::PublicationStep::kMade, ksv::PublicationStep::kWord, ksv::PublicationStep::kCopied};
  sleepsAt = kSteps[draw % 3];
  passes = sleepsAt == ksv::PublicationStep::kCopied ? draw / 3 % 4 : draw / 3 % 1500;
  sleeps = draw / 4500 % 4;
}

class Delayed {
 public:
  Delayed() { ksv::publicationPauseForTests = pause; }
  ~Delayed() { ksv::publicationPauseForTests = nullptr; }
  Delayed(const Delayed&) = delete;
  Delayed& operator=(const Delayed&) = delete;
};

// --- What is converted. ---

struct Job {
  Conversion setup;
  Bytes text;
  std::vector<int32_t> capacities;

  Trace run() const { return trace(setup, text, capacities); }
};

struct SharedText {
  const char* charset;
  Bytes text;
};

// Ordinary text, which a long run of ASCII may keep one thread from while another is at it
// already, and now and then everything else.
Bytes textOf(Random& random, const char* charset, int kind) {
  if (kind == 0) return randomText(random, charset);
  if (kind == 1) return ordinaryText(random, charset, 1500, 1);
  const EngineOnly engineOnly;
  const std::vector<uint32_t> letters(2000 + below(random, 6000), 'x');
  return convertWhole({"ISO-10646-UCS-4", charset}, ucs4(letters)).output +
         ordinaryText(random, charset, 600, 1);
}

std::vector<SharedText> textsOfAll() {
  Random random(20261122);
  std::vector<SharedText> texts;
  for (const char* charset : kShared) {
    for (int kind = 0; kind < 4; ++kind) texts.push_back({charset, textOf(random, charset, kind)});
  }
  return texts;
}

// The same text as a whole, in pieces, and the short beginning of it, for which other
// tables are used.
std::vector<Job> jobsOf(Random& random, const SharedText& text, const char* target) {
  Conversion setup{text.charset, target};
  setup.options.replaceUnmappable = 1;
  setup.options.convertNewlines = below(random, 4) == 0 ? 1 : 0;
  setup.options.outputBigEndian = below(random, 2);
  setup.parameters = {1, 0, 1};
  const auto most = static_cast<int32_t>(8 * text.text.size() + 100);
  const auto piece = static_cast<int32_t>(300 + below(random, 2000));
  std::vector<Job> jobs = {{setup, text.text, {most}}, {setup, text.text, {piece, most}}};
  for (int i = 0; i < 2; ++i) {
    const size_t length = 16 + below(random, 200);
    jobs.push_back({setup, text.text.substr(0, length), {4000}});
  }
  return jobs;
}

constexpr size_t kThreads = 4;
using Traces = std::vector<std::vector<Trace>>;

// What each thread gets that converts all of it, beginning with the others.
Traces tracesOfThreads(const std::vector<Job>& jobs, Random& random) {
  Traces traces(kThreads);
  uint32_t draws[kThreads];
  for (uint32_t& draw : draws) draw = static_cast<uint32_t>(random());
  std::atomic<size_t> ready = 0;
  std::vector<std::thread> threads;
  for (size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      holdUp(draws[t]);
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      // Not all in the same order.
      for (size_t i = 0; i < jobs.size(); ++i)
        traces[t].push_back(jobs[(i + t % 2 * jobs.size() / 2) % jobs.size()].run());
    });
  }
  for (std::thread& thread : threads) thread.join();
  return traces;
}

void expectWhatOneThreadGets(const std::vector<Job>& jobs, const Traces& traces) {
  const EngineOnly engineOnly;
  for (size_t i = 0; i < jobs.size(); ++i) {
    const Trace expected = jobs[i].run();
    for (size_t t = 0; t < kThreads; ++t) {
      const size_t place = (i + jobs.size() - t % 2 * jobs.size() / 2) % jobs.size();
      ASSERT_EQ(difference(traces[t][place], expected), "")
          << jobs[i].setup.source << " to " << jobs[i].setup.target << ", thread " << t;
    }
  }
}

using ksv::test::CharsetDirectory;

// The names of files that a rule file mentions, in its UTF-16.
std::vector<std::string> filesNamedIn(const Bytes& ruleFile) {
  Bytes text;
  for (size_t i = 0; i < ruleFile.size(); i += 2) text += ruleFile[i];
  std::vector<std::string> files;
  constexpr std::string_view kBefore = "SYSTEM \"";
  for (size_t at = text.find(kBefore); at != Bytes::npos; at = text.find(kBefore, at + 1)) {
    const size_t begin = at + kBefore.size();
    files.push_back(text.substr(begin, text.find('"', begin) - begin));
  }
  return files;
}

// A directory with these charsets only, which is loaded anew in a tenth of the time.
class FewCharsets : public CharsetDirectory {
 public:
  FewCharsets() {
    for (const char* charset : kShared) {
      std::string name = charset;
      std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
      copy(name + ".xml");
      for (const std::string& file : filesNamedIn(read(name + ".xml"))) {
        copy(file);
        if (file.ends_with(".txt")) copy(file.substr(0, file.size() - 4) + ".cmp");
      }
    }
  }

 private:
  void copy(const std::string& name) const {
    write(name, ksv::test::readFile(KSV_TEST_CHARSET_DIRECTORY + name));
  }
};

class SharedTables : public testing::Test {
 protected:
  SharedTables() {
    EXPECT_EQ(startProcess(), 1);
    EXPECT_EQ(cconvLoadRule(), 1);
    texts_ = textsOfAll();
  }
  ~SharedTables() override { endProcess(); }

  // Two sources to one target, all of whose tables are empty.
  void expectSameOfThreads(Random& random) {
    const char* target = kShared[below(random, std::size(kShared))];
    std::vector<Job> jobs;
    for (int source = 0; source < 2; ++source) {
      const SharedText& text = texts_[below(random, static_cast<uint32_t>(texts_.size()))];
      for (Job& job : jobsOf(random, text, target)) jobs.push_back(std::move(job));
    }
    ASSERT_NO_FATAL_FAILURE(startAnew());
    expectWhatOneThreadGets(jobs, tracesOfThreads(jobs, random));
  }

 private:
  const FewCharsets directory_;
  const BulkAlways bulkAlways_;
  std::vector<SharedText> texts_;
};

TEST_F(SharedTables, give_threads_that_start_on_empty_ones_what_one_thread_gets) {
  const Delayed delayed;
  Random random(1);
  for (int round = 0; round < KSV_TEST_STARTS; ++round)
    ASSERT_NO_FATAL_FAILURE(expectSameOfThreads(random)) << "round " << round;
}

}  // namespace
}  // namespace ksv_test
