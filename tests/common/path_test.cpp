#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "ksv_file.h"
#include "tests/common/path_parts.h"

using ksv::test::ansiLetter;
using ksv::test::ansiWord;
using ksv::test::fromAnsi;
using ksv::test::kSeparator;
using ksv::test::Parts;
using ksv::test::split;
using ksv::test::toAnsi;

namespace {

constexpr int kRefused = 3000;

const char* orNull(const std::optional<std::string>& text) {
  return text ? text->c_str() : nullptr;
}

// Joins with both functions, which agree on all that fits.
std::string join(const std::optional<std::string>& drive,
                 const std::optional<std::string>& directory,
                 const std::optional<std::string>& base,
                 const std::optional<std::string>& extension) {
  char path[780] = "before";
  EXPECT_EQ(KSV_makepath(path, orNull(drive), orNull(directory), orNull(base), orNull(extension)),
            0);
  std::vector<std::optional<std::string>> ansi;
  for (const auto& part : {drive, directory, base, extension}) {
    ansi.push_back(part ? toAnsi(*part) : std::nullopt);
  }
  char pathA[780] = "before";
  KSV_makepathA(pathA, orNull(ansi[0]), orNull(ansi[1]), orNull(ansi[2]), orNull(ansi[3]));
  EXPECT_EQ(path, fromAnsi(pathA));
  return path;
}

}  // namespace

TEST(SplitPath, separates_directory_base_and_extension) {
  EXPECT_EQ(split("/a/b/c.txt"), (Parts{"/a/b/", "c", ".txt"}));
  EXPECT_EQ(split("c.txt"), (Parts{"", "c", ".txt"}));
  EXPECT_EQ(split("a/b/"), (Parts{"a/b/", "", ""}));
  EXPECT_EQ(split("/"), (Parts{"/", "", ""}));
  const std::string japanese = ansiWord() + "/" + ansiLetter() + "." + ansiWord();
  EXPECT_EQ(split(japanese.c_str()), (Parts{ansiWord() + "/", ansiLetter(), "." + ansiWord()}));
}

TEST(SplitPath, takes_both_separators) {
  EXPECT_EQ(split("a\\b/c\\d.e"), (Parts{"a\\b/c\\", "d", ".e"}));
  EXPECT_EQ(split("a/b\\c"), (Parts{"a/b\\", "c", ""}));
}

TEST(SplitPath, begins_the_extension_at_the_last_dot_of_the_last_component) {
  EXPECT_EQ(split("a.tar.gz"), (Parts{"", "a.tar", ".gz"}));
  EXPECT_EQ(split("a.b/c"), (Parts{"a.b/", "c", ""}));
  EXPECT_EQ(split("d/.profile"), (Parts{"d/", "", ".profile"}));
  EXPECT_EQ(split("a."), (Parts{"", "a", "."}));
  EXPECT_EQ(split(".."), (Parts{"", ".", "."}));
}

TEST(SplitPath, gives_empty_parts_for_null_and_empty) {
  EXPECT_EQ(split(nullptr), Parts());
  EXPECT_EQ(split(""), Parts());
}

TEST(SplitPath, leaves_out_parts_without_a_destination) {
  char base[768];
  EXPECT_EQ(KSV_splitpath("a/b.c", nullptr, nullptr, base, nullptr), 0);
  EXPECT_STREQ(base, "b");
  EXPECT_EQ(KSV_splitpath("a/b.c", nullptr, nullptr, nullptr, nullptr), 0);
  KSV_splitpathA("a/b.c", nullptr, nullptr, nullptr, nullptr);
}

TEST(SplitPath, refuses_ill_formed_and_long_paths_and_empties_the_parts) {
  for (const std::string& path : {std::string("a/\xFF.c"), std::string(780, 'a')}) {
    char drive[3] = "x", directory[768] = "x", base[768] = "x", extension[768] = "x";
    EXPECT_EQ(KSV_splitpath(path.c_str(), drive, directory, base, extension), kRefused);
    EXPECT_STREQ(drive, "");
    EXPECT_STREQ(directory, "");
    EXPECT_STREQ(base, "");
    EXPECT_STREQ(extension, "");
  }
}

TEST(SplitPath, counts_the_terminator_in_the_768_bytes_of_a_part) {
  char directory[768], base[768] = "x", extension[768];
  const std::string fits = "d/" + std::string(767, 'b') + ".e";
  EXPECT_EQ(KSV_splitpath(fits.c_str(), nullptr, directory, base, extension), 0);
  EXPECT_EQ(base, std::string(767, 'b'));
  const std::string tooLong = "d/" + std::string(768, 'b') + ".e";
  EXPECT_EQ(KSV_splitpath(tooLong.c_str(), nullptr, directory, base, extension), kRefused);
  EXPECT_STREQ(base, "");
  EXPECT_STREQ(directory, "d/");
  EXPECT_STREQ(extension, ".e");
  // 256 of these are 768 bytes but far fewer than 780 units.
  std::string japanese;
  for (int i = 0; i < 256; ++i) japanese += "あ";
  EXPECT_EQ(KSV_splitpath(japanese.c_str(), nullptr, directory, base, extension), kRefused);
  EXPECT_EQ(KSV_splitpath(japanese.c_str(), nullptr, directory, nullptr, extension), 0);
}

TEST(SplitPath, fills_the_other_parts_when_one_does_not_fit) {
  char drive[3] = "x", directory[768] = "x", base[768] = "x", extension[768] = "x";
  const std::string fits = "d/b." + std::string(766, 'e');
  EXPECT_EQ(KSV_splitpath(fits.c_str(), drive, directory, base, extension), 0);
  EXPECT_EQ(extension, "." + std::string(766, 'e'));
  const std::string longExtension = "d/b." + std::string(767, 'e');
  std::strcpy(drive, "x");
  EXPECT_EQ(KSV_splitpath(longExtension.c_str(), drive, directory, base, extension), kRefused);
  EXPECT_STREQ(drive, "");
  EXPECT_STREQ(directory, "d/");
  EXPECT_STREQ(base, "b");
  EXPECT_STREQ(extension, "");
  const std::string longDirectory = std::string(767, 'd') + "/b.e";
  EXPECT_EQ(KSV_splitpath(longDirectory.c_str(), drive, directory, base, extension), kRefused);
  EXPECT_STREQ(directory, "");
  EXPECT_STREQ(base, "b");
  EXPECT_STREQ(extension, ".e");
}

namespace {

using SplitFunction = void (*)(const char*, char*, char*, char*, char*);

void splitUtf8(const char* path, char* drive, char* directory, char* base, char* extension) {
  EXPECT_EQ(KSV_splitpath(path, drive, directory, base, extension), 0);
}

// The parts, drive first, of a path that stands at the beginning of a buffer, each written
// to its own offset in it. At kElsewhere a part has a buffer of its own.
constexpr size_t kElsewhere = static_cast<size_t>(-1);
constexpr size_t kParts = 4;

std::vector<std::string> splitInPlace(SplitFunction splitPath, const std::string& path,
                                      const size_t (&offsets)[kParts]) {
  char buffer[3000] = {};
  char own[kParts][KSV_PART_SIZE];
  char* parts[kParts];
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  for (size_t i = 0; i < kParts; ++i)
    parts[i] = offsets[i] == kElsewhere ? own[i] : buffer + offsets[i];
  splitPath(buffer, parts[0], parts[1], parts[2], parts[3]);
  return {parts, parts + kParts};
}

}  // namespace

TEST(SplitPath, may_write_its_parts_over_the_path_in_any_combination) {
  const std::string path = "dir/sub/base.ext";
  const std::vector<std::string> expected = {"", "dir/sub/", "base", ".ext"};
  // No two of them lie over each other: 9 bytes for the directory, 5 for the others.
  size_t places[kParts] = {0, 9, 18, 27};
  do {
    for (unsigned chosen = 0; chosen < 1u << kParts; ++chosen) {
      size_t offsets[kParts];
      for (size_t i = 0; i < kParts; ++i)
        offsets[i] = (chosen >> i & 1) != 0 ? places[i] : kElsewhere;
      EXPECT_EQ(splitInPlace(splitUtf8, path, offsets), expected) << chosen;
      EXPECT_EQ(splitInPlace(KSV_splitpathA, path, offsets), expected) << chosen;
    }
  } while (std::next_permutation(places, places + kParts));
}

TEST(SplitPath, writes_the_directory_over_the_path_it_is_of) {
  char path[780] = "/a/b/c.txt";
  EXPECT_EQ(KSV_splitpath(path, nullptr, path, nullptr, nullptr), 0);
  EXPECT_STREQ(path, "/a/b/");
  std::strcpy(path, "/a/b/c.txt");
  EXPECT_EQ(KSV_splitpath(path, nullptr, nullptr, path, nullptr), 0);
  EXPECT_STREQ(path, "c");
}

TEST(SplitPath, splits_a_path_of_three_long_parts_over_itself) {
  const auto repeated = [](const char* character) {
    std::string text;
    for (int i = 0; i < 255; ++i) text += character;
    return text;
  };
  const std::vector<std::string> expected = {"", repeated("あ") + "/", repeated("い"),
                                             "." + repeated("う")};
  const std::string path = expected[1] + expected[2] + expected[3];
  EXPECT_EQ(splitInPlace(splitUtf8, path, {kElsewhere, 768, 1536, 0}), expected);
  EXPECT_EQ(splitInPlace(splitUtf8, path, {2304, 1536, 0, 768}), expected);
}

TEST(SplitPath, empties_all_parts_that_lie_over_a_path_it_refuses) {
  char path[780] = "a/b\xFF";
  char directory[768] = "x";
  EXPECT_EQ(KSV_splitpath(path, nullptr, directory, path, nullptr), kRefused);
  EXPECT_STREQ(path, "");
  EXPECT_STREQ(directory, "");
}

TEST(MakePath, adds_what_is_missing) {
  EXPECT_EQ(join({}, "a", "b", "c"), "a" + kSeparator + "b.c");
  EXPECT_EQ(join("", "a/", "b", ".c"), "a/b.c");
  EXPECT_EQ(join("", "a\\", "b", ".c"), "a\\b.c");
  EXPECT_EQ(join("", ansiWord(), ansiLetter(), "x"), ansiWord() + kSeparator + ansiLetter() + ".x");
}

TEST(MakePath, leaves_out_what_is_null_or_empty) {
  EXPECT_EQ(join({}, {}, {}, {}), "");
  EXPECT_EQ(join("", "", "b", ""), "b");
  EXPECT_EQ(join("", "", "", "c"), ".c");
  EXPECT_EQ(join("", "a", "", ""), "a" + kSeparator);
}

TEST(MakePath, writes_the_first_letter_of_a_drive_and_a_colon) {
  EXPECT_EQ(join("C:", "\\a\\", "b", ""), "C:\\a\\b");
  EXPECT_EQ(join("Drive", "", "b", ""), "D:b");
  EXPECT_EQ(join(ansiLetter() + "x", "", "b", ""), ansiLetter() + ":b");
}

TEST(MakePath, counts_the_terminator_in_the_780_bytes) {
  char path[780];
  EXPECT_EQ(KSV_makepath(path, "", "d", std::string(776, 'b').c_str(), ""), 0);
  EXPECT_EQ(std::strlen(path), 778u);
  EXPECT_EQ(KSV_makepath(path, "", "d", std::string(777, 'b').c_str(), ""), 0);
  EXPECT_EQ(std::strlen(path), 779u);
  EXPECT_EQ(KSV_makepath(path, "", "d", std::string(778, 'b').c_str(), ""), kRefused);
  EXPECT_STREQ(path, "");
}

TEST(MakePath, refuses_ill_formed_parts) {
  for (int bad = 0; bad < 4; ++bad) {
    const char* parts[4] = {"", "a", "b", "c"};
    parts[bad] = "\xE3\x81";
    char path[780] = "before";
    EXPECT_EQ(KSV_makepath(path, parts[0], parts[1], parts[2], parts[3]), kRefused);
    EXPECT_STREQ(path, "");
  }
}

TEST(MakePath, may_write_over_one_of_its_parts) {
  char path[780] = "dir";
  EXPECT_EQ(KSV_makepath(path, nullptr, path, "b", "c"), 0);
  EXPECT_EQ(path, "dir" + kSeparator + "b.c");
  std::strcpy(path, "base");
  KSV_makepathA(path, nullptr, "d", path, "c");
  EXPECT_EQ(path, "d" + kSeparator + "base.c");
}

TEST(MakePath, may_write_over_all_of_its_parts_at_once) {
  char path[780] = "x";
  EXPECT_EQ(KSV_makepath(path, nullptr, path, path, path), 0);
  EXPECT_EQ(path, "x" + kSeparator + "x.x");
  char parts[780] = "d\0b\0e";
  EXPECT_EQ(KSV_makepath(parts, nullptr, parts, parts + 2, parts + 4), 0);
  EXPECT_EQ(parts, "d" + kSeparator + "b.e");
  char partsA[780] = "d\0b\0e";
  KSV_makepathA(partsA, nullptr, partsA, partsA + 2, partsA + 4);
  EXPECT_EQ(partsA, "d" + kSeparator + "b.e");
}

TEST(MakePath, does_nothing_without_a_destination) {
  EXPECT_EQ(KSV_makepath(nullptr, "", "a", "b", "c"), 0);
  KSV_makepathA(nullptr, "", "a", "b", "c");
}

TEST(PathPartsA, have_no_limit) {
  const std::string longPart(5000, 'p');
  std::vector<char> directory(6000), base(6000), extension(6000), path(16000);
  char drive[3];
  const std::string whole = longPart + "/" + longPart + "." + longPart;
  KSV_splitpathA(whole.c_str(), drive, directory.data(), base.data(), extension.data());
  EXPECT_EQ(directory.data(), longPart + "/");
  EXPECT_EQ(base.data(), longPart);
  EXPECT_EQ(extension.data(), "." + longPart);
  KSV_makepathA(path.data(), drive, directory.data(), base.data(), extension.data());
  EXPECT_EQ(path.data(), whole);
}

TEST(MakePath, undoes_what_splitting_did) {
  const std::string japanese = ansiWord() + "/" + ansiLetter() + ".x";
  for (const char* path :
       {"/a/b.c", "a", "a/", ".x", japanese.c_str(), "/", "a\\b.c.d", "..", "a."}) {
    const Parts parts = split(path);
    EXPECT_EQ(join("", parts.directory, parts.base, parts.extension), path);
  }
}

TEST(PathBreak, is_the_last_separator) {
  EXPECT_EQ(KSV_getPathBreak("a\\b\\c"), 3);
  EXPECT_EQ(KSV_getPathBreak("a/b\\c/d"), 5);
  EXPECT_EQ(KSV_getPathBreak("a/"), 1);
  EXPECT_EQ(KSV_getPathBreak("/usr"), 0);
  EXPECT_EQ(KSV_getPathBreak("name"), 0);
  EXPECT_EQ(KSV_getPathBreak(""), 0);
  EXPECT_EQ(KSV_getPathBreak(nullptr), 0);
}

TEST(PathBreak, takes_no_shift_jis_trail_byte_for_a_separator) {
  // 95 5C and 83 5C are one character each.
  EXPECT_EQ(KSV_getPathBreak("a\\\x95\x5C"), 1);
  EXPECT_EQ(KSV_getPathBreak("\x83\x5C\\x"), 2);
  EXPECT_EQ(KSV_getPathBreak("\x83\x5C/\x95\x5C.txt"), 2);
  EXPECT_EQ(KSV_getPathBreak("\xFC\x5C"), 0);
}

TEST(PathBreak, takes_81_to_9F_and_E0_to_FC_for_lead_bytes) {
  for (int byte = 0x80; byte <= 0xFF; ++byte) {
    const bool leads = (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    const std::string path = static_cast<char>(byte) + std::string("\\x");
    EXPECT_EQ(KSV_getPathBreak(path.c_str()), leads ? 0 : 1) << std::hex << byte;
  }
}

TEST(PathBreak, takes_half_width_katakana_as_single_bytes) {
  EXPECT_EQ(KSV_getPathBreak("\xB1\\b"), 1);
  EXPECT_EQ(KSV_getPathBreak("\xDF\\b"), 1);
}

TEST(PathBreak, does_not_run_past_a_lead_byte_at_the_end) {
  EXPECT_EQ(KSV_getPathBreak("a/\x83"), 1);
  EXPECT_EQ(KSV_getPathBreak("\x83"), 0);
}

TEST(PathBreak, scans_well_formed_utf8_as_utf8) {
  // As Shift_JIS the last byte of the character would lead, and take the '\'.
  EXPECT_EQ(KSV_getPathBreak("\xE3\x82\xE3\x5C"), 0);
  EXPECT_EQ(KSV_getPathBreak("\xE8\xA1\xA8\\b"), 3);
  EXPECT_EQ(KSV_getPathBreak("\xE3\x81\x82\\b"), 3);
}
