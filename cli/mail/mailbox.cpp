#include "cli/mail/mailbox.h"

#include <string_view>

namespace ksv_cli {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "Thu Feb 29 12:34:56 2024" has one.
bool namesTime(std::string_view line) {
  for (size_t at = 1; at + 2 < line.size(); ++at)
    if (line[at] == ':' && isDigit(line[at - 1]) && isDigit(line[at + 1]) && isDigit(line[at + 2]))
      return true;
  return false;
}

bool isQuotedMessageLine(std::string_view line) {
  const size_t signs = line.find_first_not_of('>');
  return signs != 0 && signs != std::string_view::npos && line.substr(signs).starts_with("From ");
}

}  // namespace

Mailbox::Mailbox(ByteSource& source) : lines_(source) {
  advance();
  hasMessageLines_ = !isAtEnd_ && piece_.startsLineWith("From ");
}

bool Mailbox::advance() {
  isAtEnd_ = !lines_.next(piece_);
  return !isAtEnd_;
}

bool Mailbox::isMessageLine(const LinePiece& piece) const {
  return hasMessageLines_ && isBehindEmptyLine_ && piece.startsLineWith("From ") &&
         (piece.offset == 0 || namesTime(piece.bytes));
}

std::unique_ptr<StoredMessage> Mailbox::next() {
  if (isAtEnd_) return nullptr;
  auto message = std::make_unique<StoredMessage>(++count_, piece_.offset);
  MessageGuard guard;
  isEnded_ = false;
  if (hasMessageLines_) {
    while (!piece_.endsLine && advance()) continue;
    advance();
    isBehindEmptyLine_ = false;
  }
  take(*message, guard);
  message->finish();
  return message;
}

// An empty line waits for what comes behind it: in front of the next message it is that one's.
void Mailbox::take(StoredMessage& message, MessageGuard& guard) {
  std::string waiting;
  uint64_t placeOfWaiting = 0;
  const auto storeWaiting = [&] {
    if (!waiting.empty()) store(message, guard, {waiting, placeOfWaiting, true, true});
    waiting.clear();
  };
  while (!isAtEnd_ && !isMessageLine(piece_)) {
    storeWaiting();
    isBehindEmptyLine_ = piece_.isEmptyLine();
    if (hasMessageLines_ && isBehindEmptyLine_) {
      placeOfWaiting = piece_.offset;
      waiting = piece_.bytes;
    } else {
      store(message, guard, piece_);
    }
    advance();
  }
  // One that ends a header is no line between messages.
  if (guard.isInHeader()) storeWaiting();
}

void Mailbox::store(StoredMessage& message, MessageGuard& guard, const LinePiece& given) {
  if (isEnded_) return;
  LinePiece piece = given;
  if (hasMessageLines_ && piece.beginsLine && isQuotedMessageLine(piece.bytes)) {
    piece.bytes.remove_prefix(1);
    ++piece.offset;
  }
  switch (guard.see(piece)) {
    case MessageGuard::Verdict::kKeep:
      message.append(piece.bytes, piece.offset);
      return;
    case MessageGuard::Verdict::kKeepLineEnd:
      message.append("\n", piece.offset + piece.bytes.size() - 1);
      break;
    case MessageGuard::Verdict::kLeaveOut:
      break;
    case MessageGuard::Verdict::kEnd:
      isEnded_ = true;
      break;
  }
  const bool isToldAlready =
      !message.problems.empty() && message.problems.back().reason == guard.reason();
  if (!isToldAlready) message.problems.push_back({piece.offset, guard.reason()});
}

}  // namespace ksv_cli
