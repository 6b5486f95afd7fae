// Damaged files, and what the slow reader makes of them.
#include <algorithm>

#include "tests/ole/ole_file.h"
#include "tests/ole/reference_reader.h"

namespace ksv::test {
namespace {

class Mutation : public OleTest {
 protected:
  // Everything that can be asked of both readers about a file.
  void compare(const std::string& bytes, uint32_t seed) {
    const OleHandle file = open(bytes);
    const auto reference = ReferenceFile::open(bytes);
    ASSERT_EQ(file != nullptr, reference != nullptr);
    if (!file) return;
    ++opened_;
    std::string classId(16, '\0');
    EXPECT_EQ(KSV_2OLEGetClassID(file.get(), reinterpret_cast<uint8_t*>(classId.data())), 1);
    EXPECT_EQ(classId, reference->slots()[reference->root()].classId);
    Random random(seed);
    compareChildren(file.get(), *reference, reference->root(), random);
    const StorageHandle storage = openStorage(file.get(), "storage");
    const auto slot = reference->findStorage(reference->root(), "storage");
    ASSERT_EQ(storage != nullptr, slot.has_value());
    if (slot) compareChildren(storage.get(), *reference, *slot, random);
  }

  void compareChildren(Ksv2Ole* owner, const ReferenceFile& reference, uint32_t parent,
                       Random& random) {
    const std::string names[] = {"small",  "LARGE",    "empty", "storage", "inner",
                                 "cutoff", "\x95\x5C", "",      "none"};
    for (const std::string& name : names) {
      SCOPED_TRACE(name);
      const StreamHandle stream = openStream(owner, name);
      const auto slot = reference.findStream(parent, name);
      const auto expected = slot ? ReferenceStream::open(reference, *slot) : nullptr;
      ASSERT_EQ(stream != nullptr, expected != nullptr);
      const StorageHandle storage = openStorage(owner, name);
      ASSERT_EQ(storage != nullptr, reference.findStorage(parent, name).has_value());
      if (stream) compareStream(stream.get(), *expected, random);
    }
  }

  void compareStream(Ksv2OleStream* stream, ReferenceStream& expected, Random& random) {
    ++streams_;
    ASSERT_EQ(read(stream, 20000), expected.read(20000));
    for (int i = 0; i < 20; ++i) {
      const auto origin = static_cast<uint16_t>(random() % 4);
      const auto offset = static_cast<uint32_t>(static_cast<int32_t>(random() % 12000) - 6000);
      ASSERT_EQ(KSV_2OLEseekStream(stream, offset, origin), expected.seek(offset, origin));
      const uint32_t count = random() % 1500;
      ASSERT_EQ(read(stream, count), expected.read(count));
    }
  }

  static CompoundWriter sample(uint16_t sectorShift, TreeShape shape) {
    CompoundWriter writer;
    writer.sectorShift = sectorShift;
    writer.shape = shape;
    writer.addStream(0, u"small", pattern(300, 1));
    writer.addStream(0, u"large", pattern(6000, 2));
    writer.addStream(0, u"empty", "");
    writer.addStream(0, u"cutoff", pattern(4096, 3));
    const uint32_t storage = writer.addStorage(0, u"storage");
    writer.node(storage).classId = "ABCDEFGHIJKLMNOP";
    writer.addStream(storage, u"inner", pattern(1000, 4));
    writer.addStream(storage, u"表", pattern(4500, 5));
    return writer;
  }

  int opened_ = 0;
  int streams_ = 0;
};

// Values that mean something in a chain, a tree or a size, and some that do not.
uint32_t interestingValue(Random& random) {
  constexpr uint32_t kValues[] = {0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFC, 0xCFFFFFFE,
                                  0x80000000, 0x7FFFFFFF, 0x800000,   0x400000,   4095,
                                  4096,       0x10000,    128,        127};
  const uint32_t choice = random() % 4;
  if (choice == 0) return kValues[random() % std::size(kValues)];
  if (choice == 1) return random() % 40;
  if (choice == 2) return 0x800000 + random() % 40;
  return static_cast<uint32_t>(random()) * 2 + random() % 2;
}

TEST_F(Mutation, of_single_fields_is_read_as_the_reference_reads_it) {
  const uint32_t firstSeed = testSeed();
  const std::string samples[] = {
      sample(9, TreeShape::kBalanced).write(), sample(9, TreeShape::kRightChain).write(),
      sample(10, TreeShape::kLeftChain).write(), sample(12, TreeShape::kBalanced).write()};
  CompoundWriter layout = sample(9, TreeShape::kBalanced);
  layout.write();
  for (uint32_t seed = firstSeed; seed < firstSeed + 3000; ++seed) {
    SCOPED_TRACE("KSV_TEST_SEED=" + std::to_string(seed));
    Random random(seed);
    std::string bytes = samples[random() % std::size(samples)];
    const uint32_t mutations = 1 + random() % 3;
    for (uint32_t i = 0; i < mutations; ++i) {
      // Half of them hit the header and the tables at the end, where the fields are.
      const size_t tables = 9 * 512;
      const size_t zones[] = {128, bytes.size(), tables, tables};
      const size_t zone = zones[random() % 4];
      const size_t start = zone == tables ? bytes.size() - std::min(bytes.size(), tables) : 0;
      const size_t at = std::min(start + random() % zone / 4 * 4, bytes.size() - 4);
      putDword(bytes, at, interestingValue(random));
    }
    if (random() % 10 == 0) bytes.resize(random() % bytes.size());
    compare(bytes, seed);
    if (HasFatalFailure()) return;
  }
  // Enough is left for the comparison to mean something.
  EXPECT_GT(opened_, 1000);
  EXPECT_GT(streams_, 4000);
}

TEST_F(Mutation, of_every_field_of_the_header_is_read_as_the_reference_reads_it) {
  const std::string sampleBytes = sample(9, TreeShape::kBalanced).write();
  Random random(1);
  for (size_t at = 24; at < 84; at += 2) {
    for (const uint32_t value : {0u, 1u, 2u, 3u, 7u, 8u, 9u, 10u, 12u, 14u, 18u, 31u, 0xFFFFu}) {
      SCOPED_TRACE(testing::Message() << at << " is " << value);
      std::string bytes = sampleBytes;
      putWord(bytes, at, value);
      compare(bytes, 1);
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace ksv::test
