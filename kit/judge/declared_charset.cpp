#include "kit/judge/declared_charset.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kit/charsets/name_matching.h"

namespace ksv_kit::judge {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";
constexpr size_t kNone = std::string_view::npos;

size_t skipBlanks(std::string_view text, size_t at) {
  return std::min(text.find_first_not_of(kBlanks, at), text.size());
}

// What ends a word in markup; and in headers, of which translations write the line end as "\n".
constexpr std::string_view kEndsInMarkup = " \t\r\n\f;>\"'/";
constexpr std::string_view kEndsInHeaders = " \t\r\n\f;>\"'/\\,";

std::string wordAt(std::string_view text, size_t at, std::string_view ends) {
  const size_t end = std::min(text.find_first_of(ends, at), text.size());
  return std::string(text.substr(at, end - at));
}

// The value that stands behind "NAME =", in quotes or, if anything ends one, as a word.
std::optional<std::string> valueBehind(std::string_view text, size_t at,
                                       std::string_view endsOfWord) {
  at = skipBlanks(text, at);
  if (at == text.size() || text[at] != '=') return std::nullopt;
  at = skipBlanks(text, at + 1);
  if (at == text.size()) return std::nullopt;
  if (text[at] == '"' || text[at] == '\'') {
    const size_t end = text.find(text[at], at + 1);
    if (end == kNone) return std::nullopt;
    return std::string(text.substr(at + 1, end - at - 1));
  }
  if (endsOfWord.empty()) return std::nullopt;
  return wordAt(text, at, endsOfWord);
}

std::optional<std::string> charsetIn(std::string_view text, std::string_view endsOfWord) {
  constexpr std::string_view kName = "charset";
  for (size_t at = 0; (at = text.find(kName, at)) != kNone; at += kName.size()) {
    std::optional<std::string> value = valueBehind(text, at + kName.size(), endsOfWord);
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
  return valueBehind(declaration, at + kName.size(), {});
}

// Comments are passed over: what stands in them is not meant.
std::optional<std::string> inHtml(std::string_view text, std::string_view endsOfWord) {
  for (size_t at = 0; (at = text.find('<', at)) != kNone; ++at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) {
      at = text.find("-->", at);
      if (at == kNone) return std::nullopt;
    } else if (rest.starts_with("<meta") && skipBlanks(rest, 5) != 5) {
      const size_t end = rest.find('>');
      if (end == kNone) return std::nullopt;
      if (auto charset = charsetIn(rest.substr(0, end), endsOfWord)) return charset;
    }
  }
  return std::nullopt;
}

// CSS Syntax, "determine the fallback encoding": these bytes and no others.
std::optional<std::string> inStyleSheet(std::string_view text) {
  constexpr std::string_view kRule = "@charset \"";
  if (!text.starts_with(kRule)) return std::nullopt;
  const size_t end = text.find("\";", kRule.size());
  if (end == kNone) return std::nullopt;
  return std::string(text.substr(kRule.size(), end - kRule.size()));
}

// RFC 2045; and in translations the same line within quotes.
std::optional<std::string> inHeader(std::string_view text) {
  constexpr std::string_view kField = "content-type:";
  constexpr size_t kLongest = 300;
  for (size_t at = 0; (at = text.find(kField, at)) != kNone; at += kField.size()) {
    const bool beginsLine = at == 0 || text[at - 1] == '\n' || text[at - 1] == '"';
    if (!beginsLine) continue;
    if (auto charset = charsetIn(text.substr(at, kLongest), kEndsInHeaders)) return charset;
  }
  return std::nullopt;
}

// "-*- coding: euc-jp -*-" in the first two lines, and what vim writes.
std::optional<std::string> inModeLine(std::string_view text) {
  const size_t first = std::min(text.find('\n'), text.size());
  const size_t second = std::min(text.find('\n', std::min(first + 1, text.size())), text.size());
  const std::string_view lines = text.substr(0, second);
  for (const std::string_view word : {"coding", "fileencoding", "fenc"}) {
    const size_t at = lines.find(word);
    if (at == kNone) continue;
    size_t behind = skipBlanks(lines, at + word.size());
    if (behind == lines.size() || (lines[behind] != ':' && lines[behind] != '=')) continue;
    behind = skipBlanks(lines, behind + 1);
    std::string name = wordAt(lines, behind, kEndsInHeaders);
    for (const std::string_view lineEnd : {"-unix", "-dos", "-mac"})
      if (name.ends_with(lineEnd)) name.resize(name.size() - lineEnd.size());
    if (!name.empty()) return name;
  }
  return std::nullopt;
}

// Whether "char", "codi" or "fenc" is anywhere in the text, in any case; without branches, so that
// it is done by vectors.
bool maySayCharset(std::string_view text) {
  const auto lower = [&](size_t at) { return static_cast<uint8_t>(text[at] | 0x20); };
  uint8_t found = 0;
  for (size_t i = 0; i + 3 < text.size(); ++i) {
    const uint8_t a = lower(i);
    const uint8_t b = lower(i + 1);
    const uint8_t c = lower(i + 2);
    const uint8_t d = lower(i + 3);
    const auto charset = static_cast<uint8_t>((a ^ 'c') | (b ^ 'h') | (c ^ 'a') | (d ^ 'r'));
    const auto coding = static_cast<uint8_t>((a ^ 'c') | (b ^ 'o') | (c ^ 'd') | (d ^ 'i'));
    const auto fenc = static_cast<uint8_t>((a ^ 'f') | (b ^ 'e') | (c ^ 'n') | (d ^ 'c'));
    found = static_cast<uint8_t>(found | (charset == 0) | (coding == 0) | (fenc == 0));
  }
  return found != 0;
}

}  // namespace

std::optional<DeclaredCharset> declaredCharset(std::string_view beginning) {
  if (!maySayCharset(beginning)) return std::nullopt;
  const std::string text = lowered(beginning);
  if (auto name = inXml(text)) return DeclaredCharset{*name, "an XML declaration"};
  if (auto name = inStyleSheet(text)) return DeclaredCharset{*name, "an @charset"};
  if (auto name = inModeLine(text)) return DeclaredCharset{*name, "a mode line"};
  if (auto name = inHtml(text, kEndsInHeaders)) return DeclaredCharset{*name, "a meta element"};
  if (auto name = inHeader(text)) return DeclaredCharset{*name, "a header"};
  return std::nullopt;
}

std::optional<std::string> declaredInMarkup(std::string_view beginning) {
  const std::string text = lowered(beginning);
  std::optional<std::string> name = inXml(text);
  return name ? name : inHtml(text, kEndsInMarkup);
}

std::vector<std::string> wordsOfFileName(std::string_view path) {
  const size_t slash = path.find_last_of("/\\");
  if (slash != kNone) path.remove_prefix(slash + 1);
  std::vector<std::string> words;
  while (!path.empty()) {
    const size_t end = std::min(path.find('.'), path.size());
    if (end != 0) words.emplace_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return words;
}

}  // namespace ksv_kit::judge
