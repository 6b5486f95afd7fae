// Documents as an office suite writes them; see documents/make_documents.
#include "tests/ole/summary_reader.h"

namespace ksv::test {
namespace {

const std::string kDocuments = textOf(std::filesystem::absolute(KSV_TEST_DOCUMENTS));

class Documents : public SummaryTest {
 protected:
  static std::string path(const std::string& name) { return kDocuments + name; }
};

TEST_F(Documents, have_japanese_properties) {
  const struct {
    const char* name;
    const char* title;
  } cases[] = {{"japanese.doc", "日本語の文書"},
               {"japanese.xls", "日本語の表"},
               {"japanese.ppt", "日本語の発表"}};
  for (const auto& [name, title] : cases) {
    SCOPED_TRACE(name);
    const Reading reading = readPath(path(name).c_str(), kAllOfSlides);
    EXPECT_EQ(reading.result, 0u);
    EXPECT_EQ(reading[KSV_SUMMARY_TITLE], title);
    EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "表題の説明");
    EXPECT_EQ(reading[KSV_SUMMARY_AUTHOR], "山田太郎");
    EXPECT_EQ(reading[KSV_SUMMARY_LAST_SAVED_BY], "鈴木花子");
    EXPECT_EQ(reading[KSV_SUMMARY_KEYWORDS], "文書, 試験");
    EXPECT_EQ(reading[KSV_SUMMARY_COMMENTS], "一行目の注釈\r\n二行目 with ASCII and ｶﾀｶﾅ");
    EXPECT_EQ(reading[KSV_SUMMARY_CREATED], "2024-02-29 12:34:56");
    EXPECT_EQ(reading[KSV_SUMMARY_REVISION], "7");
    const Reading times = readPath(path(name).c_str(), kShort);
    EXPECT_EQ(times[KSV_SUMMARY_LAST_SAVED], "2024-03-31 23:59:59");
  }
}

TEST_F(Documents, have_their_contents_in_streams) {
  const struct {
    const char* name;
    const char* stream;
  } cases[] = {{"japanese.doc", "WordDocument"},
               {"japanese.xls", "Workbook"},
               {"japanese.ppt", "PowerPoint Document"}};
  for (const auto& [name, stream] : cases) {
    const OleHandle file(KSV_2OLEopen(path(name).c_str()));
    ASSERT_NE(file, nullptr) << name;
    EXPECT_GT(contentOf(file.get(), stream).size(), 500u) << name;
  }
}

}  // namespace
}  // namespace ksv::test
