// Every code and every character of all charsets but the Unicode forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <set>
#include <string>

#include "tests/repertoire/converter.h"
#include "tests/repertoire/difference_list.h"
#include "tests/repertoire/iconv_reference.h"
#include "tests/repertoire/reference_list.h"
#include "tests/repertoire/repertoire.h"

namespace repertoire {
namespace {

Repertoire exploreLibrary(const std::string& charset, Shape shape = Shape::kPairs) {
  LibraryCodec codec(charset);
  return explore(codec, shape);
}

Repertoire exploreReference(const Reference& reference, Shape shape) {
  if (reference.kind != "iconv" || isStateless(shape)) {
    return readRepertoire(std::filesystem::path(REPERTOIRE_BINARY_DIRECTORY) /
                              (reference.kind + '_' + reference.name + ".txt"),
                          shape);
  }
  return explore(*iconvCodec(reference.name), shape);
}

// What a code is written as when its character comes from UTF-8, bases and combining
// marks included.
Bytes encodeFromUtf8(const Text& text, const std::string& charset) {
  Converter toUtf8("ISO-10646-UCS-4", "UTF-8", ByteOrder::kBig);
  Converter toCharset("UTF-8", charset, ByteOrder::kBig);
  return toCharset.convert(toUtf8.convert(toUcs4(text)).output).output;
}

std::string lowerCase(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return name;
}

// Test names have letters, digits and underscores only.
std::string testName(std::string name) {
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
  return name;
}

void expectListedDifferences(const std::string& charset, Shape shape, const Reference& reference,
                             const Repertoire& ours) {
  // "Shift_JIS.iconv_SHIFT_JIS", as the lists of differences are named.
  const std::string name = charset + '.' + reference.kind + '_' + reference.name;
  const Repertoire theirs = exploreReference(reference, shape);
  const Differences differences = compare(ours, theirs);
  std::printf("%s: %zu and %zu codes decode, %zu and %zu characters encode, %zu differ\n",
              name.c_str(), ours.decoded.size(), theirs.decoded.size(), ours.encoded.size(),
              theirs.encoded.size(), differences.size());
  EXPECT_TRUE(isListed(differences, std::filesystem::path("differences") / (name + ".txt")));
}

void expectListedOneWay(const std::string& charset, const Repertoire& ours) {
  const Differences differences = findOneWay(ours);
  std::printf("%s: %zu codes, %zu characters, %zu do not come back as they were\n", charset.c_str(),
              ours.decoded.size(), ours.encoded.size(), differences.size());
  EXPECT_TRUE(isListed(differences, std::filesystem::path("round_trips") / (charset + ".txt")));
}

// The text of all codes, a line each, so that no base meets the mark of the next line.
Bytes textOfAllCodes(const Repertoire& repertoire, const Bytes& newline) {
  Bytes text;
  for (const auto& [code, characters] : repertoire.decoded) text += code + newline;
  return text;
}

// A text of all codes goes through a Unicode form and back, each to the code that is
// written for its character; codes whose characters are written by none are left out.
void expectKeptThrough(const std::string& form, const std::string& charset, Shape shape,
                       const Repertoire& all) {
  SCOPED_TRACE(form);
  const Bytes newline = shape == Shape::kEscapes ? Bytes("\x1B(B\n") : all.encoded.at('\n');
  Repertoire written;
  Text expected;
  for (const auto& [code, characters] : all.decoded) {
    if (characters.size() == 1 && !all.encoded.contains(characters[0])) continue;
    written.decoded.emplace(code, characters);
    expected += characters + U'\n';
  }
  const ConversionResult unicode =
      Converter(charset, form, ByteOrder::kBig).convert(textOfAllCodes(written, newline));
  ASSERT_EQ(unicode.status, KSV_STATUS_DONE) << "at " << unicode.position;
  const ConversionResult back = Converter(form, charset, ByteOrder::kBig).convert(unicode.output);
  ASSERT_EQ(back.status, KSV_STATUS_DONE) << "at " << back.position;
  Bytes codes;
  for (const auto& [code, characters] : written.decoded)
    codes += (characters.size() == 1 ? all.encoded.at(characters[0]) : code) + newline;
  if (shape != Shape::kEscapes) {
    EXPECT_TRUE(back.output == codes);
  }
  const Bytes again =
      Converter(form, "ISO-10646-UCS-4", ByteOrder::kBig).convert(unicode.output).output;
  EXPECT_TRUE(fromUcs4(again) == expected);
}

class Charset : public testing::TestWithParam<ReferencedCharset> {
 protected:
  RuleBase rules_;
};

// One test, since most of its time goes to trying every code and character once.
TEST_P(Charset, agrees_with_its_references_and_comes_back_but_for_what_is_listed) {
  const ReferencedCharset& charset = GetParam();
  const Repertoire ours = exploreLibrary(charset.name, charset.shape);
  for (const Reference& reference : charset.references)
    expectListedDifferences(charset.name, charset.shape, reference, ours);
  expectListedOneWay(charset.name, ours);
  for (const char* form : {"UTF-8", "UTF-16"})
    expectKeptThrough(form, charset.name, charset.shape, ours);
}

INSTANTIATE_TEST_SUITE_P(All, Charset, testing::ValuesIn(referencedCharsets()),
                         [](const testing::TestParamInfo<ReferencedCharset>& info) {
                           return testName(info.param.name);
                         });

TEST(Charsets, have_a_reference_each) {
  const RuleBase rules;
  std::set<std::string> referenced;
  for (const ReferencedCharset& charset : referencedCharsets())
    referenced.insert(lowerCase(charset.name));
  for (const std::string& name : rules.charsetNames()) {
    const std::string lower = lowerCase(name);
    const bool isUnicodeForm = lower.starts_with("utf-") || lower.starts_with("iso-10646-");
    EXPECT_TRUE(isUnicodeForm || referenced.contains(lower)) << name;
  }
}

class ByteCharset : public testing::TestWithParam<const char*> {
 protected:
  RuleBase rules_;
};

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
  const Repertoire python = exploreReference({"python", "shift_jis_2004"}, Shape::kPairs);
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
