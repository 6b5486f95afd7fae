#include "kit/judge/detector.h"

#include <algorithm>

#include "kit/judge/verdict.h"

namespace ksv_kit::judge {
namespace {

// Whether it is settled is looked at between steps of this many bytes of the text, however it is
// cut.
constexpr size_t kStep = 4096;

}  // namespace

void Detector::take(const uint8_t* bytes, size_t length) {
  while (length != 0 && !isSettled_) {
    const size_t toStep = kStep - static_cast<size_t>(facts_.size() % kStep);
    const size_t count = std::min(toStep, length);
    sample_.take(bytes, count);
    facts_.take(bytes, count);
    bytes += count;
    length -= count;
    if (facts_.size() % kStep == 0) lookWhetherSettled();
  }
}

// Each time that there is as much again; the beginning is looked at first, for what shows there.
void Detector::lookWhetherSettled() {
  const bool isBeginning = facts_.size() == TextSample::kHead && facts_.hasNuls();
  const bool hasMore = sample_.telling() >= nextLook_;
  if (!isBeginning && !hasMore) return;
  if (hasMore) nextLook_ = sample_.isFull() ? SIZE_MAX : 2 * sample_.telling();
  Detection detection = verdictOn(sample_, facts_, hints_, false);
  if (!isSettledBy(detection, sample_, facts_)) return;
  isSettled_ = true;
  detection.isSettled = true;
  settled_ = std::move(detection);
}

Detection Detector::verdict(bool isWhole) const {
  return isSettled_ ? settled_ : verdictOn(sample_, facts_, hints_, isWhole);
}

Detection detect(Bytes text, const Hints& hints) {
  Detector detector(hints);
  detector.take(text.data(), text.size());
  Detection detection = detector.verdict(true);
  confirm(detection, text, detector.facts());
  return detection;
}

}  // namespace ksv_kit::judge
