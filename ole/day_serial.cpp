// Days are counted as spreadsheets count them: 1 is 1900-01-01, and 1900 has a 29th of
// February that never was. Two days before it, and the days before the count begins, come
// out beside the calendar; callers compare these texts, so it stays so.
#include "ole/day_serial.h"

#include <cmath>
#include <cstdio>

namespace ksv {
namespace {

constexpr double kUnitsPerDay = 8.64e11;
constexpr double kDaysFrom1601ToSerial = 109205;  // day 0 is 1899-12-30
constexpr int kFirstYear = 1900;
constexpr int kMonthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

struct Date {
  int year;
  int month;
  int day;
};

struct Time {
  int hours;
  int minutes;
  int seconds;
};

bool isLeapYear(int year) {
  return year == kFirstYear || (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0));
}

int daysOfYear(int year) { return isLeapYear(year) ? 366 : 365; }

// Whole cycles of the calendar are taken off at once: a damaged time may lie sixty
// thousand years ahead.
Date dateOf(int day) {
  constexpr int kDaysOf400Years = 146097;
  Date date = {kFirstYear, 1, day};
  if (date.day > daysOfYear(kFirstYear)) {
    date.day -= daysOfYear(date.year++);
    const int cycles = (date.day - 1) / kDaysOf400Years;
    date.day -= cycles * kDaysOf400Years;
    date.year += cycles * 400;
  }
  while (date.day > daysOfYear(date.year)) date.day -= daysOfYear(date.year++);
  for (;; ++date.month) {
    const bool isLeapFebruary = date.month == 2 && isLeapYear(date.year);
    const int days = kMonthDays[date.month - 1] + (isLeapFebruary ? 1 : 0);
    if (date.day <= days) return date;
    date.day -= days;
  }
}

Time timeOf(double fractionOfDay) {
  const double hours = fractionOfDay * 24;
  Time time;
  time.hours = static_cast<int>(hours);
  const double minutes = (hours - time.hours) * 60;
  time.minutes = static_cast<int>(minutes);
  time.seconds = static_cast<int>((minutes - time.minutes) * 60 + 0.5);
  if (time.seconds == 60) {
    time.seconds = 0;
    ++time.minutes;
  }
  if (time.minutes == 60) {
    time.minutes = 0;
    ++time.hours;
  }
  return time;
}

}  // namespace

std::optional<std::string> fileTimeText(uint64_t fileTime) {
  const double days = static_cast<double>(fileTime) / kUnitsPerDay;
  if (days < kDaysFrom1601ToSerial) return std::nullopt;
  const double serial = days - kDaysFrom1601ToSerial;
  const double whole = std::floor(serial);
  Date date = dateOf(static_cast<int>(whole));
  Time time = timeOf(serial - whole);
  // The day is not carried into the month: the 31st is followed by the 32nd, and stays so.
  if (time.hours >= 24) {
    ++date.day;
    time.hours -= 24;
  }
  char text[64];
  std::snprintf(text, sizeof text, "%4i-%02i-%02i %02i:%02i:%02i", date.year, date.month, date.day,
                time.hours, time.minutes, time.seconds);
  return text;
}

}  // namespace ksv
