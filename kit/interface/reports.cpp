// What a conversion would lose.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "kit/engine.h"
#include "kit/interface/errors.h"
#include "kit/report/loss_report.h"
#include "kit/report/report_text.h"
#include "kit/unicode/character_class.h"
#include "ksv.h"

struct ksv_report {
  ksv_report(const char* from, const char* to, const ksv_options* options)
      : report(from, to, options) {}

  ksv_kit::LossReport report;
  std::vector<ksv_loss> losses;  // when it is finished
  bool isFinished = false;
};

namespace ksv_kit {
namespace {

// Null-terminated, as they are all texts of constants.
const char* classNameOf(const Loss& loss) {
  return loss.codePoint == Problem::kNoCodePoint ? "" : classOf(loss.codePoint).data();
}

ksv_loss shownLoss(const Loss& loss) {
  ksv_loss shown{};
  shown.kind = static_cast<int32_t>(loss.kind);
  shown.code_point = loss.codePoint;
  shown.count = loss.count;
  shown.offset = loss.firstOffset;
  shown.line = loss.firstPlace.line;
  shown.column = loss.firstPlace.column;
  shown.byte_count = static_cast<uint32_t>(loss.bytes.size());
  std::memcpy(shown.bytes, loss.bytes.data(), std::min<size_t>(loss.bytes.size(), KSV_BYTES_SHOWN));
  shown.character_class = classNameOf(loss);
  shown.returns_as = loss.returnsAs.c_str();
  return shown;
}

// The caller's.
char* copied(const std::string& text) {
  char* const block = static_cast<char*>(std::malloc(text.size() + 1));
  if (block != nullptr) std::memcpy(block, text.c_str(), text.size() + 1);
  return block;
}

template <typename Make>
char* textOf(const ksv_report* report, Make make) noexcept {
  if (report == nullptr || !report->isFinished) return nullptr;
  try {
    return copied(make(report->report));
  } catch (...) {
    return nullptr;
  }
}

// A finished report takes nothing more.
ksv_result refuseReport(const ksv_report* report, ksv_error* error) {
  return refuse(error, KSV_BAD_ARGUMENT,
                report == nullptr ? "an argument is null" : "the report is finished");
}

template <typename Function>
ksv_result watched(ksv_error* error, Function function) noexcept {
  return guarded(error, [&] {
    Engine::refusingFaults([&](const Engine&) { function(); });
    return succeed(error);
  });
}

}  // namespace
}  // namespace ksv_kit

ksv_result ksv_report_new(const char* from, const char* to, const ksv_options* options,
                          ksv_report** report, ksv_error* error) {
  if (report == nullptr) return ksv_kit::refuseReport(nullptr, error);
  *report = nullptr;
  std::unique_ptr<ksv_report> made;
  const ksv_result result =
      ksv_kit::watched(error, [&] { made = std::make_unique<ksv_report>(from, to, options); });
  if (result == KSV_OK) *report = made.release();
  return result;
}

void ksv_report_free(ksv_report* report) { delete report; }

ksv_result ksv_report_feed(ksv_report* report, const void* input, size_t length, ksv_error* error) {
  const bool isText = input != nullptr || length == 0;
  if (report == nullptr || report->isFinished || !isText)
    return ksv_kit::refuseReport(isText ? report : nullptr, error);
  return ksv_kit::watched(error,
                          [&] { report->report.take(static_cast<const uint8_t*>(input), length); });
}

ksv_result ksv_report_finish(ksv_report* report, ksv_error* error) {
  if (report == nullptr || report->isFinished) return ksv_kit::refuseReport(report, error);
  return ksv_kit::watched(error, [&] {
    report->isFinished = true;
    report->report.finish();
    for (const ksv_kit::Loss& loss : report->report.losses())
      report->losses.push_back(ksv_kit::shownLoss(loss));
  });
}

size_t ksv_report_count(const ksv_report* report) {
  return report == nullptr ? 0 : report->losses.size();
}

const ksv_loss* ksv_report_loss(const ksv_report* report, size_t index) {
  return index < ksv_report_count(report) ? &report->losses[index] : nullptr;
}

void ksv_report_totals(const ksv_report* report, ksv_loss_totals* totals) {
  if (totals == nullptr) return;
  *totals = {};
  if (report == nullptr) return;
  const ksv_kit::LossTotals& sums = report->report.totals();
  *totals = {sums.bytes,      sums.characters,    sums.invalid,
             sums.unmappable, sums.returnAsOther, sums.untold};
}

char* ksv_report_outcome(const ksv_report* report, size_t index, ksv_policy policy) {
  if (index >= ksv_report_count(report) || policy < KSV_FAIL || policy > KSV_ASK) return nullptr;
  std::string text;
  return ksv_kit::textOf(report, [&](const ksv_kit::LossReport& of) -> std::string {
    const auto& loss = of.losses()[index];
    if (!of.outcome(loss, static_cast<ksv_kit::PolicyKind>(policy), text))
      throw ksv_kit::BadArgument("the policy has no say");
    return text;
  });
}

char* ksv_report_json(const ksv_report* report) {
  return ksv_kit::textOf(report, ksv_kit::reportAsJson);
}

char* ksv_report_table(const ksv_report* report) {
  return ksv_kit::textOf(report, ksv_kit::reportAsTable);
}
