// Random sequences of insertions against a table as it is described: a list of
// blocks of bytes, searched from the first.
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

class ReferenceTable {
 public:
  explicit ReferenceTable(uint16_t valueBytes) : valueBytes_(valueBytes) {}

  bool insert(uint32_t key, uint32_t value, uint32_t blockSize) {
    Block* block = find(key);
    if (block == nullptr) {
      if (blocks_.size() == 65535) return false;
      blocks_.push_back({key, static_cast<uint32_t>(key + blockSize),
                         std::vector<uint8_t>(size_t{valueBytes_} * blockSize)});
      block = &blocks_.back();
    }
    uint8_t* slot = block->values.data() + size_t{valueBytes_} * (key - block->first);
    for (int i = valueBytes_ - 1, shift = 0; i >= 0; --i, shift += 8) {
      slot[i] = static_cast<uint8_t>(shift < 32 ? value >> shift : 0);
    }
    if (low == 0 && !hasEntries) {
      hasEntries = true;
      low = high = key;
    } else if (key >= low) {
      high = std::max(high, key);
    } else {
      low = key;
    }
    return true;
  }

  // Nothing when no block covers the key.
  std::optional<uint32_t> stored(uint32_t key) {
    if (key < low || key > high) return std::nullopt;
    const Block* block = find(key);
    if (block == nullptr) return std::nullopt;
    uint32_t value = 0;
    for (uint32_t i = 0; i < valueBytes_; ++i) {
      value = value << 8 | block->values[size_t{valueBytes_} * (key - block->first) + i];
    }
    return value;
  }

  size_t blockCount() const { return blocks_.size(); }

  uint32_t low = 0;
  uint32_t high = 0;
  bool hasEntries = false;

 private:
  struct Block {
    uint32_t first;
    uint32_t end;
    std::vector<uint8_t> values;
  };

  Block* find(uint32_t key) {
    for (Block& block : blocks_) {
      if (block.first <= key && key < block.end) return &block;
    }
    return nullptr;
  }

  uint16_t valueBytes_;
  std::vector<Block> blocks_;
};

class RandomTable {
 public:
  explicit RandomTable(uint32_t seed) : random_(seed) {
    valueBytes_ = static_cast<uint16_t>(pick(7));
    table_ = tableOf("table.txt", kUtf16Little, CodeTable::kFirstColumn, valueBytes_);
    table_->state = CodeTable::State::kLoaded;
    reference_ = std::make_unique<ReferenceTable>(valueBytes_);
    const uint32_t sizes[] = {1, 2, 3, 16, 17, 256, 4096, 65535};
    blockSize_ = sizes[pick(std::size(sizes))];
    insertions_ = blockSize_ > 4096 ? 40 : 400;
    const uint32_t centres[] = {0,        0x20,     0x8140,     0xFFFF,
                                0x10FFF0, 0x110000, 0x81308130, 0xFFFFF000};
    for (int i = 0; i < 3; ++i) centres_.push_back(centres[pick(std::size(centres))]);
    spread_ = 1u << pick(16);
  }

  void run() {
    for (int i = 0; i < insertions_; ++i) {
      const uint32_t key = someKey();
      keys_.push_back(key);
      const uint32_t value = pick(8) == 0 ? 0 : static_cast<uint32_t>(random_());
      ASSERT_EQ(tableInsert(*table_, key, value, blockSize_),
                reference_->insert(key, value, blockSize_));
      compareAt(key);
      for (int probe = 0; probe < 8; ++probe) compareAt(someKey());
    }
    for (const uint32_t key : keys_) {
      for (const uint32_t offset : {0u, 1u, blockSize_ - 1, blockSize_}) {
        compareAt(key + offset);
        compareAt(key - offset);
      }
    }
    for (const uint32_t key : {0u, 1u, 0xFFFFFFFFu, 0xFFFFFFFEu}) compareAt(key);
  }

 private:
  uint32_t pick(size_t count) { return static_cast<uint32_t>(random_() % count); }

  uint32_t someKey() {
    if (!keys_.empty() && pick(4) == 0) return keys_[pick(keys_.size())];
    if (pick(50) == 0) return static_cast<uint32_t>(random_());
    return centres_[pick(centres_.size())] + pick(spread_);
  }

  void compareAt(uint32_t key) {
    const auto stored = reference_->stored(key);
    uint32_t value = 0;
    const bool found = tableLookup(*table_, key, value);
    ASSERT_EQ(found, stored.has_value() && (key == 0 || *stored != 0))
        << "key " << std::hex << key << " block size " << std::dec << blockSize_;
    if (found) {
      ASSERT_EQ(value, *stored) << "key " << std::hex << key;
    }
    ASSERT_EQ(table_->find(key), stored.value_or(0)) << "key " << std::hex << key;
    ASSERT_EQ(table_->low, reference_->low);
    ASSERT_EQ(table_->high, reference_->high);
    ASSERT_EQ(table_->hasEntries, reference_->hasEntries);
    ASSERT_EQ(table_->coverage.blockCount(), reference_->blockCount());
  }

  std::mt19937 random_;
  uint16_t valueBytes_;
  uint32_t blockSize_;
  int insertions_;
  uint32_t spread_;
  std::vector<uint32_t> centres_;
  std::vector<uint32_t> keys_;
  std::unique_ptr<CodeTable> table_;
  std::unique_ptr<ReferenceTable> reference_;
};

TEST(CodeTableProperty, answers_as_a_list_of_blocks_would) {
  for (uint32_t i = 0; i < 200; ++i) {
    SCOPED_TRACE("KSV_TEST_SEED=" + std::to_string(testSeed()) + ", table " + std::to_string(i));
    RandomTable(testSeed() + i).run();
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(CodeTableProperty, finds_every_one_of_many_keys_on_all_planes) {
  std::mt19937 random(testSeed());
  auto table = tableOf("table.txt");
  table->state = CodeTable::State::kLoaded;
  std::map<uint32_t, uint32_t> expected;
  for (int i = 0; i < 200000; ++i) {
    // Four-byte codes as the Chinese encodings have them, and all of Unicode.
    const auto bits = static_cast<uint32_t>(random());
    const uint32_t key = i % 2 == 0 ? 0x81308130 + (bits & 0x7F0F0F) : bits % 0x110000;
    const uint32_t value = 1 + static_cast<uint32_t>(random() % 0x10FFFF);
    ASSERT_TRUE(tableInsert(*table, key, value, 4096));
    expected[key] = value;
  }
  for (const auto& [key, value] : expected) ASSERT_EQ(table->find(key), value) << std::hex << key;
}

}  // namespace
}  // namespace ksv::test
