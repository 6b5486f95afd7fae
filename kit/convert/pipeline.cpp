#include "kit/convert/pipeline.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kit/convert/iso_2022_planes.h"
#include "kit/convert/iso_2022_shifts.h"
#include "kit/convert/mail_stage.h"
#include "kit/convert/refusal_stage.h"
#include "kit/convert/shift_filter_stage.h"
#include "kit/shifts/shift_filter.h"
#include "kit/text/resynchronisation.h"

namespace ksv_kit {
namespace {

// What the target gets for a text that a single call converts; empty when the text
// is not one of the source charset.
std::string convertedSample(const char* source, std::string_view text, const std::string& target) {
  ConverterRecord record{};
  ConvertOptions options{};
  options.outputBigEndian = 1;
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&record, &options, target.c_str()) != KSV_STATUS_DONE ||
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
// engine writes such a code as it is where the target lacks its character: a NEL of EBCDIC would
// become a NAK, a letter of VISCII an STX.
bool hasOtherControls(const CharsetChoice& charset) {
  constexpr std::string_view kControls = "\x02\x04\x05\x06\x15";
  const bool hasBytes = charset.form == UnicodeForm::kNone && unitSize(charset) == 1;
  const bool isPlain =
      charset.kind == CharsetKind::kCharset || charset.kind == CharsetKind::kShifts;
  if (!hasBytes || !isPlain) return false;
  const std::string read = convertedSample(charset.name.c_str(), kControls, "utf-8");
  return !read.empty() && read != kControls;
}

bool readsOtherControls(const ConversionTask& task) {
  const bool matters = task.target.form == UnicodeForm::kNone || task.options.convertNewlines != 0;
  return matters && hasOtherControls(task.source);
}

// The engine looks for line ends, and writes them, by their codes in ASCII.
bool hasLineEndsOfItsOwn(const ConversionTask& task) {
  return task.options.convertNewlines != 0 && hasOtherControls(task.target);
}

// A character goes from a set of the source to the same set of the target with its
// code as it is. Half-width katakana in mail have other codes of that set than all
// other texts, and OASYS_ONLINE can read JIS X 0201, but not write it.
bool needsUtf8Between(const ConversionTask& task, bool hasOwnLineEnds) {
  if (hasOwnLineEnds) return true;
  if (task.source.form != UnicodeForm::kNone) return false;
  if (task.target.name == "oasys_online" || readsOtherControls(task)) return true;
  if (task.source.kind != CharsetKind::kIso2022) return false;
  const std::string direct = convertedSample(task.source.name.c_str(), "\x1B(I1", task.target.name);
  return !direct.empty() && direct != convertedSample("utf-8", "ｱ", task.target.name);
}

bool isMail(CharsetKind kind) { return kind == CharsetKind::kUtf7 || kind == CharsetKind::kHz; }
bool hasPlanes(const CharsetChoice& charset) { return charset.name == "iso-2022-jp-2004"; }
bool hasFilter(const CharsetChoice& charset) { return charset.kind == CharsetKind::kShifts; }
bool hasShifts(const CharsetChoice& charset) { return charset.name.starts_with("cp50220"); }

// Text of a policy as the engine knows the charset; what it lacks is a question mark.
std::string statelessText(const CharsetChoice& charset, std::string_view utf8) {
  EngineTask task;
  task.source = utf8ShownAs("UTF-8");
  task.target = charset;
  task.options.outputBigEndian = 1;
  task.unmappable = {PolicyKind::kReplace, "?", nullptr};
  task.isWellFormed = true;
  EngineStage engine(task);
  ByteBuffer out;
  engine.take(reinterpret_cast<const uint8_t*>(utf8.data()), utf8.size(), PieceEnd::kEnd, out);
  return {reinterpret_cast<const char*>(out.data()), out.size()};
}

}  // namespace

bool isDirect(const ConversionTask& task) {
  return task.changes.empty() && !task.sourceChange && !isMail(task.source.kind) &&
         !hasPlanes(task.source) && !hasShifts(task.source) && !hasFilter(task.source) &&
         !hasFilter(task.target) && !hasPlanes(task.target) &&
         !needsUtf8Between(task, hasLineEndsOfItsOwn(task));
}

Pipeline::Pipeline(const ConversionTask& task)
    : task_(task), hasOwnLineEnds_(hasLineEndsOfItsOwn(task)) {
  if (task.sourceChange) add(task.sourceChange(task));
  if (hasPlanes(task.source)) add(std::make_unique<PlaneReadingStage>());
  if (hasShifts(task.source)) add(std::make_unique<ShiftStage>());
  if (hasFilter(task.source)) addReadingFilter();
  const bool readsMail = isMail(task.source.kind);
  const bool isInTwoSteps = readsMail || !task.changes.empty() || hasFilter(task.target) ||
                            needsUtf8Between(task, hasOwnLineEnds_);
  if (readsMail)
    add(std::make_unique<MailStage>(task.source, task.invalid));
  else if (isInTwoSteps)
    addReadingEngine();
  for (const auto& makeChange : task.changes) add(makeChange(task));
  if (hasOwnLineEnds_) addLineEndEngine();
  if (hasFilter(task.target)) addRefusalOfShifts();
  addWritingEngine(isInTwoSteps);
  if (hasPlanes(task.target)) add(std::make_unique<PlaneWritingStage>());
  if (hasFilter(task.target)) addWritingFilter();
  between_.resize(stages_.size());
}

EngineTask& Pipeline::newEngineTask() {
  engineTasks_.push_back(std::make_unique<EngineTask>());
  EngineTask& engine = *engineTasks_.back();
  engine.source = task_.source;
  engine.target = task_.target;
  engine.invalid = task_.invalid;
  engine.unmappable = task_.unmappable;
  engine.lookAlikes = task_.lookAlikes;
  engine.keepsMark = task_.keepsMark;
  return engine;
}

void Pipeline::addReadingFilter() {
  const CharsetChoice& source = task_.source;
  add(std::make_unique<ShiftFilterStage>(
      [&source] { return readingFilter(source.shifts); },
      [&source](std::string_view utf8) { return statelessText(source, utf8); }, task_.invalid,
      source.display));
}

// As characters they would come out as what shifts.
void Pipeline::addRefusalOfShifts() {
  constexpr char32_t kShiftOut = 0x0E;
  constexpr char32_t kShiftIn = 0x0F;
  constexpr char32_t kEscape = 0x1B;
  RefusedCharacters refused;
  refused.add(kShiftOut, kShiftIn);
  if (task_.target.shifts.starts_with("iso-2022")) refused.add(kEscape, kEscape);
  add(std::make_unique<RefusalStage>(std::move(refused), ProblemKind::kUnmappable, task_.unmappable,
                                     task_.target.display, task_.lookAlikes));
}

// What the engine makes is well-formed.
void Pipeline::addWritingFilter() {
  const CharsetChoice& target = task_.target;
  add(std::make_unique<ShiftFilterStage>([&target] { return writingFilter(target.shifts); },
                                         [](std::string_view) { return std::string(); },
                                         task_.invalid, target.display));
}

// What it cannot write are codes that stand for no character: the options say what is written
// in their place.
void Pipeline::addReadingEngine() {
  EngineTask& engine = newEngineTask();
  engine.target = utf8ShownAs(task_.target.display);
  engine.options.narrowReplacement = task_.options.narrowReplacement;
  engine.options.wideReplacement = task_.options.wideReplacement;
  engine.options.replaceUnmappable = task_.options.replaceUnmappable;
  engine.tellsOrigins = true;
  add(std::make_unique<EngineStage>(engine));
}

// From UTF-8 to UTF-8. What is written behind it leaves the line ends as they are.
void Pipeline::addLineEndEngine() {
  EngineTask& engine = newEngineTask();
  engine.source = engine.target = utf8ShownAs(task_.source.display);
  engine.options.convertNewlines = task_.options.convertNewlines;
  engine.options.newlineForm = task_.options.newlineForm;
  engine.isWellFormed = true;
  engine.keepsMark = true;
  engine.tellsOrigins = true;
  add(std::make_unique<EngineStage>(engine));
}

// Of a text in UTF-8 that another engine has made everything is text, a mark in front of it, too.
void Pipeline::addWritingEngine(bool readsUtf8) {
  EngineTask& engine = newEngineTask();
  engine.options = task_.options;
  if (hasOwnLineEnds_) engine.options.convertNewlines = 0;
  engine.language = task_.language;
  engine.tellsOrigins = task_.tellsOrigins || hasPlanes(task_.target) || hasFilter(task_.target);
  if (readsUtf8) {
    engine.source = utf8ShownAs(task_.source.display);
    engine.isWellFormed = true;
    engine.keepsMark = task_.keepsMark || !isMail(task_.source.kind);
  }
  add(std::make_unique<EngineStage>(engine));
}

void Pipeline::add(std::unique_ptr<Stage> stage) {
  if (!stages_.empty()) stage->follow(*stages_.back());
  stages_.push_back(std::move(stage));
}

bool Pipeline::takeWhole(const uint8_t* text, size_t length,
                         const std::function<void(const ByteBuffer&)>& give) {
  constexpr size_t kBlock = 64 * 1024;
  ByteBuffer out;
  size_t at = 0;
  bool goesOn = true;
  do {
    const size_t count = std::min(kBlock, length - at);
    const bool isLast = at + count == length;
    out.clear();
    goesOn = take(text + at, count, isLast ? PieceEnd::kEnd : PieceEnd::kMore, out);
    give(out);
    at += count;
  } while (goesOn && at < length);
  return goesOn;
}

// What stands in front of a problem goes on to the end. A problem that a later stage finds in it
// comes before the first one in the text.
bool Pipeline::take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) {
  for (size_t i = 0; i < stages_.size(); ++i) {
    const bool isLast = i + 1 == stages_.size();
    ByteBuffer& made = isLast ? out : between_[i];
    if (!isLast) made.clear();
    if (size == 0 && end == PieceEnd::kMore) return !problem_;
    if (!stages_[i]->take(bytes, size, end, made)) {
      problem_ = stages_[i]->problem();
      end = PieceEnd::kBrokenOff;
    }
    bytes = made.data();
    size = made.size();
  }
  return !problem_;
}

void Pipeline::restart() {
  problem_.reset();
  for (const auto& stage : stages_) stage->restart();
}

ProblemCounts Pipeline::counts() const {
  ProblemCounts counts;
  for (const auto& stage : stages_) counts += stage->counts();
  return counts;
}

}  // namespace ksv_kit
