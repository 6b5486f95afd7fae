#include "kit/documents/properties/times.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/ole/property_set_writer.h"

namespace ksv_kit::properties {
namespace {

using ksv::test::fileTime;

TEST(Times, of_filetimes_have_steps_of_100_nanoseconds) {
  EXPECT_EQ(isoTime(0), "1601-01-01T00:00:00Z");
  EXPECT_EQ(isoTime(1), "1601-01-01T00:00:00.0000001Z");
  EXPECT_EQ(isoTime(fileTime(2024, 2, 29, 12, 34, 56)), "2024-02-29T12:34:56Z");
  EXPECT_EQ(isoTime(fileTime(2024, 2, 29, 12, 34, 56) + 1234567), "2024-02-29T12:34:56.1234567Z");
  EXPECT_EQ(isoTime(fileTime(2024, 2, 29) + 5000000), "2024-02-29T00:00:00.5Z");
  EXPECT_EQ(isoTime(fileTime(9999, 12, 31, 23, 59, 59)), "9999-12-31T23:59:59Z");
  EXPECT_EQ(isoTime(fileTime(9999, 12, 31, 23, 59, 59) + 10'000'000), "");
  EXPECT_EQ(isoTime(UINT64_MAX), "");
}

TEST(Times, of_durations_have_hours_minutes_and_seconds) {
  EXPECT_EQ(isoDuration(0), "PT0S");
  EXPECT_EQ(isoDuration(1), "PT0.0000001S");
  EXPECT_EQ(isoDuration(600'000'000), "PT1M");
  EXPECT_EQ(isoDuration(36'000'000'000), "PT1H");
  EXPECT_EQ(isoDuration(36'000'000'000 * 30 + 3'000'000'000 + 65'000'000), "PT30H5M6.5S");
  EXPECT_EQ(isoDuration(UINT64_MAX), "PT512409557H36M10.9551615S");
}

TEST(Times, of_dates_count_days_from_the_end_of_1899) {
  EXPECT_EQ(isoDate(0), "1899-12-30T00:00:00");
  EXPECT_EQ(isoDate(2.5), "1900-01-01T12:00:00");
  EXPECT_EQ(isoDate(45351.5242592593), "2024-02-29T12:34:56");
  EXPECT_EQ(isoDate(-1.25), "1899-12-29T06:00:00");
  EXPECT_EQ(isoDate(1.9999999999), "1900-01-01T00:00:00");
  EXPECT_EQ(isoDate(-657434), "0100-01-01T00:00:00");
  EXPECT_EQ(isoDate(2958465.5), "9999-12-31T12:00:00");
  for (const double none : {1e300, -1e300, 2958466.0, -657435.0, std::nan("")})
    EXPECT_EQ(isoDate(none), "");
}

TEST(Times, are_read_as_they_are_written) {
  for (const uint64_t time : {uint64_t{0}, uint64_t{1}, fileTime(2024, 2, 29, 12, 34, 56) + 1234567,
                              fileTime(9999, 12, 31, 23, 59, 59) + 9999999})
    EXPECT_EQ(fileTimeOf(isoTime(time)), time) << isoTime(time);
  EXPECT_EQ(fileTimeOf("2024-02-29"), fileTime(2024, 2, 29));
  EXPECT_EQ(fileTimeOf("2024-02-29 12:34"), fileTime(2024, 2, 29, 12, 34));
  EXPECT_EQ(fileTimeOf("2024-02-29T12:34:56+09:00"), fileTime(2024, 2, 29, 3, 34, 56));
  EXPECT_EQ(fileTimeOf("2024-02-29T23:00:00-01:30"), fileTime(2024, 3, 1, 0, 30));
}

TEST(Times, that_are_none_are_not_read) {
  for (const char* none :
       {"", "2024", "2024-02-30", "2024-13-01", "1600-12-31", "2024-02-29T", "2024-02-29T24:00",
        "2024-02-29T12:60", "2024-02-29T12:34:60", "2024-02-29T12:34.", "2024-02-29T12:34x",
        "2024-02-29T12:34Zx", "2024-02-29T12:34+9", "1601-01-01T00:00+01:00", "29.2.2024"})
    EXPECT_EQ(fileTimeOf(none), std::nullopt) << none;
}

}  // namespace
}  // namespace ksv_kit::properties
