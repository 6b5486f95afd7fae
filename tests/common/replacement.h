// What the tests of replacement files have in common.
#pragma once

#include <string>

#include "common/platform.h"
#include "tests/common/support.h"

namespace ksv::test {

inline constexpr char kReplaced[] = "日本.cmp";
inline constexpr char kTemporary[] = "日本.cmp.tmp";

inline std::string contentOf(size_t size) {
  std::string content(size, '\0');
  for (size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 7 + i / 251);
  return content;
}

inline bool writeWhole(const std::string& content) {
  auto file = platform::ReplacementFile::create(kReplaced);
  return file && file->write(content.data(), content.size()) && file->commit();
}

}  // namespace ksv::test
