// A packed charset directory of any bytes.
//
// Input: the packed file; what says that it is one, and how long, is put right.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "cconv/rules/packed_charsets.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"

namespace {

using ksv::CodeTable;
using ksv::PackedCharsets;
using ksv_fuzz::require;

constexpr size_t kHeaderSize = 64;

std::string packedFile(std::string_view input) {
  std::string bytes(input);
  bytes.resize(std::max(bytes.size(), kHeaderSize));
  const auto size = static_cast<uint32_t>(bytes.size());
  const uint32_t start[] = {0x5056534B, 2, size};
  std::memcpy(bytes.data(), start, sizeof start);
  return bytes;
}

void requireSame(const CodeTable& table, const CodeTable& again, uint32_t key) {
  require(table.values.find(key) == again.values.find(key), "a table answers as it did");
}

void useTable(const PackedCharsets& packed, std::string_view name, CodeTable::KeyColumn column,
              uint16_t bytes) {
  CodeTable table(column, bytes);
  CodeTable again(column, bytes);
  table.fileName = again.fileName = name;
  const bool isFilled = packed.fill(table, ksv::kDefaultBlockSize);
  require(packed.fill(again, ksv::kDefaultBlockSize) == isFilled, "a table is filled as it was");
  if (!isFilled) return;
  for (const uint32_t key : {0u, 1u, table.low, table.high, table.low - 1, table.high + 1,
                             0x10FFFFu, 0x110000u, 0xFFFFFFFFu})
    requireSame(table, again, key);
  for (uint32_t key = 0x8001; key > 0x8000; key += 0x01000193) requireSame(table, again, key);
}

void useAll(const PackedCharsets& packed) {
  size_t lines = 0;
  for (const auto& file : packed.catalog().tableFiles) {
    // Many tables of many lines each take their time, and find no more.
    lines += file.lineCount;
    if (lines > 100'000) return;
    for (const auto column : {CodeTable::kFirstColumn, CodeTable::kSecondColumn})
      for (const uint16_t bytes : {uint16_t{1}, uint16_t{2}, uint16_t{4}})
        useTable(packed, file.name, column, bytes);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  directory.clear();
  directory.write(PackedCharsets::kFileName,
                  packedFile({reinterpret_cast<const char*>(data), size}));
  if (const auto packed = PackedCharsets::open(directory.path())) useAll(*packed);
  return 0;
}
