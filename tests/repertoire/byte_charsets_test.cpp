// The charsets of one-byte and two-byte codes: every code and every character.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string>

#include "tests/repertoire/converter.h"
#include "tests/repertoire/difference_list.h"
#include "tests/repertoire/iconv_reference.h"
#include "tests/repertoire/repertoire.h"

namespace repertoire {
namespace {

Repertoire exploreLibrary(const std::string& charset) {
  LibraryCodec codec(charset);
  return explore(codec);
}

Repertoire exploreReference(const std::string& kind, const std::string& name) {
  if (kind == "python") {
    return readRepertoire(std::filesystem::path(REPERTOIRE_BINARY_DIRECTORY) /
                          ("python_" + name + ".txt"));
  }
  return explore(*iconvCodec(name));
}

// What a code is written as when its character comes from UTF-8, bases and combining
// marks included.
Bytes encodeFromUtf8(const Text& text, const std::string& charset) {
  Converter toUtf8("ISO-10646-UCS-4", "UTF-8", ByteOrder::kBig);
  Converter toCharset("UTF-8", charset, ByteOrder::kBig);
  return toCharset.convert(toUtf8.convert(toUcs4(text)).output).output;
}

struct Comparison {
  const char* charset;
  const char* kind;  // "iconv" or "python"
  const char* reference;
};

// "Shift_JIS.iconv_SHIFT_JIS", as the lists of differences are named.
std::string listName(const Comparison& comparison) {
  return std::string(comparison.charset) + '.' + comparison.kind + '_' + comparison.reference;
}

void PrintTo(const Comparison& comparison, std::ostream* out) { *out << listName(comparison); }

// Test names have letters, digits and underscores only.
std::string testName(std::string name) {
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
  return name;
}

class Reference : public testing::TestWithParam<Comparison> {
 protected:
  RuleBase rules_;
};

TEST_P(Reference, agrees_on_every_code_and_character_but_the_listed_ones) {
  const Comparison& comparison = GetParam();
  const Repertoire ours = exploreLibrary(comparison.charset);
  const Repertoire theirs = exploreReference(comparison.kind, comparison.reference);
  const Differences differences = compare(ours, theirs);
  std::printf("%s: %zu and %zu codes decode, %zu and %zu characters encode, %zu differ\n",
              listName(comparison).c_str(), ours.decoded.size(), theirs.decoded.size(),
              ours.encoded.size(), theirs.encoded.size(), differences.size());
  EXPECT_TRUE(isListed(differences,
                       std::filesystem::path("differences") / (listName(comparison) + ".txt")));
}

INSTANTIATE_TEST_SUITE_P(ByteCharsets, Reference,
                         testing::Values(Comparison{"Shift_JIS", "iconv", "SHIFT_JIS"},
                                         Comparison{"Shift_JIS", "python", "shift_jis"},
                                         Comparison{"WINDOWS31J", "iconv", "CP932"},
                                         Comparison{"WINDOWS31J", "python", "cp932"},
                                         Comparison{"Shift_JIS-2004", "iconv", "SHIFT_JISX0213"},
                                         Comparison{"Shift_JIS-2004", "python", "shift_jis_2004"}),
                         [](const testing::TestParamInfo<Comparison>& info) {
                           return testName(listName(info.param));
                         });

class ByteCharset : public testing::TestWithParam<const char*> {
 protected:
  RuleBase rules_;
};

TEST_P(ByteCharset, comes_back_as_it_was_but_for_the_listed_codes) {
  const Repertoire repertoire = exploreLibrary(GetParam());
  const Differences differences = findOneWay(repertoire);
  std::printf("%s: %zu codes, %zu characters, %zu do not come back as they were\n", GetParam(),
              repertoire.decoded.size(), repertoire.encoded.size(), differences.size());
  EXPECT_TRUE(isListed(differences,
                       std::filesystem::path("round_trips") / (std::string(GetParam()) + ".txt")));
}

TEST_P(ByteCharset, keeps_a_text_of_all_its_codes_through_each_unicode_form) {
  const Repertoire repertoire = exploreLibrary(GetParam());
  // A line each, so that no base meets the mark of the next line.
  Bytes text;
  Bytes expected;
  for (const auto& [code, characters] : repertoire.decoded) {
    text += code + '\n';
    expected += (characters.size() == 1 ? repertoire.encoded.at(characters[0]) : code) + '\n';
  }
  for (const char* form : {"UTF-8", "UTF-16"}) {
    SCOPED_TRACE(form);
    const ConversionResult unicode = Converter(GetParam(), form, ByteOrder::kBig).convert(text);
    ASSERT_EQ(unicode.status, KSV_STATUS_DONE) << "at " << unicode.position;
    const ConversionResult back =
        Converter(form, GetParam(), ByteOrder::kBig).convert(unicode.output);
    ASSERT_EQ(back.status, KSV_STATUS_DONE) << "at " << back.position;
    EXPECT_EQ(back.output, expected);
  }
}

TEST_P(ByteCharset, refuses_every_other_one_byte_and_two_byte_sequence) {
  const Repertoire repertoire = exploreLibrary(GetParam());
  Converter decoder(GetParam(), "UTF-8", ByteOrder::kBig);
  for (int lead = 0x80; lead < 0x100; ++lead) {
    const Bytes single(1, static_cast<char>(lead));
    if (repertoire.decoded.contains(single)) {
      continue;
    }
    EXPECT_EQ(decoder.convert(single).status, KSV_STATUS_INCOMPLETE) << spell(single);
    for (int trail = 0; trail < 0x100; ++trail) {
      const Bytes pair = single + static_cast<char>(trail);
      if (!repertoire.decoded.contains(pair)) {
        const ConversionResult result = decoder.convert(pair);
        EXPECT_EQ(result.status, KSV_STATUS_INVALID) << spell(pair);
        EXPECT_EQ(result.position, 1) << spell(pair);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(ByteCharsets, ByteCharset,
                         testing::Values("Shift_JIS", "WINDOWS31J", "Shift_JIS-2004"),
                         [](const testing::TestParamInfo<const char*>& info) {
                           return testName(info.param);
                         });

TEST(ComposedCharacters, are_written_as_one_code_and_read_as_a_pair) {
  const RuleBase rules;
  const Repertoire python = exploreReference("python", "shift_jis_2004");
  const Repertoire ours = exploreLibrary("Shift_JIS-2004");
  int pairs = 0;
  for (const auto& [code, text] : python.decoded) {
    if (text.size() == 2) {
      ++pairs;
      EXPECT_EQ(spell(ours.decoded.at(code)), spell(text));
      EXPECT_EQ(spell(encodeFromUtf8(text, "Shift_JIS-2004")), spell(code));
    }
  }
  EXPECT_EQ(pairs, 25);
}

TEST(ComposedCharacters, are_written_as_base_and_mark_when_apart) {
  const RuleBase rules;
  // U+304B alone, and before a mark that it does not compose with.
  EXPECT_EQ(spell(encodeFromUtf8(U"\u304B", "Shift_JIS-2004")), "82A9");
  EXPECT_EQ(spell(encodeFromUtf8(U"\u304B\u0300", "Shift_JIS-2004")), "82A9867B");
}

TEST(Windows31J, writes_the_preferred_one_of_several_codes) {
  const RuleBase rules;
  const Repertoire repertoire = exploreLibrary("WINDOWS31J");
  // JIS X 0208 before NEC's row 13 and all others.
  EXPECT_EQ(spell(repertoire.encoded.at(U'\u2235')), "81E6");
  EXPECT_EQ(spell(repertoire.encoded.at(U'\uFFE2')), "81CA");
  // NEC's row 13 before IBM.
  EXPECT_EQ(spell(repertoire.encoded.at(U'\u2160')), "8754");
  EXPECT_EQ(spell(repertoire.encoded.at(U'\u3231')), "878A");
  // IBM before NEC's selection of IBM.
  EXPECT_EQ(spell(repertoire.encoded.at(U'\u2170')), "FA40");
  EXPECT_EQ(spell(repertoire.encoded.at(U'\uFFE4')), "FA55");
}

TEST(Windows31J, has_1880_user_codes_in_order) {
  const RuleBase rules;
  LibraryCodec codec("WINDOWS31J");
  char32_t character = 0xE000;
  for (int lead = 0xF0; lead <= 0xF9; ++lead) {
    for (int trail = 0x40; trail <= 0xFC; ++trail) {
      if (trail == 0x7F) {
        continue;
      }
      const Bytes code = {static_cast<char>(lead), static_cast<char>(trail)};
      EXPECT_EQ(codec.decode(code), Text(1, character)) << spell(code);
      EXPECT_EQ(codec.encode(character), code) << spell(code);
      ++character;
    }
  }
  EXPECT_EQ(character, 0xE758U);
}

}  // namespace
}  // namespace repertoire
