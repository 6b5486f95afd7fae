#include "cli/text/file_converter.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "cli/system/failure.h"
#include "cli/system/resource_limits.h"
#include "cli/text/conversion_journal.h"
#include "cli/text/replay.h"
#include "cli/text/resynchronisation.h"
#include "cli/text/text_failure.h"

namespace ksv_cli {
namespace {

// The longest thing that is written whole is a language tag in UCS-4, a little
// above 1 KiB.
constexpr size_t kSmallestOutput = 2048;

constexpr uint8_t kEscape = 0x1B;

template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char text[128];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// A character up to U+FFFF.
std::string utf8Of(uint32_t character) {
  const auto continuation = [](uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
  if (character < 0x80) return {static_cast<char>(character)};
  if (character < 0x800) return {static_cast<char>(0xC0 | character >> 6), continuation(character)};
  return {static_cast<char>(0xE0 | character >> 12), continuation(character >> 6),
          continuation(character)};
}

}  // namespace

FileConverter::FileConverter(const ConversionSettings& settings, ByteSource& source, ByteSink& sink,
                             ConversionJournal* journal)
    : settings_(settings),
      text_(settings.source, settings.skipInvalid ? IllFormed::kIsLeftOut : IllFormed::kEndsText,
            settings.blockSize, source),
      sink_(sink),
      journal_(journal),
      outputCapacity_(std::max(2 * settings.blockSize, kSmallestOutput)) {
  output_ = std::make_unique_for_overwrite<uint8_t[]>(outputCapacity_);
}

void FileConverter::run() {
  begin();
  while (convertPiece()) {
  }
}

void FileConverter::begin() {
  setUpTarget();
  text_.begin();
  setUpSource();
}

bool FileConverter::convertPiece() {
  counts_.invalidBytes += text_.check();
  convertHeld();
  if (text_.isMalformed()) text_.failMalformed();
  if (!text_.isAtEnd()) {
    text_.read();
    return true;
  }
  text_.throwReadFailure();
  finish();
  return false;
}

void FileConverter::setUpTarget() {
  if (cconvInitConvert(&record_, &settings_.options, settings_.target.name.c_str()) !=
      KSV_STATUS_DONE)
    throw Failure("the charset " + settings_.target.display + " cannot be set up");
  // What is replaced is counted, so the library is asked for it one by one.
  record_.options.replaceUnmappable = 0;
  refusesEscape_ = settings_.target.kind == CharsetKind::kIso2022 &&
                   settings_.source.kind != CharsetKind::kIso2022;
}

// Byte-oriented charsets are read most significant byte first.
bool FileConverter::readsBigEndian() const {
  return settings_.source.hasByteOrder() ? text_.bigEndian() : true;
}

// What is invalid is skipped here: the library's decoders go on behind it each in a way of its own.
void FileConverter::setUpSource() {
  uint32_t parameters[3] = {readsBigEndian(), 0, 0};
  if (cconvChgCharset(&record_, parameters, settings_.source.name.c_str()) != KSV_STATUS_DONE)
    throw Failure("the charset " + settings_.source.display + " cannot be set up");
  if (!settings_.language.empty()) cconvChgLang(&record_, settings_.language.c_str());
}

void FileConverter::convertHeld() {
  const size_t end = text_.cut();
  size_t used = convert(0, end);
  if (used < end && text_.isAtEnd() && !text_.isMalformed()) {
    text_.throwReadFailure();
    if (!settings_.skipInvalid) text_.failTruncated(used);
    used = convertBehindTruncated(used, end);
  }
  if (!text_.isLastPiece() && used == 0 && text_.size() > limits::kLongestCarry)
    text_.failInvalid(0);
  text_.discard(used);
}

// Leaves out a sequence that the end of the text cuts. The bytes behind it may be characters
// in their own right, but not behind an escape.
size_t FileConverter::convertBehindTruncated(size_t at, size_t end) {
  while (at < end) {
    const bool standsAlone =
        settings_.source.form == UnicodeForm::kNone && text_.bytes()[at] != kEscape;
    const size_t length =
        standsAlone ? badSequenceLength(settings_.source, text_.bytes() + at, end - at, true)
                    : end - at;
    counts_.invalidBytes += length;
    at = convert(at + length, end);
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
  wroteAny_ = wroteAny_ || record_.outputPosition != 0;
  sink_.write(output_.get(), static_cast<size_t>(record_.outputPosition));
}

uint32_t FileConverter::convertOnce(ConverterRecord& before) {
  aimAtOutput();
  before = record_;
  const uint32_t status = cconvConvert(&record_);
  if (journal_ != nullptr) journal_->note(before, record_, text_.offsets());
  drain();
  const bool moved = record_.inputPosition != before.inputPosition || record_.outputPosition != 0;
  if (status == KSV_STATUS_FULL && !moved)
    throw Failure("a character is longer than the output buffer" +
                  atOffset(text_.fileOffset(static_cast<size_t>(record_.inputPosition))));
  return status;
}

// Returns the position up to which the bytes are used; what is left over needs
// the bytes that follow.
size_t FileConverter::convert(size_t begin, size_t end) {
  record_.input = text_.bytes();
  record_.inputPosition = static_cast<int32_t>(begin);
  size_t escape = nextEscape(begin, end);
  size_t limit = escape;
  for (;;) {
    record_.inputLength = static_cast<int32_t>(limit);
    ConverterRecord before;
    const uint32_t status = convertOnce(before);
    const auto used = [&] { return static_cast<size_t>(record_.inputPosition); };
    switch (status) {
      case KSV_STATUS_DONE:
      case KSV_STATUS_INCOMPLETE:
        if (limit == end) return used();
        if (used() != escape) {
          ++limit;  // the escape stands where a trail should: what it breaks is told first
          continue;
        }
        takeEscape(escape);
        break;
      case KSV_STATUS_INVALID: {
        const auto start = static_cast<size_t>(characterStart(before, record_.inputPosition));
        if (!takeInvalid(start, end)) return start;
        break;
      }
      case KSV_STATUS_UNMAPPABLE:
        takeUnmappable(before);
        break;
      case KSV_STATUS_FULL:
        continue;
      default:
        throw Failure("the conversion from " + settings_.source.display + " to " +
                      settings_.target.display + " cannot be set up");
    }
    if (used() > escape) escape = nextEscape(used(), end);
    limit = escape;
  }
}

// Skips bytes that are no character. False when more of them are needed to see how many.
bool FileConverter::takeInvalid(size_t start, size_t end) {
  if (!settings_.skipInvalid) text_.failInvalid(start);
  const size_t length =
      badSequenceLength(settings_.source, text_.bytes() + start, end - start, text_.isLastPiece());
  counts_.invalidBytes += length;
  record_.inputPosition = static_cast<int32_t>(start + length);
  return length != 0;
}

// A code that the source itself has no character for is invalid input as well.
void FileConverter::takeUnmappable(const ConverterRecord& before) {
  const size_t start = unmappableStart(before);
  const auto end = static_cast<size_t>(record_.inputPosition);
  if (record_.unicodeCode == 0 && settings_.skipInvalid) {
    counts_.invalidBytes += end - start;
    return;
  }
  if (settings_.options.replaceUnmappable == 0) failUnmappable(start);
  writeReplacement(start, end);
}

void FileConverter::writeReplacement(size_t start, size_t end) {
  record_.inputPosition = static_cast<int32_t>(start);
  record_.inputLength = static_cast<int32_t>(end);
  record_.options.replaceUnmappable = settings_.options.replaceUnmappable;
  ConverterRecord before;
  uint32_t status;
  do {
    status = convertOnce(before);
  } while (status == KSV_STATUS_FULL);
  record_.options.replaceUnmappable = 0;
  if (status == KSV_STATUS_UNMAPPABLE) failUnmappable(start);
  record_.inputPosition = static_cast<int32_t>(end);
  ++counts_.replaced;
}

// The first U+001B that would come out as the beginning of an escape sequence.
size_t FileConverter::nextEscape(size_t begin, size_t end) const {
  if (!refusesEscape_) return end;
  const size_t unit = unitSize(settings_.source);
  const bool bigEndian = readsBigEndian();
  for (size_t at = begin; at + unit <= end; at += unit) {
    uint32_t value = 0;
    for (size_t i = 0; i < unit; ++i)
      value = value << 8 | text_.bytes()[at + (bigEndian ? i : unit - 1 - i)];
    if (value == kEscape) return at;
  }
  return end;
}

// The replacement is converted from UTF-8 with a copy, whose output goes on where the
// record's ended.
void FileConverter::takeEscape(size_t at) {
  record_.unicodeCode = kEscape;
  if (settings_.options.replaceUnmappable == 0) failUnmappable(at);
  const std::string text = utf8Of(record_.options.narrowReplacement);
  ConverterRecord other = record_;
  uint32_t parameters[3] = {1, 0, 0};
  aimAtOutput();
  other.output = record_.output;
  other.outputPosition = 0;
  other.input = reinterpret_cast<const uint8_t*>(text.data());
  other.inputPosition = 0;
  other.inputLength = static_cast<int32_t>(text.size());
  if (cconvChgCharset(&other, parameters, "utf-8") != KSV_STATUS_DONE ||
      cconvConvert(&other) != KSV_STATUS_DONE)
    failUnmappable(at);
  record_.outputPosition = other.outputPosition;
  record_.targetGroup = other.targetGroup;
  record_.targetGroupType = other.targetGroupType;
  record_.designatedGroup = other.designatedGroup;
  record_.designatedPlane = other.designatedPlane;
  record_.rawCode = other.rawCode;  // so that CR and LF around it are two line ends
  drain();
  record_.inputPosition = static_cast<int32_t>(at + unitSize(settings_.source));
  ++counts_.replaced;
}

size_t FileConverter::unmappableStart(const ConverterRecord& before) const {
  const int32_t start = settings_.source.form == UnicodeForm::kNone
                            ? characterBehindOutput(before, record_.outputPosition)
                            : characterStart(before, record_.inputPosition - 1);
  return static_cast<size_t>(start);
}

void FileConverter::finish() {
  // An empty text stays empty: no escape sequence has to be undone.
  if (!wroteAny_ && settings_.target.kind == CharsetKind::kIso2022) return;
  aimAtOutput();
  const uint32_t status = cconvTermConvert(&record_);
  drain();
  if (status != KSV_STATUS_DONE) throw Failure("the end of the text cannot be written");
}

void FileConverter::failUnmappable(size_t position) const {
  // A code that stands for no character is lacking in the source.
  const bool isCharacter = record_.unicodeCode != 0;
  const std::string what = isCharacter ? formatted("U+%04" PRIX32, record_.unicodeCode)
                                       : formatted("the code 0x%02" PRIX32, record_.rawCode);
  const CharsetChoice& lacking = isCharacter ? settings_.target : settings_.source;
  throw Failure(what + " is not in " + lacking.display + atOffset(text_.fileOffset(position)));
}

}  // namespace ksv_cli
