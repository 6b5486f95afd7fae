#include "cli/jobs/batch.h"

#include <exception>
#include <memory>
#include <sstream>
#include <utility>

#include "cli/jobs/conversion_record.h"
#include "cli/jobs/conversion_telling.h"
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
        list_(inputs),
        telling_(list_.console()),
        refused_(checkThatNothingIsOverwritten(plan, inputs)) {
    // One stream of several texts has one mark, in front.
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) others_.options.writeByteOrderMark = 0;
  }

  int run(size_t jobs) {
    if (plan_.kind == OutputPlan::Kind::kDirectory && !makeDirectory()) return kExitFailed;
    return list_.run(jobs, [this](size_t index) { convertOne(index); });
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
    auto source = std::make_unique<MeteredSource>(openText(settings, record), list_.console());
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
  std::unique_ptr<ByteSource> openText(ConversionSettings& settings, ConversionRecord& record) {
    if (!settings.source.name.empty()) return openInput(record.input);
    JudgedText text = find_(record.input);
    settings.source = std::move(text.chosen.charset);
    record.source = settings.source.display;
    record.reason = std::move(text.chosen.reason);
    telling_.tellSource(record);
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
    const std::string& input = inputs_[index];
    switch (plan_.kind) {
      case OutputPlan::Kind::kStandardOutput:
        return standardOutputResult(list_.standardOutput(), index);
      case OutputPlan::Kind::kInPlace:
        return inPlaceResult(input, {facts, backupPath(plan_, input), plan_.keepsTimes});
      default:
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
                 const OutputPlan& plan, const ReportPlan& reports,
                 const std::vector<std::string>& inputs, size_t jobs) {
  return Batch(settings, find, plan, reports, inputs).run(jobs);
}

}  // namespace ksv_cli
