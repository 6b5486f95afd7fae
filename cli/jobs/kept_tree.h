// Results that keep below a directory the tree that their inputs stand in.
#pragma once

#include <cstddef>
#include <string>

namespace ksv_cli {

// The place of a result below the directory of results: the part of the input's path from belowAt
// on, or all of a path that was named itself (0), without its root. What leads back on the way is
// followed by name; throws UsageError where it leads out.
std::string placeInTree(const std::string& path, size_t belowAt);

// Makes the directories below the directory of results that a place needs. A link on the way
// could lead out of it: throws Failure for one, and where a directory cannot be made.
void makeDirectoriesFor(const std::string& place, const std::string& resultDirectory);

}  // namespace ksv_cli
