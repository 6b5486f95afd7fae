#include "cli/mail/message_guard.h"

#include <algorithm>
#include <utility>

#include "cli/mail/header_parameters.h"
#include "cli/mail/header_tokens.h"
#include "cli/mail/mail_limits.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

bool beginsWithName(std::string_view line, std::string_view name) {
  return line.size() >= name.size() && ksv_kit::isSameButForCase(line.substr(0, name.size()), name);
}

// How many encoded words may begin there.
size_t wordsIn(std::string_view bytes) {
  size_t count = 0;
  for (size_t at = bytes.find("=?"); at != std::string_view::npos; at = bytes.find("=?", at + 2))
    ++count;
  return count;
}

bool isContinuation(std::string_view line) { return line[0] == ' ' || line[0] == '\t'; }

constexpr char kTooDeep[] = "parts that are nested too deep: the rest of the message is left out";
constexpr char kTooManyParts[] = "too many parts: the rest of the message is left out";
constexpr char kTooMuchHeader[] =
    "too many bytes or fields in headers: the rest of the message is left out";
constexpr char kTooLongField[] = "a field that is too long: the rest of it is left out";

}  // namespace

MessageGuard::Verdict MessageGuard::see(const LinePiece& piece) {
  if (piece.startsLineWith("--") && passBoundary(piece.bytes))
    return beginHeader() ? Verdict::kKeep : end(kTooManyParts);
  return isInHeader_ ? seeHeader(piece) : Verdict::kKeep;
}

MessageGuard::Verdict MessageGuard::seeHeader(const LinePiece& piece) {
  if (piece.isEmptyLine()) {
    if (!endHeader()) return end(kTooDeep);
    return parts_ > limits::kMostParts ? end(kTooManyParts) : Verdict::kKeep;
  }
  if (piece.beginsLine && !isContinuation(piece.bytes)) {
    if (!endField()) return end(kTooDeep);
    beginField(piece.bytes);
  }
  return count(piece);
}

MessageGuard::Verdict MessageGuard::count(const LinePiece& piece) {
  headerBytes_ += piece.bytes.size();
  fieldBytes_ += piece.bytes.size();
  fieldWords_ += wordsIn(piece.bytes);
  if (headerBytes_ > limits::kMostHeaderBytes || fields_ > limits::kMostFields)
    return end(kTooMuchHeader);
  if (fieldBytes_ <= longestField_ && fieldWords_ <= limits::kMostWordsOfField) {
    if (isContentType_) contentType_ += piece.bytes;
    return Verdict::kKeep;
  }
  reason_ = kTooLongField;
  return piece.endsLine && !piece.beginsLine ? Verdict::kKeepLineEnd : Verdict::kLeaveOut;
}

// Whether a part begins here. What is open in the one that ends is closed.
bool MessageGuard::passBoundary(std::string_view line) {
  std::string_view name = line.substr(2);
  while (!name.empty() && isHeaderBlank(name.back())) name.remove_suffix(1);
  const bool mayClose = name.ends_with("--");
  const std::string_view closed = mayClose ? name.substr(0, name.size() - 2) : name;
  for (size_t open = boundaries_.size(); open-- > 0;) {
    const bool begins = boundaries_[open] == name;
    if (!begins && !(mayClose && boundaries_[open] == closed)) continue;
    boundaries_.resize(begins ? open + 1 : open);
    isInHeader_ = false;
    return begins;
  }
  return false;
}

bool MessageGuard::beginHeader() {
  isInHeader_ = true;
  fieldBytes_ = 0;
  fieldWords_ = 0;
  isContentType_ = false;
  isMessage_ = false;
  isEmbedded_ = false;
  hasType_ = false;
  contentType_.clear();
  return ++parts_ <= limits::kMostParts;
}

// False where the multipart that the header announces is nested too deep. What stands in a digest
// and says nothing else is a message, whose own header comes next.
bool MessageGuard::endHeader() {
  if (!endField()) return false;
  const bool goesOn = isMessage_ || (hasDigest_ && !hasType_ && !isEmbedded_);
  if (goesOn) beginHeader();
  isEmbedded_ = goesOn;
  isInHeader_ = goesOn;
  return true;
}

void MessageGuard::beginField(std::string_view line) {
  ++fields_;
  fieldBytes_ = 0;
  fieldWords_ = 0;
  isContentType_ = beginsWithName(line, "Content-Type");
  longestField_ =
      beginsWithName(line, "Content-") ? limits::kLongestContentField : limits::kLongestField;
}

bool MessageGuard::endField() {
  const bool isDone = !isContentType_ || endContentType();
  isContentType_ = false;
  contentType_.clear();
  return isDone;
}

bool MessageGuard::endContentType() {
  const size_t colon = contentType_.find(':');
  if (colon == std::string::npos) return true;
  hasType_ = true;
  const ParameterField field =
      parameterField(unfolded(std::string_view(contentType_).substr(colon + 1)));
  isMessage_ = field.value.starts_with("message/");
  hasDigest_ = hasDigest_ || field.value == "multipart/digest";
  const HeaderParameter* boundary = field.find("boundary");
  if (!field.value.starts_with("multipart/") || boundary == nullptr) return true;
  if (boundaries_.size() == limits::kDeepestPart) return false;
  boundaries_.push_back(plainValue(*boundary));
  return true;
}

MessageGuard::Verdict MessageGuard::end(std::string reason) {
  reason_ = std::move(reason);
  return Verdict::kEnd;
}

}  // namespace ksv_cli
