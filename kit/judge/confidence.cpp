#include "kit/judge/confidence.h"

#include <algorithm>

namespace ksv_kit::judge {
namespace {

// Neighbouring characters tell the same in part, so that bits are worth the less the more there
// are.
constexpr double kCharactersAtFullWorth = 24;

// In bits of full worth.
constexpr double kTellable = 20;

// Few texts are in charsets that nobody knows.
constexpr int64_t kUnknownIsRare = 6 * kBit;

// With arithmetic of its own: the library of mathematics would have to be loaded for these two by
// whatever loads this one.
double squareRoot(double value) {
  double root = value > 1 ? value : 1;
  for (double better = (root + value / root) / 2; better < root; better = (root + value / root) / 2)
    root = better;
  return root;
}

// 2 to a power that is not positive; by the series of e to the x between 0 and ln 2.
double powerOfTwo(double power) {
  constexpr double kSmallest = -1000;
  constexpr double kNaturalLogarithm = 0.6931471805599453;
  if (power < kSmallest) return 0;
  int whole = 0;
  while (power <= -1) {
    const int step = power < -32 ? 32 : 1;
    power += step;
    whole += step;
  }
  double term = 1;
  double result = 1;
  for (int i = 1; i < 20; ++i) {
    term *= power * kNaturalLogarithm / i;
    result += term;
  }
  for (; whole >= 32; whole -= 32) result /= 4294967296.0;
  for (; whole > 0; --whole) result /= 2;
  return result;
}

double worthOfBit(size_t high) {
  return 1 / squareRoot(1 + static_cast<double>(high) / kCharactersAtFullWorth);
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
    return powerOfTwo(-static_cast<double>(cost - best) * worth);
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
