// Documents damaged at every byte: nothing crashes or runs on, and what is missing is told.
#include <gtest/gtest.h>

#include "documents.h"

namespace ksv_kit::documents {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::pattern;

std::string sampleOf(uint16_t version) {
  CompoundWriter writer;
  if (version == 4) writer.useVersion4();
  writer.cutoff = 4096;
  writer.addStream(0, u"A", pattern(150, 1));
  const uint32_t storage = writer.addStorage(0, u"b");
  writer.addStream(storage, u"in", pattern(70, 2));
  writer.addStream(0, u"LARGE", pattern(4200, 3));
  return writer.write();
}

// Everything that can be asked of a document, however it is damaged.
void expectHonest(std::string_view bytes) {
  const auto document = openBytes(bytes);
  if (document == nullptr) return;
  for (uint32_t i = 0; i < document->entries().size(); ++i) {
    const Entry& entry = document->entries()[i];
    const std::string path = document->pathOf(i);
    ASSERT_TRUE(document->find(path)) << path;
    const std::string content = contentOf(*document, i);
    ASSERT_LE(content.size(), entry.size());
    ASSERT_LE(content.size(), bytes.size());
    const bool isTold = !document->damages().told().empty();
    ASSERT_TRUE(content.size() == entry.size() || isTold) << path;
  }
  document->check();
  ASSERT_LE(document->damages().told().size(), bytes.size() + 20);
  for (const Damage& damage : document->damages().told())
    ASSERT_LE(damage.offset, bytes.size() * 600);
}

TEST(HostileDocuments, every_truncation_is_read_as_far_as_it_goes) {
  for (const uint16_t version : kVersions) {
    const std::string whole = sampleOf(version);
    for (size_t size = 0; size <= whole.size(); size += version == 3 ? 1 : 13) {
      const std::string cut = whole.substr(0, size);
      SCOPED_TRACE(size);
      expectHonest(cut);
      if (HasFatalFailure()) return;
      if (size < 8 || size == whole.size()) continue;
      const auto document = openBytes(cut);
      document->check();
      ASSERT_FALSE(document->damages().told().empty()) << size;
    }
  }
}

TEST(HostileDocuments, every_byte_may_have_any_value) {
  for (const uint16_t version : kVersions) {
    const std::string whole = sampleOf(version);
    for (size_t place = 8; place < whole.size(); place += version == 3 ? 1 : 7) {
      for (const int change : {0x01, 0x80, 0xFF, 0x06}) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ change);
        SCOPED_TRACE(place);
        expectHonest(damaged);
        if (HasFatalFailure()) return;
      }
    }
  }
}

// Thousands of streams that claim the same long chain: each is followed to where it is known.
TEST(HostileDocuments, a_chain_that_all_streams_claim_is_checked_once) {
  CompoundWriter writer;
  const uint32_t large = writer.addStream(0, u"large", pattern(4'000'000, 1));
  std::vector<uint32_t> others;
  for (int i = 0; i < 20000; ++i) {
    std::u16string name;
    for (const char c : std::to_string(100000 + i)) name.push_back(static_cast<char16_t>(c));
    others.push_back(writer.addStream(0, name, ""));
  }
  std::string bytes = writer.write();
  for (const uint32_t other : others)
    for (const size_t field : {116, 120})
      ksv::test::putDword(bytes, writer.entryOffset(other) + field,
                          ksv::test::getDword(bytes, writer.entryOffset(large) + field));
  const auto document = openBytes(bytes);
  document->check();
  EXPECT_EQ(document->damages().told().size(), 1u);
  EXPECT_EQ(document->damages().told()[0].kind, KSV_DAMAGE_SHARED);
}

// A directory of which the file has a sector, and its table four bytes a sector.
TEST(HostileDocuments, claims_of_a_directory_cost_what_the_file_has) {
  CompoundWriter writer;
  writer.addStream(0, u"a", "a");
  std::string bytes = writer.write();
  for (uint32_t sector = 8; sector < 127; ++sector)
    ksv::test::putDword(bytes, writer.fatOffset(sector), sector + 1);
  ksv::test::putDword(bytes, writer.fatOffset(writer.directorySectors()[0]), 8);
  const auto document = openBytes(bytes);
  EXPECT_EQ(document->entries().size(), 2u);
  EXPECT_FALSE(document->damages().told().empty());
}

}  // namespace
}  // namespace ksv_kit::documents
