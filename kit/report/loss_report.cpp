#include "kit/report/loss_report.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kit/convert/plan_options.h"
#include "kit/engine.h"
#include "kit/limits.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

constexpr size_t kBytesKept = 16;

constexpr char kUtf8[] = "UTF-8";

Policy leavingOut() { return {PolicyKind::kSkip, "", nullptr}; }
Policy asking(ProblemJudge judge) { return {PolicyKind::kAsk, "", std::move(judge)}; }

// A whole text; what cannot be written is left out.
std::string convertedBy(const ConversionTask& task, std::string_view text) {
  Pipeline pipeline(task);
  ByteBuffer out;
  pipeline.take(reinterpret_cast<const uint8_t*>(text.data()), text.size(), PieceEnd::kEnd, out);
  return {reinterpret_cast<const char*>(out.data()), out.size()};
}

const CharsetNames& names() { return Engine::instance().names(); }

CharsetChoice utf8() { return names().find("UTF-8").value(); }

// What of the options holds for reading: line ends, marks and widths stay as they are.
ConversionTask readingTask(const CharsetChoice& from, const ksv_options& options) {
  ksv_options reading = KSV_OPTIONS_INIT;
  reading.profile = options.profile;
  reading.profile_text = options.profile_text;
  return taskBetween(names(), from, utf8(), reading);
}

// With the texts of policies in it, whichever the options ask for.
ConversionTask writingTask(const CharsetChoice& to, const ksv_options& options, ksv_policy policy) {
  ksv_options writing = options;
  writing.invalid = KSV_REPLACE;
  writing.unmappable = policy;
  return taskBetween(names(), utf8(), to, writing);
}

// The order of bytes is the one that is written.
ConversionTask returningTask(CharsetChoice to, const ksv_options& options,
                             const ConversionTask& converting) {
  const bool isBig = converting.options.outputBigEndian != 0;
  if (to.hasByteOrder()) to.order = isBig ? ByteOrder::kBig : ByteOrder::kLittle;
  ConversionTask task = readingTask(to, options);
  task.invalid = task.unmappable = leavingOut();
  return task;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

}  // namespace

LossReport::LossReport(const char* from, const char* to, const ksv_options* options)
    : LossReport(taskOf(names(), from, kUtf8, nullptr).source,
                 taskOf(names(), kUtf8, to, nullptr).target, knownOptions(options)) {}

LossReport::LossReport(const CharsetChoice& from, const CharsetChoice& to,
                       const ksv_options& options)
    : reading_(readingTask(from, options)),
      converting_(taskBetween(names(), from, to, options)),
      writing_(writingTask(to, options, KSV_REPLACE)),
      builtIn_(writingTask(to, options, KSV_BUILT_IN).options),
      returning_(returningTask(to, options, converting_)),
      places_(reading_.source) {
  checkReplacements(converting_);
  reading_.tellsOrigins = true;
  reading_.invalid = leavingOut();
  reading_.unmappable = {};
  // Not of the reading: charsets that share a set hand on its codes without characters, too.
  converting_.invalid = asking([this](const Problem& problem) { return noteInvalid(problem); });
  converting_.unmappable =
      asking([this](const Problem& problem) { return noteUnmappable(problem); });
  decoder_ = std::make_unique<Pipeline>(reading_);
  converter_ = std::make_unique<Pipeline>(converting_);
}

void LossReport::take(const uint8_t* bytes, size_t size) {
  constexpr size_t kBlock = 64 * 1024;
  for (size_t at = 0; at < size; at += kBlock) {
    const size_t count = std::min(kBlock, size - at);
    places_.add(bytes + at, count);
    totals_.bytes += count;
    convert(bytes + at, count, PieceEnd::kMore);
    places_.settle(totals_.bytes - std::min<uint64_t>(totals_.bytes, kBlock));
  }
}

void LossReport::finish() {
  convert(nullptr, 0, PieceEnd::kEnd);
  findThoseThatReturnAsOther();
  std::stable_sort(losses_.begin(), losses_.end(), [](const Loss& one, const Loss& other) {
    return one.firstOffset < other.firstOffset;
  });
}

void LossReport::convert(const uint8_t* bytes, size_t size, PieceEnd end) {
  decoded_.clear();
  decoder_->take(bytes, size, end, decoded_);
  noteCharacters(decoded_.data(), decoded_.size());
  decodedBytes_ += decoded_.size();
  converted_.clear();
  converter_->take(bytes, size, end, converted_);
}

Answer LossReport::noteInvalid(const Problem& problem) {
  const bool isCut = problem.kind == ProblemKind::kTruncated;
  ++totals_.invalid;
  note(isCut ? LossKind::kTruncated : LossKind::kInvalid, Problem::kNoCodePoint,
       problem.bytes.substr(0, kBytesKept), problem.offset);
  return {Answer::Kind::kLeaveOut, ""};
}

Answer LossReport::noteUnmappable(const Problem& problem) {
  ++totals_.unmappable;
  note(LossKind::kUnmappable, problem.codePoint, problem.bytes.substr(0, kBytesKept),
       problem.offset);
  return {Answer::Kind::kLeaveOut, ""};
}

void LossReport::note(LossKind kind, uint32_t codePoint, const std::string& bytes,
                      uint64_t offset) {
  const bool isCharacter = codePoint != Problem::kNoCodePoint;
  const auto key = std::make_pair(isCharacter ? codePoint : Problem::kNoCodePoint,
                                  isCharacter ? std::string() : bytes);
  const auto found = indexOf_.find(key);
  if (found != indexOf_.end()) {
    ++losses_[found->second].count;
    return;
  }
  if (losses_.size() == limits::kMostLosses) {
    ++totals_.untold;
    return;
  }
  indexOf_.emplace(key, losses_.size());
  losses_.push_back({kind, codePoint, bytes, "", 1, offset, places_.placeOf(offset)});
}

void LossReport::noteCharacters(const uint8_t* bytes, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  for (size_t at = 0; at < size; at += utf8LengthOf(text[at])) {
    ++totals_.characters;
    Seen& seen = seen_[firstCharacter(text.substr(at))];
    if (++seen.count != 1) continue;
    seen.firstOffset = decoder_->originOf(decodedBytes_ + at);
    seen.firstPlace = places_.placeOf(seen.firstOffset);
  }
}

// Each character on a line of its own, so that one conversion there and one back tell of all.
void LossReport::findThoseThatReturnAsOther() {
  std::vector<uint32_t> characters;
  for (const auto& [character, seen] : seen_)
    if (character != '\n' && character != '\r' && indexOf_.count({character, ""}) == 0)
      characters.push_back(character);
  constexpr size_t kAtOnce = 4096;
  for (size_t at = 0; at < characters.size(); at += kAtOnce) {
    const auto begin = characters.begin() + static_cast<std::ptrdiff_t>(at);
    const size_t count = std::min(kAtOnce, characters.size() - at);
    compareReturned({begin, begin + static_cast<std::ptrdiff_t>(count)});
  }
}

void LossReport::compareReturned(const std::vector<uint32_t>& characters) {
  ConversionTask there = writing_;
  there.invalid = there.unmappable = leavingOut();
  there.options.convertNewlines = 0;
  there.options.writeByteOrderMark = 0;
  // What is in front keeps a mark that is a character from being taken for one of byte order.
  std::string text = "\n";
  for (const uint32_t character : characters) text += utf8Of(char32_t{character}) + '\n';
  const std::string returned = convertedBy(returning_, convertedBy(there, text));
  const std::vector<std::string_view> lines = linesOf(returned);
  if (lines.size() != characters.size() + 1) {
    if (characters.size() > 1)
      for (const uint32_t character : characters) compareReturned({character});
    return;
  }
  for (size_t i = 0; i < characters.size(); ++i) {
    const std::string_view line = lines[i + 1];
    if (line == utf8Of(char32_t{characters[i]})) continue;
    const Seen& seen = seen_[characters[i]];
    totals_.returnAsOther += seen.count;
    if (losses_.size() == limits::kMostLosses) {
      ++totals_.untold;
      continue;
    }
    losses_.push_back({LossKind::kReturnsAsOther, characters[i], "", std::string(line), seen.count,
                       seen.firstOffset, seen.firstPlace});
  }
}

bool LossReport::outcome(const Loss& loss, PolicyKind policy, std::string& text) const {
  if (loss.kind == LossKind::kReturnsAsOther || policy == PolicyKind::kFail ||
      policy == PolicyKind::kAsk)
    return false;
  if (loss.kind != LossKind::kUnmappable) return outcomeOfBytes(loss, policy, text);
  ConversionTask there = writing_;
  there.unmappable.kind = policy;
  if (policy == PolicyKind::kBuiltIn) there.options = builtIn_;
  there.options.writeByteOrderMark = 0;
  text = convertedBy(returning_, convertedBy(there, utf8Of(char32_t{loss.codePoint})));
  return true;
}

bool LossReport::outcomeOfBytes(const Loss& loss, PolicyKind policy, std::string& text) const {
  if (policy == PolicyKind::kLookAlike || policy == PolicyKind::kBuiltIn) return false;
  Problem problem;
  problem.bytes = loss.bytes;
  Policy asked = writing_.invalid;
  asked.kind = policy;
  text = answerBy(asked, problem).text;
  return true;
}

}  // namespace ksv_kit
