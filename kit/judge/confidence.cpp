#include "kit/judge/confidence.h"

#include <algorithm>
#include <cmath>

namespace ksv_kit::judge {
namespace {

// Neighbouring characters tell the same in part, so that bits are worth the less the more there
// are.
constexpr double kCharactersAtFullWorth = 24;

// In bits of full worth.
constexpr double kTellable = 20;

// Few texts are in charsets that nobody knows.
constexpr int64_t kUnknownIsRare = 6 * kBit;

double worthOfBit(size_t high) {
  return 1 / std::sqrt(1 + static_cast<double>(high) / kCharactersAtFullWorth);
}

}  // namespace

TellableCosts::TellableCosts(const Readings& readings, size_t high)
    : above_(static_cast<int64_t>(kTellable * kBit / worthOfBit(high))) {
  for (const Reading& reading : readings) take(reading.cost);
}

std::vector<double> confidencesOf(const Readings& readings, size_t high, int64_t unknown) {
  std::vector<double> weights(readings.size());
  if (readings.empty()) return weights;
  const double worth = worthOfBit(high) / kBit;
  const int64_t best = readings.front().cost;
  const auto weightOf = [&](int64_t cost) {
    return std::exp2(-static_cast<double>(cost - best) * worth);
  };
  double sum = weightOf(std::max(unknown + kUnknownIsRare, best));
  for (size_t i = 0; i < readings.size(); ++i) {
    const bool isSaidAlready =
        std::any_of(readings.begin(), readings.begin() + static_cast<std::ptrdiff_t>(i),
                    [&](const Reading& other) { return other.sameText == readings[i].sameText; });
    weights[i] = weightOf(readings[i].cost);
    if (!isSaidAlready) sum += weights[i];
  }
  for (double& weight : weights) weight /= sum;
  return weights;
}

}  // namespace ksv_kit::judge
