#include "cli/jobs/manifest_run.h"

#include <algorithm>
#include <random>
#include <utility>

#include "cli/jobs/kept_text.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/kept_original.h"
#include "cli/system/paths.h"
#include "cli/system/times.h"

namespace ksv_cli {
namespace {

using platform::FileFacts;
using platform::FileKind;
using platform::JournalFile;

std::string newRunName() {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  std::random_device random;
  std::string name;
  for (int i = 0; i < 16; ++i) name += kHexDigits[random() % 16];
  return name;
}

std::string valueGivenFor(const OptionList& options, const std::string& name) {
  const auto found = std::ranges::find(options, name, &OptionList::value_type::first);
  return found == options.end() ? "" : found->second;
}

std::pair<uint64_t, uint64_t> idOf(const FileFacts& facts) { return {facts.device, facts.number}; }

// Whoever converts it is told why nothing is known of it.
FileFacts factsIfKnown(const std::string& path) {
  try {
    return platform::fileFacts(path);
  } catch (const Failure&) {
    return {};
  }
}

std::string inWords(const std::string& value) { return value.empty() ? "nothing" : value; }

bool isDoneElsewhere(const ConversionRecord& record) {
  const std::string sum = sumOfFile(record.output);
  if (sum.empty()) return false;
  if (sum != record.sumAfter) throw Failure(record.output + kIsChanged);
  if (sumOfFile(record.input) != record.sumBefore) throw Failure(std::string("it") + kIsChanged);
  return true;
}

bool isDoneInPlace(const PastConversion& past) {
  const std::string sum = sumOfFile(past.record.input);
  if (past.isIntended && sum == past.record.sumBefore) return false;
  if (sum != (past.isIntended ? past.record.sumAfter : past.record.sumBefore))
    throw Failure(std::string("it") + kIsChanged);
  return true;
}

// By the sums, whatever is said of the end: a run may have ended behind its last step. Throws
// Failure where they tell nothing.
bool isDone(const PastConversion& past) {
  if (!past.isIntended && !past.hasResult) return false;
  return isElsewhere(past.record) ? isDoneElsewhere(past.record) : isDoneInPlace(past);
}

// Throws UsageError for the first that differs.
void checkThatOptionsAreSame(const OptionList& before, const OptionList& now) {
  OptionList all = before;
  all.insert(all.end(), now.begin(), now.end());
  for (const auto& [name, value] : all) {
    const std::string old = valueGivenFor(before, name);
    const std::string given = valueGivenFor(now, name);
    if (old != given)
      throw UsageError("the run to resume had " + inWords(old) + " for --" + name + ", not " +
                       inWords(given));
  }
}

}  // namespace

Manifest::Manifest(std::string path, std::unique_ptr<JournalFile> file)
    : path_(std::move(path)), file_(std::move(file)) {}

void Manifest::writeDurably(const std::string& line) {
  std::unique_lock<std::mutex> lock(mutex_);
  waitFor(lock, append(lock, line));
}

void Manifest::write(const std::string& line) {
  std::unique_lock<std::mutex> lock(mutex_);
  const uint64_t count = append(lock, line);
  if (count - onDisk_ >= kMostWaiting) waitFor(lock, count);
}

bool Manifest::isBroken() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return isBroken_;
}

// While one thread waits for the disk, others may write.
class Manifest::Waiting {
 public:
  Waiting(Manifest& manifest, std::unique_lock<std::mutex>& lock)
      : manifest_(manifest), lock_(lock) {
    manifest_.isSynchronising_ = true;
    lock_.unlock();
  }
  ~Waiting() {
    lock_.lock();
    manifest_.isSynchronising_ = false;
    manifest_.synchronised_.notify_all();
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  Manifest& manifest_;
  std::unique_lock<std::mutex>& lock_;
};

template <typename Action>
void Manifest::guarded(Action action) {
  try {
    if (isBroken_) throw Failure("an earlier write has failed");
    action();
  } catch (const Failure& failure) {
    isBroken_ = true;
    throw Failure("cannot write " + path_ + ": " + failure.what());
  } catch (...) {
    isBroken_ = true;
    throw;
  }
}

uint64_t Manifest::append(std::unique_lock<std::mutex>&, const std::string& line) {
  guarded([&] { file_->append(line); });
  return ++written_;
}

// One thread at a time waits for the disk, for the lines of all that have written by then.
void Manifest::waitFor(std::unique_lock<std::mutex>& lock, uint64_t count) {
  while (onDisk_ < count) {
    if (isSynchronising_)
      synchronised_.wait(lock);
    else
      synchronise(lock);
  }
}

void Manifest::synchronise(std::unique_lock<std::mutex>& lock) {
  const uint64_t count = written_;
  guarded([&] {
    const Waiting waiting(*this, lock);
    file_->synchronise();
  });
  onDisk_ = count;
}

ManifestRun::ManifestRun(const RunPlan& plan) : plan_(plan) {
  const bool isThere = platform::fileFacts(plan.manifest).kind != FileKind::kMissing;
  if (isThere && !plan.resumes)
    throw UsageError(plan.manifest + " exists already; --resume goes on with it");
  head_ = {newRunName(), platform::currentDirectory(), plan.options};
  if (isThere) resume();
}

void ManifestRun::resume() {
  file_ = JournalFile::open(plan_.manifest);
  history_ = RunHistory::read(plan_.manifest);
  if (!history_.hasHead()) return;
  checkThatOptionsAreSame(history_.head().options, head_.options);
  if (history_.head().directory != head_.directory)
    throw UsageError("the run to resume was begun in " + history_.head().directory);
  head_ = history_.head();
  for (const PastConversion& past : history_.conversions())
    if (past.isIntended && !past.hasResult && settle(past.record))
      putBack_.push_back(past.record.input);
  noteFiles();
}

// Until a file is replaced, its original may be kept under a second name of the same file.
void ManifestRun::noteFiles() {
  for (const PastConversion& past : history_.conversions()) {
    if (!past.isIntended) continue;
    const FileFacts place = platform::fileFacts(past.record.output);
    if (place.kind == FileKind::kRegular) pastByFile_.emplace(idOf(place), &past);
    if (past.record.kept.empty()) continue;
    const FileFacts kept = platform::fileFacts(past.record.kept);
    if (kept.kind == FileKind::kRegular && !kept.isSameFileAs(place)) kept_.insert(idOf(kept));
  }
}

void ManifestRun::begin() {
  if (file_)
    file_->cut(history_.wholeSize());
  else
    file_ = JournalFile::create(plan_.manifest);
  manifest_ = std::make_unique<Manifest>(plan_.manifest, std::move(file_));
  manifest_->writeDurably(history_.hasHead() ? resumptionLine() : headLine(head_));
}

bool ManifestRun::isPassedOver(const std::string& input) const {
  const FileFacts facts = factsIfKnown(input);
  return facts.kind == FileKind::kRegular &&
         (kept_.contains(idOf(facts)) || facts.isSameFileAs(platform::fileFacts(plan_.manifest)));
}

// The same names as before may stand for more files by now.
Inputs ManifestRun::inputs(const Inputs& named) const {
  if (!history_.hasHead()) return named;
  Inputs inputs;
  for (size_t i = 0; i < named.paths.size(); ++i)
    if (!isPassedOver(named.paths[i])) inputs.addFrom(named, i);
  for (const std::string& input : putBack_) {
    const FileFacts facts = factsIfKnown(input);
    const bool isNamed = std::ranges::any_of(inputs.paths, [&](const std::string& other) {
      return other == input || factsIfKnown(other).isSameFileAs(facts);
    });
    if (!isNamed) inputs.add(input);
  }
  return inputs;
}

const PastConversion* ManifestRun::pastOf(const std::string& input) const {
  if (const PastConversion* const past = history_.find(input)) return past;
  const FileFacts facts = platform::fileFacts(input);
  const auto found =
      facts.kind == FileKind::kRegular ? pastByFile_.find(idOf(facts)) : pastByFile_.end();
  return found == pastByFile_.end() ? nullptr : found->second;
}

std::string ManifestRun::passingNameFor(const std::string& place) const {
  return ksv_cli::passingNameFor(head_.run, place);
}

std::optional<ConversionRecord> ManifestRun::earlierResult(const std::string& input,
                                                           const std::string& place) {
  if (!history_.hasHead()) return std::nullopt;
  const PastConversion* const past = pastOf(input);
  if (past == nullptr || !past->hasResult)
    platform::removePassingFile(place, passingNameFor(place));
  if (past == nullptr || !isDone(*past)) return std::nullopt;
  ConversionRecord record = past->record;
  if (past->hasResult) {
    count(record);
  } else {
    record.modifiedAfter = modificationMoment(platform::fileFacts(record.output));
    noteResult(record);
  }
  return record;
}

void ManifestRun::noteIntent(const ConversionRecord& record) {
  manifest_->writeDurably(intentLine(record));
}

void ManifestRun::noteResult(const ConversionRecord& record) {
  manifest_->write(resultLine(record));
  count(record);
}

void ManifestRun::count(const ConversionRecord& record) {
  const std::lock_guard<std::mutex> lock(mutex_);
  totals_.add(record.outcome);
}

void ManifestRun::end() { manifest_->writeDurably(endLine(totals_)); }

}  // namespace ksv_cli
