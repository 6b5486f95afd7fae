// What the tests of this directory have in common.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "tests/system/system.h"

namespace ksv::test {

// Between the UTF-8 of the tests and the paths of the standard library, whose own
// constructor from char takes another encoding on some systems.
inline std::filesystem::path pathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

inline std::string textOf(const std::filesystem::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

// The separator that this system adds to paths.
inline const std::string kSeparator(1,
                                    static_cast<char>(std::filesystem::path::preferred_separator));

// A character, and a word of two that sorts before it, beyond ASCII and in the
// ANSI code page: Japanese where that can be.
inline std::string ansiLetter() { return toAnsi("表") ? "表" : "ü"; }
inline std::string ansiWord() { return toAnsi("日本") ? "日本" : "éà"; }

// A new directory that is the current one while the object lives.
class TempDirectory {
 public:
  TempDirectory()
      : before_(std::filesystem::current_path()), path_(makeTemporaryDirectory("ksv_test")) {
    std::filesystem::current_path(pathOf(path_));
  }
  ~TempDirectory() {
    std::filesystem::current_path(before_);
    std::error_code ignored;
    std::filesystem::remove_all(pathOf(path_), ignored);
  }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  // With '/' for separators on every system.
  const std::string& path() const { return path_; }

 private:
  std::filesystem::path before_;
  std::string path_;
};

inline void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(pathOf(path), std::ios::binary) << bytes;
}

inline std::string readFile(const std::string& path) {
  std::ifstream file(pathOf(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// With line ends as the system's C runtime reads them.
inline std::string readText(const std::string& path) {
  std::ifstream file(pathOf(path));
  return {std::istreambuf_iterator<char>(file), {}};
}

inline bool exists(const std::string& path) {
  return std::filesystem::symlink_status(pathOf(path)).type() !=
         std::filesystem::file_type::not_found;
}

// An environment variable that has its old value back afterwards.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::optional<std::string>& value)
      : name_(name), before_(variable(name)) {
    setVariable(name, value);
  }
  ~ScopedVariable() { setVariable(name_, before_); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* name_;
  const std::optional<std::string> before_;
};

}  // namespace ksv::test
