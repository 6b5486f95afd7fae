// What files are called that are not complete yet.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace ksv_cli {

inline constexpr std::string_view kPassingBegin = ".ksv-";
inline constexpr std::string_view kPassingLetters = "0123456789abcdefghijklmnopqrstuvwxyz";
inline constexpr size_t kPassingLength = 12;  // of what stands behind the beginning

inline std::string randomPassingName() {
  constexpr auto kCount = static_cast<unsigned>(kPassingLetters.size());
  std::random_device random;
  std::string name(kPassingBegin);
  // A number is good for half of them, and takes its time where many files are written.
  for (int number = 0; number < 2; ++number) {
    unsigned rest = random();
    for (size_t letter = 0; letter < kPassingLength / 2; ++letter, rest /= kCount)
      name += kPassingLetters[rest % kCount];
  }
  return name;
}

inline bool isPassingName(std::string_view name) {
  return name.size() == kPassingBegin.size() + kPassingLength && name.starts_with(kPassingBegin) &&
         name.find_first_not_of(kPassingLetters, kPassingBegin.size()) == name.npos;
}

}  // namespace ksv_cli
