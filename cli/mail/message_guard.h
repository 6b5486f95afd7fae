// Keeps a message within bounds before it is taken apart: the library that does that has none for
// the number of parts and fields, and takes memory for each.
//
// It sees the lines of a message in their order, and knows as much of its structure as it takes to
// tell headers from contents: which boundaries are open, and that a header ends with an empty line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/mail/line_reader.h"

namespace ksv_cli {

class MessageGuard {
 public:
  enum class Verdict {
    kKeep,
    kKeepLineEnd,  // of the piece nothing else: it belongs to a field that is too long
    kLeaveOut,
    kEnd  // nothing of the message from here on
  };

  Verdict see(const LinePiece& piece);
  // What was wrong with the last piece that was not kept.
  const std::string& reason() const { return reason_; }
  bool isInHeader() const { return isInHeader_; }

 private:
  Verdict seeHeader(const LinePiece& piece);
  Verdict count(const LinePiece& piece);
  bool passBoundary(std::string_view line);
  bool beginHeader();
  bool endHeader();
  void beginField(std::string_view line);
  bool endField();
  bool endContentType();
  Verdict end(std::string reason);

  bool isInHeader_ = true;
  std::vector<std::string> boundaries_;  // of the multiparts that are open
  uint32_t parts_ = 1;
  size_t headerBytes_ = 0;
  size_t fields_ = 0;

  size_t fieldBytes_ = 0;
  size_t fieldWords_ = 0;
  size_t longestField_ = 0;
  bool isContentType_ = false;
  std::string contentType_;  // the field, as far as it has been seen
  bool isMessage_ = false;   // what comes behind the header begins with one of its own
  bool isEmbedded_ = false;  // the header is that of a message in a part
  bool hasType_ = false;
  bool hasDigest_ = false;  // of which parts are messages that say nothing else
  std::string reason_;
};

}  // namespace ksv_cli
