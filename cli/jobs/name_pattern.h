// Patterns of file names, as shells have them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ksv_cli {

// * stands for any characters of a component, ? for one, [...] for one of those listed, with
// ranges, and [!...] or [^...] for one that is not; ** stands for any characters and separators,
// and **/ for any number of whole components. A backslash takes the next character as it is,
// unless it is a separator. A bracket that is not closed stands for itself.
//
// A character is one of UTF-8; of what is no UTF-8 it is a byte. Where names have no case, that of
// ASCII letters counts for nothing.
class NamePattern {
 public:
  explicit NamePattern(std::string_view pattern);

  // path: below the directory that is searched, '/' between its components. A pattern without a
  // separator stands for the last of them, one with a separator for all. One that ends in a
  // separator stands for directories only.
  bool matches(std::string_view path, bool isDirectory) const;

 private:
  struct Range {
    uint32_t first;
    uint32_t last;
  };
  struct Token {
    enum class Kind { kCharacter, kAnyCharacter, kSet, kAnyInComponent, kAny, kMayLack };
    Kind kind;
    uint32_t character = 0;          // of kCharacter
    bool isNegated = false;          // of kSet
    std::vector<Range> ranges = {};  // of kSet
  };
  using States = std::vector<bool>;

  void addStars(std::string_view& rest);
  bool addSet(std::string_view& rest);
  void addCharacter(std::string_view& rest);
  bool matchesWhole(std::string_view text) const;
  void enter(States& states, size_t token) const;
  bool takes(const Token& token, uint32_t character) const;

  std::vector<Token> tokens_;
  bool isOfPath_ = false;
  bool isOfDirectories_ = false;
};

}  // namespace ksv_cli
