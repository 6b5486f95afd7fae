// The pieces that structured fields are made of.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ksv_cli {

inline bool isHeaderBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view withoutBlanksAround(std::string_view text);

// Reads a field from its beginning. What stands between escape sequences that name pairs of bytes
// belongs to a character, though its bytes be those of a quotation mark or a comma.
class HeaderCursor {
 public:
  explicit HeaderCursor(std::string_view field) : rest_(field) {}

  bool isAtEnd() const { return rest_.empty(); }
  char next() const { return rest_.front(); }
  void pass() { rest_.remove_prefix(1); }

  // The next byte, or all that an escape sequence brings with it.
  std::string_view takePiece();
  // Behind a '"': what is quoted, without the signs that quote single characters.
  std::string takeQuoted();
  // Behind a '(': what stands in the comment, with the comments in it.
  std::string takeComment();
  // Up to one of the bytes, which stays, or the end.
  std::string takeUntil(std::string_view ends);

 private:
  std::string_view rest_;
};

}  // namespace ksv_cli
