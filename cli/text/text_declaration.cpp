#include "cli/text/text_declaration.h"

#include <algorithm>
#include <cstddef>

#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";
constexpr size_t kNone = std::string_view::npos;

size_t skipBlanks(std::string_view text, size_t at) {
  return std::min(text.find_first_not_of(kBlanks, at), text.size());
}

// The value that stands behind "NAME =", in quotes or, if it may, as a word.
std::optional<std::string> valueBehind(std::string_view text, size_t at, bool mayBeWord) {
  at = skipBlanks(text, at);
  if (at == text.size() || text[at] != '=') return std::nullopt;
  at = skipBlanks(text, at + 1);
  if (at == text.size()) return std::nullopt;
  if (text[at] == '"' || text[at] == '\'') {
    const size_t end = text.find(text[at], at + 1);
    if (end == kNone) return std::nullopt;
    return std::string(text.substr(at + 1, end - at - 1));
  }
  if (!mayBeWord) return std::nullopt;
  const size_t end = std::min(text.find_first_of(" \t\r\n\f;>\"'/", at), text.size());
  return std::string(text.substr(at, end - at));
}

std::optional<std::string> charsetIn(std::string_view text) {
  constexpr std::string_view kName = "charset";
  for (size_t at = 0; (at = text.find(kName, at)) != kNone; at += kName.size()) {
    const std::optional<std::string> value = valueBehind(text, at + kName.size(), true);
    if (value && !value->empty()) return value;
  }
  return std::nullopt;
}

std::optional<std::string> inXml(std::string_view text) {
  if (!text.starts_with("<?xml") || skipBlanks(text, 5) == 5) return std::nullopt;
  const size_t end = text.find("?>");
  if (end == kNone) return std::nullopt;
  const std::string_view declaration = text.substr(0, end);
  constexpr std::string_view kName = "encoding";
  const size_t at = declaration.find(kName);
  if (at == kNone) return std::nullopt;
  return valueBehind(declaration, at + kName.size(), false);
}

// Comments are passed over: what stands in them is not meant.
std::optional<std::string> inHtml(std::string_view text) {
  for (size_t at = 0; (at = text.find('<', at)) != kNone; ++at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) {
      at = text.find("-->", at);
      if (at == kNone) return std::nullopt;
    } else if (rest.starts_with("<meta") && skipBlanks(rest, 5) != 5) {
      const size_t end = rest.find('>');
      if (end == kNone) return std::nullopt;
      if (const auto charset = charsetIn(rest.substr(0, end))) return charset;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> declaredCharset(std::string_view beginning) {
  const std::string text = ksv_kit::lowered(beginning);
  const std::optional<std::string> xml = inXml(text);
  return xml ? xml : inHtml(text);
}

}  // namespace ksv_cli
