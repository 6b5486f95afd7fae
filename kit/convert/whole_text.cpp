#include "kit/convert/whole_text.h"

namespace ksv_kit {
namespace {

// Most texts grow by half at most; the rest finds out that there is no room, and is done again.
size_t usualSize(size_t length) { return length + length / 2 + 64; }

std::optional<Problem> convertInSteps(const Plan& plan, const uint8_t* text, size_t length,
                                      TextTarget& target) {
  Pipeline pipeline(plan.task());
  target.clear();
  pipeline.takeWhole(text, length,
                     [&](const ByteBuffer& out) { target.append(out.data(), out.size()); });
  return pipeline.problem();
}

}  // namespace

std::optional<Problem> convertWhole(const Plan& plan, const uint8_t* text, size_t length,
                                    TextTarget& target) {
  for (size_t wanted = usualSize(length);; wanted *= 2) {
    size_t capacity = 0;
    uint8_t* buffer = target.begin(wanted, capacity);
    Plan::Fit fit;
    if (!plan.convertSound(text, length, buffer, capacity, fit)) break;
    if (fit.done) {
      target.settle(fit.written);
      return std::nullopt;
    }
    if (capacity < wanted) break;
  }
  return convertInSteps(plan, text, length, target);
}

}  // namespace ksv_kit
