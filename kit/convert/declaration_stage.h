// What a text says of its charset, changed to what it will be in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kit/charsets/charset_names.h"
#include "kit/convert/stage.h"
#include "kit/text/declarations.h"
#include "kit/text/offset_links.h"

namespace ksv_kit {

// The change is made in the text as it comes, so that nothing else of it goes another way than
// without: between some charsets codes are handed on that stand for no character.
class DeclarationStage : public Stage {
 public:
  DeclarationStage(CharsetChoice source, DeclaredName declared);

  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) override;
  void restart() override;
  uint64_t originOf(uint64_t made) const override { return links_.originOf(made); }

 private:
  struct Edit {
    size_t at;
    size_t behind;
    std::string by;
  };

  void passBeginning(PieceEnd end, ByteBuffer& out);
  std::vector<Edit> editsOfBeginning(PieceEnd end) const;
  std::string inSource(std::string_view text) const;

  const CharsetChoice source_;
  const DeclaredName declared_;
  std::vector<uint8_t> beginning_;
  bool isPassed_ = false;
  OffsetLinks links_;
};

}  // namespace ksv_kit
