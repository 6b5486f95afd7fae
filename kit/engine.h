// The engine, as this library makes use of it: started by whoever first needs it, and kept until
// the process ends.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "common/faults.h"
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
  uint64_t faultCount() const { return faults_ == nullptr ? 0 : faults_->count(); }
  // Throws UnusableEngine with the first of them behind so many.
  void refuseFaultsBehind(uint64_t count) const;

  Engine(CharsetNames names, const ksv::FaultAccess* faults);
  static Engine* start();

  const CharsetNames names_;
  const ksv::FaultAccess* const faults_;
};

}  // namespace ksv_kit
