#include "kit/convert/text_places.h"

#include <algorithm>
#include <optional>

#include "kit/convert/pipeline.h"
#include "kit/text/resynchronisation.h"
#include "kit/text/unicode_check.h"
#include "ksv_cconv.h"

namespace ksv_kit {
namespace {

constexpr size_t kMostOfALine = 64 * 1024;
constexpr size_t kLongestMark = 4;

// The one byte that the charset writes for a character of ASCII or its neighbours.
std::optional<uint8_t> singleByte(const std::string& charset, std::string_view utf8) {
  ConverterRecord record{};
  uint32_t parameters[3] = {1, 0, 0};
  uint8_t output[16];
  if (cconvInitConvert(&record, nullptr, charset.c_str()) != KSV_STATUS_DONE) return std::nullopt;
  cconvChgCharset(&record, parameters, "utf-8");
  record.input = reinterpret_cast<const uint8_t*>(utf8.data());
  record.inputLength = static_cast<int32_t>(utf8.size());
  record.output = output;
  record.outputCapacity = sizeof output;
  if (cconvConvert(&record) != KSV_STATUS_DONE || record.outputPosition != 1) return std::nullopt;
  return output[0];
}

}  // namespace

TextPlaces::TextPlaces(const CharsetChoice& charset)
    : charset_(charset),
      unitSize_(unitSize(charset)),
      bigEndian_(charset.order == ByteOrder::kBig) {
  if (!charset.hasByteOrder()) unitSize_ = 1;
  if (charset.form == UnicodeForm::kNone &&
      (charset.kind == CharsetKind::kCharset || charset.kind == CharsetKind::kShifts))
    findLineEnds();
}

// EBCDIC has them elsewhere, and one more.
void TextPlaces::findLineEnds() {
  if (singleByte(charset_.name, "A").value_or('A') == 'A') return;
  lineFeed_ = singleByte(charset_.name, "\n").value_or('\n');
  carriageReturn_ = singleByte(charset_.name, "\r").value_or('\r');
  if (const auto nextLine = singleByte(charset_.name, "\xC2\x85")) nextLine_ = *nextLine;
}

void TextPlaces::restart() {
  held_.clear();
  base_ = mark_ = 0;
  bigEndian_ = charset_.order == ByteOrder::kBig;
  knowsOrder_ = false;
  first_ = {};
}

void TextPlaces::add(const uint8_t* bytes, size_t size) {
  held_.insert(held_.end(), bytes, bytes + size);
  if (!knowsOrder_) learnOrder();
}

void TextPlaces::learnOrder() {
  mark_ = byteOrderMark(charset_.form, charset_.order != ByteOrder::kOpen, held_.data(),
                        held_.size(), bigEndian_);
  knowsOrder_ = held_.size() >= kLongestMark;
}

uint32_t TextPlaces::unitAt(size_t at) const {
  if (unitSize_ == 1) return held_[at];
  uint32_t value = 0;
  for (size_t i = 0; i < unitSize_; ++i)
    value = value << 8 | held_[at + (bigEndian_ ? i : unitSize_ - 1 - i)];
  return value;
}

bool TextPlaces::isLineEnd(uint32_t unit) const {
  return unit == lineFeed_ || unit == carriageReturn_ || unit == nextLine_;
}

// The line that a place in what is held stands in.
TextPlaces::Line TextPlaces::lineAt(size_t end) const {
  Line line = first_;
  for (size_t at = 0; at + unitSize_ <= end; at += unitSize_) {
    const uint32_t unit = unitAt(at);
    const bool isSecondHalf = unit == lineFeed_ && line.isBehindReturn;
    line.isBehindReturn = unit == carriageReturn_;
    if (!isLineEnd(unit)) continue;
    if (!isSecondHalf) ++line.number;
    line.begin = at + unitSize_;
    line.columnsBefore = 0;
  }
  return line;
}

// Lines of encodings with shifts begin unshifted.
TextPlaces::Decoded TextPlaces::decodeByPipeline(size_t begin, size_t end) const {
  ConversionTask task;
  task.source = charset_;
  task.target = utf8ShownAs("UTF-8");
  task.invalid.kind = task.unmappable.kind = PolicyKind::kSkip;
  Pipeline pipeline(task);
  ByteBuffer out;
  pipeline.take(held_.data() + begin, end - begin, PieceEnd::kBrokenOff, out);
  const auto isBeginning = [](uint8_t byte) { return (byte & 0xC0) != 0x80; };
  return {static_cast<uint64_t>(std::count_if(out.data(), out.data() + out.size(), isBeginning)),
          end};
}

TextPlaces::Decoded TextPlaces::decode(size_t begin, size_t end) const {
  if (charset_.kind == CharsetKind::kShifts) return decodeByPipeline(begin, end);
  ConverterRecord record{};
  const size_t from = base_ == 0 && begin == 0 ? std::min(mark_, end) : begin;
  uint32_t parameters[3] = {charset_.hasByteOrder() ? bigEndian_ : 1u, 0, 1};
  if (cconvInitConvert(&record, nullptr, "utf-8") != KSV_STATUS_DONE ||
      cconvChgCharset(&record, parameters, charset_.name.c_str()) != KSV_STATUS_DONE)
    return {end - from, end};
  std::vector<uint8_t> output(kMostOfALine);
  record.input = held_.data() + from;
  record.inputLength = static_cast<int32_t>(end - from);
  record.output = output.data();
  record.outputCapacity = static_cast<int32_t>(output.size());
  uint32_t status;
  do {
    record.outputPosition = 0;
    const int32_t before = record.inputPosition;
    status = cconvConvert(&record);
    if (record.inputPosition == before && record.outputPosition == 0) break;
  } while (status == KSV_STATUS_FULL || status == KSV_STATUS_UNMAPPABLE ||
           status == KSV_STATUS_INVALID);
  return {static_cast<uint64_t>(record.charactersRead),
          from + static_cast<size_t>(record.inputPosition)};
}

void TextPlaces::settle(uint64_t offset) {
  if (offset <= base_) return;
  auto end = static_cast<size_t>(std::min<uint64_t>(offset - base_, held_.size()));
  end -= end % unitSize_;
  Line line = lineAt(end);
  if (end - line.begin > kMostOfALine) {
    const Decoded decoded = decode(line.begin, end);
    line.columnsBefore += decoded.characters;
    line.begin = decoded.end;
  }
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(line.begin));
  base_ += line.begin;
  first_ = line;
  first_.begin = 0;
}

TextPlace TextPlaces::placeOf(uint64_t offset) const {
  const uint64_t from = std::max(offset, base_) - base_;
  const auto end = static_cast<size_t>(std::min<uint64_t>(from, held_.size()));
  const Line line = lineAt(end);
  return {line.number, line.columnsBefore + decode(line.begin, end).characters + 1};
}

TextPlace placeIn(const CharsetChoice& charset, const uint8_t* text, size_t length,
                  uint64_t offset) {
  TextPlaces places(charset);
  places.add(text, std::min<size_t>(length, static_cast<size_t>(offset)));
  return places.placeOf(offset);
}

}  // namespace ksv_kit
