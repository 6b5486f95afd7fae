// A slow and obvious reader of compound files in memory: it loads every table whole and
// follows every link one by one. Shares nothing with the reader under test.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ksv::test {

class ReferenceFile {
 public:
  struct Slot {
    std::string name;
    uint32_t type = 0;
    uint32_t left = 0, right = 0, child = 0;
    uint32_t start = 0, size = 0;
    std::string classId = std::string(16, '\0');
  };

  // Thrown by a search that goes through a tree whose branches meet again and again.
  struct TooManySteps {};

  static std::unique_ptr<ReferenceFile> open(const std::string& bytes);

  uint32_t root() const { return root_; }
  const std::vector<Slot>& slots() const { return slots_; }
  std::optional<uint32_t> findStorage(uint32_t parent, const std::string& name) const;
  std::optional<uint32_t> findStream(uint32_t parent, const std::string& name) const;

 private:
  friend class ReferenceStream;

  std::optional<int64_t> place(uint64_t sector, uint64_t within) const;
  std::optional<std::string> sector(uint32_t number) const;
  bool loadFat();
  bool loadMiniFat();
  bool loadDirectory();
  bool fillSlot(const std::string& entry, Slot& slot);
  uint32_t next(uint32_t sector) const;
  enum class Search { kFound, kAbsent, kFailed };
  Search search(uint32_t id, uint32_t level, const std::string& name, uint32_t& found) const;

  static constexpr uint64_t kMostSteps = 1'000'000;

  std::string bytes_;
  mutable uint64_t steps_ = 0;
  uint64_t sectorSize_ = 0, miniSectorSize_ = 0;
  uint32_t fatCount_ = 0, miniFatCount_ = 0, cutoff_ = 0;
  std::vector<std::string> fat_;
  std::vector<uint32_t> miniFat_;
  std::vector<Slot> slots_;
  uint16_t valid_ = 0;
  uint32_t root_ = 0;
  uint32_t miniStart_ = 0xFFFFFFFF;
};

class ReferenceStream {
 public:
  static std::unique_ptr<ReferenceStream> open(const ReferenceFile& file, uint32_t slot);
  std::string read(uint32_t count);
  uint32_t seek(uint32_t offset, uint32_t origin);

 private:
  explicit ReferenceStream(const ReferenceFile& file) : file_(file) {}
  bool measure(uint32_t start);
  std::optional<int64_t> placeNow() const;
  uint32_t set(uint32_t target);
  void refill();

  const ReferenceFile& file_;
  bool mini_ = false;
  uint64_t unit_ = 0;
  std::vector<uint32_t> chain_;
  uint32_t size_ = 0;
  uint32_t position_ = 0;
  std::string buffer_;
  size_t cursor_ = 0;
};

}  // namespace ksv::test
