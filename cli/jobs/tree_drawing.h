// A tree as it is drawn with lines between its entries.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ksv_cli {

class TreeDrawing {
 public:
  explicit TreeDrawing(const std::string& title) : text_(title + "\n") {}

  // Entries in their order, each in front of what is below it. depth: 0 of those below the title.
  void add(size_t depth, bool isLast, const std::string& entry);
  const std::string& text() const { return text_; }

 private:
  std::string text_;
  std::vector<bool> hasMore_;  // of the entries above the next one, level by level
};

}  // namespace ksv_cli
