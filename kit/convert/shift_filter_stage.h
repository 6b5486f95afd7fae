// An encoding with shifts, between its text and the stateless form that the engine knows.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/convert/stage.h"
#include "kit/shifts/shift_filter.h"

namespace ksv_kit {

class ShiftFilterStage : public Stage {
 public:
  using MakeFilter = std::function<std::unique_ptr<ShiftFilter>()>;
  // Writes text of a policy in the stateless form.
  using Encode = std::function<std::string(std::string_view utf8)>;

  // The policy outlives the stage. charset: how it is shown.
  ShiftFilterStage(MakeFilter makeFilter, Encode encode, const Policy& invalid,
                   std::string charset);

  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) override;
  void restart() override;
  uint64_t originOf(uint64_t made) const override;
  ProblemCounts counts() const override { return counts_; }

 private:
  void forgetOldInsertions();
  bool filter(const uint8_t* bytes, size_t size, bool isEnd, ByteBuffer& out);
  void noteUsed(const uint8_t* bytes, size_t size);
  bool answer(size_t bad, uint64_t at, bool isCut, ByteBuffer& out);
  void append(ByteBuffer& out);

  // What was put in among what the filter made.
  struct Insertion {
    uint64_t made;  // where it begins in what the stage made
    uint64_t length;
    uint64_t total;  // with all in front of it: so much the two differ behind it
    uint64_t origin;
  };

  const MakeFilter makeFilter_;
  const Encode encode_;
  const Policy& invalid_;
  const std::string charset_;
  std::unique_ptr<ShiftFilter> filter_;
  std::vector<uint8_t> filtered_;
  std::vector<Insertion> insertions_;
  std::string latest_;
  uint64_t taken_ = 0;
  uint64_t made_ = 0;
  uint64_t inserted_ = 0;
  uint64_t pieceBegin_ = 0;      // in what the stage made
  uint64_t filteredBefore_ = 0;  // and in what the filter made
  ProblemCounts counts_;
};

}  // namespace ksv_kit
