#include "cli/jobs/number_option.h"

#include <charconv>
#include <optional>
#include <string>

#include "cli/system/resource_limits.h"

namespace ksv_cli {
namespace {

std::optional<uint64_t> numberIn(const std::string& text) {
  uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || behind != end) return std::nullopt;
  return value;
}

}  // namespace

CLI::Validator numberFrom(uint64_t lowest, uint64_t highest) {
  const auto check = [lowest, highest](const std::string& text) {
    const std::optional<uint64_t> number = numberIn(text);
    if (number && *number >= lowest && *number <= highest) return std::string();
    return "'" + text + "' is no number from " + std::to_string(lowest) + " to " +
           std::to_string(highest);
  };
  return CLI::Validator(check, "");
}

void addJobsOption(CLI::App& job, size_t& jobs, const char* help) {
  job.add_option("-j,--jobs", jobs, help)->check(numberFrom(1, limits::kMostJobs))->type_name("N");
}

}  // namespace ksv_cli
