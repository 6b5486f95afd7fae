// The engine, as this library makes use of it: started by whoever first needs it, and kept until
// the process ends.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "cconv/engine/codec.h"
#include "kit/charsets/charset_names.h"

namespace ksv_kit {

// The charset directory, or something of it, cannot be read.
class UnusableEngine : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Engine {
 public:
  // Throws UnusableEngine; the next call tries anew.
  static const Engine& instance();

  const CharsetNames& names() const { return names_; }

  // Calls the function, which does not throw, and has the watch told what runs by vectors read
  // meanwhile on this thread.
  template <typename Function>
  void watching(ksv::RunWatch& watch, Function function) const {
    if (codec_ != nullptr) codec_->watchRuns(&watch);
    function();
    if (codec_ != nullptr) codec_->watchRuns(nullptr);
  }

  // Calls the function with the engine. Throws UnusableEngine where its work may rest on something
  // that could not be read.
  template <typename Function>
  static void refusingFaults(Function function) {
    const Engine& engine = instance();
    const uint64_t faults = engine.faultCount();
    function(engine);
    engine.refuseFaultsBehind(faults);
  }

 private:
  // How many system errors the engine has noted: an answer behind which there are more may rest
  // on what could not be read.
  uint64_t faultCount() const { return codec_ == nullptr ? 0 : codec_->faults->count(); }
  // Throws UnusableEngine with the first of them behind so many.
  void refuseFaultsBehind(uint64_t count) const;

  Engine(CharsetNames names, const ksv::CodecEntry* codec);
  static Engine* start();

  const CharsetNames names_;
  const ksv::CodecEntry* const codec_;  // any row of the table; null: there is none
};

}  // namespace ksv_kit
