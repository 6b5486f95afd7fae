// libksv on any text: a stream, however it is cut, gives what one call gives, a buffer of the
// size that was told suffices, and a report finds what a strict conversion fails at.
//
// Input: source; target; policies; changes; length of a piece; room of a buffer; the text.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support.h"
#include "ksv.h"
#include "tests/system/system.h"

namespace {

using ksv_fuzz::require;

constexpr const char* kCharsets[] = {
    "SJIS",         "CP932",  "EUC-JP",       "ISO-2022-JP", "ISO-2022-JP-2004",
    "EUC-JIS-2004", "UTF-8",  "UTF-16",       "UCS-4BE",     "GB18030",
    "Big5",         "EUC-KR", "cp930",        "ISO-2022-KR", "EUC-TW",
    "latin1",       "IBM037", "OASYS_ONLINE", "CP50220"};
constexpr const char* kReadOnly[] = {"UTF-7", "HZ"};
constexpr const char* kProfiles[] = {nullptr, "windows", "jis", "web", "iconv-glibc"};

struct Case {
  std::string from;
  std::string to;
  ksv_options options = KSV_OPTIONS_INIT;
};

Case caseOf(ksv_fuzz::Input& input) {
  Case made;
  const size_t from = input.byte() % (std::size(kCharsets) + std::size(kReadOnly));
  made.from =
      from < std::size(kCharsets) ? kCharsets[from] : kReadOnly[from - std::size(kCharsets)];
  made.to = kCharsets[input.byte() % std::size(kCharsets)];
  const uint8_t policies = input.byte();
  made.options.invalid = policies % 7;
  made.options.unmappable = policies / 7 % 9;
  made.options.newlines = policies / 63 % 4;
  const uint8_t changes = input.byte();
  made.options.profile = kProfiles[changes % std::size(kProfiles)];
  made.options.normalization = changes / 5 % 6;
  made.options.widths = changes / 30 % 3;
  made.options.mark = changes / 90 % 3;
  return made;
}

struct Result {
  ksv_error error;
  std::string text;
};

Result convertWhole(const ksv_plan* plan, std::string_view text) {
  Result result;
  char* output = nullptr;
  size_t length = 0;
  ksv_plan_convert(plan, text.data(), text.size(), &output, &length, &result.error);
  require((output == nullptr) == (result.error.result != KSV_OK), "a failure has no text");
  if (output != nullptr) result.text.assign(output, length);
  ksv_free(output);
  return result;
}

Result convertStream(const ksv_plan* plan, std::string_view text, size_t piece, size_t room) {
  Result result;
  std::string buffer(room, '\0');
  ksv_converter* converter = nullptr;
  require(ksv_converter_new(plan, &converter, nullptr) == KSV_OK, "a plan makes converters");
  const auto isOver = [&](int32_t code, size_t written) {
    require(written <= room, "a buffer is not overrun");
    result.text.append(buffer, 0, written);
    return code != KSV_OK && code != KSV_NO_ROOM;
  };
  bool failed = false;
  for (size_t at = 0; at < text.size() && !failed;) {
    size_t used = 0;
    size_t written = 0;
    const ksv_result code =
        ksv_converter_feed(converter, text.data() + at, std::min(piece, text.size() - at), &used,
                           buffer.data(), room, &written, &result.error);
    at += used;
    failed = isOver(code, written);
  }
  for (bool goesOn = !failed; goesOn;) {
    size_t written = 0;
    const ksv_result code =
        ksv_converter_finish(converter, buffer.data(), room, &written, &result.error);
    goesOn = !isOver(code, written) && code == KSV_NO_ROOM;
  }
  ksv_converter_free(converter);
  return result;
}

void checkBuffer(const ksv_plan* plan, std::string_view text, const std::string& wanted) {
  std::string buffer(wanted.size(), '\0');
  size_t length = 0;
  const ksv_result code = ksv_plan_convert_into(plan, text.data(), text.size(), buffer.data(),
                                                buffer.size(), &length, nullptr);
  require(code == KSV_OK && length == wanted.size(), "the length that was told suffices");
  require(buffer == wanted, "a buffer gets what new memory gets");
}

// A strict conversion fails exactly where there is something to report but a way back.
void checkReport(const Case& made, std::string_view text) {
  ksv_options strict = made.options;
  strict.invalid = strict.unmappable = KSV_FAIL;
  ksv_plan* plan = nullptr;
  if (ksv_plan_new(made.from.c_str(), made.to.c_str(), &strict, &plan, nullptr) != KSV_OK) return;
  const Result whole = convertWhole(plan, text);
  ksv_plan_free(plan);
  ksv_report* report = nullptr;
  require(ksv_report_new(made.from.c_str(), made.to.c_str(), &strict, &report, nullptr) == KSV_OK,
          "what can be planned can be reported on");
  require(ksv_report_feed(report, text.data(), text.size(), nullptr) == KSV_OK &&
              ksv_report_finish(report, nullptr) == KSV_OK,
          "any text can be reported on");
  ksv_loss_totals totals;
  ksv_report_totals(report, &totals);
  ksv_free(ksv_report_json(report));
  ksv_free(ksv_report_table(report));
  ksv_report_free(report);
  require((whole.error.result == KSV_OK) == (totals.invalid + totals.unmappable == 0),
          "a report finds what a strict conversion fails at");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isSet =
      (ksv::test::setVariable("Charsetpath", std::string(KSV_FUZZ_CHARSET_DIRECTORY)), true);
  require(isSet, "the charset directory is named");
  ksv_fuzz::Input input(data, size);
  const Case made = caseOf(input);
  const size_t piece = 1 + input.byte() % 32;
  const size_t room = 1 + input.byte() % 32;
  const std::string_view text = input.rest();
  ksv_plan* plan = nullptr;
  ksv_error error;
  const ksv_result planned =
      ksv_plan_new(made.from.c_str(), made.to.c_str(), &made.options, &plan, &error);
  require((plan != nullptr) == (planned == KSV_OK), "a failure has no plan");
  if (plan == nullptr) return 0;
  const Result whole = convertWhole(plan, text);
  const Result stream = convertStream(plan, text, piece, room);
  require(whole.error.result == stream.error.result && whole.error.offset == stream.error.offset,
          "a stream ends as one call does");
  if (whole.error.result == KSV_OK) {
    require(whole.text == stream.text, "a stream gives what one call gives");
    checkBuffer(plan, text, whole.text);
  }
  ksv_plan_free(plan);
  checkReport(made, text);
  return 0;
}
