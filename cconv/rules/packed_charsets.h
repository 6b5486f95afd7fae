// The packed form of a charset directory: one file beside the others, mapped by all processes
// that use it. charsets/pack.py makes it with the directory, and explains how it is laid out.
//
// A process takes it where no setting names a directory, but the one that came with the library
// is used. Whatever stands in that directory goes before it: a rule file or a table that the
// packed file does not know, that has another size, or that is younger than the packed file, is
// read as in any other directory. A packed file that is not sound throughout is as good as none.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cconv/rules/code_table.h"
#include "cconv/rules/packed_catalog.h"
#include "cconv/rules/packed_table.h"
#include "common/platform.h"

namespace ksv {

class PackedCharsets {
 public:
  static constexpr char kFileName[] = "charsets.pack";

  // The one in the directory, which ends in a separator. Null when there is none, or not a sound
  // one; a system error is noted. May throw std::bad_alloc.
  static std::unique_ptr<const PackedCharsets> open(const std::string& directory);

  const std::string& directory() const { return directory_; }
  const PackedCatalog& catalog() const { return catalog_; }

  // Whether a file that stands in the directory goes before the packed one; of a table its text or
  // its compiled form.
  bool isOverridden(const PackedCatalog::RuleFile& file) const;
  bool isOverridden(const PackedCatalog::TableFile& file) const;

  // The lines of a table in their order, by its place in the catalog. None when they are not as
  // many as they should be.
  std::optional<std::vector<std::pair<uint32_t, uint32_t>>> lines(uint32_t file) const;

  // Fills the table with what its compiled file would give, in blocks of so many keys. False
  // when that is not packed, or what stands in the directory goes before it.
  bool fill(CodeTable& table, uint32_t entriesPerBlock) const;

 private:
  struct TableEntry {
    uint32_t file;
    uint32_t form;  // KeyColumn, and from the ninth bit on the bytes of a value
    uint32_t low;
    uint32_t high;
    uint32_t coversZero;
    uint32_t directory;  // in the data, in bytes
    uint32_t directoryLength;
    uint32_t runs;  // as the directory
    uint32_t runCount;
  };
  using Words = std::span<const uint32_t>;

  PackedCharsets() = default;
  bool read(const std::string& path);
  bool readSections();
  const TableEntry* findTable(uint32_t file, uint32_t form) const;
  std::optional<PackedTable> tableOf(const TableEntry& entry) const;
  // Gives each line of a file to take(first, second), in their order, until it says false. False
  // when the packed lines are not as many as the file should have.
  template <class Take>
  bool takeLines(uint32_t file, Take take) const;
  template <class Take>
  bool takeDerived(uint32_t file, uint32_t count, PackedStream& passedOver, Take take) const;
  bool isSound(const PackedTable& table) const;
  bool isSoundRun(const PackedTable::Run& run) const;
  bool isSoundBlock(uint32_t block) const;
  bool isSoundPage(uint32_t page) const;
  bool isSoundTemplate(uint32_t steps) const;
  bool goesBefore(const std::string& name, uint64_t packedSize) const;

  std::string directory_;
  platform::MappedBytes mapping_;
  int64_t writeTime_ = 0;
  PackedCatalog catalog_;
  std::span<const TableEntry> tables_;
  Words blocks_;
  std::span<const PackedTable::Page> pages_;
  std::span<const uint16_t> narrowTemplates_;
  Words wideTemplates_;
  PackedCatalog::Bytes data_;
};

}  // namespace ksv
