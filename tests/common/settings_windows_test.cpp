// Bound to Windows: a library that holds settings, values in UTF-16, and the
// folder of the library as the second place of the configuration file.
#include <windows.h>

#include "tests/common/settings_fixture.h"

using ksv::test::exists;
using ksv::test::kCharsetKey;
using ksv::test::pathOf;
using ksv::test::ScopedVariable;
using ksv::test::Settings;

namespace {

constexpr char kLibrary[] = "ksv_conf.dll";

void placeLibrary(const std::string& directory) {
  const std::string built = *ksv::platform::libraryDirectory() + "/ksv_test_settings.dll";
  std::filesystem::copy_file(pathOf(built), pathOf(directory + "/" + kLibrary));
}

// A directory that the program searches for libraries while the object lives.
class SearchedDirectory {
 public:
  explicit SearchedDirectory(const std::string& path)
      : cookie_(AddDllDirectory(std::filesystem::path(pathOf(path)).make_preferred().c_str())) {}
  ~SearchedDirectory() { RemoveDllDirectory(cookie_); }
  SearchedDirectory(const SearchedDirectory&) = delete;
  SearchedDirectory& operator=(const SearchedDirectory&) = delete;

 private:
  DLL_DIRECTORY_COOKIE cookie_;
};

}  // namespace

TEST_F(Settings, come_from_a_settings_library_before_all_else) {
  placeLibrary(directory_.path());
  SearchedDirectory searched(directory_.path());
  configure("Charsetpath=/from/file\nKsvTestOther=value\n");
  ScopedVariable value(kCharsetKey, "/from/environment");
  EXPECT_EQ(read(), "C:/from/library/日本\\");
  EXPECT_EQ(read(kCharsetKey, 24), "C:/from/library/日本\\");
}

TEST_F(Settings, come_from_the_next_place_when_the_library_has_none_or_it_does_not_fit) {
  placeLibrary(directory_.path());
  SearchedDirectory searched(directory_.path());
  configure("KsvTestOther=value\nKsvTestLong=short\n");
  EXPECT_EQ(read("KsvTestOther"), "value");
  EXPECT_EQ(read("KsvTestLong"), std::string(259, 'x'));
  EXPECT_EQ(read("KsvTestLong", 259), "short");
}

TEST_F(Settings, come_from_no_library_of_the_current_directory_or_the_path) {
  placeLibrary(directory_.path());
  ScopedVariable path("PATH", directory_.path());
  configure("Charsetpath=/from/file\n");
  EXPECT_EQ(read(), "/from/file\\");
}

TEST_F(Settings, come_from_the_next_place_when_the_library_is_none) {
  ksv::test::writeFile(kLibrary, "no library");
  SearchedDirectory searched(directory_.path());
  configure("Charsetpath=/from/file\n");
  EXPECT_EQ(read(), "/from/file\\");
}

TEST_F(Settings, leave_the_library_unloaded) {
  placeLibrary(directory_.path());
  SearchedDirectory searched(directory_.path());
  EXPECT_EQ(read(), "C:/from/library/日本\\");
  std::filesystem::remove(kLibrary);
  EXPECT_FALSE(exists(kLibrary));
}

TEST_F(Settings, are_read_from_an_environment_in_utf16) {
  ScopedVariable value(kCharsetKey, "C:/坊っちゃん/한ไא");
  EXPECT_EQ(read(), "C:/坊っちゃん/한ไא\\");
}

TEST_F(Settings, stand_in_the_folder_of_the_library_too) {
  const std::vector<std::string> places = ksv::platform::configurationDirectories();
  EXPECT_EQ(places,
            (std::vector<std::string>{directory_.path(), *ksv::platform::libraryDirectory()}));
}
