#include "file_converter.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "chunk_boundary.h"
#include "failure.h"
#include "replay.h"

namespace ksv_cli {
namespace {

// The longest thing that is written whole is a language tag in UCS-4, a little
// above 1 KiB.
constexpr size_t kSmallestOutput = 2048;

// A piece that converts to nothing without its continuation is read on, up to
// here: a language tag has at most 260 characters.
constexpr size_t kLongestCarry = 1024 * 1024;

constexpr size_t kLongestMark = 4;
constexpr size_t kUsualCarry = 64;
constexpr uint8_t kEscape = 0x1B;

template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char text[128];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

std::string atOffset(uint64_t offset) { return formatted(" at byte offset %" PRIu64, offset); }

}  // namespace

FileConverter::FileConverter(const ConversionSettings& settings, ByteSource& source, ByteSink& sink)
    : settings_(settings),
      source_(source),
      sink_(sink),
      inputCapacity_(settings.blockSize + kUsualCarry),
      outputCapacity_(std::max(2 * settings.blockSize, kSmallestOutput)) {
  input_ = std::make_unique_for_overwrite<uint8_t[]>(inputCapacity_);
  output_ = std::make_unique_for_overwrite<uint8_t[]>(outputCapacity_);
}

void FileConverter::run() {
  setUpTarget();
  fill();
  while (!atEnd_ && held_ < kLongestMark) fill();
  skipByteOrderMark();
  setUpSource();
  for (;;) {
    checkNewBytes();
    convertHeld();
    if (malformed_) failMalformed();
    if (atEnd_) break;
    fill();
  }
  finish();
}

void FileConverter::setUpTarget() {
  if (cconvInitConvert(&record_, &settings_.options, settings_.target.name.c_str()) !=
      KSV_STATUS_DONE)
    throw Failure("the charset " + settings_.target.display + " cannot be set up");
}

// Byte-oriented charsets are read most significant byte first.
void FileConverter::setUpSource() {
  const bool bigEndian = settings_.source.hasByteOrder() ? bigEndian_ : true;
  uint32_t parameters[3] = {bigEndian, 0, settings_.skipInvalid};
  if (cconvChgCharset(&record_, parameters, settings_.source.name.c_str()) != KSV_STATUS_DONE)
    throw Failure("the charset " + settings_.source.display + " cannot be set up");
  if (!settings_.language.empty()) cconvChgLang(&record_, settings_.language.c_str());
}

void FileConverter::fill() {
  if (inputCapacity_ - held_ < settings_.blockSize) {
    const size_t capacity = held_ + settings_.blockSize;
    auto larger = std::make_unique_for_overwrite<uint8_t[]>(capacity);
    std::memcpy(larger.get(), input_.get(), held_);
    input_ = std::move(larger);
    inputCapacity_ = capacity;
  }
  const size_t count = source_.read(input_.get() + held_, settings_.blockSize);
  held_ += count;
  atEnd_ = count == 0;
}

void FileConverter::skipByteOrderMark() {
  const bool orderIsFixed = settings_.source.order != ByteOrder::kOpen;
  bigEndian_ = settings_.source.order == ByteOrder::kBig;
  discard(byteOrderMark(settings_.source.form, orderIsFixed, input_.get(), held_, bigEndian_));
}

void FileConverter::checkNewBytes() {
  if (settings_.skipInvalid)
    dropIllFormed();
  else if (!malformed_)
    findIllFormed();
}

void FileConverter::findIllFormed() {
  const ScanResult scan = scanNewBytes(checked_);
  checked_ += scan.wellFormed;
  truncated_ = scan.end == ScanEnd::kIncomplete;
  malformed_ = scan.end == ScanEnd::kInvalid || (truncated_ && atEnd_);
}

// Closes the gaps in one pass, so that much ill-formed text costs no more.
void FileConverter::dropIllFormed() {
  size_t from = checked_;
  for (;;) {
    const ScanResult scan = scanNewBytes(from);
    std::memmove(input_.get() + checked_, input_.get() + from, scan.wellFormed);
    checked_ += scan.wellFormed;
    from += scan.wellFormed;
    if (scan.end == ScanEnd::kAll || (scan.end == ScanEnd::kIncomplete && !atEnd_)) break;
    noteGap(checked_, scan.badLength);
    from += scan.badLength;
  }
  std::memmove(input_.get() + checked_, input_.get() + from, held_ - from);
  held_ = checked_ + (held_ - from);
}

ScanResult FileConverter::scanNewBytes(size_t from) const {
  return scanUnicode(settings_.source.form, bigEndian_, input_.get() + from, held_ - from);
}

void FileConverter::noteGap(size_t at, size_t length) {
  if (!gaps_.empty() && gaps_.back().at == at)
    gaps_.back().length += length;
  else
    gaps_.push_back({at, length});
}

void FileConverter::convertHeld() {
  const size_t end =
      isLastPiece() ? checked_ : safeCut(settings_.source.form, bigEndian_, input_.get(), checked_);
  size_t used = convert(0, end);
  if (used < end && atEnd_ && !malformed_) {
    if (!settings_.skipInvalid) failTruncated(used);
    used = convertBehindTruncated(used, end);
  }
  if (!isLastPiece() && used == 0 && held_ > kLongestCarry) failInvalid(0);
  discard(used);
}

// Leaves out a sequence that the end of the text cuts. The bytes behind its first
// one may be characters in their own right, but not behind an escape.
size_t FileConverter::convertBehindTruncated(size_t at, size_t end) {
  while (at < end) {
    const bool standsAlone = settings_.source.form == UnicodeForm::kNone && input_[at] != kEscape;
    if (!standsAlone) return end;
    at = convert(at + 1, end);
  }
  return end;
}

void FileConverter::aimAtOutput() {
  record_.output = output_.get();
  record_.outputPosition = 0;
  record_.outputCapacity = static_cast<int32_t>(outputCapacity_);
  record_.charactersRead = 0;  // 32-bit counts, which a long text would overflow
  record_.unitsWritten = 0;
}

void FileConverter::drain() {
  sink_.write(output_.get(), static_cast<size_t>(record_.outputPosition));
}

// Returns the position up to which the bytes are used; what is left over needs
// the bytes that follow.
size_t FileConverter::convert(size_t begin, size_t end) {
  record_.input = input_.get();
  record_.inputPosition = static_cast<int32_t>(begin);
  record_.inputLength = static_cast<int32_t>(end);
  for (;;) {
    aimAtOutput();
    const ConverterRecord before = record_;
    const uint32_t status = cconvConvert(&record_);
    drain();
    const bool moved = record_.inputPosition != before.inputPosition || record_.outputPosition != 0;
    switch (status) {
      case KSV_STATUS_DONE:
      case KSV_STATUS_INCOMPLETE:
        return static_cast<size_t>(record_.inputPosition);
      case KSV_STATUS_INVALID:
        failInvalid(static_cast<size_t>(characterStart(before, record_.inputPosition)));
      case KSV_STATUS_UNMAPPABLE:
        failUnmappable(static_cast<size_t>(characterStart(before, record_.inputPosition - 1)));
      case KSV_STATUS_FULL:
        if (moved) continue;
        throw Failure("a character is longer than the output buffer" +
                      atOffset(fileOffset(static_cast<size_t>(record_.inputPosition))));
      default:
        throw Failure("the conversion from " + settings_.source.display + " to " +
                      settings_.target.display + " cannot be set up");
    }
  }
}

void FileConverter::finish() {
  uint32_t status;
  do {
    aimAtOutput();
    status = cconvTermConvert(&record_);
    drain();
  } while (status == KSV_STATUS_FULL && record_.outputPosition != 0);
  if (status != KSV_STATUS_DONE) throw Failure("the end of the text cannot be written");
}

void FileConverter::discard(size_t used) {
  std::memmove(input_.get(), input_.get() + used, held_ - used);
  base_ = fileOffset(used);
  std::erase_if(gaps_, [used](const Gap& gap) { return gap.at <= used; });
  for (Gap& gap : gaps_) gap.at -= used;
  held_ -= used;
  checked_ -= std::min(checked_, used);
}

uint64_t FileConverter::fileOffset(size_t position) const {
  uint64_t offset = base_ + position;
  for (const Gap& gap : gaps_)
    if (gap.at <= position) offset += gap.length;
  return offset;
}

void FileConverter::failMalformed() const {
  if (truncated_) failTruncated(checked_);
  failInvalid(checked_);
}

void FileConverter::failInvalid(size_t position) const {
  std::string bytes;
  if (position < held_) bytes = formatted(" (0x%02X)", static_cast<unsigned>(input_[position]));
  throw Failure("invalid " + settings_.source.display + bytes + atOffset(fileOffset(position)));
}

void FileConverter::failTruncated(size_t position) const {
  throw Failure("the text ends inside a " + settings_.source.display + " character" +
                atOffset(fileOffset(position)));
}

void FileConverter::failUnmappable(size_t position) const {
  const std::string character = record_.unicodeCode != 0
                                    ? formatted("U+%04" PRIX32, record_.unicodeCode)
                                    : formatted("the code 0x%02" PRIX32, record_.rawCode);
  throw Failure(character + " is not in " + settings_.target.display +
                atOffset(fileOffset(position)));
}

}  // namespace ksv_cli
