#include "cli/jobs/batch.h"

#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

#include "cli/jobs/result_line.h"
#include "cli/jobs/work_list.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/paths.h"
#include "cli/system/pending_file.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"
#include "cli/text/text_conversion.h"

namespace ksv_cli {
namespace {

using platform::FileFacts;
using platform::FileKind;

// Tells the console how far the reading has come.
class MeteredSource : public ByteSource {
 public:
  MeteredSource(std::unique_ptr<ByteSource> source, Console& console)
      : source_(std::move(source)), console_(console) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = source_->read(buffer, size);
    console_.addBytes(count);
    return count;
  }

 private:
  std::unique_ptr<ByteSource> source_;
  Console& console_;
};

// The place of one result. A write that fails is told with the name of that
// place, since the message begins with the input's.
class Result : public ByteSink {
 public:
  explicit Result(std::string name) : name_(std::move(name)) {}

  void write(const uint8_t* bytes, size_t size) final {
    if (size == 0) return;
    refuseSystemFaults();
    guarded([&] { writeBytes(bytes, size); });
  }
  void complete() {
    refuseSystemFaults();
    guarded([&] { takePlace(); });
  }

 protected:
  template <typename Action>
  void guarded(Action action) const {
    try {
      action();
    } catch (const Failure& failure) {
      throw Failure("cannot write " + name_ + ": " + failure.what(), failure.quiet());
    }
  }

 private:
  virtual void writeBytes(const uint8_t* bytes, size_t size) = 0;
  virtual void takePlace() {}

  std::string name_;
};

class StandardOutputResult : public Result {
 public:
  StandardOutputResult(OrderedOutput& output, size_t index)
      : Result("standard output"), output_(output), index_(index) {}

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override {
    output_.write(index_, bytes, size);
  }

  OrderedOutput& output_;
  size_t index_;
};

// A device or a pipe is written to as it is; anything else is replaced whole.
class FileResult : public Result {
 public:
  explicit FileResult(const std::string& path) : Result(path) {
    guarded([&] {
      if (platform::fileFacts(path).kind == FileKind::kOther)
        special_ = platform::openSpecialOutput(path);
      else
        pending_ = platform::PendingFile::create(path);
    });
  }

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override {
    (special_ ? *special_ : *pending_).write(bytes, size);
  }
  void takePlace() override {
    if (pending_) pending_->commit();
  }

  std::unique_ptr<ByteSink> special_;
  std::unique_ptr<platform::PendingFile> pending_;
};

class InPlaceResult : public Result {
 public:
  InPlaceResult(const std::string& path, const platform::InPlace& how) : Result(path) {
    guarded([&] { pending_ = platform::PendingFile::createInPlace(path, how); });
  }

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override { pending_->write(bytes, size); }
  void takePlace() override { pending_->commit(); }

  std::unique_ptr<platform::PendingFile> pending_;
};

class Batch {
 public:
  Batch(const ConversionSettings& settings, const SourceFinder& find, const OutputPlan& plan,
        const ReportPlan& reports, const std::vector<std::string>& inputs)
      : first_(settings),
        others_(settings),
        find_(find),
        plan_(plan),
        reports_(reports),
        inputs_(inputs),
        list_(inputs) {
    // One stream of several texts has one mark, in front.
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) others_.options.writeByteOrderMark = 0;
    checkThatNothingIsOverwritten();
  }

  int run(size_t jobs) {
    if (plan_.kind == OutputPlan::Kind::kDirectory && !makeDirectory()) return kExitFailed;
    return list_.run(jobs, [this](size_t index) { convertOne(index); });
  }

 private:
  using FileId = std::pair<uint64_t, uint64_t>;

  std::string outputPath(const std::string& input) const {
    switch (plan_.kind) {
      case OutputPlan::Kind::kDirectory:
        return platform::joinPath(plan_.path, platform::lastComponent(input));
      case OutputPlan::Kind::kInPlace:
        return input;
      default:
        return plan_.path;
    }
  }

  // An input of which nothing can be told is not converted.
  FileFacts factsOfInput(size_t index) {
    try {
      return platform::fileFacts(inputs_[index]);
    } catch (const Failure& failure) {
      refused_.emplace(index, failure);
      return {};
    }
  }

  // Before anything is written, so a result of which nothing can be told ends it all.
  static FileFacts factsOfOutput(const std::string& path) {
    try {
      return platform::fileFacts(path);
    } catch (const Failure& failure) {
      throw Failure(shownName(path) + ": " + failure.what());
    }
  }

  void checkThatNothingIsOverwritten() {
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) return;
    std::set<FileId> inputIds;
    std::map<std::string, std::string> outputs;  // by the key of the place
    for (size_t index = 0; index < inputs_.size(); ++index) {
      const std::string& input = inputs_[index];
      const FileFacts facts = factsOfInput(index);
      const bool isFile = facts.kind == FileKind::kRegular && !isStandardStream(input);
      const bool isNewId = !isFile || inputIds.emplace(facts.device, facts.number).second;
      const bool isNewOutput =
          outputs.emplace(platform::placeKey(outputPath(input)), outputPath(input)).second;
      if (!isNewOutput || (plan_.kind == OutputPlan::Kind::kInPlace && !isNewId))
        throw UsageError(outputPath(input) + " would be written twice");
    }
    if (plan_.kind == OutputPlan::Kind::kInPlace) return;
    for (const auto& [key, output] : outputs) {
      const FileFacts facts = factsOfOutput(output);
      if (facts.kind == FileKind::kRegular && inputIds.count({facts.device, facts.number}) != 0)
        throw UsageError(output + " is an input as well; --in-place converts a file where it is");
    }
  }

  bool makeDirectory() {
    try {
      platform::createDirectories(plan_.path);
      return true;
    } catch (const Failure& failure) {
      list_.console().report(plan_.path, failure.what());
      return false;
    }
  }

  void convertOne(size_t index) {
    const std::string& input = inputs_[index];
    if (const auto refused = refused_.find(index); refused != refused_.end()) throw refused->second;
    const FileFacts facts = inputFacts(input);
    refuseUnfitInput(facts);
    ConversionSettings settings = index == 0 ? first_ : others_;
    auto source = std::make_unique<MeteredSource>(openText(input, settings), list_.console());
    const std::unique_ptr<ksv_kit::LossReport> report = lossReport(reports_.form, settings);
    if (report == nullptr) {
      convertSource(index, facts, settings, std::move(source));
      return;
    }
    auto reported = std::make_unique<ReportedSource>(std::move(source), *report);
    if (reports_.isAll) {
      reported->readRest();
      report->finish();
      writeReport(index, *report);
    } else {
      convertReported(index, facts, settings, std::move(reported), *report);
    }
  }

  void convertSource(size_t index, const FileFacts& facts, const ConversionSettings& settings,
                     std::unique_ptr<ByteSource> source) {
    const std::unique_ptr<Result> result = openResult(index, facts);
    const ConversionCounts counts = convertText(settings, *source, *result);
    source.reset();  // not every system replaces a file that is open
    result->complete();
    tell(inputs_[index], counts);
  }

  // Of a text whose conversion fails the report is told as well, to its end.
  void convertReported(size_t index, const FileFacts& facts, const ConversionSettings& settings,
                       std::unique_ptr<ReportedSource> source, ksv_kit::LossReport& report) {
    const std::string& input = inputs_[index];
    const auto tellReport = [&] {
      report.finish();
      std::istringstream lines(tellingOf(report, reports_.form, nameForMessages(input)));
      for (std::string line; std::getline(lines, line);) list_.console().tell(line);
    };
    const std::unique_ptr<Result> result = openResult(index, facts);
    ConversionCounts counts;
    try {
      counts = convertText(settings, *source, *result);
    } catch (const Failure&) {
      source->readRest();
      tellReport();
      throw;
    }
    source.reset();
    result->complete();
    tellReport();
    tell(input, counts);
  }

  void writeReport(size_t index, const ksv_kit::LossReport& report) {
    const std::string telling = tellingOf(report, reports_.form, nameForMessages(inputs_[index]));
    StandardOutputResult result(list_.standardOutput(), index);
    result.write(reinterpret_cast<const uint8_t*>(telling.data()), telling.size());
    result.complete();
    if (first_.isStrict && !report.losses().empty())
      throw Failure(lossesInWords(report), reports_.form == ReportForm::kTable);
  }

  // The result is there all the same: that it lacks something is the failure.
  void tell(const std::string& input, const ConversionCounts& counts) {
    if (!counts.any()) return;
    if (first_.isStrict) throw Failure(counts.inWords());
    list_.console().report(nameForMessages(input), counts.inWords());
  }

  // Opens the text, and finds out its charset when none is given.
  std::unique_ptr<ByteSource> openText(const std::string& input, ConversionSettings& settings) {
    if (!settings.source.name.empty()) return openInput(input);
    JudgedText text = find_(input);
    list_.console().report(nameForMessages(input), text.chosen.reason);
    settings.source = std::move(text.chosen.charset);
    return std::move(text.source);
  }

  void refuseUnfitInput(const FileFacts& facts) const {
    if (plan_.kind == OutputPlan::Kind::kInPlace && facts.kind == FileKind::kOther)
      throw Failure("is not a regular file");
    if (plan_.kind == OutputPlan::Kind::kStandardOutput && facts.kind == FileKind::kRegular &&
        facts.isSameFileAs(platform::standardOutputFacts()))
      throw Failure("is standard output as well");
  }

  // facts: of the input before it was opened.
  std::unique_ptr<Result> openResult(size_t index, const FileFacts& facts) {
    if (plan_.kind == OutputPlan::Kind::kStandardOutput)
      return std::make_unique<StandardOutputResult>(list_.standardOutput(), index);
    const std::string& input = inputs_[index];
    if (plan_.kind != OutputPlan::Kind::kInPlace)
      return std::make_unique<FileResult>(outputPath(input));
    const std::string backup = plan_.backupSuffix.empty() ? "" : input + plan_.backupSuffix;
    return std::make_unique<InPlaceResult>(input,
                                           platform::InPlace{facts, backup, plan_.keepsTimes});
  }

  ConversionSettings first_;
  ConversionSettings others_;
  const SourceFinder& find_;
  const OutputPlan& plan_;
  const ReportPlan& reports_;
  const std::vector<std::string>& inputs_;
  WorkList list_;
  std::map<size_t, Failure> refused_;
};

}  // namespace

int convertBatch(const ConversionSettings& settings, const SourceFinder& find,
                 const OutputPlan& plan, const ReportPlan& reports,
                 const std::vector<std::string>& inputs, size_t jobs) {
  return Batch(settings, find, plan, reports, inputs).run(jobs);
}

}  // namespace ksv_cli
