// Random texts, and conversions traced call by call, to hold those who convert ahead of the
// step-by-step engine against it.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "tests/convert/bulk_path.h"

namespace ksv_test {

// One call after another until the end, with what each leaves in the record.
struct Trace {
  std::vector<ConverterRecord> records;
  Bytes output;
};
Trace trace(const Conversion& setup, const Bytes& input, const std::vector<int32_t>& capacities);

// The bytes of a record without those between and behind its fields, which are nobody's and
// hold anything.
std::string bytesOf(const ConverterRecord& record);

// The first difference between two traces, in words; empty where there is none.
std::string difference(const Trace& one, const Trace& other);

using Random = std::mt19937;
inline uint32_t below(Random& random, uint32_t limit) {
  return static_cast<uint32_t>(random() % limit);
}

Bytes ucs4(const std::vector<uint32_t>& values);

// Random text of some thousand characters in the charset, with some random bytes.
Bytes randomText(Random& random, const char* charset);

// What texts mostly are, in the charset: runs of the same script, line ends, words of
// another. In units of the byte order that is asked for, where there are units.
Bytes ordinaryText(Random& random, const char* charset, size_t count, uint32_t bigEndian);

}  // namespace ksv_test
