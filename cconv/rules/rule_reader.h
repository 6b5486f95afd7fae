// RuleReader: a place in the text of a rule file, and the steps that lead from it. Elements
// and attributes are found by searching forward, wherever they stand and whatever they
// stand in.
//
// Everything that is handed out as a string is narrowed: the low byte of each character, up
// to one whose low byte is zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cconv/rules/rule_text.h"

namespace ksv {

class RuleReader;

// The content of an element. It begins right behind "<tag>" or "<tag ", so it holds the
// attributes of a start tag too, and ends where "</tag>" begins or, when none follows, "/>".
class RuleElement {
 public:
  RuleElement(const RuleText& text, size_t start, size_t end)
      : text_(&text), start_(start), end_(end) {}

  const RuleText& text() const { return *text_; }
  size_t start() const { return start_; }
  size_t end() const { return end_; }

  std::string content() const;
  // The quoted text behind the word (such as "domain="), which stands in the content; the
  // quotes may stand behind it.
  std::optional<std::string> attribute(std::string_view word) const;
  // The name of the first entity reference in the content.
  std::optional<std::string> entityReference() const;

 private:
  const RuleText* text_;
  size_t start_;
  size_t end_;
};

// Searches run to the end of the text. A step that does not find what it looks for leaves
// the reader where it is.
class RuleReader {
 public:
  explicit RuleReader(const RuleText& text, size_t position = 0)
      : text_(&text), position_(position) {}
  // Inside an element: at the beginning of its content.
  explicit RuleReader(const RuleElement& element) : RuleReader(element.text(), element.start()) {}

  size_t position() const { return position_; }
  bool isAt(char wanted) const;

  // The next element of that name; the reader stays in front of it.
  std::optional<RuleElement> findElement(std::string_view tag) const;
  // Goes inside the next element of that name.
  std::optional<RuleElement> enterElement(std::string_view tag);
  // Goes behind the content of the next element of that name, or of this one.
  std::optional<RuleElement> passElement(std::string_view tag);
  void passElement(const RuleElement& element) { position_ = element.end(); }

  // Goes behind the next occurrence of the pattern.
  bool passString(std::string_view pattern);
  // The next text in double quotes; the reader stays in front of it.
  std::optional<std::string> findQuoted() const;

  // These two look no further than an end. The first goes behind the next run of
  // hexadecimal digits, the second over the character if the reader is at it.
  std::optional<uint32_t> passHexNumber(size_t end);
  bool passCharacter(char wanted, size_t end);

 private:
  const RuleText* text_;
  size_t position_;
};

// A hexadecimal number: blanks and tabs are skipped, and it ends at the first
// other character. The last eight digits count.
uint32_t parseHex(std::string_view digits);

}  // namespace ksv
