#include "kit/documents/properties/times.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace ksv_kit::properties {
namespace {

constexpr uint64_t kSecond = 10'000'000;
constexpr uint64_t kDay = 86400 * kSecond;

using Days = std::chrono::sys_days;
constexpr Days kFirstDay = std::chrono::year(1601) / 1 / 1;
constexpr Days kDateZero = std::chrono::year(1899) / 12 / 30;
constexpr Days kBehindLastDay = std::chrono::year(10000) / 1 / 1;

// ".1234567", without the zeroes at its end; empty for none.
std::string fraction(uint64_t steps) {
  if (steps == 0) return "";
  char text[32];
  std::snprintf(text, sizeof text, ".%07llu", static_cast<unsigned long long>(steps));
  std::string digits = text;
  digits.erase(digits.find_last_not_of('0') + 1);
  return digits;
}

std::string timeOfDay(Days day, uint64_t steps) {
  const std::chrono::year_month_day date(day);
  const uint64_t seconds = steps / kSecond;
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02u:%02u:%02u", int{date.year()},
                unsigned{date.month()}, unsigned{date.day()}, static_cast<unsigned>(seconds / 3600),
                static_cast<unsigned>(seconds / 60 % 60), static_cast<unsigned>(seconds % 60));
  return text + fraction(steps % kSecond);
}

// Reads numbers of a fixed number of digits with what stands between them.
class TimeText {
 public:
  explicit TimeText(std::string_view text) : text_(text) {}

  bool take(char c) {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool take(size_t digits, unsigned& number) {
    if (text_.size() < digits) return false;
    number = 0;
    for (size_t i = 0; i < digits; ++i) {
      if (text_[i] < '0' || text_[i] > '9') return false;
      number = number * 10 + static_cast<unsigned>(text_[i] - '0');
    }
    text_.remove_prefix(digits);
    return true;
  }
  bool takeFraction(uint64_t& steps) {
    uint64_t unit = kSecond / 10;
    const size_t before = text_.size();
    for (unsigned digit = 0; unit > 0 && take(1, digit); unit /= 10) steps += digit * unit;
    return text_.size() < before;
  }
  bool isAtEnd() const { return text_.empty(); }

 private:
  std::string_view text_;
};

// "12:34:56.789"
bool takeTime(TimeText& text, uint64_t& steps) {
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  if (!text.take(2, hours) || !text.take(':') || !text.take(2, minutes)) return false;
  if (text.take(':') && !text.take(2, seconds)) return false;
  if (hours > 23 || minutes > 59 || seconds > 59) return false;
  steps = (hours * uint64_t{3600} + minutes * uint64_t{60} + seconds) * kSecond;
  return !text.take('.') || text.takeFraction(steps);
}

// "Z", "+09:00", or nothing, which is UTC too.
bool takeZone(TimeText& text, int64_t& behind) {
  if (text.isAtEnd() || text.take('Z')) return text.isAtEnd();
  const bool isEast = text.take('+');
  if (!isEast && !text.take('-')) return false;
  unsigned hours = 0;
  unsigned minutes = 0;
  if (!text.take(2, hours) || !text.take(':') || !text.take(2, minutes) || !text.isAtEnd())
    return false;
  if (hours > 23 || minutes > 59) return false;
  const int64_t offset = (int64_t{hours} * 3600 + int64_t{minutes} * 60) * int64_t{kSecond};
  behind = isEast ? -offset : offset;
  return true;
}

}  // namespace

std::string isoTime(uint64_t fileTime) {
  const Days day = kFirstDay + std::chrono::days(fileTime / kDay);
  if (day >= kBehindLastDay) return "";
  return timeOfDay(day, fileTime % kDay) + "Z";
}

std::string isoDuration(uint64_t steps) {
  const uint64_t seconds = steps / kSecond;
  const std::string rest = fraction(steps % kSecond);
  std::string text = "PT";
  if (seconds >= 3600) text += std::to_string(seconds / 3600) + "H";
  if (seconds / 60 % 60 != 0) text += std::to_string(seconds / 60 % 60) + "M";
  if (seconds % 60 != 0 || !rest.empty() || text.size() == 2)
    text += std::to_string(seconds % 60) + rest + "S";
  return text;
}

// The part behind the point counts from midnight on in negative days as well: -1.25 is six o'clock
// of the day before the first.
std::string isoDate(double days) {
  constexpr double kFewest = -657434;  // the year 100
  constexpr double kMost = 2958466;    // the year 10000
  if (!(days >= kFewest && days < kMost)) return "";
  const double whole = std::trunc(days);
  constexpr uint64_t kMillisecond = kSecond / 1000;
  constexpr double kMilliseconds = 86'400'000;
  const auto steps =
      static_cast<uint64_t>(std::llround(std::fabs(days - whole) * kMilliseconds)) * kMillisecond;
  const Days day =
      kDateZero + std::chrono::days(static_cast<int>(whole)) + std::chrono::days(steps / kDay);
  return day >= kBehindLastDay ? "" : timeOfDay(day, steps % kDay);
}

std::optional<uint64_t> fileTimeOf(std::string_view text) {
  TimeText rest(text);
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  if (!rest.take(4, year) || !rest.take('-') || !rest.take(2, month) || !rest.take('-') ||
      !rest.take(2, day))
    return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                         std::chrono::month(month), std::chrono::day(day)};
  if (!date.ok() || Days(date) < kFirstDay) return std::nullopt;
  uint64_t steps = 0;
  int64_t behind = 0;
  if (!rest.isAtEnd()) {
    if (!rest.take('T') && !rest.take(' ')) return std::nullopt;
    if (!takeTime(rest, steps) || !takeZone(rest, behind)) return std::nullopt;
  }
  const auto days = static_cast<uint64_t>((Days(date) - kFirstDay).count());
  const int64_t time = static_cast<int64_t>(days * kDay + steps) + behind;
  if (time < 0) return std::nullopt;
  return static_cast<uint64_t>(time);
}

}  // namespace ksv_kit::properties
