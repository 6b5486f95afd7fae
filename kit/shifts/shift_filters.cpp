#include <algorithm>

#include "kit/shifts/chinese_shifts.h"
#include "kit/shifts/ebcdic_shifts.h"
#include "kit/shifts/korean_shifts.h"
#include "kit/shifts/shift_filter.h"

namespace ksv_kit {
namespace {

using MakeFilter = std::unique_ptr<ShiftFilter> (*)();

struct Encoding {
  std::string_view name;
  std::string_view stateless;
  MakeFilter reading;
  MakeFilter writing;
};

constexpr Encoding kEncodings[] = {
    {"ibm930", "x-stateless-ibm930", ebcdicReadingFilter, ebcdicWritingFilter},
    {"ibm939", "x-stateless-ibm939", ebcdicReadingFilter, ebcdicWritingFilter},
    {"ibm1390", "x-stateless-ibm1390", ebcdicReadingFilter, ebcdicWritingFilter},
    {"ibm1399", "x-stateless-ibm1399", ebcdicReadingFilter, ebcdicWritingFilter},
    {"iso-2022-kr", "x-stateless-iso-2022-kr", koreanReadingFilter, koreanWritingFilter},
    {"iso-2022-cn", "x-stateless-iso-2022-cn", chineseReadingFilter, chineseWritingFilter},
};

const Encoding* find(std::string_view lowerName) {
  const auto found =
      std::find_if(std::begin(kEncodings), std::end(kEncodings),
                   [&](const Encoding& encoding) { return encoding.name == lowerName; });
  return found == std::end(kEncodings) ? nullptr : found;
}

}  // namespace

std::unique_ptr<ShiftFilter> readingFilter(std::string_view lowerName) {
  const Encoding* encoding = find(lowerName);
  return encoding == nullptr ? nullptr : encoding->reading();
}

std::unique_ptr<ShiftFilter> writingFilter(std::string_view lowerName) {
  const Encoding* encoding = find(lowerName);
  return encoding == nullptr ? nullptr : encoding->writing();
}

std::string_view statelessCharsetOf(std::string_view lowerName) {
  const Encoding* encoding = find(lowerName);
  return encoding == nullptr ? std::string_view() : encoding->stateless;
}

}  // namespace ksv_kit
