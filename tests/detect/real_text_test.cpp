// A real text, the opening of a novel, in every encoding that the library writes and
// detects.
#include <gtest/gtest.h>

#include <string>

#include "ksv_cconv.h"
#include "ksv_detect.h"
#include "tests/common/support.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

class RealText : public testing::Test {
 protected:
  RealText() {
    startProcess();
    cconvLoadRule();
    // More than one chunk in every encoding.
    const std::string text = ksv::test::readFile(KSV_TEST_SAMPLES "kusamakura.sjis.txt");
    while (text_.size() <= 4096) text_ += text;
  }
  ~RealText() override { endProcess(); }

  std::string in(const char* charset, bool bigEndian = false, bool marked = false) const {
    ConverterRecord record{};
    ConvertOptions options{};
    options.outputBigEndian = bigEndian;
    options.writeByteOrderMark = marked;
    uint32_t source[3] = {1, 0, 0};
    EXPECT_EQ(cconvInitConvert(&record, &options, charset), 0u);
    EXPECT_EQ(cconvChgCharset(&record, source, "Shift_JIS"), 0u);
    std::string output(text_.size() * 4 + 16, '\0');
    record.input = reinterpret_cast<const uint8_t*>(text_.data());
    record.inputLength = static_cast<int32_t>(text_.size());
    record.output = reinterpret_cast<uint8_t*>(output.data());
    record.outputCapacity = static_cast<int32_t>(output.size());
    EXPECT_EQ(cconvConvert(&record), 0u);
    EXPECT_EQ(cconvTermConvert(&record), 0u);
    output.resize(static_cast<size_t>(record.outputPosition));
    return output;
  }

  uint32_t detect(const std::string& bytes, const char* language) const {
    return file_.detect(bytes, language);
  }

  static std::string nameOf(const std::string& bytes) {
    EncodingCheckRecord record{};
    record.input = reinterpret_cast<const uint8_t*>(bytes.data());
    record.end = static_cast<uint32_t>(bytes.size());
    cconvChkEncode(&record);
    EXPECT_EQ(record.lineEnd, uint32_t{KSV_LINE_END_CRLF});
    return record.name + std::string(record.bigEndian != 0 ? ", big" : ", little");
  }

  const ksv::test::ScopedVariable directory_{"Charsetpath", KSV_TEST_CHARSET_DIRECTORY};
  TextFile file_;
  std::string text_;
};

constexpr uint32_t kSettled = KSV_TEXT_SETTLED | KSV_TEXT_CRLF;
constexpr uint32_t kBytes = kSettled | KSV_TEXT_BIG_ENDIAN;

TEST_F(RealText, is_detected_in_every_encoding) {
  EXPECT_EQ(detect(text_, "Japanese"), KSV_TEXT_SHIFT_JIS | kBytes);
  EXPECT_EQ(detect(in("EUC-JP"), "Japanese"), KSV_TEXT_EUC_JP | kBytes);
  EXPECT_EQ(detect(in("EUC-JP-FIX"), "Japanese"), KSV_TEXT_EUC_JP_FIX | kBytes);
  for (const char* language : {"Japanese", "English"}) {
    EXPECT_EQ(detect(in("ISO-2022-JP"), language), KSV_TEXT_ISO_2022_JP | kBytes);
    EXPECT_EQ(detect(in("UTF-8"), language), KSV_TEXT_UTF8 | kBytes);
    EXPECT_EQ(detect(in("UTF-8", false, true), language), KSV_TEXT_UTF8 | KSV_TEXT_MARK | kBytes);
    EXPECT_EQ(detect(in("UTF-16"), language), KSV_TEXT_UTF16 | kSettled);
    EXPECT_EQ(detect(in("UTF-16", true), language), KSV_TEXT_UTF16 | kBytes);
    EXPECT_EQ(detect(in("UTF-16", false, true), language),
              KSV_TEXT_UTF16 | KSV_TEXT_MARK | kSettled);
    EXPECT_EQ(detect(in("UTF-16", true, true), language), KSV_TEXT_UTF16 | KSV_TEXT_MARK | kBytes);
    EXPECT_EQ(detect(in("ISO-10646-UCS-4"), language), KSV_TEXT_UCS4 | kSettled);
    EXPECT_EQ(detect(in("ISO-10646-UCS-4", true, true), language),
              KSV_TEXT_UCS4 | KSV_TEXT_MARK | kBytes);
  }
}

TEST_F(RealText, ties_with_GBK_in_ShiftJis_without_a_language) {
  EXPECT_EQ(detect(text_, "English"), KSV_TEXT_SHIFT_JIS | KSV_TEXT_SIMPLIFIED_CHINESE | kBytes);
}

TEST_F(RealText, is_named_by_the_encoding_check) {
  EXPECT_EQ(nameOf(text_), "WINDOWS31J, big");
  EXPECT_EQ(nameOf(in("EUC-JP")), "EUC-JP, big");
  EXPECT_EQ(nameOf(in("EUC-JP-FIX")), "EUC-JP-FIX, big");
  EXPECT_EQ(nameOf(in("ISO-2022-JP")), "ISO-2022-JP, big");
  EXPECT_EQ(nameOf(in("UTF-8")), "UTF-8, big");
  EXPECT_EQ(nameOf(in("UTF-16", false, true)), "UTF-16, little");
  EXPECT_EQ(nameOf(in("UTF-16", true, true)), "UTF-16, big");
  EXPECT_EQ(nameOf(in("ISO-10646-UCS-4")), "ISO-10646-UCS-4, little");
  EXPECT_EQ(nameOf(in("ISO-10646-UCS-4", true)), "ISO-10646-UCS-4, big");
}

}  // namespace
}  // namespace ksv_detect_tests
