// The files that entities stand for.
#include "cconv/rules/rule_files.h"

#include "tests/rules/support.h"

namespace ksv::test {
namespace {

std::string fileOf(std::string_view text, const std::string& name) {
  return entityFile(cleaned(text), name).value_or("none");
}

TEST(EntityDeclarations, are_the_name_a_blank_system_and_a_quoted_file) {
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml\">", "a"), "a.xml");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml\"><!ENTITY b SYSTEM \"b.xml\">", "b"), "b.xml");
  EXPECT_EQ(fileOf("a SYSTEM \"\"", "a"), "");
  EXPECT_EQ(fileOf("<!ENTITY\r\na\r\nSYSTEM\t\"a.xml\">", "a"), "a.xml");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml\">", "b"), "none");
  EXPECT_EQ(fileOf("", "a"), "none");
}

TEST(EntityDeclarations, may_follow_other_uses_of_the_name) {
  EXPECT_EQ(fileOf("&a; a\"a a. <!ENTITY a SYSTEM \"a.xml\">", "a"), "a.xml");
}

TEST(EntityDeclarations, are_found_by_any_occurrence_before_a_blank) {
  // The end of another name serves, so no name may be the ending of another.
  EXPECT_EQ(fileOf("<!ENTITY xa SYSTEM \"xa.xml\"><!ENTITY a SYSTEM \"a.xml\">", "a"), "xa.xml");
  EXPECT_EQ(fileOf("a word <!ENTITY b SYSTEM \"b.xml\"><!ENTITY a SYSTEM \"a.xml\">", "a"),
            "b.xml");
}

TEST(EntityDeclarations, need_double_quotes_right_behind_system_and_its_blank) {
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM 'a.xml'>", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM  \"a.xml\">", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM\"a.xml\">", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a system \"a.xml\">", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM ", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a PUBLIC \"x\"><!ENTITY b SYSTEM \"b.xml\">", "a"), "b.xml");
}

TEST(EntityDeclarations, have_no_empty_name) {
  EXPECT_EQ(fileOf(" SYSTEM \"a.xml\"> ", ""), "none");
}

}  // namespace
}  // namespace ksv::test
