#include "cconv/rules/rule_path.h"

#include <gtest/gtest.h>

#include <ostream>

namespace ksv {
static bool operator==(const PathParts& a, const PathParts& b) {
  return a.drive == b.drive && a.directory == b.directory && a.fileName == b.fileName &&
         a.extension == b.extension;
}
static std::ostream& operator<<(std::ostream& out, const PathParts& parts) {
  return out << '[' << parts.drive << "][" << parts.directory << "][" << parts.fileName << "]["
             << parts.extension << ']';
}

namespace {

struct Split {
  const char* path;
  PathParts parts;
};

const Split kSplits[] = {
    {"", {"", "", "", ""}},
    {"name", {"", "", "name", ""}},
    {"name.ext", {"", "", "name", ".ext"}},
    {"a.b.c", {"", "", "a.b", ".c"}},
    {".hidden", {"", "", "", ".hidden"}},
    {"name.", {"", "", "name", "."}},
    {"dir/name.ext", {"", "dir/", "name", ".ext"}},
    {"dir\\name.ext", {"", "dir\\", "name", ".ext"}},
    {"a/b\\c/name", {"", "a/b\\c/", "name", ""}},
    {"a.b/name", {"", "a.b/", "name", ""}},
    {"dir/", {"", "dir/", "", ""}},
    {"/dir/name.ext", {"/", "dir/", "name", ".ext"}},
    {"\\dir\\name.ext", {"\\", "dir\\", "name", ".ext"}},
    {"/name", {"/", "", "name", ""}},
    {"/", {"/", "", "", ""}},
    {"//", {"//", "", "", ""}},
    {"\\\\server\\share\\name.ext", {"\\\\server", "\\share\\", "name", ".ext"}},
    {"//server/name", {"//server", "/", "name", ""}},
    {"/\\server/name", {"/\\server", "/", "name", ""}},
    {"//server", {"//server", "", "", ""}},
    {"///name", {"//", "/", "name", ""}},
    {"C:name.ext", {"C:", "", "name", ".ext"}},
    {"c:\\dir\\name", {"c:", "\\dir\\", "name", ""}},
    {"c:/name", {"c:", "/", "name", ""}},
    {"1:name", {"", "", "1:name", ""}},
    {"ab:name", {"", "", "ab:name", ""}},
    {"/c:name", {"/", "", "c:name", ""}},
    // A Shift_JIS character with the trail byte 0x5C holds no separator, and U+8868
    // in UTF-8 has no such byte.
    {"dir\\\x95\x5Cname", {"", "dir\\", "\x95\x5Cname", ""}},
    {"\xE8\xA1\xA8\\name", {"", "\xE8\xA1\xA8\\", "name", ""}},
};

TEST(RulePath, is_split_into_drive_directory_name_and_extension) {
  for (const Split& split : kSplits) EXPECT_EQ(splitPath(split.path), split.parts) << split.path;
}

TEST(RulePath, is_joined_again_by_concatenation) {
  for (const Split& split : kSplits) EXPECT_EQ(joinPath(splitPath(split.path)), split.path);
}

TEST(RulePath, has_name_and_extension_lower_cased_and_nothing_else) {
  PathParts parts = splitPath("/DIR/JIS0208\xC1[.TXT");
  lowerFileName(parts);
  EXPECT_EQ(joinPath(parts), "/DIR/jis0208\xC1[.txt");
}

}  // namespace
}  // namespace ksv
