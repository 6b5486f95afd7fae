// One step of a text's way from its source charset to its target charset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>

#include "kit/convert/byte_buffer.h"
#include "kit/convert/problem.h"

namespace ksv_kit {

// A conversion that cannot be set up, or brought to its end, whatever the text.
class ImpossibleConversion : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What stands behind a piece of text.
enum class PieceEnd {
  kMore,       // more text
  kEnd,        // nothing: the text ends here
  kBrokenOff,  // a problem: all that is held is converted, and nothing is closed
};

// What was left out or written otherwise.
struct ProblemCounts {
  uint64_t invalidBytes = 0;
  uint64_t unmappable = 0;  // characters

  ProblemCounts& operator+=(const ProblemCounts& other) {
    invalidBytes += other.invalidBytes;
    unmappable += other.unmappable;
    return *this;
  }
};

class Stage {
 public:
  virtual ~Stage() = default;

  // Takes all bytes of the piece and appends what becomes of them; what has to wait for more text
  // is kept. False: the text cannot go on, problem() says why, and what stands in front of
  // the problem was appended.
  virtual bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) = 0;

  // From the beginning of a new text on.
  virtual void restart() = 0;

  // The place in what the stage was given that a byte which it made comes from, both counted from
  // the beginning of the text. Asked for what the latest two pieces made.
  virtual uint64_t originOf(uint64_t made) const = 0;

  virtual ProblemCounts counts() const { return {}; }

  void follow(const Stage& previous) { previous_ = &previous; }
  const std::optional<Problem>& problem() const { return problem_; }

 protected:
  // A place in what this stage was given, as one of the whole text.
  uint64_t placeInText(uint64_t own) const {
    return previous_ == nullptr ? own : previous_->placeInText(previous_->originOf(own));
  }
  bool fail(Problem problem) {
    problem_ = std::move(problem);
    return false;
  }
  void forgetProblem() { problem_.reset(); }

 private:
  const Stage* previous_ = nullptr;
  std::optional<Problem> problem_;
};

}  // namespace ksv_kit
