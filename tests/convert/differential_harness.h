// Runs the library and the reference converter side by side and compares every
// field after every call.
#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "ksv_cconv.h"
#include "reference/converter.h"

namespace ksv_differential {

// The same numbers on every platform.
class Random {
 public:
  explicit Random(uint64_t seed) : engine_(seed) {}
  uint64_t next() { return engine_(); }
  uint32_t below(uint32_t limit) { return static_cast<uint32_t>(engine_() % limit); }
  int32_t between(int32_t low, int32_t high) {
    return low + static_cast<int32_t>(below(static_cast<uint32_t>(high - low + 1)));
  }
  bool percent(uint32_t chance) { return below(100) < chance; }
  template <typename T>
  const T& pick(const std::vector<T>& items) {
    return items[below(static_cast<uint32_t>(items.size()))];
  }

 private:
  std::mt19937_64 engine_;
};

std::string hexBytes(const std::vector<uint8_t>& bytes);

// Ends the program with the current case's reproduction when one library call does
// not come back.
void startWatchdog();

// A library record and a reference converter that see the same calls. The first
// difference stands in difference(), after which the calls do nothing.
class Pair {
 public:
  Pair(ksv_reference::RuleBase& rules, size_t maxOutput);

  void reset();
  // Fills the fields that init clears.
  void scramble(Random& random);
  void setBuffers(const std::vector<uint8_t>& input, int32_t capacity);
  void setInputLength(int32_t length);
  void setInputPosition(int32_t position);
  void setCapacity(int32_t capacity);
  void emptyOutput();

  uint32_t init(const ConvertOptions* options, const char* target);
  uint32_t chgCharset(const uint32_t* parameters, const char* source);
  void chgLang(const std::string& language);
  uint32_t convert();
  uint32_t term();

  const ConverterRecord& record() const { return record_; }
  const std::string& difference() const { return difference_; }
  const std::string& field() const { return field_; }
  std::string reproduction() const;
  uint64_t calls() const { return calls_; }

 private:
  void note(const std::string& text);
  void compare(const char* call, uint32_t result, uint32_t expected);
  void compareText(const std::string& name, const char* got, const std::string& expected);
  void compareNumber(const std::string& name, uint32_t got, uint32_t expected);
  void compareOutput();
  void differ(const std::string& name, const std::string& got, const std::string& expected);

  ConverterRecord record_ = {};
  ksv_reference::Converter model_;
  std::vector<uint8_t> input_;
  std::vector<uint8_t> libraryOutput_;
  std::vector<uint8_t> modelOutput_;
  std::string log_;
  std::string difference_;
  std::string field_;
  uint64_t calls_ = 0;
};

}  // namespace ksv_differential
