// What has to change for a text to declare another charset.
#include "kit/text/declarations.h"

#include <gtest/gtest.h>

namespace ksv_cli_tests {
namespace {

// The text with its declarations changed to "NEW".
std::string changed(const std::string& text, bool isNeededByXml = false) {
  std::string result = text;
  size_t shift = 0;
  for (const ksv_kit::TextEdit& edit : ksv_kit::declarationEdits(text, {"NEW", isNeededByXml})) {
    EXPECT_LT(edit.at + edit.length, text.size()) << "something stands behind it";
    result.replace(edit.at + shift, edit.length, edit.by);
    shift += edit.by.size() - edit.length;
  }
  return result;
}

void expectSame(const std::string& text) {
  EXPECT_EQ(changed(text, false), text);
  EXPECT_EQ(changed(text, true), text);
}

TEST(Declarations, of_XML_change_their_names_and_nothing_else) {
  EXPECT_EQ(changed("<?xml version=\"1.0\" encoding=\"EUC-JP\"?><a/>"),
            "<?xml version=\"1.0\" encoding=\"NEW\"?><a/>");
  EXPECT_EQ(changed("<?xml version='1.0' encoding = 'EUC-JP'\r\n standalone='yes' ?>"),
            "<?xml version='1.0' encoding = 'NEW'\r\n standalone='yes' ?>");
  EXPECT_EQ(changed("\xEF\xBB\xBF<?xml\tversion=\"1.1\" encoding='x'?>"),
            "\xEF\xBB\xBF<?xml\tversion=\"1.1\" encoding='NEW'?>");
  EXPECT_EQ(changed("<?xml encoding='EUC-JP'?>"), "<?xml encoding='NEW'?>") << "of an entity";
}

TEST(Declarations, of_XML_are_put_in_only_where_the_charset_has_to_be_named) {
  const std::string bare = "<?xml version='1.0'?>";
  EXPECT_EQ(changed(bare, false), bare);
  EXPECT_EQ(changed(bare, true), "<?xml version='1.0' encoding='NEW'?>");
  EXPECT_EQ(changed("<?xml version=\"1.0\" standalone=\"no\"?>", true),
            "<?xml version=\"1.0\" encoding=\"NEW\" standalone=\"no\"?>");
  expectSame("<a>no declaration</a>");
}

TEST(Declarations, of_XML_that_are_malformed_stay) {
  for (const char* text :
       {" <?xml version='1.0' encoding='a'?>", "<?XML version='1.0' encoding='a'?>",
        "<?xml version='1.0' encoding=a?>", "<?xml version='1.0' encoding='a'",
        "<?xml version='1.0'encoding='a'?>", "<?xml encoding='a' version='1.0'?>",
        "<?xml version='1.0' encoding='a' encoding='b'?>", "<?xml version='1.0' encoding=''?>",
        "<?xml version='1.0' encoding='{{x}}'?>", "<?xml version='1.0' other='a'?>",
        "<?xmlversion='1.0' encoding='a'?>", "<?xml version='1.0' encoding='a'>", "<?xml ", "<?xml",
        "<?xml-stylesheet encoding='a'?>", "<?xml version='1.0"})
    expectSame(text);
}

TEST(Declarations, of_HTML_are_meta_elements) {
  EXPECT_EQ(changed("<!DOCTYPE html><html><META CHARSET=euc-jp>"),
            "<!DOCTYPE html><html><META CHARSET=NEW>");
  EXPECT_EQ(changed("<meta charset=\"a\"/>"), "<meta charset=\"NEW\"/>");
  EXPECT_EQ(changed("<meta/charset='a' >"), "<meta/charset='NEW' >");
  EXPECT_EQ(changed("<meta content='text/html; charset=gbk' http-equiv=Content-Type>"),
            "<meta content='text/html; charset=NEW' http-equiv=Content-Type>");
  EXPECT_EQ(changed("<meta http-equiv=content-type content=text/html;charset=a;x>"),
            "<meta http-equiv=content-type content=text/html;charset=NEW;x>");
  EXPECT_EQ(changed("<meta http-equiv='content-type' content='charset charset = \"a\"'>"),
            "<meta http-equiv='content-type' content='charset charset = \"NEW\"'>");
  EXPECT_EQ(changed("words in front <p title='<'><meta charset=a>"),
            "words in front <p title='<'><meta charset=NEW>");
}

TEST(Declarations, of_HTML_are_all_changed_that_name_a_charset) {
  EXPECT_EQ(changed("<?xml version='1.0' encoding='a'?><meta charset=b>"
                    "<meta http-equiv=content-type content='charset=c' charset='d'>"),
            "<?xml version='1.0' encoding='NEW'?><meta charset=NEW>"
            "<meta http-equiv=content-type content='charset=NEW' charset='NEW'>");
}

TEST(Declarations, of_HTML_are_none_where_the_prescan_does_not_look) {
  for (const char* text :
       {"<!-- <meta charset=a> -->", "<!-- <meta charset=a>", "<metas charset=a>",
        "<meta charset=a", "<meta charset='a>", "<meta charset='a'",
        "<meta name=x content='charset=a'>", "<meta http-equiv=refresh content='charset=a'>",
        "<meta charset=''>", "<meta charset={{name}}>", "<a href='<meta charset=a>'>",
        "</a title='<meta charset=a>'>", "<? <meta charset=a>", "<meta x=1 charset",
        "<meta =charset=a>", "<meta http-equiv=content-type content='charset=\"a'>",
        "<meta http-equiv=content-type content='charset='>"})
    expectSame(text);
}

TEST(Declarations, of_HTML_go_on_behind_comments_and_other_tags) {
  EXPECT_EQ(changed("<!--><meta charset=a>"), "<!--><meta charset=NEW>");
  EXPECT_EQ(changed("<!-- --><? x><!x></x><x a=b c='>'><meta charset=a>"),
            "<!-- --><? x><!x></x><x a=b c='>'><meta charset=NEW>");
  EXPECT_EQ(changed("<<meta charset=a>"), "<<meta charset=NEW>");
  EXPECT_EQ(changed("<meta charset=a charset=b>"), "<meta charset=NEW charset=b>")
      << "the first attribute of a name counts";
}

TEST(Declarations, of_style_sheets_stand_at_their_very_beginning) {
  EXPECT_EQ(changed("@charset \"a\";\np{}"), "@charset \"NEW\";\np{}");
  EXPECT_EQ(changed("\xEF\xBB\xBF@charset \"a\";"), "\xEF\xBB\xBF@charset \"NEW\";");
  for (const char* text : {" @charset \"a\";", "@charset 'a';", "@CHARSET \"a\";",
                           "@charset  \"a\";", "@charset \"a\" ;", "@charset \"\";",
                           "@charset \"a b\";", "@charset \"a", "/**/@charset \"a\";"})
    expectSame(text);
}

// Whatever stands there, the changes keep to their order and to the text.
TEST(Declarations, of_any_beginning_come_in_order) {
  const std::string whole =
      "<?xml version='1.0' encoding='a' standalone='no'?><!-- <meta charset=b> --><p a='<'>"
      "<meta http-equiv=\"Content-Type\" content=\"text/html; charset='x'\"><meta charset = a >";
  for (size_t length = 0; length <= whole.size(); ++length)
    for (const bool isNeeded : {false, true}) {
      const std::string text = whole.substr(0, length);
      size_t behind = 0;
      for (const auto& edit : ksv_kit::declarationEdits(text, {"N", isNeeded})) {
        ASSERT_LE(behind, edit.at);
        behind = edit.at + edit.length;
        ASSERT_LT(behind, text.size());
      }
    }
}

}  // namespace
}  // namespace ksv_cli_tests
