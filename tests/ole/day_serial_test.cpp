// File times as texts, against the calendar.
#include "ole/day_serial.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>

#include "tests/ole/property_set_writer.h"
#include "tests/system/system.h"

namespace ksv::test {
namespace {

constexpr uint64_t kSecond = 10'000'000;
constexpr uint64_t kDay = 86400 * kSecond;

std::string textOf(uint64_t time) { return fileTimeText(time).value_or("none"); }

TEST(DaySerial, has_no_text_before_1899_12_30) {
  EXPECT_EQ(textOf(0), "none");
  EXPECT_EQ(textOf(1), "none");
  EXPECT_EQ(textOf(fileTime(1899, 12, 29, 23, 59, 59)), "none");
  EXPECT_EQ(textOf(fileTime(1899, 12, 30)), "1900-01-00 00:00:00");
}

// Days before 1900-03-01 come out one late, for the 29th of February that 1900 never had.
TEST(DaySerial, counts_1900_as_a_leap_year) {
  EXPECT_EQ(textOf(fileTime(1899, 12, 31)), "1900-01-01 00:00:00");
  EXPECT_EQ(textOf(fileTime(1900, 1, 1)), "1900-01-02 00:00:00");
  EXPECT_EQ(textOf(fileTime(1900, 2, 27)), "1900-02-28 00:00:00");
  EXPECT_EQ(textOf(fileTime(1900, 2, 28)), "1900-02-29 00:00:00");
  EXPECT_EQ(textOf(fileTime(1900, 3, 1)), "1900-03-01 00:00:00");
  EXPECT_EQ(textOf(fileTime(1900, 12, 31)), "1900-12-31 00:00:00");
  EXPECT_EQ(textOf(fileTime(1901, 1, 1)), "1901-01-01 00:00:00");
}

TEST(DaySerial, knows_the_other_leap_years) {
  EXPECT_EQ(textOf(fileTime(2000, 2, 29, 1, 2, 3)), "2000-02-29 01:02:03");
  EXPECT_EQ(textOf(fileTime(2024, 2, 29)), "2024-02-29 00:00:00");
  EXPECT_EQ(textOf(fileTime(2100, 2, 28)), "2100-02-28 00:00:00");
  EXPECT_EQ(textOf(fileTime(2100, 3, 1)), "2100-03-01 00:00:00");
  EXPECT_EQ(textOf(fileTime(2400, 2, 29)), "2400-02-29 00:00:00");
}

TEST(DaySerial, rounds_to_the_second) {
  const uint64_t time = fileTime(2024, 3, 30, 12, 34, 56);
  EXPECT_EQ(textOf(time + kSecond * 4 / 10), "2024-03-30 12:34:56");
  EXPECT_EQ(textOf(time + kSecond * 6 / 10), "2024-03-30 12:34:57");
  EXPECT_EQ(textOf(fileTime(2024, 3, 30, 12, 34, 59) + kSecond * 6 / 10), "2024-03-30 12:35:00");
  EXPECT_EQ(textOf(fileTime(2024, 3, 30, 12, 59, 59) + kSecond * 6 / 10), "2024-03-30 13:00:00");
}

TEST(DaySerial, carries_into_the_day_but_not_into_the_month) {
  EXPECT_EQ(textOf(fileTime(2024, 3, 30, 23, 59, 59) + kSecond * 6 / 10), "2024-03-31 00:00:00");
  EXPECT_EQ(textOf(fileTime(2024, 3, 31, 23, 59, 59) + kSecond * 6 / 10), "2024-03-32 00:00:00");
  EXPECT_EQ(textOf(fileTime(2024, 12, 31, 23, 59, 59) + kSecond * 6 / 10), "2024-12-32 00:00:00");
  EXPECT_EQ(textOf(fileTime(2023, 2, 28, 23, 59, 59) + kSecond * 6 / 10), "2023-02-29 00:00:00");
}

TEST(DaySerial, agrees_with_the_calendar_on_every_day_of_600_years) {
  using namespace std::chrono;
  const sys_days first = 1900y / March / 1;
  for (sys_days day = first; day < sys_days(2500y / January / 1); day += days(1)) {
    const year_month_day date(day);
    char expected[32];
    std::snprintf(expected, sizeof expected, "%4i-%02u-%02u 00:00:00",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()));
    const auto sinceStart = (day - sys_days(1601y / January / 1)).count();
    ASSERT_EQ(textOf(static_cast<uint64_t>(sinceStart) * kDay), expected);
  }
}

TEST(DaySerial, agrees_with_the_clock_on_random_seconds) {
  std::mt19937_64 random(testSeed());
  for (int i = 0; i < 100000; ++i) {
    const int hour = static_cast<int>(random() % 24);
    const int minute = static_cast<int>(random() % 60);
    const int second = static_cast<int>(random() % 60);
    const int year = 1901 + static_cast<int>(random() % 500);
    char expected[32];
    std::snprintf(expected, sizeof expected, "%4i-06-15 %02i:%02i:%02i", year, hour, minute,
                  second);
    ASSERT_EQ(textOf(fileTime(year, 6, 15, hour, minute, second)), expected);
  }
}

// Year by year, as the rule is told; the fast way skips whole cycles of the calendar.
std::string slowText(uint64_t time) {
  const double days = static_cast<double>(time) / 8.64e11 - 109205;
  int64_t day = static_cast<int64_t>(days);
  int year = 1900;
  const auto isLeap = [&] {
    return year == 1900 || (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  };
  while (day > (isLeap() ? 366 : 365)) {
    day -= isLeap() ? 366 : 365;
    ++year;
  }
  const int lengths[] = {31, isLeap() ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  int month = 0;
  while (day > lengths[month]) day -= lengths[month++];
  char text[32];
  std::snprintf(text, sizeof text, "%4i-%02i-%02i", year, month + 1, static_cast<int>(day));
  return text;
}

TEST(DaySerial, reaches_as_far_as_the_number_does) {
  std::mt19937_64 random(testSeed());
  for (int i = 0; i < 300; ++i) {
    // At noon, so that rounding moves nothing.
    const uint64_t time = random() / kDay * kDay + kDay / 2;
    if (time / kDay < 109205) continue;
    ASSERT_EQ(textOf(time), slowText(time) + " 12:00:00");
  }
  EXPECT_EQ(textOf(~uint64_t{0}).substr(0, 11), "60056-05-28");
}

}  // namespace
}  // namespace ksv::test
