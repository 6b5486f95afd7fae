// What all filters share: a text is taken unit by unit, wherever it is cut.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "kit/shifts/shift_filter.h"
#include "kit/text/offset_links.h"

namespace ksv_kit {

class UnitFilter : public ShiftFilter {
 public:
  size_t filter(const uint8_t* bytes, size_t size, bool isEnd, std::vector<uint8_t>& out,
                size_t& bad) final;
  size_t refusedBefore() const final { return refusedBefore_; }
  uint64_t originOf(uint64_t made) const final { return links_.originOf(made); }
  void forgetBefore(uint64_t made) final { links_.forgetBefore(made); }

 protected:
  using Bytes = std::span<const uint8_t>;

  // What stands at the front of some bytes. More bytes behind them change neither a whole unit
  // nor a refused one.
  struct Unit {
    enum class Kind { kWhole, kCut, kRefused };
    Kind kind;
    size_t length;
  };
  static constexpr Unit whole(size_t length) { return {Unit::Kind::kWhole, length}; }
  static constexpr Unit refused(size_t length) { return {Unit::Kind::kRefused, length}; }
  // Longer ones are never cut: every unit is told by as many bytes.
  static constexpr Unit cut() { return {Unit::Kind::kCut, 0}; }
  static constexpr size_t kLongestUnit = 6;

  // Takes the unit at the front, writes what becomes of it and remembers its state, unless it is
  // cut or refused. There is at least one byte.
  virtual Unit take(Bytes bytes) = 0;
  // Writes what closes the text.
  virtual void close() {}

  // Appends bytes that stand for those of the unit from a place on, one for one.
  void write(Bytes made, size_t place);
  // Appends bytes that were not in the text, in front of what becomes of the unit.
  void insert(Bytes made);
  void insert(std::string_view made);

 private:
  uint64_t made() const { return madeBefore_ + (out_->size() - outBegin_); }
  // Takes units until one is cut or refused; returns how many bytes of the call are used.
  size_t takeUnits(Bytes bytes, bool isEnd, size_t& bad);
  // The unit at the front of what is kept and the bytes behind it.
  Unit takeKept(Bytes bytes);
  void dropKept(size_t count);
  size_t refuse(size_t length, size_t at, size_t& bad);

  std::vector<uint8_t>* out_ = nullptr;
  size_t outBegin_ = 0;      // where the call began to append
  uint64_t madeBefore_ = 0;  // bytes made by former calls
  uint64_t origin_ = 0;      // where the unit stands in the text
  std::array<uint8_t, kLongestUnit> kept_ = {};
  size_t keptSize_ = 0;
  size_t refusedBefore_ = 0;
  OffsetLinks links_;
};

}  // namespace ksv_kit
