// Every operation that takes the path of something that is there, and those that make
// something, so that a condition is tried on all of them.
#pragma once

#include <cstdint>
#include <vector>

namespace ksv::test {

struct PathOperation {
  const char* name;
  int64_t (*run)(const char* path);  // leaves nothing open
  int64_t failure;                   // what it gives when there is nothing at path, or it may not
  bool isUtf8;                       // takes at most 779 units of UTF-8
};

// They look at what is there, or read it.
const std::vector<PathOperation>& lookingOperations();

// They remove what is there.
const std::vector<PathOperation>& removingOperations();

// They make something new.
const std::vector<PathOperation>& creatingOperations();

// Runs all of them on a path for which each fails, and leaves no descriptor open.
void expectAllFail(const std::vector<PathOperation>& operations, const char* path);

}  // namespace ksv::test
