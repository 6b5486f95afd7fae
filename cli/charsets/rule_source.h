// Rule files and tables as a person looks at them, with their lines. The library's own
// reader forgets these, and passes over in silence what is told here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/failure.h"

namespace ksv_cli {

// How the characters of a file are written.
struct TextForm {
  uint32_t unitSize = 2;  // bytes
  bool bigEndian = false;

  bool operator==(const TextForm&) const = default;
};

// A text, narrowed to the low bytes of its characters, and where its lines begin.
class LinedText {
 public:
  LinedText() = default;
  // Each character of the text is one of the file.
  explicit LinedText(std::string text);

  const std::string& text() const { return text_; }
  // From 1 on.
  size_t lineAt(size_t position) const;

 private:
  std::string text_;
  std::vector<size_t> lineStarts_;
};

// A file that is there, and that the system does not let be read: nothing can be said of what is
// in it, and of what rests on it. what() names it.
class UnreadableFile : public Failure {
 public:
  UnreadableFile(const std::string& path, const std::string& reason);
};

// Throws UnreadableFile.
bool isRegularFile(const std::string& path);

// The bytes of a file; none when there is no such file. Throws UnreadableFile.
std::optional<std::vector<uint8_t>> fileBytes(const std::string& path);

// The form that the beginning of a file tells, or what keeps it from being read.
struct FormFinding {
  std::optional<TextForm> form;
  std::string fault;
};
FormFinding formOf(const std::vector<uint8_t>& bytes);

// The characters of a file without its byte-order mark.
LinedText decoded(const std::vector<uint8_t>& bytes, TextForm form);

// A rule file: elements and attributes are found by searching forward, as the library
// finds them. Comments and instructions are blank.
class RuleSource {
 public:
  RuleSource(const std::vector<uint8_t>& bytes, TextForm form);

  TextForm form() const { return form_; }
  size_t lineAt(size_t position) const { return lines_.lineAt(position); }

  // What is between a tag and its end, the attributes of the tag included.
  struct Span {
    size_t start;
    size_t end;
  };
  std::optional<Span> element(std::string_view tag, size_t from) const;
  std::string textOf(Span span) const { return text_.substr(span.start, span.end - span.start); }
  // The quoted value behind a word such as "domain=".
  std::optional<std::string> attribute(Span span, std::string_view word) const;
  // NAME of the first &NAME; there.
  std::optional<std::string> entity(Span span) const;
  // The file that the text declares for an entity.
  std::optional<std::string> fileOf(const std::string& entity) const;
  // Whether it names more entities than the library looks for, which are none to it then.
  bool namesTooMuch() const;

 private:
  // What the last search for a pattern found, so that a walk over many elements takes no more
  // than one over the text.
  struct LastSearch {
    size_t from;
    size_t found;
  };

  size_t find(const std::string& pattern, size_t from) const;
  std::optional<std::string> findFileOf(const std::string& entity) const;

  TextForm form_;
  LinedText lines_;
  std::string text_;
  mutable std::map<std::string, LastSearch> lastSearches_;
  mutable std::map<std::string, std::optional<std::string>> files_;  // of entities
  mutable uint64_t comparisons_ = 0;                                 // to find them
};

}  // namespace ksv_cli
