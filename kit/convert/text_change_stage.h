// A change of the text between two charsets, as a stage of UTF-8.
#pragma once

#include <memory>
#include <string>

#include "kit/convert/stage.h"
#include "kit/unicode/text_change.h"

namespace ksv_kit {

class TextChangeStage : public Stage {
 public:
  explicit TextChangeStage(std::unique_ptr<TextChange> change) : change_(std::move(change)) {}

  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) override {
    made_.clear();
    change_->change({reinterpret_cast<const char*>(bytes), size}, end != PieceEnd::kMore, made_);
    out.append(made_);
    return true;
  }
  void restart() override { change_->restart(); }
  uint64_t originOf(uint64_t made) const override { return change_->originOf(made); }

 private:
  std::unique_ptr<TextChange> change_;
  std::string made_;
};

}  // namespace ksv_kit
