#include "cli/jobs/batch.h"

#include <exception>
#include <memory>
#include <sstream>
#include <utility>

#include "cli/jobs/conversion_record.h"
#include "cli/jobs/conversion_telling.h"
#include "cli/jobs/kept_tree.h"
#include "cli/jobs/overwriting.h"
#include "cli/jobs/result_places.h"
#include "cli/jobs/work_list.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/paths.h"
#include "cli/system/standard_streams.h"
#include "cli/text/text_conversion.h"

namespace ksv_cli {
namespace {

using platform::FileFacts;
using platform::FileKind;

// Tells the console how far the reading has come.
class MeteredSource : public ByteSource {
 public:
  MeteredSource(std::unique_ptr<ByteSource> source, Console& console, uint64_t& total)
      : source_(std::move(source)), console_(console), total_(total) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = source_->read(buffer, size);
    console_.addBytes(count);
    total_ += count;
    return count;
  }

 private:
  std::unique_ptr<ByteSource> source_;
  Console& console_;
  uint64_t& total_;
};

class Batch {
 public:
  Batch(const ConversionSettings& settings, const SourceFinder& find, const OutputPlan& plan,
        const ReportPlan& reports, Verbosity verbosity, const Inputs& inputs)
      : first_(settings),
        others_(settings),
        find_(find),
        plan_(plan),
        reports_(reports),
        inputs_(inputs.paths),
        list_(inputs.paths),
        telling_(list_.console(), verbosity),
        refused_(checkThatNothingIsOverwritten(plan, inputs)) {
    // One stream of several texts has one mark, in front.
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) others_.options.writeByteOrderMark = 0;
  }

  int run(size_t jobs) {
    if (plan_.kind == OutputPlan::Kind::kDirectory && !makeDirectory()) return kExitFailed;
    const int status = list_.run(jobs, [this](size_t index) { convertOne(index); });
    telling_.tellSums();
    return status;
  }

 private:
  bool makeDirectory() {
    try {
      platform::createDirectories(plan_.path);
      return true;
    } catch (const Failure& failure) {
      list_.console().report(plan_.path, failure.what());
      return false;
    }
  }

  // Whatever comes of it is told from here; a failure that goes on from here is told already.
  void convertOne(size_t index) {
    ConversionRecord record;
    try {
      record.input = inputs_[index];
      convertInput(index, record);
    } catch (const std::exception& error) {
      record.failure = failureToTell(error);
    }
    telling_.tellEnd(record);
    if (record.failure) throw Failure(record.failure->what(), true);
  }

  void convertInput(size_t index, ConversionRecord& record) {
    if (const auto refused = refused_.find(index); refused != refused_.end()) throw refused->second;
    const FileFacts facts = inputFacts(record.input);
    ConversionSettings settings = index == 0 ? first_ : others_;
    fillIn(record, facts, settings);
    refuseUnfitInput(facts);
    FoundText text = openText(settings, record);
    if (text.isOfTarget) return keepText(index, facts, *text.source, record);
    auto source =
        std::make_unique<MeteredSource>(std::move(text.source), list_.console(), record.bytesRead);
    const std::unique_ptr<ksv_kit::LossReport> report = lossReport(reports_.form, settings);
    if (report == nullptr) {
      convertSource(index, facts, settings, std::move(source), record);
      return;
    }
    auto reported = std::make_unique<ReportedSource>(std::move(source), *report);
    if (reports_.isAll) {
      reported->readRest();
      report->finish();
      record.outcome = ConversionOutcome::kSkipped;
      writeReport(index, *report);
    } else {
      convertReported(index, facts, settings, std::move(reported), *report, record);
    }
  }

  // What is known in front of the conversion.
  void fillIn(ConversionRecord& record, const FileFacts& facts,
              const ConversionSettings& settings) const {
    if (facts.kind == FileKind::kRegular) record.sizeBefore = facts.size;
    record.target = settings.target.display;
    record.source = settings.source.display;
    record.output = outputPath(plan_, record.input);
    record.kept = backupPath(plan_, record.input);
  }

  // In place there is nothing to be done, nor where nothing is written.
  void keepText(size_t index, const FileFacts& facts, ByteSource& source,
                ConversionRecord& record) {
    record.outcome = ConversionOutcome::kSkipped;
    list_.console().addBytes(record.bytes());
    if (plan_.kind == OutputPlan::Kind::kInPlace || reports_.isAll) return;
    const std::unique_ptr<Result> result = openResult(index, facts);
    record.bytesRead = copyAll(source, *result);
    result->complete();
    record.sizeAfter = result->size();
  }

  void convertSource(size_t index, const FileFacts& facts, const ConversionSettings& settings,
                     std::unique_ptr<ByteSource> source, ConversionRecord& record) {
    const std::unique_ptr<Result> result = openResult(index, facts);
    record.losses = convertText(settings, *source, *result);
    source.reset();  // not every system replaces a file that is open
    complete(*result, record);
    refuseLosses(record);
  }

  // Of a text whose conversion fails the report is told as well, to its end.
  void convertReported(size_t index, const FileFacts& facts, const ConversionSettings& settings,
                       std::unique_ptr<ReportedSource> source, ksv_kit::LossReport& report,
                       ConversionRecord& record) {
    const auto tellReport = [&] {
      report.finish();
      std::istringstream lines(tellingOf(report, reports_.form, nameForMessages(record.input)));
      for (std::string line; std::getline(lines, line);) list_.console().tell(line);
    };
    const std::unique_ptr<Result> result = openResult(index, facts);
    try {
      record.losses = convertText(settings, *source, *result);
    } catch (const Failure&) {
      source->readRest();
      tellReport();
      throw;
    }
    source.reset();
    complete(*result, record);
    tellReport();
    refuseLosses(record);
  }

  static void complete(Result& result, ConversionRecord& record) {
    const bool isPlaced = result.complete();
    record.outcome = isPlaced ? ConversionOutcome::kConverted : ConversionOutcome::kUnchanged;
    record.sizeAfter = result.size();
  }

  void writeReport(size_t index, const ksv_kit::LossReport& report) {
    const std::string telling = tellingOf(report, reports_.form, nameForMessages(inputs_[index]));
    const auto result = standardOutputResult(list_.standardOutput(), index);
    result->write(reinterpret_cast<const uint8_t*>(telling.data()), telling.size());
    result->complete();
    if (first_.isStrict && !report.losses().empty())
      throw Failure(lossesInWords(report), reports_.form == ReportForm::kTable);
  }

  // The result is there all the same: that it lacks something is the failure.
  void refuseLosses(const ConversionRecord& record) const {
    if (first_.isStrict && record.losses.any()) throw Failure(record.losses.inWords());
  }

  // Opens the text, and finds out its charset when none is given.
  FoundText openText(ConversionSettings& settings, ConversionRecord& record) {
    if (!find_) return {openInput(record.input), {}};
    FoundText text = find_(record.input);
    settings.source = text.chosen.charset;
    record.source = settings.source.display;
    record.reason = text.chosen.reason;
    if (!text.isOfTarget && !record.reason.empty()) telling_.tellSource(record);
    return text;
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
    const std::string& input = inputs_[index];
    switch (plan_.kind) {
      case OutputPlan::Kind::kStandardOutput:
        return standardOutputResult(list_.standardOutput(), index);
      case OutputPlan::Kind::kInPlace:
        return inPlaceResult(input, {facts, backupPath(plan_, input), plan_.keepsTimes});
      default:
        if (plan_.keepsTree) makeDirectoriesFor(outputPath(plan_, input), plan_.path);
        return fileResult(outputPath(plan_, input));
    }
  }

  ConversionSettings first_;
  ConversionSettings others_;
  const SourceFinder& find_;
  const OutputPlan& plan_;
  const ReportPlan& reports_;
  const std::vector<std::string>& inputs_;
  WorkList list_;
  ConversionTelling telling_;
  const RefusedInputs refused_;
};

}  // namespace

int convertBatch(const ConversionSettings& settings, const SourceFinder& find,
                 const OutputPlan& plan, const ReportPlan& reports, Verbosity verbosity,
                 const Inputs& inputs, size_t jobs) {
  return Batch(settings, find, plan, reports, verbosity, inputs).run(jobs);
}

}  // namespace ksv_cli
