#include "kit/convert/rewriting_stage.h"

namespace ksv_kit {

bool RewritingStage::take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) {
  links_.forgetBefore(pieceBegin_);
  pieceBegin_ = made_;
  out_ = &out;
  for (size_t i = 0; i < size; ++i) takeByte(bytes[i]);
  if (end != PieceEnd::kMore) close();
  return true;
}

void RewritingStage::restart() {
  links_ = {};
  made_ = taken_ = pieceBegin_ = 0;
  forget();
}

void RewritingStage::replaceBy(std::string_view bytes) {
  links_.add(made_, taken_++);
  insert(bytes);
}

void RewritingStage::insert(std::string_view bytes) {
  out_->append(bytes);
  made_ += bytes.size();
}

}  // namespace ksv_kit
