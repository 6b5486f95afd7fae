#include "kit/documents/properties/document_kind.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string_view>
#include <vector>

#include "common/byte_order.h"

namespace ksv_kit::properties {
namespace {

using documents::Document;
using documents::Entry;
using std::string_view_literals::operator""sv;

struct KindName {
  const char* key;
  const char* description;
};

constexpr KindName kNames[] = {
    {"word", "Word document"},
    {"excel", "Excel workbook"},
    {"powerpoint", "PowerPoint presentation"},
    {"visio", "Visio drawing"},
    {"publisher", "Publisher document"},
    {"project", "Project plan"},
    {"works", "Works document"},
    {"mail", "mail message"},
    {"installer", "installer database"},
    {"installerPatch", "installer patch"},
    {"installerTransform", "installer transform"},
    {"hangul", "Hangul word processor document"},
    {"equation", "equation"},
    {"chart", "chart"},
    {"starWriter", "StarWriter document"},
    {"starCalc", "StarCalc document"},
    {"starDraw", "StarDraw document"},
    {"starMath", "StarMath document"},
    {"encryptedPackage", "encrypted zipped office document"},
};

struct ClassRow {
  const char* classId;
  const char* key;
};

constexpr ClassRow kClasses[] = {
    {"{00020906-0000-0000-C000-000000000046}", "word"},
    {"{00020900-0000-0000-C000-000000000046}", "word"},
    {"{00020820-0000-0000-C000-000000000046}", "excel"},
    {"{00020810-0000-0000-C000-000000000046}", "excel"},
    {"{64818D10-4F9B-11CF-86EA-00AA00B929E8}", "powerpoint"},
    {"{EA7BAE70-FB3B-11CD-A903-00AA00510EA3}", "powerpoint"},
    {"{00021A14-0000-0000-C000-000000000046}", "visio"},
    {"{00021A13-0000-0000-C000-000000000046}", "visio"},
    {"{0002123D-0000-0000-C000-000000000046}", "publisher"},
    {"{00021201-0000-0000-00C0-000000000046}", "publisher"},
    {"{74B78F3A-C8C8-11D1-BE11-00C04FB6FAF1}", "project"},
    {"{00021302-0000-0000-C000-000000000046}", "works"},
    {"{00020D0B-0000-0000-C000-000000000046}", "mail"},
    {"{000C1084-0000-0000-C000-000000000046}", "installer"},
    {"{000C1086-0000-0000-C000-000000000046}", "installerPatch"},
    {"{000C1082-0000-0000-C000-000000000046}", "installerTransform"},
    {"{0002CE02-0000-0000-C000-000000000046}", "equation"},
    {"{00020803-0000-0000-C000-000000000046}", "chart"},
};

// A stream that only documents of one kind have, and how it begins.
struct StreamRow {
  std::u16string_view name;
  std::string_view beginning;
  const char* key;
};

constexpr StreamRow kStreams[] = {
    {u"EncryptedPackage"sv, ""sv, "encryptedPackage"},
    {u"WordDocument"sv, "\xEC\xA5"sv, "word"},
    {u"WordDocument"sv, "\xDC\xA5"sv, "word"},
    {u"Workbook"sv, "\x09\x08"sv, "excel"},
    {u"Book"sv, "\x09\x08"sv, "excel"},
    {u"PowerPoint Document"sv, ""sv, "powerpoint"},
    {u"VisioDocument"sv, "Visio (TM) Drawing"sv, "visio"},
    {u"__properties_version1.0"sv, ""sv, "mail"},
    {u"Contents"sv, "\xE8\xAC"sv, "publisher"},
    {u"Props14"sv, ""sv, "project"},
    {u"Props12"sv, ""sv, "project"},
    {u"Props9"sv, ""sv, "project"},
    {u"MatOST"sv, ""sv, "works"},
    {u"CONTENTS"sv, "CHNKWKS "sv, "works"},
    {u"FileHeader"sv, "HWP Document File"sv, "hangul"},
    {u"Equation Native"sv, ""sv, "equation"},
    {u"StarWriterDocument"sv, ""sv, "starWriter"},
    {u"StarCalcDocument"sv, ""sv, "starCalc"},
    {u"StarDrawDocument3"sv, ""sv, "starDraw"},
    {u"StarMathDocument"sv, ""sv, "starMath"},
};

// Tables of installers stand in streams whose names are coded in these characters.
constexpr char16_t kFirstCoded = 0x3800;
constexpr char16_t kLastCoded = 0x4840;

constexpr double kBothSaySo = 1;
constexpr double kStreamSaysSo = 0.95;
constexpr double kClassSaysSo = 0.7;
constexpr double kTheyDiffer = 0.6;

std::string_view keyByClass(const Document& document) {
  if (document.entries().empty()) return "";
  const auto& bytes = document.entries()[0].stored->classId;
  const std::string text = guidText({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  const auto found = std::find_if(std::begin(kClasses), std::end(kClasses),
                                  [&](const ClassRow& row) { return text == row.classId; });
  return found == std::end(kClasses) ? "" : found->key;
}

// The bytes of a stream of the root at an offset, as far as they are there.
std::string bytesAt(Document& document, std::u16string_view name, uint64_t offset, size_t count) {
  const auto entry = rootStream(document, name);
  if (!entry) return "";
  std::string bytes(count, '\0');
  bytes.resize(document.read(*entry, offset, bytes.data(), count));
  return bytes;
}

uint32_t numberAt(std::string_view bytes, size_t at, size_t size) {
  if (bytes.size() < at + size) return 0;
  return ksv::readUnit(reinterpret_cast<const uint8_t*>(bytes.data()) + at, size, false);
}

bool hasStream(Document& document, const StreamRow& row) {
  if (!rootStream(document, row.name)) return false;
  return row.beginning.empty() ||
         bytesAt(document, row.name, 0, row.beginning.size()) == row.beginning;
}

bool hasCodedNames(const Document& document) {
  const auto isCoded = [](const Entry& entry) {
    const std::u16string_view name = entry.name();
    return entry.parent == 0 && !name.empty() && name[0] == kLastCoded &&
           std::all_of(name.begin(), name.end(),
                       [](char16_t c) { return c >= kFirstCoded && c <= kLastCoded; });
  };
  return std::any_of(document.entries().begin(), document.entries().end(), isCoded);
}

std::string_view keyByStreams(Document& document) {
  for (const StreamRow& row : kStreams)
    if (hasStream(document, row)) return row.key;
  return hasCodedNames(document) ? "installer" : "";
}

const KindName* nameOf(std::string_view key) {
  const auto found = std::find_if(std::begin(kNames), std::end(kNames),
                                  [&](const KindName& name) { return key == name.key; });
  return found == std::end(kNames) ? nullptr : found;
}

// Patches and transforms have the streams of databases.
bool agree(std::string_view byClass, std::string_view byStreams) {
  return byClass == byStreams || (byStreams == "installer" && byClass.substr(0, 9) == "installer");
}

void judge(std::string_view byClass, std::string_view byStreams, DocumentKind& kind) {
  std::string_view key = byStreams;
  kind.confidence = byClass.empty() ? kStreamSaysSo : kTheyDiffer;
  if (byStreams.empty()) {
    key = byClass;
    kind.confidence = kClassSaysSo;
  } else if (agree(byClass, byStreams)) {
    key = byClass;
    kind.confidence = kBothSaySo;
  }
  const KindName* const name = nameOf(key);
  if (name == nullptr) {
    kind.confidence = 0;
    return;
  }
  kind.key = name->key;
  kind.description = name->description;
}

// The storage in which code for documents stands, whatever it belongs to.
bool hasCodeStorage(const Document& document) {
  return std::any_of(document.entries().begin(), document.entries().end(), [](const Entry& entry) {
    return !entry.isStream() && !entry.isOrphan &&
           (entry.name() == u"VBA" || entry.name() == u"_VBA_PROJECT_CUR");
  });
}

// ---- Word ----

// The flags of the file information block at the beginning.
void lookIntoWord(Document& document, DocumentKind& kind) {
  const uint32_t flags = numberAt(bytesAt(document, u"WordDocument", 0, 12), 10, 2);
  constexpr uint32_t kTemplate = 0x0001;
  constexpr uint32_t kEncrypted = 0x0100;
  kind.isTemplate = (flags & kTemplate) != 0;
  kind.isEncrypted = (flags & kEncrypted) != 0;
}

// ---- Excel ----

// What is to be known stands among the first records of the workbook.
void lookIntoExcel(Document& document, DocumentKind& kind) {
  constexpr size_t kLook = 2048;
  constexpr uint32_t kEndOfSubstream = 0x000A;
  constexpr uint32_t kFilePassword = 0x002F;
  constexpr uint32_t kTemplate = 0x0060;
  const std::u16string_view name = rootStream(document, u"Workbook") ? u"Workbook" : u"Book";
  const std::string bytes = bytesAt(document, name, 0, kLook);
  kind.isTemplate = false;
  for (size_t at = 0; at + 4 <= bytes.size(); at += 4 + numberAt(bytes, at + 2, 2)) {
    const uint32_t record = numberAt(bytes, at, 2);
    if (record == kEndOfSubstream) return;
    if (record == kTemplate) kind.isTemplate = true;
    if (record == kFilePassword) kind.isEncrypted = true;
  }
}

// ---- PowerPoint ----

struct PresentationRecord {
  uint32_t type = 0;
  uint64_t content = 0;
  uint64_t behind = 0;
};

constexpr size_t kRecordHeader = 8;
constexpr std::u16string_view kPresentation = u"PowerPoint Document";

std::optional<PresentationRecord> recordAt(Document& document, uint64_t at, uint64_t behind) {
  const std::string bytes = bytesAt(document, kPresentation, at, kRecordHeader);
  if (bytes.size() < kRecordHeader) return std::nullopt;
  const PresentationRecord record = {numberAt(bytes, 2, 2), at + kRecordHeader,
                                     at + kRecordHeader + numberAt(bytes, 4, 4)};
  if (record.behind > behind) return std::nullopt;
  return record;
}

std::optional<PresentationRecord> findRecord(Document& document, uint32_t type, uint64_t at,
                                             uint64_t behind) {
  // Of the containers that are looked into none has more parts.
  constexpr int kMostRecords = 4096;
  for (int i = 0; i < kMostRecords; ++i) {
    const auto record = recordAt(document, at, behind);
    if (!record || record->type == type) return record;
    at = record->behind;
  }
  return std::nullopt;
}

// The document container, in it the list of information, in it what is said of code.
bool hasPresentationCode(Document& document) {
  constexpr uint32_t kWay[] = {1000, 2000, 1023, 1024};
  const auto entry = rootStream(document, kPresentation);
  PresentationRecord place = {0, 0, entry ? document.entries()[*entry].size() : 0};
  for (const uint32_t type : kWay) {
    const auto next = findRecord(document, type, place.content, place.behind);
    if (!next) return false;
    place = *next;
  }
  return numberAt(bytesAt(document, kPresentation, place.content, 8), 4, 4) != 0;
}

void lookIntoPowerPoint(Document& document, DocumentKind& kind) {
  constexpr size_t kToken = 12;
  constexpr uint32_t kEncrypted = 0xF3D1C4DF;
  kind.isEncrypted =
      numberAt(bytesAt(document, u"Current User", 0, kToken + 4), kToken, 4) == kEncrypted;
  if (!kind.isEncrypted && hasPresentationCode(document)) kind.hasMacros = true;
}

void lookIntoHangul(Document& document, DocumentKind& kind) {
  constexpr size_t kFlags = 36;
  kind.isEncrypted = (numberAt(bytesAt(document, u"FileHeader", 0, 40), kFlags, 4) & 2) != 0;
}

void lookInto(Document& document, DocumentKind& kind) {
  const std::string_view key = kind.key;
  if (key == "word") lookIntoWord(document, kind);
  if (key == "excel") lookIntoExcel(document, kind);
  if (key == "powerpoint") lookIntoPowerPoint(document, kind);
  if (key == "hangul") lookIntoHangul(document, kind);
  if (key == "encryptedPackage") kind.isEncrypted = true;
}

}  // namespace

DocumentKind kindOf(Document& document) {
  DocumentKind kind;
  judge(keyByClass(document), keyByStreams(document), kind);
  kind.hasMacros = hasCodeStorage(document);
  lookInto(document, kind);
  return kind;
}

std::string applicationVersion(const DocumentProperties& properties) {
  const KnownProperty* const known = knownProperty("applicationVersion");
  const Property* const found = known == nullptr ? nullptr : properties.find(*known);
  if (found == nullptr || found->value.type != kI4) return "";
  const uint64_t version = unsignedOf(found->value);
  return std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFF);
}

}  // namespace ksv_kit::properties
