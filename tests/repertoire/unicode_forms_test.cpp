// The Unicode forms: every scalar value, in both byte orders, against iconv.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <ostream>
#include <string>

#include "tests/repertoire/converter.h"
#include "tests/repertoire/iconv_reference.h"
#include "tests/repertoire/repertoire.h"

namespace repertoire {
namespace {

constexpr char32_t kLastBasicCharacter = 0xFFFF;

Text allCharacters(char32_t last) {
  Text text;
  for (char32_t character = 0; character <= last; ++character) {
    if (!isSurrogate(character)) {
      text += character;
    }
  }
  return text;
}

struct UnicodeForm {
  const char* charset;
  ByteOrder order;
  const char* iconvName;
  char32_t last;
};

void PrintTo(const UnicodeForm& form, std::ostream* out) { *out << form.iconvName; }

class UnicodeFormTest : public testing::TestWithParam<UnicodeForm> {
 protected:
  RuleBase rules_;
};

TEST_P(UnicodeFormTest, writes_every_scalar_value_as_iconv_does) {
  const auto& [charset, order, iconvName, last] = GetParam();
  const Text characters = allCharacters(last);
  const Bytes source = iconvText("UTF-8", characters);
  const ConversionResult result = Converter("UTF-8", charset, order).convert(source);
  EXPECT_EQ(result.status, KSV_STATUS_DONE);
  EXPECT_EQ(result.position, static_cast<int32_t>(source.size()));
  std::printf("%s: %zu characters\n", iconvName, characters.size());
  EXPECT_TRUE(result.output == iconvText(iconvName, characters));
}

TEST_P(UnicodeFormTest, reads_every_scalar_value_that_iconv_wrote) {
  const auto& [charset, order, iconvName, last] = GetParam();
  const Text characters = allCharacters(last);
  const ConversionResult result =
      Converter(charset, "UTF-8", order).convert(iconvText(iconvName, characters));
  EXPECT_EQ(result.status, KSV_STATUS_DONE);
  EXPECT_TRUE(result.output == iconvText("UTF-8", characters));
}

TEST_P(UnicodeFormTest, converts_every_scalar_value_by_itself) {
  const auto& [charset, order, iconvName, last] = GetParam();
  Converter encoder("UTF-8", charset, order);
  Converter decoder(charset, "UTF-8", order);
  const std::unique_ptr<Codec> reference = iconvCodec(iconvName);
  const std::unique_ptr<Codec> utf8 = iconvCodec("UTF-8");
  for (const char32_t character : allCharacters(kLastCharacter)) {
    const Bytes source = *utf8->encode(character);
    const ConversionResult written = encoder.convert(source);
    if (character > last) {
      ASSERT_EQ(written.status, KSV_STATUS_UNMAPPABLE) << spell(Text(1, character));
      continue;
    }
    ASSERT_EQ(written.status, KSV_STATUS_DONE) << spell(Text(1, character));
    ASSERT_EQ(written.output, reference->encode(character)) << spell(Text(1, character));
    const ConversionResult read = decoder.convert(written.output);
    ASSERT_EQ(read.status, KSV_STATUS_DONE) << spell(Text(1, character));
    ASSERT_EQ(read.charactersRead, 1) << spell(Text(1, character));
    ASSERT_EQ(read.output, source) << spell(Text(1, character));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Unicode, UnicodeFormTest,
    testing::Values(UnicodeForm{"UTF-8", ByteOrder::kBig, "UTF-8", kLastCharacter},
                    UnicodeForm{"UTF-16", ByteOrder::kBig, "UTF-16BE", kLastCharacter},
                    UnicodeForm{"UTF-16", ByteOrder::kLittle, "UTF-16LE", kLastCharacter},
                    UnicodeForm{"ISO-10646-UCS-4", ByteOrder::kBig, "UCS-4BE", kLastCharacter},
                    UnicodeForm{"ISO-10646-UCS-4", ByteOrder::kLittle, "UCS-4LE", kLastCharacter},
                    UnicodeForm{"ISO-10646-UCS-2", ByteOrder::kBig, "UCS-2BE", kLastBasicCharacter},
                    UnicodeForm{"ISO-10646-UCS-2", ByteOrder::kLittle, "UCS-2LE",
                                kLastBasicCharacter}),
    [](const testing::TestParamInfo<UnicodeForm>& info) {
      std::string name = info.param.iconvName;
      std::replace(name.begin(), name.end(), '-', '_');
      return name;
    });

TEST(Ucs2, refuses_surrogates) {
  const RuleBase rules;
  Converter decoder("ISO-10646-UCS-2", "UTF-8", ByteOrder::kBig);
  for (int unit = 0xD800; unit <= 0xDFFF; ++unit) {
    const Bytes bytes = {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    EXPECT_EQ(decoder.convert(bytes).status, KSV_STATUS_INVALID) << spell(bytes);
  }
}

TEST(Ucs2, writes_supplementary_characters_as_references) {
  const RuleBase rules;
  ConverterRecord record{};
  ConvertOptions options{};
  options.outputBigEndian = 1;
  options.supplementaryMode = 1;
  ASSERT_EQ(cconvInitConvert(&record, &options, "ISO-10646-UCS-2"), KSV_STATUS_DONE);
  uint32_t parameters[3] = {1, 0, 0};
  ASSERT_EQ(cconvChgCharset(&record, parameters, "UTF-8"), KSV_STATUS_DONE);
  const Bytes input = "\xF0\x9F\x98\x80";
  uint8_t buffer[64];
  record.input = reinterpret_cast<const uint8_t*>(input.data());
  record.inputLength = static_cast<int32_t>(input.size());
  record.output = buffer;
  record.outputCapacity = sizeof buffer;
  EXPECT_EQ(cconvConvert(&record), KSV_STATUS_DONE);
  const Bytes output(buffer, buffer + record.outputPosition);
  EXPECT_EQ(output, iconvText("UCS-2BE", U"&#x1F600;"));
}

}  // namespace
}  // namespace repertoire
