// What the conversions of a batch would lose, told file by file.
#pragma once

#include <memory>
#include <string>

#include "cli/system/streams.h"
#include "cli/text/conversion_settings.h"
#include "kit/report/loss_report.h"

namespace ksv_cli {

enum class ReportForm { kNone, kTable, kJson };

// A text on its way, of which the report gets to know everything that is read.
class ReportedSource : public ByteSource {
 public:
  ReportedSource(std::unique_ptr<ByteSource> source, ksv_kit::LossReport& report)
      : source_(std::move(source)), report_(report) {}

  size_t read(uint8_t* buffer, size_t size) override;

  // Reads what the conversion has left.
  void readRest();

 private:
  std::unique_ptr<ByteSource> source_;
  ksv_kit::LossReport& report_;
};

// None when no report is asked for. The settings name the source.
std::unique_ptr<ksv_kit::LossReport> lossReport(ReportForm form,
                                                const ConversionSettings& settings);

// A finished report as lines, each with its line end: one object with the name of the input, or
// the name and a table.
std::string tellingOf(const ksv_kit::LossReport& report, ReportForm form, const std::string& name);

// "3 losses in 12 places"
std::string lossesInWords(const ksv_kit::LossReport& report);

}  // namespace ksv_cli
