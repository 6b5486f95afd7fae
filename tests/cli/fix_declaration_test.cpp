// Texts that declare the charset that they are converted to.
#include <algorithm>

#include "cli/text/charset_judge.h"
#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

using Names = std::vector<std::string>;

class FixedDeclaration : public CommandTest {
 protected:
  std::string fixed(Names arguments, const std::string& text) const {
    const Names before = {"convert", "--fix-declaration"};
    arguments.insert(arguments.begin(), before.begin(), before.end());
    const Outcome outcome = ksv(arguments, text);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }
};

const std::string kXml = "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n<a>";

TEST_F(FixedDeclaration, has_the_registered_name_of_the_target) {
  const auto named = [&](const std::string& target) {
    const std::string out = fixed({"-f", "us-ascii", "-t", target}, kXml);
    const size_t at = out.find("encoding=\"") + 10;
    return out.substr(at, out.find('"', at) - at);
  };
  EXPECT_EQ(named("utf8"), "UTF-8");
  EXPECT_EQ(named("cp932"), "Shift_JIS");
  EXPECT_EQ(named("euc-jp-ms"), "EUC-JP");
  EXPECT_EQ(named("sjis"), "Shift_JIS");
  EXPECT_EQ(named("latin1"), "ISO-8859-1");
  EXPECT_EQ(named("cp1252"), "windows-1252");
  EXPECT_EQ(named("gb18030"), "GB18030");
  EXPECT_EQ(named("ascii"), "US-ASCII");
}

TEST_F(FixedDeclaration, names_the_byte_order_of_units_without_a_mark) {
  const auto utf16 = [](const std::string& ascii, bool isBig) {
    std::string text;
    for (const char c : ascii) text += isBig ? std::string{'\0', c} : std::string{c, '\0'};
    return text;
  };
  const std::string xml = "<?xml version='1.0' encoding='x'?>";
  const auto declaring = [](const std::string& name) {
    return "<?xml version='1.0' encoding='" + name + "'?>";
  };
  EXPECT_EQ(fixed({"-f", "utf8", "-t", "utf-16"}, xml), utf16(declaring("UTF-16LE"), false));
  EXPECT_EQ(fixed({"-f", "utf8", "-t", "utf-16be"}, xml), utf16(declaring("UTF-16BE"), true));
  EXPECT_EQ(fixed({"-f", "utf8", "-t", "utf-16", "--byte-order", "big", "--bom"}, xml),
            "\xFE\xFF" + utf16(declaring("UTF-16"), true));
  // The name is written in the order in which the text is read.
  EXPECT_EQ(fixed({"-f", "utf-16", "-t", "utf8"}, "\xFE\xFF" + utf16(xml, true)),
            declaring("UTF-8"));
  EXPECT_EQ(fixed({"-f", "utf-16be", "-t", "utf-16le"}, utf16(xml, true)),
            utf16(declaring("UTF-16LE"), false));
}

TEST_F(FixedDeclaration, is_put_into_xml_that_has_to_have_one) {
  const std::string bare = "<?xml version='1.0' standalone='yes'?>";
  EXPECT_EQ(fixed({"-f", "utf8", "-t", "sjis"}, bare),
            "<?xml version='1.0' encoding='Shift_JIS' standalone='yes'?>");
  EXPECT_EQ(fixed({"-f", "sjis", "-t", "utf8"}, bare), bare);
  EXPECT_EQ(fixed({"-f", "sjis", "-t", "ascii"}, bare), bare);
}

TEST_F(FixedDeclaration, is_left_alone_unless_it_is_asked_for) {
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8"}, kXml).out, kXml);
}

TEST_F(FixedDeclaration, stands_in_the_first_1024_characters) {
  const std::string meta = "<meta charset=a>";
  const std::string inside = std::string(1024 - meta.size(), ' ');
  EXPECT_EQ(fixed({"-f", "sjis", "-t", "utf8"}, inside + meta), inside + "<meta charset=UTF-8>");
  EXPECT_EQ(fixed({"-f", "sjis", "-t", "utf8"}, inside + " " + meta), inside + " " + meta);
  std::string wide;  // as many characters, of three bytes each
  for (size_t i = 0; i < inside.size(); ++i) wide += "あ";
  EXPECT_EQ(fixed({"-f", "utf8", "-t", "utf8"}, wide + meta + "\n"),
            wide + "<meta charset=UTF-8>\n");
}

TEST_F(FixedDeclaration, keeps_the_offsets_of_what_is_wrong_behind_it) {
  const std::string bad = kXml + "\xFF";
  const Outcome outcome = ksv({"convert", "--fix-declaration", "-f", "euc-jp", "-t", "utf8"}, bad);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("at byte offset " + std::to_string(kXml.size())), std::string::npos)
      << outcome.err;
}

// Two Japanese charsets hand on codes that have no character; they are the same with the option.
TEST_F(FixedDeclaration, changes_nothing_else) {
  std::string text = "<meta charset=shift_jis>";
  for (int lead = 0x81; lead <= 0xFC; ++lead)
    for (int trail = 0x40; trail <= 0xFC; ++trail)
      if ((lead < 0xA0 || lead > 0xDF) && trail != 0x7F) text += bytes({lead, trail});
  for (const std::string target : {"cp932", "euc-jp-ms", "utf8"}) {
    const Names call = {"convert",   "-f",   "cp932",        "-t",  target,
                        "--invalid", "skip", "--unmappable", "skip"};
    Names fixing = call;
    fixing.push_back("--fix-declaration");
    std::string plain = ksv(call, text).out;
    const std::string out = ksv(fixing, text).out;
    const std::string name = out.substr(14, out.find('>') - 14);
    EXPECT_EQ(out, plain.replace(14, 9, name));
  }
}

// An HTML text and an XML text in a charset, and what is declared in it.
struct Declaring {
  std::string before;
  std::string behind;

  std::string as(const std::string& name) const { return before + name + behind; }
};
const Declaring kDeclaring[] = {
    {"<?xml version=\"1.0\" encoding=\"", "\" standalone='no'?>\n<a>"},
    {"<!DOCTYPE html>\n<!-- charset=x -->\n<meta http-equiv=\"Content-Type\" "
     "content=\"text/html; charset=",
     "\">"},
    {"<html><head><meta charset=", "><title>"},
    {"@charset \"", "\";\np { color: red }"}};

// Charsets that can only be read have ASCII as it is.
std::string inCharset(const ksv_kit::CharsetListing& charset, const std::string& text) {
  return charset.sourceOnly ? text : encoded(charset.display, text);
}

TEST(FixedDeclarationOfEveryCharset, comes_out_alike_however_the_text_is_cut) {
  const Adjustment declaresUtf8 = [](ksv_cli::ConversionSettings& settings) {
    settings.declared = ksv_kit::DeclaredName{"UTF-8", false};
  };
  size_t count = 0;
  for (const auto& charset : ksv_kit::CharsetNames(converting().charsets()).list()) {
    for (const Declaring& declaring : kDeclaring) {
      const std::string text = inCharset(charset, declaring.as("x-old_name"));
      for (const size_t block : {size_t{1}, size_t{7}, size_t{4096}}) {
        const Conversion made =
            converting().inPieces(charset.display, "utf-8", text, block, declaresUtf8, 1);
        EXPECT_EQ(made.failure, "") << charset.display;
        EXPECT_EQ(made.output, declaring.as("UTF-8")) << charset.display << ", by " << block;
      }
    }
    ++count;
  }
  EXPECT_GT(count, 80u);
}

class ReadBack : public CommandTest {};

// What is written can be read without -f, since it says what it is in.
TEST_F(ReadBack, is_the_charset_that_is_declared) {
  const std::string body = "日本語の文 and English.\n";
  for (const std::string target :
       {"utf8", "sjis", "cp932", "euc-jp", "euc-jp-ms", "gb18030", "gbk", "big5-hkscs", "utf-16"}) {
    for (const Declaring& declaring : kDeclaring) {
      if (declaring.before[0] == '@') continue;  // a style sheet is judged by its bytes
      write("old", declaring.as("x-old") + body);
      Names call = {"convert", "--fix-declaration", "-f", "utf8", "-t", target, "-o", "new", "old"};
      if (target == "utf-16") call.push_back("--bom");
      ASSERT_EQ(ksv(call).status, 0) << target;
      const Outcome back = ksv({"convert", "--fix-declaration", "-t", "utf8", "new"});
      EXPECT_EQ(back.status, 0) << target << back.err;
      EXPECT_EQ(back.out, declaring.as("UTF-8") + body) << target;
      if (target != "utf-16") {
        EXPECT_NE(back.err.find(" says so"), std::string::npos) << target << back.err;
      }
    }
  }
}

TEST_F(ReadBack, of_ebcdic_is_named_by_from) {
  const std::string xml = "<?xml version='1.0' encoding='UTF-8'?><a>x</a>";
  const Outcome made = ksv({"convert", "--fix-declaration", "-f", "utf8", "-t", "ibm037"}, xml);
  EXPECT_EQ(made.status, 0) << made.err;
  EXPECT_EQ(made.out.substr(0, 5), bytes({0x4C, 0x6F, 0xA7, 0x94, 0x93}));
  const Outcome plain = ksv({"convert", "-f", "ibm037", "-t", "utf8"}, made.out);
  EXPECT_EQ(plain.out, "<?xml version='1.0' encoding='IBM037'?><a>x</a>");
  EXPECT_EQ(ksv({"convert", "--fix-declaration", "-f", "ibm037", "-t", "utf8"}, made.out).out, xml);
}

}  // namespace
}  // namespace ksv_cli_tests
