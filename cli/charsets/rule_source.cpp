#include "cli/charsets/rule_source.h"

#include <algorithm>
#include <utility>

#include "cconv/limits.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"

namespace ksv_cli {
namespace {

// Enough to tell text of single bytes from text of wider units.
constexpr size_t kSampleSize = 256;

bool contains(const std::vector<uint8_t>& bytes, std::string_view pattern) {
  return std::search(bytes.begin(), bytes.end(), pattern.begin(), pattern.end()) != bytes.end();
}

// Whether the first line has a name in it, in units of two bytes.
bool firstLineNames(const LinedText& text, std::string_view name) {
  const std::string line = text.text().substr(0, text.text().find_first_of("\r\n"));
  return line.find(name) != std::string::npos;
}

bool isMark(const std::vector<uint8_t>& bytes, size_t second, bool bigEndian) {
  return bytes.size() > second && bytes[0] == (bigEndian ? 0xFE : 0xFF) &&
         bytes[second] == (bigEndian ? 0xFF : 0xFE);
}

FormFinding formBehindMark(const std::vector<uint8_t>& bytes, bool bigEndian) {
  const TextForm form = {2, bigEndian};
  const LinedText text = decoded(bytes, form);
  if (firstLineNames(text, "UTF-16") || firstLineNames(text, "ISO-10646-UCS-2")) return {form, ""};
  // Without a name the order that is taken by default is little-endian.
  if (!bigEndian) return {form, ""};
  return {std::nullopt, "is big-endian, which its first line has to tell by the name UTF-16"};
}

void blankOut(std::string& text, std::string_view open, std::string_view close) {
  for (size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
    const size_t end = text.find(close, at + open.size());
    if (end == std::string::npos) return;
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(at),
              text.begin() + static_cast<std::ptrdiff_t>(end + close.size()), ' ');
  }
}

}  // namespace

LinedText::LinedText(std::string text) : text_(std::move(text)), lineStarts_{0} {
  for (size_t at = 0; at < text_.size(); ++at) {
    const bool isCrOfCrLf = text_[at] == '\r' && at + 1 < text_.size() && text_[at + 1] == '\n';
    const bool endsLine = text_[at] == '\n' || (text_[at] == '\r' && !isCrOfCrLf);
    if (endsLine) lineStarts_.push_back(at + 1);
  }
}

size_t LinedText::lineAt(size_t position) const {
  const auto behind = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), position);
  return static_cast<size_t>(behind - lineStarts_.begin());
}

UnreadableFile::UnreadableFile(const std::string& path, const std::string& reason)
    : Failure(shownName(path) + ": cannot be read: " + reason) {}

bool isRegularFile(const std::string& path) {
  try {
    return platform::fileFacts(path).kind == platform::FileKind::kRegular;
  } catch (const Failure& failure) {
    throw UnreadableFile(path, failure.what());
  }
}

std::optional<std::vector<uint8_t>> fileBytes(const std::string& path) {
  if (!isRegularFile(path)) return std::nullopt;
  try {
    return readAtMost(*platform::openInput(path), SIZE_MAX);
  } catch (const Failure& failure) {
    throw UnreadableFile(path, failure.what());
  }
}

FormFinding formOf(const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return {std::nullopt, "is empty"};
  for (const bool bigEndian : {false, true}) {
    if (isMark(bytes, 1, bigEndian)) return formBehindMark(bytes, bigEndian);
    if (isMark(bytes, 3, bigEndian)) return {TextForm{4, bigEndian}, ""};
  }
  if (contains(bytes, "utf-8")) return {std::nullopt, "is UTF-8, and has to be UTF-16"};
  if (contains(bytes, "shift")) return {std::nullopt, "is Shift_JIS, and has to be UTF-16"};
  const auto sampleEnd =
      bytes.begin() + static_cast<std::ptrdiff_t>(std::min(kSampleSize, bytes.size()));
  if (std::find(bytes.begin(), sampleEnd, uint8_t{0}) == sampleEnd)
    return {std::nullopt, "is not UTF-16"};
  return {TextForm{}, ""};
}

LinedText decoded(const std::vector<uint8_t>& bytes, TextForm form) {
  std::string text;
  for (size_t at = 0; at + form.unitSize <= bytes.size(); at += form.unitSize) {
    uint32_t unit = 0;
    for (uint32_t i = 0; i < form.unitSize; ++i)
      unit = unit << 8 | bytes[at + (form.bigEndian ? i : form.unitSize - 1 - i)];
    const bool isMarkInFront = at == 0 && (unit == 0xFEFF || unit == 0xFE0000FF);
    // What is no ASCII means nothing in these files, but a byte of it could.
    if (!isMarkInFront) text += unit != 0 && unit < 0x7F ? static_cast<char>(unit) : '\x7F';
  }
  return LinedText(std::move(text));
}

RuleSource::RuleSource(const std::vector<uint8_t>& bytes, TextForm form)
    : form_(form), lines_(decoded(bytes, form)), text_(lines_.text()) {
  blankOut(text_, "<?", "?>");
  blankOut(text_, "--", "--");
  std::replace_if(
      text_.begin(), text_.end(), [](char c) { return c == '\r' || c == '\n' || c == '\t'; }, ' ');
}

size_t RuleSource::find(const std::string& pattern, size_t from) const {
  const auto [entry, isNew] = lastSearches_.try_emplace(pattern, LastSearch{from, 0});
  LastSearch& last = entry->second;
  if (isNew || from < last.from || from > last.found) last = {from, text_.find(pattern, from)};
  return last.found;
}

std::optional<RuleSource::Span> RuleSource::element(std::string_view tag, size_t from) const {
  const std::string name(tag);
  const size_t start = std::min(find("<" + name + ">", from), find("<" + name + " ", from));
  if (start == std::string::npos) return std::nullopt;
  const size_t inside = start + name.size() + 2;
  size_t end = find("</" + name + ">", inside);
  if (end == std::string::npos) end = find("/>", inside);
  if (end == std::string::npos) return std::nullopt;
  return Span{inside, end};
}

std::optional<std::string> RuleSource::attribute(Span span, std::string_view word) const {
  const size_t at = find(std::string(word), span.start);
  if (at == std::string::npos || at >= span.end) return std::nullopt;
  const size_t open = text_.find('"', at + word.size());
  const size_t close = open == std::string::npos ? open : text_.find('"', open + 1);
  if (close == std::string::npos) return std::nullopt;
  return text_.substr(open + 1, close - open - 1);
}

std::optional<std::string> RuleSource::entity(Span span) const {
  const size_t at = find("&", span.start);
  if (at == std::string::npos || at >= span.end) return std::nullopt;
  const size_t start = text_.find_first_not_of(' ', at + 1);
  const size_t end = start == std::string::npos ? start : text_.find(';', start);
  if (end == std::string::npos || end >= span.end) return std::nullopt;
  return text_.substr(start, end - start);
}

bool RuleSource::namesTooMuch() const {
  return comparisons_ > ksv::limits::entityComparisons(text_.size());
}

std::optional<std::string> RuleSource::fileOf(const std::string& entity) const {
  const auto [entry, isNew] = files_.try_emplace(entity);
  if (isNew) entry->second = findFileOf(entity);
  return entry->second;
}

std::optional<std::string> RuleSource::findFileOf(const std::string& entity) const {
  const std::string word = "SYSTEM ";
  if (entity.empty() || namesTooMuch()) return std::nullopt;
  const size_t at = text_.find(entity + " ");
  comparisons_ += std::min(at, text_.size());
  if (at == std::string::npos) return std::nullopt;
  const size_t system = find(word, at);
  if (system == std::string::npos) return std::nullopt;
  const size_t open = system + word.size();
  if (open >= text_.size() || text_[open] != '"') return std::nullopt;
  const size_t close = text_.find('"', open + 1);
  if (close == std::string::npos) return std::nullopt;
  return text_.substr(open + 1, close - open - 1);
}

}  // namespace ksv_cli
