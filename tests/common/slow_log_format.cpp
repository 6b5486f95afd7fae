#include "tests/common/slow_log_format.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

namespace ksv::test {
namespace {

template <class Value>
std::string formatted(const std::string& format, Value value) {
  std::array<char, 9000> text;
  const int length = std::snprintf(text.data(), text.size(), format.c_str(), value);
  return {text.data(), static_cast<size_t>(length)};
}

// Digits without their leading zeroes name no more than 4095.
bool isSmall(std::string digits) {
  digits.erase(0, digits.find_first_not_of('0'));
  return digits.size() < 4 || (digits.size() == 4 && digits <= "4095");
}

// The conversion that a text begins with; empty when it is none that is carried out.
std::string conversionAt(const std::string& text) {
  size_t at = 1;
  const auto take = [&](const char* characters) {
    const size_t begin = at;
    at = std::min(text.find_first_not_of(characters, at), text.size());
    return text.substr(begin, at - begin);
  };
  take("-+ #0");
  if (!isSmall(take("0123456789"))) return "";
  const size_t point = at;
  if (text.compare(at, 1, ".") == 0) ++at;
  if (at > point && !isSmall(take("0123456789"))) return "";
  const std::set<std::string> lengths = {"", "h", "hh", "l", "ll", "j", "z", "t"};
  const std::string length = take("hljzt");
  if (!lengths.contains(length) || at == text.size()) return "";
  const std::string letters = length.empty() ? "diouxXc" : "diouxX";
  return letters.find(text[at]) == letters.npos ? "" : text.substr(0, at + 1);
}

}  // namespace

std::string printedByLibrary(const std::string& conversion, int32_t argument) {
  const char letter = conversion.back();
  const auto bits = static_cast<uint32_t>(argument);
  if (letter == 'c') return formatted(conversion, argument);
  const bool isSigned = letter == 'd' || letter == 'i';
  const size_t length = conversion.find_first_of("hljzt");
  const char kind = length == conversion.npos ? 'h' : conversion[length];
  if (kind == 'h') return isSigned ? formatted(conversion, argument) : formatted(conversion, bits);
  if (kind == 'j') {
    return isSigned ? formatted(conversion, intmax_t{argument})
                    : formatted(conversion, uintmax_t{bits});
  }
  if (kind == 'l' && conversion[length + 1] != 'l') {
    return isSigned ? formatted(conversion, static_cast<long>(argument))
                    : formatted(conversion, static_cast<unsigned long>(bits));
  }
  return isSigned ? formatted(conversion, static_cast<long long>(argument))
                  : formatted(conversion, static_cast<unsigned long long>(bits));
}

std::string slowFormat(const std::string& format, int32_t argument) {
  std::string result;
  bool used = false;
  for (size_t at = 0; at < format.size();) {
    const std::string rest = format.substr(at);
    const std::string conversion = used || rest[0] != '%' ? "" : conversionAt(rest);
    if (rest.starts_with("%%")) {
      result += '%';
      at += 2;
    } else if (!conversion.empty()) {
      result += printedByLibrary(conversion, argument);
      used = true;
      at += conversion.size();
    } else {
      result += format[at++];
    }
  }
  return result;
}

}  // namespace ksv::test
