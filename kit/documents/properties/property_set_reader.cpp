// Reads the bytes of a property set:
//
//   header   byte order FFFE, version, system, class id, number of sections
//            for each: its format (16 bytes), its offset in the stream
//   section  its size, number of properties, for each: its id, its offset in the section
//            then the properties: a type (two bytes, two unused), a value, filled up to four bytes
//
// Nothing of this is believed before the bytes are there. What a property has claimed is looked
// through at most a few times over: properties that lie upon each other end the reading.
#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

#include "kit/documents/properties/property_set.h"
#include "kit/documents/properties/value_reader.h"

namespace ksv_kit::properties {
namespace {

constexpr size_t kHeaderSize = 28;
constexpr uint32_t kLatestVersion = 1;

// A sound set is looked through once, and its vectors of texts twice.
constexpr uint64_t kTimesOver = 4;
constexpr uint64_t kAlways = 4096;

class SetReader {
 public:
  explicit SetReader(Bytes bytes)
      : bytes_(bytes), allowance_(kTimesOver * bytes.size() + kAlways) {}

  PropertySet read();

 private:
  struct Listed {
    uint32_t id;
    uint64_t offset;  // in the stream
  };

  void listSections(ByteCursor& cursor, uint32_t count);
  void readSection(Section& section, uint64_t behind);
  std::vector<Listed> readList(const Section& section, Bytes bytes, uint64_t& declaredEnd);
  void readCodePage(Section& section, Bytes bytes, const std::vector<Listed>& listed);
  void readProperty(Section& section, Bytes bytes, const Listed& listed, uint64_t declaredEnd);
  void readDictionary(Section& section, Bytes bytes, uint64_t at);
  void keepUnread(Bytes bytes, uint64_t at, const std::vector<Listed>& listed, Property& property);
  bool pay(uint64_t looked, uint64_t at);
  void note(Damage kind, uint64_t offset, std::optional<uint32_t> property = std::nullopt);

  const Bytes bytes_;
  uint64_t allowance_;
  PropertySet set_;
  size_t section_ = 0;
  const std::vector<Listed>* listed_ = nullptr;
  std::set<std::tuple<Damage, uint64_t, std::optional<uint32_t>>> told_;
};

// Sections that lie upon each other have the same damages.
void SetReader::note(Damage kind, uint64_t offset, std::optional<uint32_t> property) {
  if (told_.emplace(kind, offset, property).second)
    set_.damages.push_back({kind, offset, section_, property});
}

bool SetReader::pay(uint64_t looked, uint64_t at) {
  if (allowance_ == 0) return false;
  if (looked < allowance_) {
    allowance_ -= looked;
    return true;
  }
  allowance_ = 0;
  note(Damage::kOverlapping, at);
  return false;
}

// The list of sections ends where the first of them begins.
void SetReader::listSections(ByteCursor& cursor, uint32_t count) {
  uint64_t first = bytes_.size();
  for (uint32_t i = 0; i < count; ++i) {
    std::string_view format;
    uint32_t offset = 0;
    const size_t place = cursor.place();
    if (place >= first || !cursor.take(16, format) || !cursor.take32(offset))
      return note(Damage::kListCut, place);
    Section section;
    section.format = format;
    section.offset = offset;
    set_.sections.push_back(std::move(section));
    if (offset >= kHeaderSize + 20) first = std::min<uint64_t>(first, offset);
  }
}

PropertySet SetReader::read() {
  if (!beginsAsPropertySet(bytes_)) {
    note(Damage::kNoHeader, 0);
    return std::move(set_);
  }
  ByteCursor cursor(bytes_, 2);
  uint32_t version = 0;
  uint32_t count = 0;
  std::string_view classId;
  cursor.take16(version);
  cursor.take32(set_.system);
  cursor.take(16, classId);
  cursor.take32(count);
  set_.version = static_cast<uint16_t>(version);
  set_.classId = classId;
  listSections(cursor, count);
  std::vector<uint64_t> begins;
  for (const Section& section : set_.sections) begins.push_back(section.offset);
  std::sort(begins.begin(), begins.end());
  for (section_ = 0; section_ < set_.sections.size(); ++section_) {
    Section& section = set_.sections[section_];
    const auto next = std::upper_bound(begins.begin(), begins.end(), section.offset);
    const uint64_t behind = next == begins.end() ? bytes_.size() : *next;
    readSection(section, std::min<uint64_t>(behind, bytes_.size()));
  }
  return std::move(set_);
}

std::vector<SetReader::Listed> SetReader::readList(const Section& section, Bytes bytes,
                                                   uint64_t& declaredEnd) {
  ByteCursor cursor(bytes, section.offset);
  uint32_t size = 0;
  uint32_t count = 0;
  if (!cursor.take32(size) || !cursor.take32(count)) {
    note(Damage::kSectionOutside, section.offset);
    return {};
  }
  declaredEnd = section.offset + size;
  if (declaredEnd > bytes.size()) {
    note(Damage::kSectionCut, section.offset);
    declaredEnd = bytes.size();
  }
  std::vector<Listed> listed;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t id = 0;
    uint32_t offset = 0;
    const size_t place = cursor.place();
    if (!cursor.take32(id) || !cursor.take32(offset)) {
      note(Damage::kListCut, place);
      break;
    }
    if (!pay(8, place)) break;
    listed.push_back({id, section.offset + offset});
  }
  return listed;
}

void SetReader::readSection(Section& section, uint64_t behind) {
  const Bytes bytes = bytes_.first(static_cast<size_t>(behind));
  uint64_t declaredEnd = 0;
  const std::vector<Listed> listed = readList(section, bytes, declaredEnd);
  listed_ = &listed;
  readCodePage(section, bytes, listed);
  std::set<uint32_t> known;
  for (const Listed& one : listed) {
    if (allowance_ == 0) return;
    if (one.offset < section.offset + 8 || one.offset >= bytes.size()) {
      note(Damage::kPropertyOutside, one.offset, one.id);
    } else if (!known.insert(one.id).second) {
      note(Damage::kTwice, one.offset, one.id);
    } else if (one.id == kDictionaryId) {
      readDictionary(section, bytes, one.offset);
    } else {
      readProperty(section, bytes, one, declaredEnd);
    }
  }
}

// The names of the dictionary are laid out by it.
void SetReader::readCodePage(Section& section, Bytes bytes, const std::vector<Listed>& listed) {
  const auto found = std::find_if(listed.begin(), listed.end(),
                                  [](const Listed& one) { return one.id == kCodePageId; });
  if (found == listed.end()) return;
  ByteCursor cursor(bytes, found->offset);
  uint32_t type = 0;
  uint32_t page = 0;
  if (!cursor.take32(type) || !cursor.take16(page)) return;
  if ((type & 0xFFFF) != kI2 && (type & 0xFFFF) != kUi2 && (type & 0xFFFF) != kI4) return;
  section.codePage = static_cast<uint16_t>(page);
}

void SetReader::readProperty(Section& section, Bytes bytes, const Listed& listed,
                             uint64_t declaredEnd) {
  ReadValue read = readValue(bytes, listed.offset);
  const bool mayGoOn = pay(read.looked, listed.offset);
  Property property;
  property.id = listed.id;
  property.offset = listed.offset;
  property.value = std::move(read.value);
  if (read.end == ValueEnd::kCut) {
    note(Damage::kValueCut, listed.offset, listed.id);
    return;
  }
  if (read.end != ValueEnd::kWhole) {
    note(read.end == ValueEnd::kTooDeep ? Damage::kTooDeep : Damage::kUnknownType, listed.offset,
         listed.id);
    keepUnread(bytes, listed.offset, *listed_, property);
  } else {
    const Bytes stored = bytes.subspan(static_cast<size_t>(listed.offset),
                                       read.behind - static_cast<size_t>(listed.offset));
    property.stored.assign(stored.begin(), stored.end());
    if (read.behind > declaredEnd) note(Damage::kBeyondSection, listed.offset, listed.id);
  }
  if (mayGoOn) section.properties.push_back(std::move(property));
}

// What nothing is known of ends where the next property begins.
void SetReader::keepUnread(Bytes bytes, uint64_t at, const std::vector<Listed>& listed,
                           Property& property) {
  uint64_t behind = bytes.size();
  for (const Listed& one : listed)
    if (one.offset > at) behind = std::min(behind, one.offset);
  const uint16_t type = property.value.type;
  property.value = {};
  property.value.type = type;
  if (!pay(listed.size() + (behind - at), at)) return;
  const Bytes stored = bytes.subspan(static_cast<size_t>(at), static_cast<size_t>(behind - at));
  property.stored.assign(stored.begin(), stored.end());
  property.value.bytes = property.stored.substr(std::min<size_t>(4, property.stored.size()));
}

void SetReader::readDictionary(Section& section, Bytes bytes, uint64_t at) {
  ByteCursor cursor(bytes, at);
  uint32_t count = 0;
  if (!cursor.take32(count)) return note(Damage::kDictionaryCut, at, kDictionaryId);
  const bool isWide = section.codePage == kUtf16Page;
  for (uint32_t i = 0; i < count; ++i) {
    DictionaryEntry entry;
    uint32_t length = 0;
    std::string_view name;
    const size_t place = cursor.place();
    if (!cursor.take32(entry.id) || !cursor.take32(length) ||
        !cursor.take(uint64_t{length} * (isWide ? 2 : 1), name)) {
      note(Damage::kDictionaryCut, place, kDictionaryId);
      break;
    }
    if (isWide) cursor.alignFrom(place);
    if (!pay(cursor.place() - place, place)) break;
    entry.bytes = name;
    section.dictionary.push_back(std::move(entry));
  }
}

}  // namespace

bool beginsAsPropertySet(Bytes bytes) {
  if (bytes.size() < kHeaderSize) return false;
  return ksv::readUnit(bytes.data(), 2, false) == kByteOrder &&
         ksv::readUnit(bytes.data() + 2, 2, false) <= kLatestVersion;
}

PropertySet readPropertySet(Bytes bytes) { return SetReader(bytes).read(); }

}  // namespace ksv_kit::properties
