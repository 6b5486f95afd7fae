#include "ole/summary_fields.h"

#include <iterator>

#include "ksv_ole.h"

namespace ksv {
namespace {

constexpr uint16_t kUnlimited = 0xFFFF;

constexpr bool isBetween(uint16_t kind, uint16_t low, uint16_t high) {
  return kind >= low && kind <= high;
}

}  // namespace

struct SummaryKind::Row {
  uint8_t classes;  // that take the property
  uint16_t offset;
  uint16_t shortLimit = kUnlimited;  // in bytes, of the texts of kShort
};

// By identifier.
const SummaryKind::Row SummaryKind::kSummaryRows[] = {
    {kNoClass, 0},
    {kNoClass, 0},
    {kAll, KSV_SUMMARY_TITLE},
    {kAll, KSV_SUMMARY_SUBJECT, 16},
    {kAll, KSV_SUMMARY_AUTHOR, 30},
    {kAll, KSV_SUMMARY_KEYWORDS, 210},
    {kAll, KSV_SUMMARY_COMMENTS, 80},
    {kNoClass, 0},
    {kAllSlides, KSV_SUMMARY_LAST_SAVED_BY},
    {kAllSlides, KSV_SUMMARY_REVISION},
    {kNoClass, 0},
    {kNoClass, 0},
    {kSlidesWithTime | kSheets | kShort, KSV_SUMMARY_CREATED},
    {kShort, KSV_SUMMARY_LAST_SAVED},
    {kNoClass, 0},
    {kNoClass, 0},
    {kNoClass, 0},
    {kNoClass, 0},
    {kShort, KSV_SUMMARY_APPLICATION, 30},
};

// By identifier less 4096.
const SummaryKind::Row SummaryKind::kDocumentSummaryRows[] = {
    {kNoClass, 0},
    {kNoClass, 0},
    {kAllButShort, KSV_SUMMARY_CATEGORY},
    {kAllSlides, KSV_SUMMARY_PRESENTATION_FORMAT},
    {kAllSlides, KSV_SUMMARY_BYTES},
    {kNoClass, 0},
    {kAllSlides, KSV_SUMMARY_PARAGRAPHS},
    {kAllSlides, KSV_SUMMARY_SLIDES},
    {kAllSlides, KSV_SUMMARY_NOTES},
    {kNoClass, 0},
    {kNoClass, 0},
    {kNoClass, 0},
    {kNoClass, 0},
    {kNoClass, 0},
    {kAllButShort, KSV_SUMMARY_MANAGER},
    {kAllButShort, KSV_SUMMARY_COMPANY},
};

SummaryKind::SummaryKind(uint16_t kind) : classes_(classOf(kind)) {}

SummaryKind::Classes SummaryKind::classOf(uint16_t kind) {
  if (kind == 9003 || kind == 9004) return kSlidesWithTime;
  if (isBetween(kind, 7000, 7001) || kind == 7006 || kind == 7008 ||
      isBetween(kind, 21000, 21006)) {
    return kSlides;
  }
  if (isBetween(kind, 6000, 6002) || kind == 6004 || kind == 6008) return kSheets;
  if (isBetween(kind, 5000, 5007) || isBetween(kind, 12000, 12002) ||
      isBetween(kind, 15000, 15001) || isBetween(kind, 17000, 17001) ||
      isBetween(kind, 21007, 21009) || kind == 21015) {
    return kTexts;
  }
  return kind == 10002 ? kShort : kNoClass;
}

std::optional<SummaryField> SummaryKind::field(PropertySet set, uint32_t id) const {
  const bool isSummary = set == PropertySet::kSummary;
  const Row* rows = isSummary ? kSummaryRows : kDocumentSummaryRows;
  const size_t count = isSummary ? std::size(kSummaryRows) : std::size(kDocumentSummaryRows);
  if (id >= count || (rows[id].classes & classes_) == 0) return std::nullopt;
  return SummaryField{rows[id].offset, classes_ == kShort ? rows[id].shortLimit : kUnlimited};
}

}  // namespace ksv
