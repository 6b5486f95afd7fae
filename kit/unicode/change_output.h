// What a change puts out, and where it stems from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kit/text/offset_links.h"

namespace ksv_kit {

class ChangeOutput {
 public:
  void restart() { *this = ChangeOutput(); }

  // Of what was put out, only the part of the call before stays known.
  void beginCall() {
    links_.forgetBefore(latestCall_);
    latestCall_ = made_;
  }

  // What follows in the text stays as it is.
  void copy(std::string_view same, std::string& out) { put(same.size(), same, true, out); }

  // So many bytes of the text become others. Those of the same length keep the place of each
  // byte, which costs no link; of any others each stems from where the replaced ones begin.
  void replace(size_t length, std::string_view by, std::string& out) {
    put(length, by, length == by.size(), out);
  }

  uint64_t originOf(uint64_t made) const { return links_.originOf(made); }

 private:
  void put(size_t length, std::string_view made, bool movesOn, std::string& out) {
    if (movesOn) {
      links_.add(made_, origin_);
    } else {
      links_.addStanding(made_, origin_);
    }
    out += made;
    made_ += made.size();
    origin_ += length;
  }

  OffsetLinks links_;
  uint64_t made_ = 0;
  uint64_t origin_ = 0;
  uint64_t latestCall_ = 0;
};

}  // namespace ksv_kit
