#include "cli/text/text_conversion.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/failure.h"
#include "cli/text/conversion_journal.h"
#include "cli/text/iso_2022_planes.h"
#include "cli/text/iso_2022_shifts.h"
#include "cli/text/mail_source.h"
#include "cli/text/resynchronisation.h"

namespace ksv_cli {
namespace {

// What a target gets for a text that a single call converts; empty when the text
// is not one of the source charset.
std::string convertedSample(const char* source, std::string_view text, const char* target) {
  ConverterRecord record{};
  ConvertOptions options{};
  options.outputBigEndian = 1;
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&record, &options, target) != KSV_STATUS_DONE ||
      cconvChgCharset(&record, parameters, source) != KSV_STATUS_DONE)
    return "";
  uint8_t output[32];
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.inputLength = static_cast<int32_t>(text.size());
  record.output = output;
  record.outputCapacity = sizeof output;
  if (cconvConvert(&record) != KSV_STATUS_DONE) return "";
  return {reinterpret_cast<const char*>(output), static_cast<size_t>(record.outputPosition)};
}

// Whether a charset has letters and other controls at codes that are control codes in ASCII. The
// converter writes such a code as it is where the target lacks its character: a NEL of EBCDIC
// would become a NAK, a letter of VISCII an STX.
bool hasOtherControls(const CharsetChoice& charset) {
  constexpr std::string_view kControls = "\x02\x04\x05\x06\x15";
  const bool hasBytes = charset.form == UnicodeForm::kNone && unitSize(charset) == 1;
  if (!hasBytes || charset.kind != CharsetKind::kCharset) return false;
  const std::string read = convertedSample(charset.name.c_str(), kControls, "utf-8");
  return !read.empty() && read != kControls;
}

// The converter looks for line ends, and writes them, by their codes in ASCII.
bool writesLineEndsOfItsOwn(const ConversionSettings& settings) {
  return settings.options.convertNewlines != 0 && hasOtherControls(settings.target);
}

bool readsOtherControls(const ConversionSettings& settings) {
  const bool isUsed =
      settings.target.form == UnicodeForm::kNone || settings.options.convertNewlines != 0;
  return isUsed && hasOtherControls(settings.source);
}

// A character goes from a set of the source to the same set of the target with its
// code as it is. Half-width katakana in mail have other codes of that set than all
// other texts, and OASYS_ONLINE can read JIS X 0201, but not write it.
bool needsUtf8Between(const ConversionSettings& settings) {
  if (writesLineEndsOfItsOwn(settings)) return true;
  if (settings.source.form != UnicodeForm::kNone) return false;
  if (settings.target.name == "oasys_online" || readsOtherControls(settings)) return true;
  if (settings.source.kind != CharsetKind::kIso2022) return false;
  const char* target = settings.target.name.c_str();
  const std::string direct = convertedSample(settings.source.name.c_str(), "\x1B(I1", target);
  return !direct.empty() && direct != convertedSample("utf-8", "ｱ", target);
}

CharsetChoice utf8(const std::string& display) {
  return {"utf-8", display, UnicodeForm::kUtf8, ByteOrder::kOpen, CharsetKind::kCharset};
}

ConversionSettings settingsToUtf8(const ConversionSettings& settings) {
  ConversionSettings result = settings;
  result.target = utf8(settings.target.display);
  result.options = {};
  result.options.replaceUnmappable = settings.options.replaceUnmappable;
  result.options.narrowReplacement = settings.options.narrowReplacement;
  result.options.wideReplacement = settings.options.wideReplacement;
  result.language.clear();
  return result;
}

ConversionSettings settingsFromUtf8(const ConversionSettings& settings) {
  ConversionSettings result = settings;
  result.source = utf8(settings.source.display);
  return result;
}

// From UTF-8 to UTF-8, with the line ends that are wished for.
ConversionSettings settingsOfLineEnds(const ConversionSettings& settings) {
  ConversionSettings result = settingsFromUtf8(settingsToUtf8(settings));
  result.options.convertNewlines = settings.options.convertNewlines;
  result.options.newlineForm = settings.options.newlineForm;
  return result;
}

// A source that is told by another one what to forget, not by who reads it.
class KeptSource : public ByteSource {
 public:
  explicit KeptSource(ByteSource& source) : source_(source) {}

  size_t read(uint8_t* buffer, size_t size) override { return source_.read(buffer, size); }
  uint64_t fileOffset(uint64_t offset) const override { return source_.fileOffset(offset); }

 private:
  ByteSource& source_;
};

// The text as UTF-8, converted piece by piece as it is read.
class Utf8Source : public ByteSource, private ByteSink {
 public:
  Utf8Source(const ConversionSettings& settings, ByteSource& source)
      : settings_(settings),
        source_(source),
        readAhead_(source),
        converter_(settings_, readAhead_, *this, &journal_) {}

  size_t read(uint8_t* buffer, size_t size) override {
    while (read_ == text_.size() && !failure_ && !done_) convertNext();
    if (read_ == text_.size() && failure_) std::rethrow_exception(failure_);
    const size_t count = std::min(size, text_.size() - read_);
    if (count != 0) std::memcpy(buffer, text_.data() + read_, count);
    read_ += count;
    return count;
  }

  uint64_t fileOffset(uint64_t offset) const override {
    return source_.fileOffset(journal_.inputOffset(offset));
  }
  // The source is read ahead of what was asked for: it may be asked where that came from.
  void forgetBefore(uint64_t offset) override {
    journal_.forgetBefore(offset);
    if (const std::optional<uint64_t> first = journal_.firstInputOffset())
      source_.forgetBefore(*first);
  }

  const ConversionCounts& counts() const { return converter_.counts(); }

 private:
  void convertNext() {
    text_.clear();
    read_ = 0;
    try {
      if (!begun_) converter_.begin();
      begun_ = true;
      done_ = !converter_.convertPiece();
    } catch (const Failure&) {
      failure_ = std::current_exception();
    }
  }

  void write(const uint8_t* bytes, size_t size) override {
    text_.insert(text_.end(), bytes, bytes + size);
  }

  const ConversionSettings settings_;
  ByteSource& source_;
  KeptSource readAhead_;
  ConversionJournal journal_;
  FileConverter converter_;
  std::vector<uint8_t> text_;
  size_t read_ = 0;
  bool begun_ = false;
  bool done_ = false;
  std::exception_ptr failure_;
};

bool isMail(CharsetKind kind) { return kind == CharsetKind::kUtf7 || kind == CharsetKind::kHz; }

bool hasPlanes(const CharsetChoice& charset) { return charset.name == "iso-2022-jp-2004"; }

bool hasShifts(const CharsetChoice& charset) { return charset.name.starts_with("cp50220"); }

ConversionCounts convertStage(const ConversionSettings& settings, ByteSource& source,
                              ByteSink& sink) {
  FileConverter converter(settings, source, sink);
  converter.run();
  return converter.counts();
}

// text: a source that makes UTF-8 of the text.
template <typename Text>
ConversionCounts convertBehind(Text& text, const ConversionSettings& settings, ByteSink& sink) {
  ConversionSettings rest = settingsFromUtf8(settings);
  ConversionCounts counts;
  if (writesLineEndsOfItsOwn(settings)) {
    rest.options.convertNewlines = 0;
    Utf8Source lines(settingsOfLineEnds(settings), text);
    counts = convertStage(rest, lines, sink);
  } else {
    counts = convertStage(rest, text, sink);
  }
  return counts += text.counts();
}

ConversionCounts convertStages(const ConversionSettings& settings, ByteSource& source,
                               ByteSink& sink) {
  if (isMail(settings.source.kind)) {
    MailSource text(settings, source);
    return convertBehind(text, settings, sink);
  }
  if (needsUtf8Between(settings)) {
    Utf8Source text(settingsToUtf8(settings), source);
    return convertBehind(text, settings, sink);
  }
  return convertStage(settings, source, sink);
}

ConversionCounts convertTo(const ConversionSettings& settings, ByteSource& source, ByteSink& sink) {
  if (!hasPlanes(settings.target)) return convertStages(settings, source, sink);
  PlaneSink planes(sink);
  const ConversionCounts counts = convertStages(settings, source, planes);
  planes.finish();
  return counts;
}

}  // namespace

ConversionCounts convertText(const ConversionSettings& settings, ByteSource& source,
                             ByteSink& sink) {
  if (hasPlanes(settings.source)) {
    PlaneSource planes(source);
    return convertTo(settings, planes, sink);
  }
  if (hasShifts(settings.source)) {
    ShiftSource shifts(source);
    return convertTo(settings, shifts, sink);
  }
  return convertTo(settings, source, sink);
}

}  // namespace ksv_cli
