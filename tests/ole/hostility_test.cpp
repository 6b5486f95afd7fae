// Small files that claim to be large: whatever they claim, they cost what they are.
#include <chrono>

#include "tests/ole/ole_file.h"

namespace ksv::test {
namespace {

using std::chrono::steady_clock;

class Hostility : public OleTest {
 protected:
  // Generous for a machine that is busy, and out of reach of anything that grows with a
  // claim of 2^31.
  static constexpr auto kSoon = std::chrono::seconds(2);

  template <class Action>
  static void expectSoon(Action action) {
    const auto start = steady_clock::now();
    action();
    EXPECT_LT(steady_clock::now() - start, kSoon);
  }
};

TEST_F(Hostility, of_claims_in_the_header_costs_nothing) {
  CompoundWriter writer;
  writer.addStream(0, u"s", "abc");
  const std::string sound = writer.write();
  expectSoon([&] {
    for (const size_t field : {44, 48, 56, 60, 64, 68, 72, 76}) {
      for (const uint32_t value : {0xFFFFFFFFu, 0xFFFFFFFEu, 0x7FFFFFFFu, 0x3FFFFFu, 0x10000u}) {
        std::string bytes = sound;
        putDword(bytes, field, value);
        const OleHandle file = open(bytes);
        if (file) contentOf(file.get(), "s");
      }
    }
  });
}

// The table claims as many sectors as the file has bytes, all of them one sector, in a
// list that leads back to itself.
TEST_F(Hostility, of_a_list_that_leads_to_itself_costs_what_the_file_is) {
  CompoundWriter writer;
  writer.addStream(0, u"s", pattern(2'000'000));
  std::string bytes = writer.write();
  const uint32_t fat = writer.fatSectors().front();
  const auto list = static_cast<uint32_t>(bytes.size() / 512 - 1);
  bytes.resize(bytes.size() + 512);
  for (size_t i = 0; i < 127; ++i) putDword(bytes, bytes.size() - 512 + 4 * i, fat);
  putDword(bytes, bytes.size() - 4, list);
  putDword(bytes, 44, static_cast<uint32_t>(bytes.size()));
  putDword(bytes, 68, list);
  putDword(bytes, 72, 1);
  expectSoon([&] { open(bytes); });
}

// Chains that loop through many sectors, of streams and of the mini stream.
TEST_F(Hostility, of_a_long_loop_costs_what_the_chain_is) {
  CompoundWriter writer;
  writer.addStream(0, u"s", pattern(4'000'000));
  writer.addStream(0, u"mini", pattern(4000));
  std::string bytes = writer.write();
  putDword(bytes, writer.fatOffset(7812), 0);
  expectSoon([&] {
    const OleHandle file = open(bytes);
    ASSERT_NE(file, nullptr);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(contentOf(file.get(), "s"), "none");
  });
}

// 2^n ways lead through n entries whose siblings are both the next one.
TEST_F(Hostility, of_siblings_that_meet_again_costs_what_the_entries_are) {
  CompoundWriter writer;
  writer.shape = TreeShape::kLeftChain;
  for (char16_t i = 0; i < 250; ++i) {
    writer.addStream(0, std::u16string{u'n', static_cast<char16_t>(u'0' + i)}, "x");
  }
  std::string bytes = writer.write();
  for (uint32_t i = 1; i < 250; ++i) {
    putDword(bytes, writer.entryOffset(i) + 72, writer.entryId(i + 1));
  }
  expectSoon([&] {
    const OleHandle file = open(bytes);
    EXPECT_EQ(contentOf(file.get(), "missing"), "none");
    EXPECT_EQ(openStorage(file.get(), "missing"), nullptr);
  });
}

// Mini sectors are found without following the mini stream from its start each time.
TEST_F(Hostility, of_many_mini_streams_costs_what_they_are) {
  CompoundWriter writer;
  writer.cutoff = 0x7FFFFFFF;
  writer.addStream(0, u"s", pattern(8'000'000));
  const std::string bytes = writer.write();
  expectSoon([&] {
    const OleHandle file = open(bytes);
    EXPECT_TRUE(contentOf(file.get(), "s") == pattern(8'000'000));
  });
}

// Sectors of the directory that lie upon each other would make more entries than the file
// has room for.
TEST_F(Hostility, of_a_directory_larger_than_the_file_is_refused) {
  std::string bytes(512 + 3 * 4096, '\0');
  bytes.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
  putWord(bytes, 30, 12);
  putWord(bytes, 32, 6);
  putDword(bytes, 44, 109);
  putDword(bytes, 48, 1);
  for (size_t i = 0; i < 109; ++i) putDword(bytes, 76 + 4 * i, 0);
  // The place of sector n + 2^20 is that of sector n, its entry in the table another one.
  for (uint32_t i = 1; i < 100; ++i) putDword(bytes, 512 + 4 * i, 0x100000 * (i + 1) + i + 1);
  putDword(bytes, 512 + 4 * 100, kEnd);
  EXPECT_FALSE(opens(bytes));
}

}  // namespace
}  // namespace ksv::test
