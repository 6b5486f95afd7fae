#include "cli/text/text_conversion.h"

#include <memory>
#include <stdexcept>

#include "cli/system/failure.h"
#include "cli/text/text_failure.h"
#include "kit/convert/declaration_stage.h"
#include "kit/convert/plan.h"
#include "kit/convert/plan_options.h"

namespace ksv_cli {
namespace {

using ksv_kit::CharsetNames;
using ksv_kit::PieceEnd;
using ksv_kit::PolicyKind;

class TextConversion {
 public:
  TextConversion(const ConversionSettings& settings, ByteSource& source, ByteSink& sink)
      : task_(conversionTask(settings)),
        pipeline_(task_),
        source_(source),
        sink_(sink),
        size_(settings.blockSize),
        block_(std::make_unique_for_overwrite<uint8_t[]>(size_)) {}

  void run() {
    size_t count;
    do {
      count = read();
      convert(count, count == 0 ? PieceEnd::kEnd : PieceEnd::kMore);
    } while (count != 0);
  }

  ConversionCounts counts() const {
    const ksv_kit::ProblemCounts counts = pipeline_.counts();
    return {counts.invalidBytes, counts.unmappable};
  }

 private:
  size_t read() {
    try {
      return source_.read(block_.get(), size_);
    } catch (const Failure&) {
      out_.clear();
      pipeline_.take(nullptr, 0, PieceEnd::kBrokenOff, out_);
      sink_.write(out_.data(), out_.size());
      throw;
    }
  }

  void convert(size_t count, PieceEnd end) {
    out_.clear();
    const bool goesOn = pipeline_.take(block_.get(), count, end, out_);
    sink_.write(out_.data(), out_.size());
    if (goesOn) return;
    const ksv_kit::Problem& problem = *pipeline_.problem();
    throw Failure::at(problem.offset, problem.message, atOffset(problem.offset));
  }

  const ksv_kit::ConversionTask task_;
  ksv_kit::Pipeline pipeline_;
  ByteSource& source_;
  ByteSink& sink_;
  const size_t size_;
  const std::unique_ptr<uint8_t[]> block_;
  ksv_kit::ByteBuffer out_;
};

}  // namespace

ksv_kit::ConversionTask conversionTask(const ConversionSettings& settings) {
  static const CharsetNames kNone({});
  const CharsetNames& names = settings.names == nullptr ? kNone : *settings.names;
  ksv_kit::ConversionTask task =
      ksv_kit::taskBetween(names, settings.source, settings.target, settings.changes.values());
  task.options = settings.options;
  task.language = settings.language;
  if (settings.declared)
    task.sourceChange = [declared = *settings.declared](const ksv_kit::ConversionTask& made) {
      return std::make_unique<ksv_kit::DeclarationStage>(made.source, declared);
    };
  if (settings.skipInvalid) task.invalid.kind = PolicyKind::kSkip;
  if (settings.options.replaceUnmappable != 0) task.unmappable.kind = PolicyKind::kBuiltIn;
  return task;
}

ConversionCounts convertText(const ConversionSettings& settings, ByteSource& source,
                             ByteSink& sink) {
  try {
    TextConversion conversion(settings, source, sink);
    conversion.run();
    return conversion.counts();
  } catch (const ksv_kit::ImpossibleConversion& impossible) {
    throw Failure(impossible.what());
  } catch (const ksv_kit::BadArgument& bad) {
    throw Failure(bad.what());
  }
}

}  // namespace ksv_cli
