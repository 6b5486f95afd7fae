#include "tests/faults/walk.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "common/faults.h"
#include "ksv_cconv.h"
#include "tests/faults/charset_files.h"
#include "tests/system/system.h"

namespace ksv::test {
namespace {

namespace fs = std::filesystem;

// In the names of what a job makes and removes itself, which stays where that is refused.
constexpr char kOwnMark[] = "own_";

std::set<std::string> namesHere() {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator("."))
    names.insert(entry.path().generic_string());
  return names;
}

}  // namespace

void writeInput(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  file.close();
  if (!file) throw std::runtime_error(path + " cannot be written");
}

Jobs allJobs() {
  Jobs jobs;
  addFileJobs(jobs);
  addDirectoryJobs(jobs);
  addPlainJobs(jobs);
  addRuleBaseJobs(jobs);
  addConversionJobs(jobs);
  addDocumentJobs(jobs);
  return jobs;
}

Walk::Walk(Job& job, const std::string& scratch)
    : job_(job), directoryBefore_(fs::current_path().string()) {
  const fs::path own = fs::path(scratch) / job.name();
  fs::create_directories(own);
  fs::current_path(own);
  job_.install();
}

Walk::~Walk() {
  std::error_code refused;
  fs::current_path(directoryBefore_, refused);
}

// Three times, so that what is made once in a process is there.
void Walk::learnRightAnswer() {
  for (int time = 0; time < 3; ++time) {
    answer_.clear();
    if (!prepared()) throw std::runtime_error(job_.name() + ": cannot be prepared");
    const LiveMemory before = liveMemory();
    FailingMemory counting(kNoAllocation, Refused::kOne);
    job_.act(answer_);
    counting.stop();
    allocations_ = FailingMemory::asked();
    const Answer first = answer_;
    job_.act(answer_);
    answer_ = first;
    madeBlocks_ = liveMemory().blocks - before.blocks;
    names_.merge(namesHere());
    checkTraces("before");
    job_.finish();
    if (answer_.failedCall() != nullptr)
      throw std::runtime_error(job_.name() + ": " + answer_.failedCall() + " fails");
    if (time > 0 && right_ != answer_.text())
      throw std::runtime_error(job_.name() + ": has two answers");
    right_ = answer_.text();
  }
}

bool Walk::prepared() {
  const bool isPrepared = job_.prepare(answer_);
  names_.merge(namesHere());
  return isPrepared;
}

Totals Walk::run(uint64_t mostPlaces) {
  learnRightAnswer();
  for (const Refused refused : {Refused::kOne, Refused::kAllFromThere}) {
    for (const uint64_t number : chosenPlaces(mostPlaces)) visit(number, refused);
  }
  return totals_;
}

// The answer without faults is that of the first run in a directory.
void Walk::readRightAnswer() {
  const fs::path known = fs::path("..") / (job_.name() + ".right");
  if (!fs::exists(known)) {
    learnRightAnswer();
    writeInput(known.string(), right_);
  }
  std::ifstream file(known, std::ios::binary);
  if (!file) throw std::runtime_error(known.string() + " cannot be read");
  right_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

Totals Walk::runOnce(const OnceOptions& options) {
  readRightAnswer();
  looksForFiles_ = options.looksForFiles;
  const ptrdiff_t descriptors = openDescriptors();
  Verdict before = Verdict::kRight;
  for (const char* attempt : {"first", "again"}) {
    place_ = job_.name() + ": " + attempt;
    answer_.clear();
    const uint64_t faults = faultCount();
    if (prepared()) {
      markForTracers("library begins");
      job_.act(answer_);
      markForTracers("library ends");
      checkTraces(attempt);
      job_.finish();
    }
    const Verdict verdict = judge(faults);
    count(verdict, attempt);
    if (options.mustRecover && before != Verdict::kRight && verdict != Verdict::kRight)
      violate("does not recover: " + std::string(answer_.text()));
    before = verdict;
  }
  if (options.countDescriptors && openDescriptors() > descriptors) violate("descriptors stay open");
  return totals_;
}

std::vector<uint64_t> Walk::chosenPlaces(uint64_t mostPlaces) const {
  std::vector<uint64_t> places;
  const uint64_t first = allocations_ <= mostPlaces ? allocations_ : mostPlaces / 2;
  for (uint64_t number = 0; number < first; ++number) places.push_back(number);
  const uint64_t rest = allocations_ - first;
  const uint64_t chosen = std::min(rest, mostPlaces - first);
  for (uint64_t i = 0; i < chosen; ++i) places.push_back(first + rest * i / chosen);
  return places;
}

void Walk::visit(uint64_t number, Refused refused) {
  place_ = job_.name() + ": allocation " + std::to_string(number) +
           (refused == Refused::kOne ? " alone" : " and all behind it");
  const ptrdiff_t descriptors = openDescriptors();
  const size_t violations = violations_.size();
  const LiveMemory before = liveMemory();
  exercise(number, refused);
  const LiveMemory after = liveMemory();
  // A violation is remembered, and takes memory itself.
  if (after != before && violations_.size() == violations)
    violate(std::to_string(after.blocks - before.blocks) + " blocks stay, " +
            std::to_string(after.bytes - before.bytes) + " bytes");
  if (openDescriptors() > descriptors) violate("descriptors stay open");
  ++totals_.places;
}

void Walk::exercise(uint64_t number, Refused refused) {
  answer_.clear();
  if (!prepared()) return violate("cannot be prepared any more");
  const uint64_t faults = faultCount();
  const LiveMemory before = liveMemory();
  FailingMemory failing(number, refused);
  job_.act(answer_);
  failing.stop();
  if (FailingMemory::refused() == 0) violate("is not reached");
  count(judge(faults), "first");
  checkTraces("first");
  answer_.clear();
  job_.act(answer_);
  const int64_t made = liveMemory().blocks - before.blocks;
  if (made < madeBlocks_ - job_.blocksThatMayLack())
    violate("again: does without " + std::to_string(madeBlocks_ - made));
  if (answer_.text() != right_ || answer_.failedCall() != nullptr)
    violate("again: is wrong: " + std::string(answer_.text()));
  checkTraces("again");
  job_.finish();
}

// What was answered before a call said that it failed has to be right as well.
Walk::Verdict Walk::judge(uint64_t faultsBefore) const {
  const bool isTold = answer_.failedCall() != nullptr;
  const std::string_view text = answer_.text();
  if (isTold && right_.starts_with(text)) return Verdict::kTold;
  if (text == right_) return Verdict::kRight;
  return job_.isSilent() && faultCount() > faultsBefore ? Verdict::kNoted : Verdict::kWrong;
}

void Walk::count(Verdict verdict, const char* attempt) {
  switch (verdict) {
    case Verdict::kTold:
      ++totals_.told;
      break;
    case Verdict::kNoted:
      ++totals_.noted;
      break;
    case Verdict::kRight:
      ++totals_.right;
      break;
    case Verdict::kWrong:
      violate(std::string(attempt) + ": a wrong answer: " + std::string(answer_.text()));
      break;
  }
}

void Walk::checkTraces(const char* attempt) {
  for (const std::string& name : namesHere()) {
    // What compiled tables hold is looked at below.
    if (names_.contains(name) || name.find(kOwnMark) != name.npos || name.ends_with(".cmp"))
      continue;
    if (looksForFiles_) violate(std::string(attempt) + ": leaves " + name);
  }
  for (const std::string& name : wrongCompiledTables())
    violate(std::string(attempt) + ": compiles " + name + " wrongly");
  if (unlockMutex() != 0) violate(std::string(attempt) + ": holds the lock");
}

void Walk::violate(const std::string& what) {
  ++totals_.violations;
  violations_.push_back(place_ + ": " + what);
}

}  // namespace ksv::test
