#include "tests/faults/answer.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ksv::test {
namespace {

constexpr size_t kShown = 48;

uint32_t sumOf(std::string_view text) {
  uint32_t sum = 2166136261u;
  for (const char c : text) sum = (sum ^ static_cast<uint8_t>(c)) * 16777619u;
  return sum;
}

}  // namespace

void Answer::add(std::string_view call, int64_t result) {
  char digits[24];
  const char* const end = std::to_chars(digits, digits + sizeof digits, result).ptr;
  append(call);
  append(" ");
  append({digits, static_cast<size_t>(end - digits)});
  append("\n");
}

void Answer::add(std::string_view call, std::string_view text) {
  append(call);
  append(" \"");
  append(text.substr(0, kShown));
  append("\"");
  add("", static_cast<int64_t>(text.size()));
  if (text.size() > kShown) add("sum", sumOf(text));
}

bool Answer::needs(bool succeeded, const char* call) {
  if (!succeeded && failedCall_ == nullptr) failedCall_ = call;
  return succeeded;
}

bool Answer::expects(std::string_view call, int64_t result, int64_t failure) {
  if (!needs(result != failure, call.data())) return false;
  add(call, result);
  return true;
}

void Answer::append(std::string_view text) {
  if (failedCall_ != nullptr) return;
  const size_t count = std::min(text.size(), text_.size() - length_);
  std::memcpy(text_.data() + length_, text.data(), count);
  length_ += count;
}

}  // namespace ksv::test
