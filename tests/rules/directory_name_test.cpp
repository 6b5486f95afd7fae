// A charset directory may have any name, and its files are read as the bytes they
// are, whatever the system does to names and to text.
#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

// No ANSI code page has all of these characters.
constexpr char kName[] = "草枕 한ไא";

class CharsetDirectoryName : public testing::Test {
 protected:
  CharsetDirectoryName() : setting_("Charsetpath", temporary_.path() + "/" + kName) {
    std::filesystem::create_directory(pathOf(kName));
    EXPECT_EQ(startProcess(), 1);
  }
  ~CharsetDirectoryName() override { endProcess(); }

  static std::string in(const std::string& file) { return std::string(kName) + "/" + file; }

  TempDirectory temporary_;
  ScopedVariable setting_;
};

}  // namespace

TEST_F(CharsetDirectoryName, is_of_no_matter_when_rule_files_are_loaded) {
  writeFile(in("charset.xml"), ruleFile(kUtf16Little, "<charset><name>cs</name></charset>"));
  writeFile(in("坊っちゃん.xml"), ruleFile(kUtf16Big, "<charset><name>other</name></charset>"));
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_NE(findCharsetByName("cs"), nullptr);
  EXPECT_NE(findCharsetByName("other"), nullptr);
}

TEST_F(CharsetDirectoryName, is_of_no_matter_when_tables_are_compiled_and_read_again) {
  writeFile(in("t.txt"), encode(kUtf16Little, "8140 3000\r\n\r\n"));
  EXPECT_TRUE(ensureTableLoaded(tableOf("t.txt").get()));
  EXPECT_EQ(readFile(in("t.cmp")), compiledBytes({{0x8140, 0x3000}}));
  std::filesystem::remove(pathOf(in("t.txt")));
  const auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_TRUE(mapsAll(*table, {{0x8140, 0x3000}}));
}

// In these characters there are bytes that text streams take for an end of file or
// a line end.
TEST_F(CharsetDirectoryName, holds_files_whose_bytes_are_read_as_they_are) {
  const std::u32string comment = U"<\u1A1A\u0D0A\u0A0D\u1A0A>";
  const TextForm forms[] = {kUtf16Little, kUtf16Big, kUcs2Little};
  for (int i = 0; i < 3; ++i) {
    const TextForm& form = forms[i];
    const std::string name = "cs" + std::to_string(i);
    writeFile(in(name + ".xml"),
              ruleFile(form, "<!--") + encode(form, comment) +
                  encode(form, "--><charset><name>" + name + "</name></charset> "));
    writeFile(in(name + ".txt"), encode(form, comment) + encode(form, "1 2\r\n") +
                                     encode(form, comment) + encode(form, "3 4\r\n\r\n"));
  }
  EXPECT_EQ(cconvLoadRule(), 1);
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(forms[i].label);
    const std::string name = "cs" + std::to_string(i);
    EXPECT_NE(findCharsetByName(name.c_str()), nullptr);
    const auto table = tableOf(name + ".txt", forms[i]);
    EXPECT_TRUE(ensureTableLoaded(table.get()));
    EXPECT_TRUE(mapsAll(*table, {{1, 2}, {3, 4}}));
  }
}

}  // namespace ksv::test
