// Charsets found by name, against the numbers of the names, which decide.
#include "cconv/rules/charset_names.h"

#include <cctype>
#include <random>
#include <string>
#include <vector>

#include "tests/rules/support.h"

namespace ksv::test {
namespace {

void add(RuleLists& lists, const std::string& name) {
  auto charset = std::make_unique<LoadedCharset>();
  charset->name = name;
  charset->id = nameToId(charset->name.data());
  ASSERT_TRUE(lists.addCharset(std::move(charset)));
}

// The first charset with the number of the name.
const CharsetDef* firstWithNumberOf(RuleLists& lists, std::string name) {
  const CharsetId id = nameToId(name.data());
  for (const auto& charset : lists.charsets()) {
    if (charset->id == id) return charset.get();
  }
  return nullptr;
}

std::string upper(std::string name) {
  for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return name;
}

TEST(CharsetsByName, are_found_at_every_length_in_either_case) {
  RuleLists lists;
  const std::string letters = "abcdefghijklmnopqrstuvwxyz";
  for (size_t length = 0; length <= 26; ++length) add(lists, letters.substr(0, length));
  for (size_t length = 0; length <= 26; ++length) {
    const std::string name = letters.substr(0, length);
    ASSERT_NE(lists.findCharset(name), nullptr) << name;
    EXPECT_EQ(lists.findCharset(name)->name, name);
    EXPECT_EQ(lists.findCharset(upper(name))->name, name);
    EXPECT_EQ(lists.findCharset(name + "?"), firstWithNumberOf(lists, name + "?")) << name;
  }
}

TEST(CharsetsByName, differ_in_any_one_byte) {
  for (size_t length = 1; length <= 20; ++length) {
    const std::string name(length, 'n');
    RuleLists lists;
    add(lists, name);
    for (size_t at = 0; at < length; ++at) {
      for (int byte = 1; byte < 256; ++byte) {
        std::string other = name;
        other[at] = static_cast<char>(byte);
        EXPECT_EQ(lists.findCharset(other) != nullptr, byte == 'n' || byte == 'N')
            << length << ", byte " << at << " is " << byte;
      }
    }
  }
}

TEST(CharsetsByName, have_no_other_letters_lowered_than_A_to_Z) {
  for (int byte = 1; byte < 256; ++byte) {
    const bool isUpper = byte >= 'A' && byte <= 'Z';
    for (const size_t length : {size_t{1}, size_t{2}, size_t{5}, size_t{8}, size_t{13}}) {
      RuleLists lists;
      add(lists, std::string(length, static_cast<char>(byte)));
      const std::string lower(length, static_cast<char>(byte | 0x20));
      const bool same = isUpper || (byte & 0x20) != 0;
      EXPECT_EQ(lists.findCharset(lower) != nullptr, same) << byte << " at length " << length;
    }
  }
}

TEST(CharsetsByName, that_share_a_number_are_the_first_of_them) {
  RuleLists lists;
  EXPECT_EQ(lists.findCharset("ab"), nullptr);
  add(lists, "ab");
  EXPECT_EQ(lists.findCharset("ca")->name, "ab");  // 99 + 97 * 2 = 97 + 98 * 2
  add(lists, "ca");
  EXPECT_EQ(lists.findCharset("ca")->name, "ab");
  EXPECT_EQ(lists.findCharset("CA")->name, "ab");
}

TEST(CharsetsByName, are_those_of_their_numbers_however_many_there_are) {
  std::mt19937 random(20261121);
  const auto randomName = [&] {
    std::string name(random() % 21, '\0');
    for (char& c : name) c = "abAB-_19z\xE3"[random() % 10];
    return name;
  };
  RuleLists lists;
  std::vector<std::string> names;
  for (int i = 0; i < 600; ++i) {
    names.push_back(randomName());
    add(lists, names.back());
    const std::string asked = i % 2 == 0 ? randomName() : upper(names[random() % names.size()]);
    ASSERT_EQ(lists.findCharset(asked), firstWithNumberOf(lists, asked)) << asked;
  }
  for (const std::string& name : names) {
    ASSERT_EQ(lists.findCharset(name), firstWithNumberOf(lists, name)) << name;
  }
}

TEST(CharsetsByName, of_259_bytes_are_the_longest) {
  RuleLists lists;
  add(lists, std::string(259, 'n'));
  EXPECT_NE(lists.findCharset(std::string(259, 'N')), nullptr);
  EXPECT_EQ(lists.findCharset(std::string(260, 'n')), nullptr);
  EXPECT_EQ(lists.findCharset(std::string(100000, 'n')), nullptr);
}

// The names by themselves: what they do not find, the numbers would.
TEST(CharsetsByShortName, are_found_whatever_stands_behind_the_name) {
  for (size_t length = 0; length <= 16; ++length) {
    const std::string name = std::string("abcdefghijklmnop").substr(0, length);
    LoadedCharset charset;
    CharsetNames names;
    EXPECT_EQ(names.find(name), nullptr);
    names.enter(std::string_view(name + "followed by this").substr(0, length), &charset);
    const std::string again = upper(name) + "and not by that, which is longer";
    EXPECT_EQ(names.find(std::string_view(again).substr(0, length)), &charset) << length;
    EXPECT_EQ(names.find(name + "q"), nullptr) << length;
  }
}

TEST(CharsetsByShortName, are_those_of_16_bytes_and_the_first_of_each) {
  LoadedCharset first, second;
  CharsetNames names;
  names.enter(std::string(17, 'n'), &first);
  EXPECT_EQ(names.find(std::string(17, 'n')), nullptr);
  names.enter(std::string(16, 'n'), &first);
  names.enter(std::string(16, 'N'), &second);
  EXPECT_EQ(names.find(std::string(16, 'n')), &first);
}

TEST(CharsetsByShortName, are_128) {
  LoadedCharset charset;
  CharsetNames names;
  for (int i = 0; i < 200; ++i) names.enter("name" + std::to_string(i), &charset);
  for (int i = 0; i < 200; ++i)
    EXPECT_EQ(names.find("name" + std::to_string(i)), i < 128 ? &charset : nullptr) << i;
}

}  // namespace
}  // namespace ksv::test
