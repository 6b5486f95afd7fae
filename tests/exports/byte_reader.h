// Records out of the bytes of a file, which may lie at any place of it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace ksv_exports {

class ByteReader {
 public:
  explicit ByteReader(const std::string& bytes) : bytes_(bytes) {}

  // The record at an offset; a failure and zeroes where the file has ended.
  template <typename Record>
  Record at(uint64_t offset) const {
    Record record = {};
    EXPECT_LE(offset + sizeof record, bytes_.size());
    if (offset + sizeof record <= bytes_.size()) {
      std::memcpy(&record, bytes_.data() + offset, sizeof record);
    }
    return record;
  }

  // The zero-terminated string at an offset.
  std::string stringAt(uint64_t offset) const {
    EXPECT_LT(offset, bytes_.size());
    return offset < bytes_.size() ? bytes_.c_str() + offset : "";
  }

 private:
  const std::string& bytes_;
};

}  // namespace ksv_exports
