#include "cli/mail/header_tokens.h"

#include <algorithm>

namespace ksv_cli {

std::string_view withoutBlanksAround(std::string_view text) {
  while (!text.empty() && isHeaderBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isHeaderBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view HeaderCursor::takePiece() {
  size_t length = 1;
  if (rest_.starts_with("\x1B$")) {
    const size_t back = rest_.find("\x1B(", 2);
    length = back == std::string_view::npos ? rest_.size() : std::min(back + 3, rest_.size());
  }
  const std::string_view piece = rest_.substr(0, length);
  rest_.remove_prefix(length);
  return piece;
}

std::string HeaderCursor::takeQuoted() {
  std::string text;
  while (!isAtEnd()) {
    const std::string_view piece = takePiece();
    if (piece == "\"") return text;
    // Paths of Windows are written with single backslashes.
    const bool quotes = piece == "\\" && !isAtEnd() && (next() == '"' || next() == '\\');
    text += quotes ? takePiece() : piece;
  }
  return text;
}

std::string HeaderCursor::takeComment() {
  std::string text;
  size_t depth = 1;
  while (!isAtEnd()) {
    std::string_view piece = takePiece();
    if (piece == "(") ++depth;
    if (piece == ")" && --depth == 0) return text;
    if (piece == "\\" && !isAtEnd()) piece = takePiece();
    text += piece;
  }
  return text;
}

std::string HeaderCursor::takeUntil(std::string_view ends) {
  std::string text;
  while (!isAtEnd() && ends.find(next()) == std::string_view::npos) text += takePiece();
  return text;
}

}  // namespace ksv_cli
