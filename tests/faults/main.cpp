// library_faults                              the tests, a sample of each walk
// library_faults --list                       the names of the jobs
// library_faults --whole [JOB...]             the whole walks, with totals
// library_faults --job JOB --scratch DIR      the job twice, as it is, for whoever makes the system
//                                             fail: 0 when nothing was violated, 1 when something
//                                             was, 3 when the program's own calls were refused. The
//                                             first run in a directory finds the right answer
//                --recovers                   one call is refused: what follows has to be right
//                --closing-fails              closing is refused: descriptors are not counted
//                --removing-fails             removing is refused: files may stay
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/faults/walk.h"
#include "tests/system/system.h"
#include "tests/system/test_program.h"

namespace ksv::test {
namespace {

constexpr uint64_t kAllPlaces = 1 << 30;
constexpr size_t kMostShown = 20;

void show(const Walk& walk) {
  for (size_t i = 0; i < std::min(walk.violations().size(), kMostShown); ++i)
    std::printf("%s\n", walk.violations()[i].c_str());
}

int listJobs() {
  for (const auto& job : allJobs()) std::printf("%s\n", job->name().c_str());
  return 0;
}

bool isWanted(const Job& job, const Arguments& names) {
  return names.empty() || std::find(names.begin(), names.end(), job.name()) != names.end();
}

int walkWhole(const Arguments& names) {
  const std::string scratch = makeTemporaryDirectory("library_faults");
  Totals sum;
  std::printf("%-32s %8s %8s %8s %8s %10s\n", "job", "places", "told", "noted", "right",
              "violations");
  const auto line = [](const char* name, const Totals& totals) {
    std::printf("%-32s %8llu %8llu %8llu %8llu %10llu\n", name,
                static_cast<unsigned long long>(totals.places),
                static_cast<unsigned long long>(totals.told),
                static_cast<unsigned long long>(totals.noted),
                static_cast<unsigned long long>(totals.right),
                static_cast<unsigned long long>(totals.violations));
    std::fflush(stdout);
  };
  for (const auto& job : allJobs()) {
    if (!isWanted(*job, names)) continue;
    Walk walk(*job, scratch);
    const Totals totals = walk.run(kAllPlaces);
    line(job->name().c_str(), totals);
    show(walk);
    sum.places += totals.places;
    sum.told += totals.told;
    sum.noted += totals.noted;
    sum.right += totals.right;
    sum.violations += totals.violations;
  }
  line("all", sum);
  std::filesystem::remove_all(scratch);
  return sum.violations == 0 ? 0 : 1;
}

int runJob(const std::string& name, const std::string& scratch, const Walk::OnceOptions& options) {
  for (const auto& job : allJobs()) {
    if (job->name() != name) continue;
    Walk walk(*job, scratch);
    const Totals totals = walk.runOnce(options);
    show(walk);
    return totals.violations == 0 ? 0 : 1;
  }
  std::fprintf(stderr, "no job has the name %s\n", name.c_str());
  return 2;
}

std::optional<std::string> valueBehind(const Arguments& arguments, const char* option) {
  const auto found = std::find(arguments.begin(), arguments.end(), option);
  if (found == arguments.end() || found + 1 == arguments.end()) return std::nullopt;
  return *(found + 1);
}

bool has(const Arguments& arguments, const char* option) {
  return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
}

// None where the tests are to be run.
std::optional<int> runAsTold(const Arguments& arguments) {
  if (arguments.size() < 2) return std::nullopt;
  if (arguments[1] == "--list") return listJobs();
  if (arguments[1] == "--whole") return walkWhole({arguments.begin() + 2, arguments.end()});
  const auto job = valueBehind(arguments, "--job");
  const auto scratch = valueBehind(arguments, "--scratch");
  if (!job || !scratch) return std::nullopt;
  return runJob(*job, *scratch,
                {has(arguments, "--recovers"), !has(arguments, "--closing-fails"),
                 !has(arguments, "--removing-fails")});
}

}  // namespace
}  // namespace ksv::test

// What cannot even be begun, because the system refuses the program's own calls, is no answer
// of the library: it is said, and counts as none.
int main(int argc, char** argv) try {
  ksv::test::watchBlocksOfLibrary();
  const ksv::test::Arguments arguments = ksv::test::commandLine(argc, argv);
  if (const auto result = ksv::test::runAsTold(arguments)) return *result;
  return ksv::test::runTests(argc, argv);
} catch (const std::exception& error) {
  std::printf("not begun: %s\n", error.what());
  return 3;
}
