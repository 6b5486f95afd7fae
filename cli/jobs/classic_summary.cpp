#include "cli/jobs/classic_summary.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "cli/jobs/ole_tree.h"
#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "cli/system/system_faults.h"
#include "ksv_ole.h"

namespace ksv_cli {
namespace {

// The kinds of documents that together have all properties: one of presentations, and the
// one that has the times and the application.
constexpr uint16_t kMostProperties = 7000;
constexpr uint16_t kTimes = 10002;

// Until a document tells its code page.
constexpr uint16_t kInitialCodePage = 932;

struct NamedProperty {
  const char* label;
  const char* key;
  uint16_t kind;
  size_t offset;
};

// In the order in which a person reads them.
constexpr NamedProperty kProperties[] = {
    {"Title", "title", kMostProperties, KSV_SUMMARY_TITLE},
    {"Subject", "subject", kMostProperties, KSV_SUMMARY_SUBJECT},
    {"Author", "author", kMostProperties, KSV_SUMMARY_AUTHOR},
    {"Keywords", "keywords", kMostProperties, KSV_SUMMARY_KEYWORDS},
    {"Comments", "comments", kMostProperties, KSV_SUMMARY_COMMENTS},
    {"Category", "category", kMostProperties, KSV_SUMMARY_CATEGORY},
    {"Manager", "manager", kMostProperties, KSV_SUMMARY_MANAGER},
    {"Company", "company", kMostProperties, KSV_SUMMARY_COMPANY},
    {"Created", "created", kTimes, KSV_SUMMARY_CREATED},
    {"Last saved", "lastSaved", kTimes, KSV_SUMMARY_LAST_SAVED},
    {"Last saved by", "lastSavedBy", kMostProperties, KSV_SUMMARY_LAST_SAVED_BY},
    {"Revision", "revision", kMostProperties, KSV_SUMMARY_REVISION},
    {"Application", "application", kTimes, KSV_SUMMARY_APPLICATION},
    {"Presentation format", "presentationFormat", kMostProperties, KSV_SUMMARY_PRESENTATION_FORMAT},
    {"Slides", "slides", kMostProperties, KSV_SUMMARY_SLIDES},
    {"Notes", "notes", kMostProperties, KSV_SUMMARY_NOTES},
    {"Paragraphs", "paragraphs", kMostProperties, KSV_SUMMARY_PARAGRAPHS},
    {"Bytes", "bytes", kMostProperties, KSV_SUMMARY_BYTES},
};

using Record = std::string;

// cause: of what the system refused, if it did.
[[noreturn]] void failWith(uint32_t result, const std::string& path, const std::string& cause) {
  if (result == KSV_SUMMARY_NOT_OPENED) openDocument(path);  // tells what is wrong with it
  if (result == KSV_SUMMARY_NOT_OPENED) throw Failure("cannot be read" + cause);
  if (result == KSV_SUMMARY_NO_SUMMARY) throw Failure("has no summary information");
  if (result == KSV_SUMMARY_MALFORMED) throw Failure("has malformed summary information");
  throw Failure(std::string("cannot be read: ") + platform::kOutOfMemory);
}

Record readRecord(const std::string& path, uint16_t kind) {
  KsvSummarySettings settings = {};
  constexpr std::string_view kTarget = "UTF-8";
  constexpr std::string_view kLanguage = "English";
  kTarget.copy(settings.targetCharset, kTarget.size());
  kLanguage.copy(settings.language, kLanguage.size());
  settings.lineEndFlags = 0x20;
  const uint16_t parameters[3] = {kind, 0, kInitialCodePage};
  Record record(KSV_SUMMARY_RECORD_SIZE, '\0');
  forgetCause();
  const uint32_t result = SummaryInfo(path.c_str(), &settings, record.data(), parameters);
  const std::string cause = causeInWords();
  if (result != KSV_SUMMARY_DONE) failWith(result, path, cause);
  return record;
}

}  // namespace

std::vector<ClassicProperty> readClassicSummary(const std::string& path) {
  const Record most = readRecord(path, kMostProperties);
  const Record times = readRecord(path, kTimes);
  std::vector<ClassicProperty> found;
  for (const NamedProperty& property : kProperties) {
    const Record& record = property.kind == kTimes ? times : most;
    std::string value = record.c_str() + property.offset;
    if (!value.empty()) found.push_back({property.label, property.key, std::move(value)});
  }
  return found;
}

}  // namespace ksv_cli
