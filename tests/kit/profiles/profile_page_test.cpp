#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/kit/profiles/profile_tables.h"

namespace ksv_kit {
namespace {

constexpr std::string_view kHeading = "## Code by code\n\n";

TEST(ProfilePage, has_the_tables_of_what_the_profiles_do) {
  std::ifstream file(KSV_PROFILES_PAGE, std::ios::binary);
  const std::string page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const size_t heading = page.find(kHeading);
  ASSERT_NE(heading, std::string::npos);
  const std::string tables = profileTables();
  const std::string_view onPage =
      std::string_view(page).substr(heading + kHeading.size(), std::string::npos);
  if (onPage != tables) {
    std::ofstream(KSV_WEB_ANSWERS "/profile_tables.md", std::ios::binary) << tables;
    ADD_FAILURE() << "docs/profiles.md ends in other tables behind '## Code by code' than "
                  << KSV_WEB_ANSWERS "/profile_tables.md";
  }
}

}  // namespace
}  // namespace ksv_kit
