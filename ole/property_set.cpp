#include "ole/property_set.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/little_endian.h"
#include "ksv_ole.h"
#include "ole/day_serial.h"
#include "ole/limits.h"

namespace ksv {
namespace {

constexpr uint32_t kSectionCount = 24;
constexpr uint32_t kFirstSection = 28;
constexpr uint32_t kSectionRowSize = 20;
constexpr uint32_t kFormatIdSize = 16;

constexpr uint32_t kSectionHeaderSize = 8;
constexpr uint32_t kPropertyRowSize = 8;
constexpr uint32_t kCodePageId = 1;

enum ValueType : uint32_t { kInteger16 = 2, kInteger32 = 3, kString = 30, kFileTime = 64 };

using FormatId = std::array<uint8_t, kFormatIdSize>;

struct PropertySetStream {
  const char* name;
  FormatId formatId;
  uint32_t missing;  // the result when it cannot be opened
};

constexpr PropertySetStream kSummaryStream = {"\5SummaryInformation",
                                              {0xE0, 0x85, 0x9F, 0xF2, 0xF9, 0x4F, 0x68, 0x10, 0xAB,
                                               0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9},
                                              KSV_SUMMARY_NO_SUMMARY};
constexpr PropertySetStream kDocumentSummaryStream = {
    "\5DocumentSummaryInformation",
    {0x02, 0xD5, 0xCD, 0xD5, 0x9C, 0x2E, 0x1B, 0x10, 0x93, 0x97, 0x08, 0x00, 0x2B, 0x2C, 0xF9,
     0xAE},
    KSV_SUMMARY_NOT_OPENED};

// A section as its size says; what the stream does not have of it reads as zero. Its
// beginning is read at once, the rest where it is asked for: a picture may be in it.
class Section {
 public:
  // The section at a position of the stream, which stands there.
  Section(CompoundStream& stream, uint32_t start) : stream_(stream), start_(start) {
    const uint32_t headLength = stream.read(head_.data(), kHeadSize);
    if (headLength < sizeof(uint32_t)) std::memset(head_.data() + headLength, 0, sizeof(uint32_t));
    size_ = dwordAt(head_.data());
    available_ =
        headLength < kHeadSize ? std::min(headLength, size_) : stream.readableFrom(start, size_);
  }

  uint32_t size() const { return size_; }
  // How much of it the stream has.
  uint32_t available() const { return available_; }

  bool holds(uint64_t offset, uint64_t count) const { return offset + count <= size_; }

  uint32_t dword(uint64_t offset) {
    std::array<uint8_t, 4> bytes = {};
    copy(offset, bytes.data(), bytes.size());
    return dwordAt(bytes.data());
  }

  // Leaves what the stream does not have as it is.
  void copy(uint64_t offset, void* dest, uint32_t count) {
    if (offset >= available_) return;
    const uint32_t at = static_cast<uint32_t>(offset);
    const uint32_t length = std::min(count, available_ - at);
    if (at + length <= kHeadSize) {
      std::memcpy(dest, head_.data() + at, length);
    } else {
      stream_.seek(start_ + at, CompoundStream::kStart);
      stream_.read(dest, length);
    }
  }

 private:
  static constexpr uint32_t kHeadSize = 4096;

  CompoundStream& stream_;
  const uint32_t start_;
  uint32_t size_;
  uint32_t available_;
  std::array<uint8_t, kHeadSize> head_;  // as far as it is available
};

// A value of the stream that its end may cut.
uint32_t readDword(CompoundStream& stream, uint64_t offset) {
  std::array<uint8_t, 4> bytes = {};
  stream.seek(static_cast<uint32_t>(offset), CompoundStream::kStart);
  stream.read(bytes.data(), bytes.size());
  return dwordAt(bytes.data());
}

bool isSectionOf(CompoundStream& stream, uint64_t offset, const FormatId& formatId) {
  FormatId found = {};
  stream.seek(static_cast<uint32_t>(offset), CompoundStream::kStart);
  stream.read(found.data(), found.size());
  return found == formatId;
}

class PropertyReader {
 public:
  PropertyReader(Section& section, PropertySet set, SummaryReading& reading)
      : section_(section), set_(set), reading_(reading) {}

  // Properties whose rows the stream does not have are zeroes, which are skipped.
  void readAll(uint32_t count) {
    for (uint64_t i = 0; i < count; ++i) {
      const uint64_t row = kSectionHeaderSize + i * kPropertyRowSize;
      if (row >= section_.available()) return;
      readOne(section_.dword(row), section_.dword(row + 4));
    }
  }

 private:
  void readOne(uint32_t id, uint64_t offset) {
    if (!section_.holds(offset, 4)) return;
    const uint32_t type = section_.dword(offset);
    const uint64_t value = offset + 4;
    if (id == kCodePageId) {
      if (type != kInteger16 || !section_.holds(value, 2)) return;
      reading_.codePage = static_cast<uint16_t>(section_.dword(value));
      return;
    }
    const std::optional<SummaryField> field = reading_.kind.field(set_, id);
    if (field) readValue(*field, type, value);
  }

  void readValue(const SummaryField& field, uint32_t type, uint64_t value) {
    if (type == kInteger32 && section_.holds(value, 4)) {
      char text[16];
      std::snprintf(text, sizeof text, "%i", static_cast<int>(section_.dword(value)));
      store(field, text);
    } else if (type == kString && section_.holds(value, 4)) {
      readString(field, value);
    } else if (type == kFileTime && section_.holds(value, 8)) {
      const uint64_t high = section_.dword(value + 4);
      const auto text = fileTimeText(high << 32 | section_.dword(value));
      if (text) store(field, *text);
    }
  }

  void readString(const SummaryField& field, uint64_t value) {
    const uint32_t declared = section_.dword(value);
    if (declared == 0) return;
    const uint64_t begin = value + 4;
    const uint64_t left = section_.size() - begin;
    const bool endsAtZero = reading_.kind.endsTextsAtZero();
    const uint64_t length =
        endsAtZero ? left : std::min<uint64_t>({declared - 1, left, field.limit});
    char bytes[kLongestText] = {};
    std::string_view text(bytes, std::min<uint64_t>(length, sizeof bytes));
    section_.copy(begin, bytes, static_cast<uint32_t>(text.size()));
    if (endsAtZero) text = text.substr(0, text.find('\0'));
    store(field, text.substr(0, trimmedLength(text, reading_.codePage)));
  }

  void store(const SummaryField& field, std::string_view text) {
    reading_.text.convert(text, reading_.codePage);
    std::memcpy(reading_.record + field.offset, reading_.text.output(),
                reading_.text.outputLength());
  }

  Section& section_;
  const PropertySet set_;
  SummaryReading& reading_;
};

uint32_t readSection(Section& section, PropertySet set, SummaryReading& reading) {
  if (section.size() < kSectionHeaderSize) return KSV_SUMMARY_MALFORMED;
  // A terminator of two bytes would have been put behind it, in one block.
  if (section.size() > limits::kLargestSection) {
    return KSV_SUMMARY_NO_MEMORY;
  }
  const uint32_t count = section.dword(4);
  if (count >= (section.size() - kSectionHeaderSize) / kPropertyRowSize) {
    return KSV_SUMMARY_MALFORMED;
  }
  PropertyReader(section, set, reading).readAll(count);
  return KSV_SUMMARY_DONE;
}

}  // namespace

// Sections that lie upon each other could make work without end of a small stream: what
// they have all together is bounded, far above what sections side by side have.
uint32_t readPropertySet(CompoundFile& file, PropertySet set, SummaryReading& reading) {
  const PropertySetStream& names =
      set == PropertySet::kSummary ? kSummaryStream : kDocumentSummaryStream;
  const Directory& directory = file.directory();
  const auto entry = directory.findStream(directory.rootId(), names.name);
  if (!entry) return names.missing;
  const auto stream = CompoundStream::open(file, directory[*entry]);
  if (!stream) return names.missing;

  const uint64_t count = readDword(*stream, kSectionCount);
  const uint64_t leastSize = kSectionRowSize * count;
  if (count >= 2 && leastSize > uint64_t{stream->size()} + 12) return KSV_SUMMARY_MALFORMED;
  int64_t budget = limits::sectionBytes(file.file().size());
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t row = kFirstSection + kSectionRowSize * i;
    if (!isSectionOf(*stream, row, names.formatId)) continue;
    const uint32_t offset = readDword(*stream, row + kFormatIdSize);
    Section section(*stream, stream->seek(offset, CompoundStream::kStart));
    if (section.available() > budget) return KSV_SUMMARY_MALFORMED;
    budget -= section.available();
    const uint32_t result = readSection(section, set, reading);
    if (result != KSV_SUMMARY_DONE) return result;
  }
  return KSV_SUMMARY_DONE;
}

}  // namespace ksv
