// A job: calls of one family on small inputs, with one right answer.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/faults/answer.h"

namespace ksv::test {

// The current directory is the job's own from install() on. Only act() is under faults of
// memory; faults of the system may come anywhere behind install(). What act() answers is
// said by its calls, so it allocates nothing itself, and it gives back all that it takes
// whatever fails. It can be called again and again between prepare() and finish().
class Job {
 public:
  explicit Job(std::string name) : name_(std::move(name)) {}
  virtual ~Job() = default;
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  const std::string& name() const { return name_; }

  // Puts the inputs there.
  virtual void install() {}
  // False when that said that it failed.
  virtual bool prepare(Answer&) { return true; }
  virtual void act(Answer& answer) = 0;
  virtual void finish() {}

  // Whether it has calls that do not speak of failures: a wrong answer of theirs comes
  // together with a fault that is noted.
  virtual bool isSilent() const { return false; }

  // Of the blocks that are kept between two act(), how many the second may do without: what
  // is only learned from is not made again where all is known by then.
  virtual int64_t blocksThatMayLack() const { return 0; }

 private:
  const std::string name_;
};

using Jobs = std::vector<std::unique_ptr<Job>>;

void addFileJobs(Jobs& jobs);
void addDirectoryJobs(Jobs& jobs);
void addPlainJobs(Jobs& jobs);
void addRuleBaseJobs(Jobs& jobs);
void addConversionJobs(Jobs& jobs);
void addDocumentJobs(Jobs& jobs);

Jobs allJobs();

// A job made of functions.
class SimpleJob : public Job {
 public:
  using Act = void (*)(Answer& answer);
  using Install = void (*)();

  SimpleJob(std::string name, Act act, Install install = nullptr)
      : Job(std::move(name)), act_(act), install_(install) {}

  void install() override {
    if (install_ != nullptr) install_();
  }
  void act(Answer& answer) override { act_(answer); }

 private:
  const Act act_;
  const Install install_;
};

// For install().
void writeInput(const std::string& path, const std::string& bytes);

}  // namespace ksv::test
