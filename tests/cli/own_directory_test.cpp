// Charset directories that an administrator has made.

#include "command.h"

namespace ksv_cli_tests {
namespace {

class OwnDirectory : public CommandTest {
 protected:
  OwnDirectory() { setEnvironment("Charsetpath", path("")); }

  // In UTF-16, little-endian, with a mark.
  void writeRule(const std::string& name, const std::string& ascii) const {
    std::string text = bytes({0xFF, 0xFE});
    for (const char c : ascii) text += bytes({c, 0});
    write(name, text);
  }

  void writeCharset(const std::string& name, const std::string& codec,
                    const std::string& table) const {
    writeRule(name + ".xml",
              "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n"
              "<!DOCTYPE charset [\r\n"
              "<!ENTITY set." +
                  name + " SYSTEM \"set." + name +
                  ".xml\">\r\n"
                  "<!ENTITY table." +
                  name + " SYSTEM \"" + name +
                  ".txt\">\r\n]>\r\n"
                  "<charset>\r\n<name>" +
                  name +
                  "</name>\r\n"
                  "<rule construle=\"const" +
                  codec + "\" destrule=\"dest" + codec +
                  "\"/>\r\n"
                  "<baseset>&set." +
                  name + ";</baseset>\r\n</charset>\r\n");
    writeRule("set." + name + ".xml",
              "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n"
              "<subseta>\r\n<name>set-" +
                  name +
                  "</name>\r\n<lang domain=\"\"/>\r\n"
                  "<code bytenum=\"" +
                  std::string(codec == "SAME" ? "1" : "4") +
                  "\"/>\r\n"
                  "<srtable>&table." +
                  name + ";</srtable>\r\n</subseta>\r\n");
    writeRule(name + ".txt", "<table encoding=\"UTF-16\">\r\n" + table + "\r\n\r\n");
  }
};

TEST_F(OwnDirectory, adds_charsets_under_their_own_names) {
  writeCharset("example", "SAME", "41 0041\r\n42 3042\r\n0A 000A");
  writeCharset("utf-8", "UTF-8", "0041 0041\r\n3042 3042");
  EXPECT_EQ(ksv({"charsets"}).out.substr(0, 8), "example\n");
  EXPECT_EQ(ksv({"convert", "-f", "EXAMPLE", "-t", "utf8"}, "AB").out, "Aあ");
  const Outcome outcome = ksv({"convert", "-f", "example", "-t", "utf8"}, "ABC");
  EXPECT_EQ(outcome.err, "ksv: standard input: invalid example (0x43) at byte offset 2\n");
}

// A Unicode charset whose set has a table sees language tags, which are read as one.
TEST_F(OwnDirectory, may_see_language_tags_which_no_border_tears) {
  writeCharset("utf-8", "UTF-8", "0041 0041\r\n3042 3042");
  const std::string tag = "\U000E0001\U000E006A\U000E0061";
  std::string longTag = "\U000E0001";
  for (int i = 0; i < 200; ++i) longTag += "\U000E0061";
  for (size_t lead = 0; lead < 20; ++lead)
    for (const std::string size : {"16", "29", "262144"}) {
      const std::string before(lead, 'a');
      EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "--block-size", size},
                    before + tag + "b" + longTag + "あ")
                    .out,
                before + "bあ");
    }
}

TEST_F(OwnDirectory, may_see_a_language_tag_that_the_end_cuts) {
  writeCharset("utf-8", "UTF-8", "0041 0041\r\n3042 3042");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "utf8"}, "ab\U000E0001\U000E006A");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: standard input: the text ends inside a UTF-8 character at byte offset 2\n");
  EXPECT_EQ(
      ksv({"convert", "-f", "utf8", "-t", "utf8", "--invalid", "skip"}, "ab\U000E0001\U000E006A")
          .out,
      "ab");
}

TEST_F(OwnDirectory, names_the_offset_of_a_value_that_no_set_holds) {
  writeCharset("utf-8", "UTF-8", "0041 0041\r\n3042 3042");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "utf8"}, "aあいb");
  EXPECT_EQ(outcome.err, "ksv: standard input: invalid UTF-8 (0xE3) at byte offset 4\n");
}

}  // namespace
}  // namespace ksv_cli_tests
