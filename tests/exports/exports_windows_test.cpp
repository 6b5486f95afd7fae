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

class LoadedLibrary : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(library_, nullptr) << GetLastError(); }
  ~LoadedLibrary() override { FreeLibrary(library_); }

  const HMODULE library_ = LoadLibraryA(KSV_LIBRARY);
};

TEST(Exports, have_the_ordinals_of_the_list) {
  std::map<std::string, int> listed;
  for (const Export& e : exportList(kComm)) listed[e.name] = e.ordinal;
  EXPECT_GT(listed.size(), 0u);
  EXPECT_EQ(readLibraryImage(KSV_LIBRARY).ordinals, listed);
}

TEST_F(LoadedLibrary, gives_each_export_by_its_name_and_by_its_ordinal) {
  const auto symbols = readLibraryImage(KSV_LIBRARY).symbols;
  for (const Export& e : exportList(kComm)) {
    const FARPROC byName = GetProcAddress(library_, e.name.c_str());
    const FARPROC byOrdinal =
        GetProcAddress(library_, MAKEINTRESOURCEA(static_cast<WORD>(e.ordinal)));
    EXPECT_EQ(byName, byOrdinal) << e.name;
    EXPECT_EQ(reinterpret_cast<uint64_t>(byName) - reinterpret_cast<uint64_t>(library_),
              symbols.at(e.name))
        << e.name;
  }
}

TEST_F(LoadedLibrary, has_nothing_under_a_number_that_is_not_listed) {
  std::set<int> listed;
  for (const Export& e : exportList(kComm)) listed.insert(e.ordinal);
  for (int ordinal = 1; ordinal <= 65535; ++ordinal) {
    if (listed.contains(ordinal)) continue;
    EXPECT_EQ(GetProcAddress(library_, MAKEINTRESOURCEA(static_cast<WORD>(ordinal))), nullptr)
        << ordinal;
  }
}

TEST(Imports, are_libraries_of_the_system) {
  const std::set<std::string> system = {"advapi32.dll", "kernel32.dll", "msvcrt.dll",
                                        "shell32.dll",  "ucrtbase.dll", "user32.dll"};
  const auto imports = readLibraryImage(KSV_LIBRARY).imports;
  EXPECT_GT(imports.size(), 0u);
  for (std::string name : imports) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    EXPECT_TRUE(system.contains(name) || name.starts_with("api-ms-win-crt-")) << name;
  }
}

}  // namespace
}  // namespace ksv_exports
