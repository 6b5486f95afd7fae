// Answers that may not be the last word.
#pragma once

namespace ksv {

// Tells whether answers came from tables that have a file but are not loaded, so
// that the same question may be answered otherwise later, or from tables that are not as
// their file would make them. Scopes nest.
class ProvisionalAnswers {
 public:
  ProvisionalAnswers() : outer_(noted_) { noted_ = false; }
  ~ProvisionalAnswers() { noted_ = noted_ || outer_; }
  ProvisionalAnswers(const ProvisionalAnswers&) = delete;
  ProvisionalAnswers& operator=(const ProvisionalAnswers&) = delete;

  // Whether there was one on this thread since the scope began.
  bool any() const { return noted_; }

  static void note() { noted_ = true; }

 private:
  static constinit thread_local bool noted_;
  const bool outer_;
};

}  // namespace ksv
