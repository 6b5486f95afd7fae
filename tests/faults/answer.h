// What the calls of a job answered. Collected without allocating anything, since there may
// be no memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ksv::test {

class Answer {
 public:
  void clear() { *this = Answer(); }

  void add(std::string_view call, int64_t result);
  // Of a long text its beginning, its length and a sum of its bytes.
  void add(std::string_view call, std::string_view text);

  // For calls that say themselves when they fail, where what follows rests on them. What was
  // said first stays.
  bool needs(bool succeeded, const char* call);
  // The same with the result in the answer.
  bool expects(std::string_view call, int64_t result, int64_t failure);

  // A line a call, up to the first that failed.
  std::string_view text() const { return {text_.data(), length_}; }
  // The call that said first that it failed; null when none did.
  const char* failedCall() const { return failedCall_; }

 private:
  void append(std::string_view text);

  std::array<char, 8192> text_;
  size_t length_ = 0;
  const char* failedCall_ = nullptr;
};

}  // namespace ksv::test
