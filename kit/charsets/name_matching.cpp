#include "kit/charsets/name_matching.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace ksv_kit {
namespace {

constexpr size_t kMostSuggestions = 3;
// Names of charsets are short, and what is longer was meant for something else.
constexpr size_t kLongestCompared = 64;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return c >= 'a' && c <= 'z'; }

// How many characters have to be put in, left out, replaced or exchanged with their
// neighbour to turn one text into the other.
size_t editDistance(std::string_view from, std::string_view to) {
  std::vector<size_t> beforeLast;
  std::vector<size_t> last(to.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= from.size(); ++i) {
    std::vector<size_t> row = {i};
    for (size_t j = 1; j <= to.size(); ++j) {
      const bool isSame = from[i - 1] == to[j - 1];
      size_t least = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
      const bool isExchanged =
          i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (isExchanged) least = std::min(least, beforeLast[j - 2] + 1);
      row.push_back(least);
    }
    beforeLast = std::exchange(last, std::move(row));
  }
  return last.back();
}

}  // namespace

std::string lowered(std::string_view name) {
  std::string result(name);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

std::string foldedName(std::string_view name) {
  std::string folded;
  for (const char c : lowered(name)) {
    if (!isLetter(c) && !isDigit(c)) continue;
    const bool isLeadingZero = c == '0' && (folded.empty() || !isDigit(folded.back()));
    if (!isLeadingZero) folded += c;
  }
  return folded;
}

std::vector<std::string> nearestNames(std::string_view name,
                                      const std::vector<std::string>& candidates) {
  const std::string wanted = foldedName(name);
  std::vector<std::pair<size_t, std::string>> near;
  if (wanted.size() > kLongestCompared) return {};
  for (const std::string& candidate : candidates) {
    const std::string folded = foldedName(candidate);
    const size_t distance = editDistance(wanted, folded);
    const size_t allowed = std::max<size_t>(1, std::min(wanted.size(), folded.size()) / 4);
    if (distance <= allowed && distance < folded.size()) near.emplace_back(distance, candidate);
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (const auto& candidate : near) {
    const bool isThere = std::any_of(names.begin(), names.end(), [&](const std::string& other) {
      return foldedName(other) == foldedName(candidate.second);
    });
    if (!isThere && names.size() < kMostSuggestions) names.push_back(candidate.second);
  }
  return names;
}

}  // namespace ksv_kit
