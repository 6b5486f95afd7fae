#include "cli/jobs/summary_values.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace ksv_cli {
namespace {

struct Date {
  int year;
  int month;
  int day;
};

int daysOf(const Date& date) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeapYear = date.year % 4 == 0 && (date.year % 100 != 0 || date.year % 400 == 0);
  return date.month == 2 && isLeapYear ? 29 : kDays[date.month - 1];
}

// By one day, which is as much as rounding leaves.
Date carried(Date date) {
  if (date.day != daysOf(date) + 1) return date;
  date.day = 1;
  if (++date.month <= 12) return date;
  date.month = 1;
  ++date.year;
  return date;
}

// Days before 1900-03-01 are counted by a calendar of their own, and years beyond four
// digits have no place in the format.
bool canBeWritten(const Date& date) {
  const bool isOfTheCalendar = date.year > 1900 || (date.year == 1900 && date.month > 2);
  return isOfTheCalendar && date.year <= 9999 && date.month >= 1 && date.month <= 12 &&
         date.day >= 1 && date.day <= daysOf(date) + 1;
}

std::optional<int64_t> numberOf(const std::string& text) {
  int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || behind != end) return std::nullopt;
  return value;
}

}  // namespace

std::string rfc3339(const std::string& text) {
  Date date = {};
  int hours = 0;
  int minutes = 0;
  int seconds = 0;
  int length = 0;
  const int count = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%n", &date.year, &date.month,
                                &date.day, &hours, &minutes, &seconds, &length);
  if (count != 6 || static_cast<size_t>(length) != text.size() || !canBeWritten(date)) return "";
  date = carried(date);
  if (date.year > 9999) return "";
  char time[64];
  std::snprintf(time, sizeof time, "%04d-%02d-%02dT%02d:%02d:%02dZ", date.year, date.month,
                date.day, hours, minutes, seconds);
  return time;
}

nlohmann::ordered_json valueOf(const std::string& text, ValueType type) {
  if (type == ValueType::kNumber) {
    if (const std::optional<int64_t> number = numberOf(text)) return *number;
  } else if (type == ValueType::kTime) {
    if (const std::string time = rfc3339(text); !time.empty()) return time;
  }
  return text;
}

}  // namespace ksv_cli
