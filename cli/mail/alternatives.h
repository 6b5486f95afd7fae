// Which parts of a message are read: of alternatives one.
#pragma once

#include <cstddef>
#include <vector>

#include "cli/mail/mail_message.h"

namespace ksv_cli {

// The last of alternatives is the richest. For a reader of text that is the last one with plain
// text in it, or else the last one with any.
class Alternatives {
 public:
  // message stays the caller's.
  explicit Alternatives(const MailMessage& message);

  // index: of a part. Whether it stands in no alternative that is passed over.
  bool isRead(size_t index) const;
  // Whether the part is what a message in the message consists of.
  bool isBodyOfMessage(size_t index) const;

 private:
  static constexpr size_t kNone = SIZE_MAX;

  struct Choice {
    size_t part = kNone;  // of the alternatives
    bool hasPlainText = false;
  };

  void findParents();
  void choose(size_t index);

  const MailMessage& message_;
  std::vector<size_t> parents_;
  std::vector<Choice> choices_;  // of each part, if its parts are alternatives
};

}  // namespace ksv_cli
