// Bound to Windows, where libraries number their exports and callers may link by
// the number alone, and where no library but the system's own is surely there.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cctype>

#include "tests/exports/export_list.h"
#include "tests/exports/library_image.h"

namespace ksv_exports {
namespace {

std::string nameOf(const Library& library) {
  return library.file == kKit.file ? "ksv" : "ksv_comm";
}

class LoadedLibrary : public testing::TestWithParam<Library> {
 protected:
  void SetUp() override { ASSERT_NE(library_, nullptr) << GetLastError(); }
  ~LoadedLibrary() override { FreeLibrary(library_); }

  const HMODULE library_ = LoadLibraryA(GetParam().file);
};
INSTANTIATE_TEST_SUITE_P(Each, LoadedLibrary, testing::ValuesIn(kLibraries),
                         [](const auto& tested) { return nameOf(tested.param); });

TEST(Exports, have_the_ordinals_of_the_list) {
  for (const Library& library : kLibraries) {
    std::map<std::string, int> listed;
    for (const Export& e : exportList(library)) listed[e.name] = e.ordinal;
    EXPECT_GT(listed.size(), 0u);
    EXPECT_EQ(readLibraryImage(library.file).ordinals, listed) << library.file;
  }
}

TEST_P(LoadedLibrary, gives_each_export_by_its_name_and_by_its_ordinal) {
  const auto symbols = readLibraryImage(GetParam().file).symbols;
  for (const Export& e : exportList(GetParam())) {
    const FARPROC byName = GetProcAddress(library_, e.name.c_str());
    const FARPROC byOrdinal =
        GetProcAddress(library_, MAKEINTRESOURCEA(static_cast<WORD>(e.ordinal)));
    EXPECT_EQ(byName, byOrdinal) << e.name;
    EXPECT_EQ(reinterpret_cast<uint64_t>(byName) - reinterpret_cast<uint64_t>(library_),
              symbols.at(e.name))
        << e.name;
  }
}

TEST_P(LoadedLibrary, has_nothing_under_a_number_that_is_not_listed) {
  std::set<int> listed;
  for (const Export& e : exportList(GetParam())) listed.insert(e.ordinal);
  for (int ordinal = 1; ordinal <= 65535; ++ordinal) {
    if (listed.contains(ordinal)) continue;
    EXPECT_EQ(GetProcAddress(library_, MAKEINTRESOURCEA(static_cast<WORD>(ordinal))), nullptr)
        << ordinal;
  }
}

// In small letters, as the system takes them for the same; those of the run-time library as one.
std::set<std::string> importsOf(const Library& library) {
  std::set<std::string> imports;
  for (std::string name : readLibraryImage(library.file).imports) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    imports.insert(name.starts_with("api-ms-win-crt-") ? "ucrtbase.dll" : name);
  }
  return imports;
}

const std::set<std::string> kSystem = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "normaliz.dll",
                                       "shell32.dll",  "ucrtbase.dll", "user32.dll"};

TEST(Imports, of_the_engine_are_libraries_of_the_system) {
  const std::set<std::string> imports = importsOf(kComm);
  EXPECT_TRUE(imports.contains("kernel32.dll"));
  EXPECT_FALSE(imports.contains("normaliz.dll"));
  for (const std::string& name : imports) EXPECT_TRUE(kSystem.contains(name)) << name;
}

TEST(Imports, of_the_library_on_the_engine_are_the_engine_and_libraries_of_the_system) {
  std::set<std::string> imports = importsOf(kKit);
  EXPECT_EQ(imports.erase("ksv_comm.dll"), 1u);
  for (const std::string& name : imports) EXPECT_TRUE(kSystem.contains(name)) << name;
}

}  // namespace
}  // namespace ksv_exports
