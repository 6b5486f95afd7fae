#include "cli/jobs/loss_telling.h"

#include <vector>

#include "cli/jobs/result_line.h"
#include "kit/report/report_text.h"

namespace ksv_cli {

size_t ReportedSource::read(uint8_t* buffer, size_t size) {
  const size_t count = source_->read(buffer, size);
  report_.take(buffer, count);
  return count;
}

void ReportedSource::readRest() {
  std::vector<uint8_t> block(64 * 1024);
  while (read(block.data(), block.size()) != 0) {
  }
}

std::unique_ptr<ksv_kit::LossReport> lossReport(ReportForm form,
                                                const ConversionSettings& settings) {
  if (form == ReportForm::kNone) return nullptr;
  return std::make_unique<ksv_kit::LossReport>(settings.source, settings.target,
                                               settings.changes.values());
}

std::string tellingOf(const ksv_kit::LossReport& report, ReportForm form, const std::string& name) {
  if (form == ReportForm::kJson) {
    nlohmann::ordered_json line = recordOf(name, ResultForm::kFull);
    line.update(nlohmann::ordered_json::parse(ksv_kit::reportAsJson(report)));
    return jsonLine(line);
  }
  const std::string table = ksv_kit::reportAsTable(report);
  return name + ": " + lossesInWords(report) + '\n' + table;
}

std::string lossesInWords(const ksv_kit::LossReport& report) {
  const size_t count = report.losses().size();
  if (count == 0) return "nothing is lost";
  const ksv_kit::LossTotals& totals = report.totals();
  const uint64_t places = totals.invalid + totals.unmappable + totals.returnAsOther;
  return std::to_string(count) + (count == 1 ? " loss in " : " losses in ") +
         std::to_string(places) + (places == 1 ? " place" : " places");
}

}  // namespace ksv_cli
