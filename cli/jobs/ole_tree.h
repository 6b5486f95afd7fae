// The storages and streams of a compound document, with the names that people gave them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ole/compound_file.h"

namespace ksv_cli {

// Throws Failure with what is wrong with a document, and where.
std::unique_ptr<ksv::CompoundFile> openDocument(const std::string& path);

class OleTree {
 public:
  struct Entry {
    uint32_t id;
    size_t depth;  // 0 in the root
    bool isStorage;
    bool isLast;  // of its siblings
    uint32_t size;
    std::string name;  // what cannot be shown or separates is written \xHH or \uHHHH
  };

  explicit OleTree(ksv::CompoundFile& file);

  // Storages stand in front of what is in them.
  const std::vector<Entry>& entries() const { return entries_; }
  // Where an entry stands whose siblings are linked wrongly; none when all is well.
  std::optional<int64_t> damage() const { return damage_; }

  // The entry at a path of names as they are shown, '/' between them. An exact name
  // comes before one that differs in the case of ASCII letters.
  const Entry* find(std::string_view path) const;

 private:
  struct Place;

  std::vector<uint32_t> siblingsFrom(uint32_t id, uint32_t above);
  const Entry* findChild(size_t first, size_t depth, std::string_view name) const;

  ksv::CompoundFile& file_;
  std::vector<bool> visited_;
  std::vector<Entry> entries_;
  std::optional<int64_t> damage_;
};

}  // namespace ksv_cli
