// Walks a job along all its allocations, each of which fails once by itself and once with all
// behind it.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "tests/faults/job.h"
#include "tests/faults/memory_faults.h"

namespace ksv::test {

struct Totals {
  uint64_t places = 0;      // allocations that failed, or began to
  uint64_t told = 0;        // a call said that it failed
  uint64_t noted = 0;       // a wrong answer, and a fault that was noted with it
  uint64_t right = 0;       // the right answer all the same
  uint64_t violations = 0;  // anything else
};

// The job in a directory of its own, which is the current one as long as this is there.
class Walk {
 public:
  // Installs the job and finds its right answer.
  Walk(Job& job, const std::string& scratch);
  ~Walk();
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;

  // At most so many places a mode, evenly chosen behind the first ones.
  Totals run(uint64_t mostPlaces);
  // Once, and once more, whatever the system refuses.
  struct OnceOptions {
    bool mustRecover = false;      // nothing is refused again behind what was refused once
    bool countDescriptors = true;  // not where closing them is refused
    bool looksForFiles = true;     // not where removing them is refused
  };
  Totals runOnce(const OnceOptions& options);

  // A line each.
  const std::vector<std::string>& violations() const { return violations_; }

 private:
  enum class Verdict { kTold, kNoted, kRight, kWrong };

  void learnRightAnswer();
  void readRightAnswer();
  void visit(uint64_t number, Refused refused);
  void exercise(uint64_t number, Refused refused);
  bool prepared();
  Verdict judge(uint64_t faultsBefore) const;
  void count(Verdict verdict, const char* attempt);
  void checkTraces(const char* attempt);
  std::vector<uint64_t> chosenPlaces(uint64_t mostPlaces) const;
  void violate(const std::string& what);

  Job& job_;
  bool looksForFiles_ = true;
  const std::string directoryBefore_;
  std::string right_;
  uint64_t allocations_ = 0;
  int64_t madeBlocks_ = 0;       // by two acts: tables that are kept as long as the rule base
  std::set<std::string> names_;  // of the files that may be there
  Answer answer_;
  Totals totals_;
  std::string place_;
  std::vector<std::string> violations_;
};

}  // namespace ksv::test
