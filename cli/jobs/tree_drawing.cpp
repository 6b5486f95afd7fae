#include "cli/jobs/tree_drawing.h"

namespace ksv_cli {

void TreeDrawing::add(size_t depth, bool isLast, const std::string& entry) {
  hasMore_.resize(depth);
  for (const bool more : hasMore_) text_ += more ? "│  " : "   ";
  hasMore_.push_back(!isLast);
  text_ += (isLast ? "└─ " : "├─ ") + entry + "\n";
}

}  // namespace ksv_cli
