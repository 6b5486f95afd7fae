// A compound file that a test wrote, and handles that close themselves.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "ksv_ole.h"
#include "tests/common/support.h"
#include "tests/ole/compound_writer.h"

namespace ksv::test {

// The same numbers everywhere, of 32 bits.
using Random = std::linear_congruential_engine<uint32_t, 48271, 0, 2147483647>;

struct CloseOle {
  void operator()(Ksv2Ole* file) const { KSV_2OLEclose(file); }
};
struct CloseStorage {
  void operator()(Ksv2Ole* storage) const { KSV_2OLEcloseStorage(storage); }
};
struct CloseStream {
  void operator()(Ksv2OleStream* stream) const { KSV_2OLEcloseStream(stream); }
};

using OleHandle = std::unique_ptr<Ksv2Ole, CloseOle>;
using StorageHandle = std::unique_ptr<Ksv2Ole, CloseStorage>;
using StreamHandle = std::unique_ptr<Ksv2OleStream, CloseStream>;

class OleTest : public testing::Test {
 protected:
  OleHandle open(const std::string& bytes) {
    return OleHandle(KSV_2OLEopen(writeNext(bytes).c_str()));
  }
  bool opens(const std::string& bytes) { return open(bytes) != nullptr; }

  // Under a new name, since systems take their time to write over a file; the one before
  // goes, if no handle holds it.
  std::string writeNext(const std::string& bytes) {
    std::error_code ignored;
    std::filesystem::remove(name_, ignored);
    name_ = "file" + std::to_string(number_++);
    writeFile(name_, bytes);
    return name_;
  }

 private:
  TempDirectory directory_;
  std::string name_;
  int number_ = 0;
};

inline StorageHandle openStorage(Ksv2Ole* parent, const std::string& name) {
  return StorageHandle(KSV_2OLEopenStorage(parent, name.c_str()));
}

inline StreamHandle openStream(Ksv2Ole* owner, const std::string& name) {
  return StreamHandle(KSV_2OLEopenStream(owner, name.c_str()));
}

inline std::string read(Ksv2OleStream* stream, uint32_t count) {
  std::string bytes(count, '\0');
  bytes.resize(KSV_2OLEreadStream(stream, bytes.data(), count));
  return bytes;
}

inline std::string readAll(Ksv2OleStream* stream) {
  std::string bytes;
  uint32_t count = 4096;
  for (;;) {
    const std::string piece = read(stream, count);
    bytes += piece;
    if (piece.size() < count) return bytes;
    count = 1 << 20;
  }
}

// The whole stream; "none" when it does not open.
inline std::string contentOf(Ksv2Ole* owner, const std::string& name) {
  const StreamHandle stream = openStream(owner, name);
  return stream ? readAll(stream.get()) : "none";
}

}  // namespace ksv::test
