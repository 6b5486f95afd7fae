#include "cli/text/mail_source.h"

#include <algorithm>
#include <cstring>

#include "cli/system/failure.h"
#include "cli/system/resource_limits.h"
#include "cli/text/text_failure.h"

namespace ksv_cli {
namespace {

// What the library writes, and holds in between, for one character.
constexpr size_t kMostBytesPerCharacter = 4;

// A code that stands for no character is one of HZ: what is well-formed UTF-7 are characters.
constexpr size_t kBytesOfPair = 2;

std::unique_ptr<MailReader> readerOf(CharsetKind kind) {
  if (kind == CharsetKind::kUtf7) return std::make_unique<Utf7Reader>();
  return std::make_unique<HzReader>();
}

}  // namespace

MailSource::MailSource(const ConversionSettings& settings, ByteSource& source)
    : settings_(settings), source_(source), reader_(readerOf(settings.source.kind)) {
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&record_, nullptr, "utf-8") != KSV_STATUS_DONE ||
      cconvChgCharset(&record_, parameters, settings.source.name.c_str()) != KSV_STATUS_DONE)
    throw Failure("the charset " + settings.source.display + " cannot be set up");
}

size_t MailSource::read(uint8_t* buffer, size_t size) {
  while (pieceRead_ == piece_.size()) {
    if (failure_) std::rethrow_exception(failure_);
    if (atEnd_ && held_.empty()) return 0;
    readPiece();
  }
  const size_t count = std::min(size, piece_.size() - pieceRead_);
  std::memcpy(buffer, piece_.data() + pieceRead_, count);
  pieceRead_ += count;
  return count;
}

void MailSource::readPiece() {
  piece_.clear();
  pieceRead_ = 0;
  if (held_.empty()) fill();
  const MailPiece piece = reader_->read(held_.data(), held_.size(), atEnd_);
  convertPiece(piece);
  discard(piece.used);
  if (!failure_) judgeEnd(piece);
}

void MailSource::fill() {
  const size_t held = held_.size();
  held_.resize(held + settings_.blockSize);
  size_t count = 0;
  try {
    count = source_.read(held_.data() + held, settings_.blockSize);
  } catch (const Failure&) {
    failure_ = std::current_exception();
  }
  held_.resize(held + count);
  atEnd_ = count == 0;
}

void MailSource::discard(size_t used) {
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(used));
  base_ += used;
}

uint64_t MailSource::originOf(size_t position) const {
  return source_.fileOffset(base_ + position);
}

// Bad text at the beginning of what is held.
template <typename Reason>
void MailSource::leaveOutOr(size_t length, Reason reason) {
  if (settings_.skipInvalid) {
    discard(length);
    counts_.invalidBytes += length;
  } else {
    failure_ = std::make_exception_ptr(reason());
  }
}

void MailSource::judgeEnd(const MailPiece& piece) {
  const std::string& charset = settings_.source.display;
  if (piece.end == ScanEnd::kInvalid) {
    leaveOutOr(piece.badLength, [&] { return invalidText(charset, held_.front(), originOf(0)); });
  } else if (piece.end == ScanEnd::kIncomplete && atEnd_) {
    leaveOutOr(piece.badLength, [&] { return truncatedText(charset, originOf(0)); });
  } else if (piece.end == ScanEnd::kIncomplete && held_.size() > limits::kLongestRun) {
    failure_ = std::make_exception_ptr(Failure("a base64 run of more than " +
                                               std::to_string(limits::kLongestRun) +
                                               " bytes begins" + atOffset(originOf(0))));
  } else if (piece.end == ScanEnd::kIncomplete) {
    fill();
  }
}

// A code of the piece that stands for no character is told, or left out.
void MailSource::convertPiece(const MailPiece& piece) {
  std::vector<uint8_t> output(kMostBytesPerCharacter * (piece.characters.size() + 1));
  record_.input = piece.bytes.data();
  record_.inputLength = static_cast<int32_t>(piece.bytes.size());
  record_.inputPosition = 0;
  record_.output = output.data();
  record_.outputCapacity = static_cast<int32_t>(output.size());
  size_t next = 0;
  while (next < piece.characters.size() && !failure_) {
    record_.outputPosition = 0;
    record_.charactersRead = 0;
    record_.unitsWritten = 0;
    const uint32_t status = cconvConvert(&record_);
    piece_.insert(piece_.end(), output.begin(), output.begin() + record_.outputPosition);
    next = linkCharacters(piece, next);
    if (status == KSV_STATUS_DONE || next == piece.characters.size()) return;
    const size_t bad = piece.characters[next].inText;
    ++next;
    if (next < piece.characters.size())
      record_.inputPosition = static_cast<int32_t>(piece.characters[next].inLibrary);
    if (settings_.skipInvalid)
      counts_.invalidBytes += kBytesOfPair;
    else
      failure_ =
          std::make_exception_ptr(invalidText(settings_.source.display, held_[bad], originOf(bad)));
  }
}

// Ties the characters that the last call wrote to their places in the text. Returns
// the first that it did not write.
size_t MailSource::linkCharacters(const MailPiece& piece, size_t first) {
  size_t next = first;
  for (int32_t i = 0; i < record_.outputPosition; ++i) {
    if ((record_.output[i] & 0xC0) == 0x80) continue;
    links_.add(written_ + static_cast<uint64_t>(i), base_ + piece.characters[next++].inText);
  }
  written_ += static_cast<uint64_t>(record_.outputPosition);
  return next;
}

uint64_t MailSource::fileOffset(uint64_t offset) const {
  return source_.fileOffset(links_.originOf(offset));
}

void MailSource::forgetBefore(uint64_t offset) { links_.forgetBefore(offset); }

}  // namespace ksv_cli
