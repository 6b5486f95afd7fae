// The messages of an input: one, or all of a mailbox.
//
// A mailbox begins with a line "From ", and so does each message in it, behind an empty line. Since
// a text may have such a line as well, it has to name a time of day. Lines of texts are quoted by
// '>' there, and in mailboxes that are read back without loss so are those that were
// quoted already: of ">From " and ">>From " one sign is taken off.
// A length that a message tells of itself is not believed: whoever changes a mailbox with other
// programs leaves it wrong.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cli/mail/line_reader.h"
#include "cli/mail/message_guard.h"
#include "cli/mail/stored_message.h"
#include "cli/system/streams.h"

namespace ksv_cli {

class Mailbox {
 public:
  // source stays the caller's. Throws Failure.
  explicit Mailbox(ByteSource& source);

  // Whether it has lines that begin messages.
  bool hasMessageLines() const { return hasMessageLines_; }

  // Null behind the last. Throws Failure when the input cannot be read.
  std::unique_ptr<StoredMessage> next();

 private:
  bool isMessageLine(const LinePiece& piece) const;
  bool advance();
  void store(StoredMessage& message, MessageGuard& guard, const LinePiece& piece);
  void take(StoredMessage& message, MessageGuard& guard);

  LineReader lines_;
  LinePiece piece_;  // the one that comes next
  bool isAtEnd_ = false;
  bool hasMessageLines_ = false;
  bool isBehindEmptyLine_ = true;
  uint64_t count_ = 0;
  bool isEnded_ = false;  // of the message that is read nothing more is kept
};

}  // namespace ksv_cli
