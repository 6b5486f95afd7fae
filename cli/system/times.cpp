#include "cli/system/times.h"

#include <chrono>
#include <cstdio>

namespace ksv_cli {
namespace {

using std::chrono::nanoseconds;
using Moment = std::chrono::sys_time<nanoseconds>;

std::string upToSecond(Moment moment) {
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(moment - day));
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return text;
}

}  // namespace

std::string modificationMoment(const platform::FileFacts& facts) {
  const Moment moment{nanoseconds(platform::sinceEpoch(facts.writeTime))};
  const nanoseconds part = moment - std::chrono::floor<std::chrono::seconds>(moment);
  char text[16];
  std::snprintf(text, sizeof text, ".%09dZ", static_cast<int>(part.count()));
  return upToSecond(moment) + text;
}

std::string presentMoment() {
  const auto now = std::chrono::system_clock::now();
  return upToSecond(std::chrono::time_point_cast<nanoseconds>(now)) + "Z";
}

}  // namespace ksv_cli
