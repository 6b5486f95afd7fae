// A sample of the walks: each job under failing allocations.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/faults/walk.h"
#include "tests/system/system.h"

namespace ksv::test {
namespace {

// Of each mode.
constexpr uint64_t kMostPlaces = 24;

class LibraryFaults : public testing::TestWithParam<std::string> {};

std::vector<std::string> namesOfJobs() {
  std::vector<std::string> names;
  for (const auto& job : allJobs()) names.push_back(job->name());
  return names;
}

TEST_P(LibraryFaults, are_told_or_noted_leave_nothing_and_are_forgotten) {
  const std::string scratch = makeTemporaryDirectory("library_faults");
  for (const auto& job : allJobs()) {
    if (job->name() != GetParam()) continue;
    Walk walk(*job, scratch);
    const Totals totals = walk.run(kMostPlaces);
    EXPECT_EQ(totals.violations, 0u);
    for (const std::string& violation : walk.violations()) ADD_FAILURE() << violation;
    EXPECT_EQ(totals.told + totals.noted + totals.right, totals.places);
  }
  std::filesystem::remove_all(scratch);
}

INSTANTIATE_TEST_SUITE_P(Jobs, LibraryFaults, testing::ValuesIn(namesOfJobs()),
                         [](const auto& job) { return job.param; });

}  // namespace
}  // namespace ksv::test
