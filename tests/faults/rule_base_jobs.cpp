// The rule base: its start, its lock and its loading.
#include <cstdint>

#include "ksv_cconv.h"
#include "tests/faults/charset_files.h"
#include "tests/faults/job.h"

namespace ksv::test {
namespace {

// In each act() the rule base is started, loaded and ended.
class RuleBaseJob : public Job {
 public:
  RuleBaseJob(std::string name, std::vector<std::string> charsets)
      : Job(std::move(name)), charsets_(std::move(charsets)) {}

  void install() override { installCharsets(charsets_); }
  bool isSilent() const override { return true; }

  void act(Answer& answer) override {
    if (!answer.needs(startProcess() == 1, "startProcess")) return;
    setBlockSize(256);
    if (answer.expects("lockMutex", lockMutex(), 0)) unlockMutex();
    KSV_setCharsetPath("");
    if (answer.expects("cconvLoadRule", cconvLoadRule(), 0)) enumerate(answer);
    endProcess();
  }

 private:
  static void enumerate(Answer& answer) {
    char name[KSV_NAME_SIZE];
    for (int32_t index = 0; cconvEnumGroup(index, name) != 0; ++index) answer.add("has", name);
  }

  const std::vector<std::string> charsets_;
};

// What a second loading adds to a first one that went wrong: only the second is asked.
class SecondLoadingJob : public Job {
 public:
  using Job::Job;

  void install() override { installCharsets({"utf-8", "windows-1252"}); }
  bool isSilent() const override { return true; }
  bool prepare(Answer& answer) override {
    return answer.needs(startProcess() == 1, "startProcess");
  }
  void act(Answer& answer) override {
    if (!answer.expects("cconvLoadRule", cconvLoadRule(), 0)) return;
    for (const char* name : {"UTF-8", "windows-1252"}) {
      static ConverterRecord record;
      answer.expects("cconvInitConvert", cconvInitConvert(&record, nullptr, name),
                     KSV_STATUS_FAILURE);
    }
  }
  void finish() override { endProcess(); }
};

}  // namespace

void addRuleBaseJobs(Jobs& jobs) {
  jobs.push_back(
      std::make_unique<RuleBaseJob>("rule_base", std::vector<std::string>{"utf-8", "shift_jis"}));
  jobs.push_back(std::make_unique<SecondLoadingJob>("rule_base_loaded_again"));
}

}  // namespace ksv::test
