#include <gtest/gtest.h>

#include <string>

#include "kit/convert/sound_text.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetKind;
using ksv_kit::SoundText;

const uint8_t* bytesOf(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

// Whether a text of ISO-2022-JP is sound of which a run has read the bytes from begin to end.
bool isSound(const std::string& text, size_t begin, size_t end, bool beginsInPairs,
             bool endsInPairs) {
  CharsetChoice source;
  source.kind = CharsetKind::kIso2022;
  SoundText sound(source, true, bytesOf(text), text.size());
  sound.passed(sound, {bytesOf(text) + begin, bytesOf(text) + end, beginsInPairs, endsInPairs});
  return sound.isSound();
}

TEST(SoundParts, what_stands_around_them_is_looked_at) {
  EXPECT_TRUE(
      isSound("ab\x80\xFF"
              "cd",
              2, 4, false, false));
  EXPECT_FALSE(
      isSound("\x80"
              "b\x80\xFF"
              "cd",
              2, 4, false, false));
  EXPECT_FALSE(
      isSound("ab\x80\xFF"
              "c\x80",
              2, 4, false, false));
}

TEST(SoundParts, a_part_has_to_begin_in_the_set_that_its_front_leaves) {
  EXPECT_TRUE(isSound("\x1B$B0!0\"0#\x1B(Ba", 5, 9, true, true));
  EXPECT_FALSE(isSound("\x1B$B0!0\"0#\x1B(Ba", 5, 9, false, true));
  EXPECT_FALSE(isSound("ab0!cd", 2, 4, true, true));
}

TEST(SoundParts, what_follows_goes_on_in_the_set_that_a_part_ends_in) {
  EXPECT_TRUE(isSound("ab\x1B$B0!0!", 2, 5, false, true));
  EXPECT_FALSE(isSound("ab\x1B$B0!0", 2, 5, false, true));
  EXPECT_FALSE(isSound("ab\x1B$B 0!0", 2, 5, false, true));
}

TEST(SoundParts, behind_one_no_escape_sequence_is_open) {
  ksv_kit::Iso2022Scanner scanner;
  scanner.scan(bytesOf("a\x1B$B"), 4);
  EXPECT_EQ(scanner.escapesAtEnd(), 3u);
  scanner.goBehind(true);
  EXPECT_EQ(scanner.escapesAtEnd(), 0u);
}

TEST(SoundParts, one_that_was_read_before_changes_nothing) {
  const std::string text = "abcdef\x80";
  CharsetChoice source;
  source.kind = CharsetKind::kIso2022;
  SoundText sound(source, true, bytesOf(text), text.size());
  sound.passed(sound, {bytesOf(text), bytesOf(text) + 6, false, false});
  sound.passed(sound, {bytesOf(text) + 2, bytesOf(text) + 4, false, false});
  EXPECT_FALSE(sound.isSound());
}

TEST(SoundParts, one_of_another_text_is_not_believed) {
  const std::string texts = "abcdef\x80";
  CharsetChoice source;
  source.kind = CharsetKind::kIso2022;
  SoundText sound(source, true, bytesOf(texts), 4);
  sound.passed(sound, {bytesOf(texts), bytesOf(texts) + 6, false, false});
  EXPECT_FALSE(sound.isSound());
}

}  // namespace
}  // namespace ksv_cli_tests
