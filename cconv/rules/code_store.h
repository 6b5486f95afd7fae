// CodeStore: the values of a code table, kept so that every key is found with
// three loads.
//
// Layout: values stand in pages of 16. Keys below 0x110000 (every Unicode code
// and every JIS code) find their page through a directory of 4,096 page numbers
// a 64 Ki plane; the four-byte codes of the Chinese encodings, ten in every 256,
// through an open-addressing hash of the key without its low four bits. Page 0
// holds zeroes and stands for every page that does not exist, so a look-up has
// no branch for it. A table of JIS X 0208 takes 46 KB, one of the BMP 280 KB.
// A directory for every plane of 32-bit keys was refused: 880 of them for the
// four-byte codes of GB18030 are 14 MB, the hash 2 MB.
//
// The values of a packed table stay where they are, in a file that all processes share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "cconv/rules/packed_table.h"

namespace ksv {

class CodeStore {
 public:
  CodeStore() = default;
  // Nothing is stored into one that a packed table fills.
  explicit CodeStore(const PackedTable& packed) : packed_(packed) {}

  // The value stored last for key, 0 when there is none.
  uint32_t find(uint32_t key) const {
    if (own_ != nullptr) return own_->find(key);
    return packed_.isThere() ? packed_.find(key) : 0;
  }

  // Throws std::bad_alloc when there is no memory; the store is then unchanged.
  void store(uint32_t key, uint32_t value);

 private:
  static constexpr uint32_t kDirectKeys = kDirectPageKeys;

  // What is stored here. Most stores of a process stay empty, and take no room for it.
  class Own {
   public:
    Own();
    uint32_t find(uint32_t key) const {
      const uint32_t page =
          key < kDirectKeys ? (*planes_[key >> 16])[(key >> 4) & 0xFFF] : findHashedPage(key >> 4);
      return pages_[page][key & 0xF];
    }
    void store(uint32_t key, uint32_t value);

   private:
    using Page = std::array<uint32_t, 16>;
    using Directory = std::array<uint32_t, 4096>;

    struct HashSlot {
      uint32_t keyPrefix;
      uint32_t page;  // 0: the slot is free
    };

    static const Directory kEmptyDirectory;

    uint32_t findHashedPage(uint32_t keyPrefix) const {
      return hash_.empty() ? 0 : hash_[hashSlotOf(keyPrefix)].page;
    }
    size_t hashSlotOf(uint32_t keyPrefix) const;
    uint32_t* pageNumberFor(uint32_t key);
    void growHash();

    std::vector<Page> pages_;
    std::array<const Directory*, (kDirectKeys >> 16)> planes_;
    std::array<std::unique_ptr<Directory>, (kDirectKeys >> 16)> ownedPlanes_;
    std::vector<HashSlot> hash_;  // never more than half full
    size_t hashedPages_ = 0;
  };

  std::unique_ptr<Own> own_;
  PackedTable packed_;
};

}  // namespace ksv
