#include "kit/convert/declaration_stage.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kit/convert/pipeline.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit {
namespace {

// So many characters of a text are looked at, as many as the HTML standard has bytes looked at; and
// the bytes that they take at most, in charsets without shifts.
constexpr size_t kMostCharacters = 1024;
constexpr size_t kMostBytes = 4 * kMostCharacters;

std::string_view firstCharacters(std::string_view utf8, size_t count) {
  size_t at = 0;
  while (at < utf8.size()) {
    const bool isLead = (static_cast<uint8_t>(utf8[at]) & 0xC0) != 0x80;
    if (isLead && count-- == 0) break;
    ++at;
  }
  return utf8.substr(0, at);
}

std::string_view textIn(const ByteBuffer& buffer) {
  return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

// Whether ASCII stands for itself where the text has not shifted away from it.
bool isAsciiWithShifts(const CharsetChoice& charset) {
  return charset.kind == CharsetKind::kIso2022 || charset.kind == CharsetKind::kUtf7 ||
         charset.kind == CharsetKind::kHz || charset.shifts.starts_with("iso-2022");
}

}  // namespace

DeclarationStage::DeclarationStage(CharsetChoice source, DeclaredName declared)
    : source_(std::move(source)), declared_(std::move(declared)) {}

bool DeclarationStage::take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) {
  if (!isPassed_) {
    const size_t count = std::min(size, kMostBytes - beginning_.size());
    beginning_.insert(beginning_.end(), bytes, bytes + count);
    bytes += count;
    size -= count;
    if (beginning_.size() < kMostBytes && end == PieceEnd::kMore) return true;
    passBeginning(size == 0 ? end : PieceEnd::kMore, out);
  }
  out.append(bytes, size);
  return true;
}

void DeclarationStage::restart() {
  beginning_.clear();
  isPassed_ = false;
  links_ = {};
}

void DeclarationStage::passBeginning(PieceEnd end, ByteBuffer& out) {
  uint64_t made = 0;
  size_t at = 0;
  const auto copyTo = [&](size_t behind) {
    links_.add(made, at);
    out.append(beginning_.data() + at, behind - at);
    made += behind - at;
    at = behind;
  };
  for (const Edit& edit : editsOfBeginning(end)) {
    copyTo(edit.at);
    links_.addStanding(made, edit.at);
    out.append(edit.by);
    made += edit.by.size();
    at = edit.behind;
  }
  copyTo(beginning_.size());
  isPassed_ = true;
}

// By the characters of the beginning, and the places in it that they come from. What is no text
// there is left out of them: the conversion tells of it, or not.
std::vector<DeclarationStage::Edit> DeclarationStage::editsOfBeginning(PieceEnd end) const {
  ConversionTask task;
  task.source = source_;
  task.target = utf8ShownAs("UTF-8");
  task.invalid.kind = task.unmappable.kind = PolicyKind::kSkip;
  task.tellsOrigins = true;
  Pipeline pipeline(task);
  ByteBuffer read;
  pipeline.take(beginning_.data(), beginning_.size(), end, read);
  std::vector<Edit> edits;
  const std::string_view text = firstCharacters(textIn(read), kMostCharacters);
  for (const TextEdit& edit : declarationEdits(text, declared_)) {
    std::string by = inSource(edit.by);
    if (by.empty()) continue;
    edits.push_back({static_cast<size_t>(pipeline.originOf(edit.at)),
                     static_cast<size_t>(pipeline.originOf(edit.at + edit.length)), std::move(by)});
  }
  return edits;
}

// Empty: the source charset does not have it.
std::string DeclarationStage::inSource(std::string_view text) const {
  if (isAsciiWithShifts(source_)) return std::string(text);
  ConversionTask task;
  task.source = utf8ShownAs("UTF-8");
  task.target = source_;
  bool bigEndian = source_.order == ByteOrder::kBig;
  byteOrderMark(source_.form, source_.order != ByteOrder::kOpen, beginning_.data(),
                beginning_.size(), bigEndian);
  task.options.outputBigEndian = !source_.hasByteOrder() || bigEndian;
  Pipeline pipeline(task);
  ByteBuffer written;
  const bool isWhole = pipeline.take(reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                                     PieceEnd::kEnd, written);
  return isWhole ? std::string(textIn(written)) : "";
}

}  // namespace ksv_kit
