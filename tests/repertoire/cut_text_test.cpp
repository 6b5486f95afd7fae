// What cutting text is for: a piece of valid text converts by itself, where the rule of its
// charset sees all of its characters.
#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "ksv_cut.h"
#include "tests/repertoire/converter.h"
#include "tests/repertoire/repertoire.h"

namespace repertoire {
namespace {

constexpr int kTexts = 200;
constexpr int kCharacters = 60;
// No character or escape sequence with its character is longer.
constexpr int32_t kLeastLimit = 8;

struct CutCharset {
  const char* charset;
  const char* cutName;
  Text alphabet;  // characters whose codes the rule sees
};

void PrintTo(const CutCharset& charset, std::ostream* out) { *out << charset.charset; }

const Text kJapanese = U"aZ~ \u3042\u30A2\u4E9C\u7199\uFF71\uFF9F\u3000";

class CutText : public testing::TestWithParam<CutCharset> {
 protected:
  Bytes randomText() {
    const Text& alphabet = GetParam().alphabet;
    Text text;
    for (int i = 0; i < kCharacters; ++i) {
      if (random_() % 6 == 0) {
        text += U"\r\n";
      } else {
        text += alphabet[random_() % alphabet.size()];
      }
    }
    return encoded(text);
  }

  static Bytes encoded(const Text& text) {
    Converter encoder("ISO-10646-UCS-4", GetParam().charset, ByteOrder::kBig);
    const ConversionResult result = encoder.convert(toUcs4(text));
    EXPECT_EQ(result.status, KSV_STATUS_DONE) << "at " << result.position;
    return result.output;
  }

  // The pieces of a text, each of at most so many bytes.
  int32_t cut(const Bytes& text, int32_t limit) const {
    const Bytes terminated = text + Bytes(4, '\0');
    return static_cast<int32_t>(
        CutStr(terminated.data(), static_cast<int32_t>(text.size()), limit, GetParam().cutName));
  }

  void expectConverts(const Bytes& piece) {
    Converter decoder(GetParam().charset, "UTF-8", ByteOrder::kBig);
    const ConversionResult result = decoder.convert(piece);
    EXPECT_EQ(result.status, KSV_STATUS_DONE) << spell(piece) << " at " << result.position;
  }

  int32_t randomLimit() { return kLeastLimit + static_cast<int32_t>(random_() % 40); }

  RuleBase rules_;
  std::mt19937 random_{20240611};
};

TEST_P(CutText, converts_piece_by_piece) {
  const Bytes cr = encoded(U"\r");
  const Bytes lf = encoded(U"\n");
  for (int i = 0; i < kTexts; ++i) {
    Bytes text = randomText();
    const bool hasEscapes = text.find('\x1B') != Bytes::npos;
    while (!text.empty()) {
      const int32_t limit = randomLimit();
      const int32_t length = cut(text, limit);
      ASSERT_GT(length, 0) << spell(text);
      ASSERT_LE(length, limit);
      const Bytes piece = text.substr(0, static_cast<size_t>(length));
      expectConverts(piece);
      text.erase(0, piece.size());
      // What is behind an escape sequence only makes sense behind it.
      if (hasEscapes) break;
      EXPECT_FALSE(piece.ends_with(cr) && text.starts_with(lf)) << spell(piece);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    EachRule, CutText,
    testing::Values(CutCharset{"Shift_JIS", "Shift_JIS", kJapanese},
                    CutCharset{"WINDOWS31J", "WINDOWS31J", kJapanese + U"\u2460\uE000"},
                    CutCharset{"Shift_JIS-2004", "Shift_JISX0213", kJapanese + U"\U0002000B"},
                    // Lead bytes from E0, and three bytes behind 8F, are not seen.
                    CutCharset{"EUC-JP", "EUC-JP", U"aZ~ \u3042\u30A2\u4E9C\uFF71"},
                    CutCharset{"EUC-JIS-2004", "EUC-JISX0213", U"aZ~ \u3042\u30A2\u4E9C"},
                    CutCharset{"ISO-2022-JP", "ISO-2022-JP", U"aZ~ \u3042\u30A2\u4E9C\u7199"},
                    CutCharset{"ISO-10646-UCS-2", "ISO-10646-UCS-2", kJapanese + U"\u0D0A\u0A0D"},
                    CutCharset{"ISO-10646-UCS-4", "ISO-10646-UCS-4", kJapanese + U"\U0002000B"},
                    CutCharset{"UTF-16", "UTF-16", kJapanese + U"\u0D0A\u0A0D"},
                    CutCharset{"UTF-8", "UTF-8", kJapanese + U"\u00E9\U0002000B"},
                    CutCharset{"ChineseGBK", "ChineseGBK", U"aZ~ \u4E00\u9FA5\u3042"},
                    CutCharset{"ChineseBIG5", "ChineseBIG5", U"aZ~ \u4E00\u9F98"},
                    CutCharset{"KoreanKSC", "KoreanKSC", U"aZ~ \uAC00\uD7A3\u4E00"},
                    // A code of four bytes may be cut where fewer of them are within the limit.
                    CutCharset{"GB18030", "GB18030", U"aZ~ \u4E00\u00E9\u3042"},
                    CutCharset{"ISO-8859-1", "ISO-8859-1", U"aZ~ \u00E9\u00FF"}),
    [](const testing::TestParamInfo<CutCharset>& info) {
      std::string name = info.param.charset;
      for (char& c : name) c = c == '-' ? '_' : c;
      return name;
    });

}  // namespace
}  // namespace repertoire
