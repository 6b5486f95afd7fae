#include "cli/jobs/batch.h"

#include <exception>
#include <memory>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "cli/jobs/conversion_record.h"
#include "cli/jobs/conversion_telling.h"
#include "cli/jobs/kept_tree.h"
#include "cli/jobs/overwriting.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/result_places.h"
#include "cli/jobs/work_list.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/paths.h"
#include "cli/system/sha256.h"
#include "cli/system/standard_streams.h"
#include "cli/system/times.h"
#include "cli/text/held_text.h"
#include "cli/text/text_conversion.h"
#include "cli/text/text_failure.h"
#include "cli/text/text_repair.h"
#include "cli/text/text_segments.h"

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

class SummedSource : public ByteSource {
 public:
  SummedSource(std::unique_ptr<ByteSource> source, Sha256& sum)
      : source_(std::move(source)), sum_(sum) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = source_->read(buffer, size);
    sum_.update(buffer, count);
    return count;
  }

 private:
  std::unique_ptr<ByteSource> source_;
  Sha256& sum_;
};

// One input on its way.
struct Work {
  size_t index;
  FileFacts facts;  // of the input before it was opened
  ConversionSettings settings;
  ConversionRecord& record;
  std::vector<TextSegment> segments = {};  // of a mixed text
  Sha256 sum = {};                         // of a run with a manifest: of what has been read
};

class Batch {
 public:
  // run: null where there is no manifest.
  Batch(const ConversionSettings& settings, const SourceFinder& find, const OutputPlan& plan,
        const ReportPlan& reports, bool tellsJson, Verbosity verbosity, const Inputs& inputs,
        ManifestRun* run)
      : first_(settings),
        others_(settings),
        find_(find),
        plan_(plan),
        reports_(reports),
        inputs_(inputs.paths),
        list_(inputs.paths),
        telling_(list_, tellsJson, verbosity),
        refused_(checkThatNothingIsOverwritten(plan, inputs)),
        run_(run) {
    // One stream of several texts has one mark, in front.
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) others_.options.writeByteOrderMark = 0;
  }

  int run(size_t jobs) {
    if (plan_.kind == OutputPlan::Kind::kDirectory && !makeDirectory()) return kExitFailed;
    if (run_ != nullptr) run_->begin();
    const int status = list_.run(jobs, [this](size_t index) { convertOne(index); });
    if (run_ != nullptr && !run_->isBroken()) run_->end();
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
      record.target = first_.target.display;
      convertUnlessDone(index, record);
    } catch (const std::exception& error) {
      record.failure = failureToTell(error);
    }
    const bool isTold = telling_.tellEnd(index, record);
    if (run_ != nullptr && run_->isBroken()) list_.stop();
    if (record.failure || !isTold) throw Failure("is told", true);
  }

  void convertUnlessDone(size_t index, ConversionRecord& record) {
    if (run_ == nullptr) return convertInput(index, record);
    const std::string place = outputPath(plan_, record.input);
    if (std::optional<ConversionRecord> earlier = run_->earlierResult(record.input, place)) {
      record = *std::move(earlier);
      return refuseLosses(record);
    }
    try {
      convertInput(index, record);
    } catch (const std::exception& error) {
      record.failure = failureToTell(error);
    }
    // Of what could not be noted before there is nothing to note.
    if (!run_->isBroken()) run_->noteResult(record);
  }

  void convertInput(size_t index, ConversionRecord& record) {
    if (const auto refused = refused_.find(index); refused != refused_.end()) throw refused->second;
    Work work = {index, inputFacts(record.input), index == 0 ? first_ : others_, record};
    fillIn(work);
    refuseUnfitInput(work.facts);
    FoundText text = openText(work);
    if (text.isOfTarget) return keepText(work, *text.source);
    std::unique_ptr<ByteSource> source =
        std::make_unique<MeteredSource>(std::move(text.source), list_.console(), record.bytesRead);
    if (run_ != nullptr) source = std::make_unique<SummedSource>(std::move(source), work.sum);
    if (work.settings.repairs) source = repairedSource(std::move(source), work);
    const std::unique_ptr<ksv_kit::LossReport> report = lossReport(reports_.form, work.settings);
    if (report == nullptr) return convertSource(work, std::move(source));
    auto reported = std::make_unique<ReportedSource>(std::move(source), *report);
    if (reports_.isAll) {
      reported->readRest();
      report->finish();
      record.outcome = ConversionOutcome::kSkipped;
      writeReport(index, *report);
      refuseLosses(record);
    } else {
      convertReported(work, std::move(reported), *report);
    }
  }

  // What is known in front of the conversion.
  void fillIn(Work& work) const {
    ConversionRecord& record = work.record;
    if (work.facts.kind == FileKind::kRegular) {
      record.sizeBefore = work.facts.size;
      if (run_ != nullptr) record.modifiedBefore = modificationMoment(work.facts);
    }
    record.source = work.settings.source.display;
    record.output = outputPath(plan_, record.input);
    record.kept = backupPath(plan_, record.input);
  }

  // In place there is nothing to be done, nor where nothing is written.
  void keepText(Work& work, ByteSource& source) {
    ConversionRecord& record = work.record;
    record.outcome = ConversionOutcome::kSkipped;
    list_.console().addBytes(record.bytes());
    if (reports_.isAll) return;
    if (plan_.kind == OutputPlan::Kind::kInPlace) {
      if (run_ != nullptr) record.sumBefore = record.sumAfter = sumOf(source);
      record.modifiedAfter = record.modifiedBefore;
      return;
    }
    const std::unique_ptr<Result> result = openResult(work);
    record.bytesRead = copyAll(source, *result);
    record.sizeAfter = result->size();
    record.sumBefore = record.sumAfter = result->takeSum();
    result->complete();
    if (run_ != nullptr)
      record.modifiedAfter = modificationMoment(platform::fileFacts(record.output));
  }

  void convertSource(Work& work, std::unique_ptr<ByteSource> source) {
    const std::unique_ptr<Result> result = openResult(work);
    work.record.losses = convertTo(*result, work, *source);
    source.reset();  // not every system replaces a file that is open
    complete(*result, work);
    refuseLosses(work.record);
  }

  // The text as it is to be converted.
  std::unique_ptr<ByteSource> repairedSource(std::unique_ptr<ByteSource> source, const Work& work) {
    RepairedText repaired = repairedText(heldText(*source, work.record.sizeBefore.value_or(0)));
    work.record.repair = repaired.facts;
    return std::make_unique<HeldSource>(std::move(repaired.text));
  }

  static ConversionCounts convertTo(ByteSink& sink, const Work& work, ByteSource& source) {
    if (!work.segments.empty()) return convertSegments(work.settings, work.segments, source, sink);
    try {
      return convertText(work.settings, source, sink);
    } catch (const Failure& failure) {
      if (!work.settings.repairs || !failure.offset()) throw;
      throw Failure::at(*failure.offset(), failure.reason(),
                        atOffset(*failure.offset()) + " of the repaired text");
    }
  }

  // Of a text whose conversion fails the report is told as well, to its end.
  void convertReported(Work& work, std::unique_ptr<ReportedSource> source,
                       ksv_kit::LossReport& report) {
    const std::string name = nameForMessages(work.record.input);
    const auto tellReport = [&] {
      report.finish();
      std::istringstream lines(tellingOf(report, reports_.form, name));
      for (std::string line; std::getline(lines, line);) list_.console().tell(line);
    };
    const std::unique_ptr<Result> result = openResult(work);
    try {
      work.record.losses = convertTo(*result, work, *source);
    } catch (const Failure&) {
      source->readRest();
      tellReport();
      throw;
    }
    source.reset();
    complete(*result, work);
    tellReport();
    refuseLosses(work.record);
  }

  void complete(Result& result, Work& work) {
    ConversionRecord& record = work.record;
    record.sizeAfter = result.size();
    if (run_ != nullptr) {
      record.sumBefore = work.sum.finish();
      record.sumAfter = result.takeSum();
    }
    const bool isPlaced = result.complete([&] { noteIntent(record); });
    record.outcome = isPlaced ? ConversionOutcome::kConverted : ConversionOutcome::kUnchanged;
    if (run_ != nullptr)
      record.modifiedAfter = modificationMoment(platform::fileFacts(record.output));
  }

  // A text that stays where it is can be converted once more: that takes no intent.
  void noteIntent(const ConversionRecord& record) {
    if (run_ == nullptr || plan_.kind != OutputPlan::Kind::kInPlace) return;
    ConversionRecord intended = record;
    intended.outcome = ConversionOutcome::kConverted;
    run_->noteIntent(intended);
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
    if (first_.isStrict && record.hasLosses()) throw Failure(record.lossesInWords());
  }

  // Opens the text, and finds out its charset when none is given.
  FoundText openText(Work& work) {
    ConversionRecord& record = work.record;
    if (!find_) return {openInput(record.input), {}};
    FoundText text = find_(record.input);
    work.settings.source = text.chosen.charset;
    record.source = work.settings.source.display;
    record.reason = text.chosen.reason;
    for (const TextSegment& segment : text.segments) record.segments.push_back(segment.found);
    work.segments = std::move(text.segments);
    if (!work.segments.empty()) record.source = joinedByCommas(charsetsOf(work.segments));
    if (work.settings.repairs && !canBeRepaired(text.chosen.charset))
      throw Failure("is " + record.source + ", and --repair is for UTF-8");
    if (!text.isOfTarget && !record.reason.empty()) telling_.tellSource(record);
    return text;
  }

  void refuseUnfitInput(const FileFacts& facts) const {
    const bool mustBeFile = plan_.kind == OutputPlan::Kind::kInPlace || run_ != nullptr;
    if (mustBeFile && facts.kind == FileKind::kOther) throw Failure("is not a regular file");
    if (plan_.kind == OutputPlan::Kind::kStandardOutput && facts.kind == FileKind::kRegular &&
        facts.isSameFileAs(platform::standardOutputFacts()))
      throw Failure("is standard output as well");
  }

  std::unique_ptr<Result> openResult(const Work& work) {
    if (plan_.kind == OutputPlan::Kind::kStandardOutput)
      return standardOutputResult(list_.standardOutput(), work.index);
    const std::string& place = work.record.output;
    if (plan_.keepsTree) makeDirectoriesFor(place, plan_.path);
    platform::Placing placing;
    if (run_ != nullptr) placing = {run_->passingNameFor(place), true};
    std::unique_ptr<Result> result =
        plan_.kind == OutputPlan::Kind::kInPlace
            ? inPlaceResult(place, {work.facts, work.record.kept, plan_.keepsTimes}, placing)
            : fileResult(place, placing);
    if (run_ != nullptr) result->askForSum();
    return result;
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
  ManifestRun* const run_;
};

// A manifest is no result.
void checkThatManifestStays(const OutputPlan& plan, const RunPlan& run, const Inputs& inputs) {
  const std::string manifest = platform::placeKey(run.manifest);
  for (const std::string& input : inputs.paths)
    if (platform::placeKey(outputPath(plan, input)) == manifest)
      throw UsageError(run.manifest + " would be written twice");
}

int convertWithManifest(const ConversionSettings& settings, const SourceFinder& find,
                        const OutputPlan& plan, const ReportPlan& reports, const RunPlan& run,
                        Verbosity verbosity, const Inputs& named, size_t jobs) {
  try {
    ManifestRun manifest(run);
    const Inputs inputs = manifest.inputs(named);
    checkThatManifestStays(plan, run, inputs);
    const int status =
        Batch(settings, find, plan, reports, run.tellsJson, verbosity, inputs, &manifest).run(jobs);
    if (!manifest.isBroken()) return status;
    platform::writeToStandardError(
        diagnostic(run.manifest, "the run has stopped; --resume goes on with it"));
  } catch (const Failure& failure) {
    platform::writeToStandardError(diagnostic(run.manifest, failure.what()));
  }
  return kExitFailed;
}

}  // namespace

int convertBatch(const ConversionSettings& settings, const SourceFinder& find,
                 const OutputPlan& plan, const ReportPlan& reports, const RunPlan& run,
                 Verbosity verbosity, const Inputs& inputs, size_t jobs) {
  if (!run.manifest.empty())
    return convertWithManifest(settings, find, plan, reports, run, verbosity, inputs, jobs);
  return Batch(settings, find, plan, reports, run.tellsJson, verbosity, inputs, nullptr).run(jobs);
}

}  // namespace ksv_cli
