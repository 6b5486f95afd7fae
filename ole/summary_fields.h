// Which properties are taken of which kind of document, and where they go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ksv {

// The property-set streams of a document. An identifier of the second has 4096 added.
enum class PropertySet { kSummary, kDocumentSummary };

struct SummaryField {
  uint16_t offset;  // in the record
  uint16_t limit;   // the most bytes that are taken of a text
};

// Null when documents of this kind have no such field.
class SummaryKind {
 public:
  explicit SummaryKind(uint16_t kind);

  std::optional<SummaryField> field(PropertySet set, uint32_t id) const;

  // Whether texts end at their first zero byte, whatever length they declare.
  bool endsTextsAtZero() const { return classes_ == kSlidesWithTime; }

 private:
  // The kinds fall into five classes, each of which takes its own properties. One bit a
  // class, so that a row of the table names all that take a property.
  enum Classes : uint8_t {
    kNoClass = 0,
    kSlidesWithTime = 1,
    kSlides = 2,
    kSheets = 4,
    kTexts = 8,
    kShort = 16
  };
  static constexpr uint8_t kAllSlides = kSlidesWithTime | kSlides;
  static constexpr uint8_t kAllButShort = kAllSlides | kSheets | kTexts;
  static constexpr uint8_t kAll = kAllButShort | kShort;

  struct Row;
  static const Row kSummaryRows[];
  static const Row kDocumentSummaryRows[];

  static Classes classOf(uint16_t kind);

  Classes classes_;
};

}  // namespace ksv
