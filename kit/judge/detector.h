// Looks at a text that comes in pieces.
#pragma once

#include <utility>

#include "kit/judge/decoding.h"
#include "kit/judge/detection.h"
#include "kit/judge/text_facts.h"
#include "kit/judge/text_sample.h"

namespace ksv_kit::judge {

class Detector {
 public:
  explicit Detector(Hints hints) : hints_(std::move(hints)) {}

  // What comes when all is settled is not looked at any more.
  void take(const uint8_t* bytes, size_t length);
  bool isSettled() const { return isSettled_; }
  const TextFacts& facts() const { return facts_; }

  // isWhole: that was all of the text. Throws UnusableEngine.
  Detection verdict(bool isWhole) const;

 private:
  void lookWhetherSettled();

  Hints hints_;
  TextSample sample_;
  TextFacts facts_;
  size_t nextLook_ = 2048;  // at so much that tells something
  bool isSettled_ = false;
  Detection settled_;
};

// The verdict on a text that is all there, all of which is looked at for the best guess.
Detection detect(Bytes text, const Hints& hints);

}  // namespace ksv_kit::judge
