#include "kit/documents/properties/known_properties.h"

#include <algorithm>
#include <iterator>

namespace ksv_kit::properties {

namespace {

constexpr KnownProperty kKnown[] = {
    {"title", "Title", true, 2, kLpstr},
    {"subject", "Subject", true, 3, kLpstr},
    {"author", "Author", true, 4, kLpstr},
    {"keywords", "Keywords", true, 5, kLpstr},
    {"comments", "Comments", true, 6, kLpstr},
    {"category", "Category", false, 2, kLpstr},
    {"manager", "Manager", false, 14, kLpstr},
    {"company", "Company", false, 15, kLpstr},
    {"created", "Created", true, 12, kFileTime},
    {"lastSaved", "Last saved", true, 13, kFileTime},
    {"lastSavedBy", "Last saved by", true, 8, kLpstr},
    {"lastPrinted", "Last printed", true, 11, kFileTime},
    {"editingTime", "Editing time", true, 10, kFileTime, Meaning::kDuration},
    {"revision", "Revision", true, 9, kLpstr},
    {"application", "Application", true, 18, kLpstr},
    {"template", "Template", true, 7, kLpstr},
    {"security", "Security", true, 19, kI4, Meaning::kSecurity},
    {"pages", "Pages", true, 14, kI4},
    {"words", "Words", true, 15, kI4},
    {"characters", "Characters", true, 16, kI4},
    {"charactersWithSpaces", "With spaces", false, 17, kI4},
    {"presentationFormat", "Presentation format", false, 3, kLpstr},
    {"slides", "Slides", false, 7, kI4},
    {"notes", "Notes", false, 8, kI4},
    {"hiddenSlides", "Hidden slides", false, 9, kI4},
    {"mediaClips", "Media clips", false, 10, kI4},
    {"paragraphs", "Paragraphs", false, 6, kI4},
    {"lines", "Lines", false, 5, kI4},
    {"bytes", "Bytes", false, 4, kI4},
    {"language", "Language", false, 28, kLpstr},
    {"contentType", "Content type", false, 26, kLpstr},
    {"contentStatus", "Content status", false, 27, kLpstr},
    {"documentVersion", "Document version", false, 29, kLpstr},
    {"linkBase", "Link base", false, 20, kLpstr},
    {"scaleCrop", "Scale", false, 11, kBool},
    {"linksUpToDate", "Links up to date", false, 16, kBool},
    {"sharedDocument", "Shared", false, 19, kBool},
    {"hyperlinksChanged", "Links changed", false, 22, kBool},
    {"headingPairs", "Headings", false, 12, kVectorBit | kVariant, Meaning::kPacked},
    {"partTitles", "Parts", false, 13, kVectorBit | kLpstr},
    {"hyperlinks", "Links", false, 21, kBlob, Meaning::kPacked},
    {"applicationVersion", "Application version", false, 23, kI4, Meaning::kPacked},
    {"digitalSignature", "Digital signature", false, 24, kBlob, Meaning::kPacked},
    {"thumbnail", "Thumbnail", true, 17, kClipboard, Meaning::kThumbnail},
};

}  // namespace

std::span<const KnownProperty> knownProperties() { return kKnown; }

const KnownProperty* knownProperty(std::string_view key) {
  const auto found = std::find_if(std::begin(kKnown), std::end(kKnown),
                                  [&](const KnownProperty& known) { return key == known.key; });
  return found == std::end(kKnown) ? nullptr : found;
}

const KnownProperty* knownProperty(std::string_view format, uint32_t id) {
  const bool isSummary = format == kSummaryFormat;
  if (!isSummary && format != kDocumentSummaryFormat) return nullptr;
  const auto found = std::find_if(
      std::begin(kKnown), std::end(kKnown),
      [&](const KnownProperty& known) { return known.isOfSummary == isSummary && known.id == id; });
  return found == std::end(kKnown) ? nullptr : found;
}

const char* formatName(std::string_view format) {
  if (format == kSummaryFormat) return "summary";
  if (format == kDocumentSummaryFormat) return "documentSummary";
  if (format == kUserDefinedFormat) return "userDefined";
  return "";
}

}  // namespace ksv_kit::properties
