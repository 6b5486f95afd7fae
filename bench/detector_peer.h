// The peer of text detection, where the machine has one.
#pragma once

#include <cstddef>
#include <memory>

namespace ksv_bench {

class DetectorPeer {
 public:
  // Null where there is none.
  static std::unique_ptr<DetectorPeer> open();

  virtual ~DetectorPeer() = default;
  virtual const char* name() const = 0;
  // Whether it names any encoding for the text.
  virtual bool detect(const char* text, size_t length) = 0;
};

}  // namespace ksv_bench
