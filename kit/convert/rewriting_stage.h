// A stage that writes its text in another way, byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kit/convert/stage.h"
#include "kit/text/offset_links.h"

namespace ksv_kit {

class RewritingStage : public Stage {
 public:
  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) final;
  void restart() final;
  uint64_t originOf(uint64_t made) const final { return links_.originOf(made); }

 protected:
  // Stands for the next byte: has to call replaceBy() once, or again for what it held back.
  virtual void takeByte(uint8_t byte) = 0;
  // Behind the last byte.
  virtual void close() {}
  virtual void forget() = 0;

  // What stands in the place of the byte; one or more.
  void replaceBy(std::string_view bytes);
  // What stands in front of it without having been there.
  void insert(std::string_view bytes);

 private:
  OffsetLinks links_;
  ByteBuffer* out_ = nullptr;
  uint64_t made_ = 0;
  uint64_t taken_ = 0;
  uint64_t pieceBegin_ = 0;
};

}  // namespace ksv_kit
