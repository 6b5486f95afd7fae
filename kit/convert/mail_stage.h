// Reads a text in UTF-7 or HZ-GB-2312, and makes UTF-8 of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "kit/charsets/charset_names.h"
#include "kit/convert/stage.h"
#include "kit/text/mail_text.h"
#include "kit/text/offset_links.h"
#include "ksv_cconv.h"

namespace ksv_kit {

class MailStage : public Stage {
 public:
  // Both outlive the stage. Throws ImpossibleConversion when the charset cannot be set up.
  MailStage(const CharsetChoice& source, const Policy& invalid);

  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) override;
  void restart() override;
  uint64_t originOf(uint64_t made) const override { return links_.originOf(made); }
  ProblemCounts counts() const override { return counts_; }

 private:
  enum class Outcome { kGoesOn, kNeedsMore, kFailed };

  bool isLast() const { return end_ != PieceEnd::kMore; }
  Outcome judgeEnd(const MailPiece& piece, ByteBuffer& out);
  bool convertPiece(const MailPiece& piece, ByteBuffer& out);
  size_t linkCharacters(const MailPiece& piece, size_t first, const uint8_t* made, size_t size);
  Problem problemAt(ProblemKind kind, size_t position, size_t length) const;
  bool answer(ProblemKind kind, size_t position, size_t length, ByteBuffer& out);

  const CharsetChoice& source_;
  const Policy& invalid_;
  std::unique_ptr<MailReader> reader_;
  ConverterRecord prepared_;
  ConverterRecord record_;

  ByteBuffer held_;    // of the text
  size_t read_ = 0;    // of these
  uint64_t base_ = 0;  // offset of the first of them
  PieceEnd end_ = PieceEnd::kMore;
  uint64_t written_ = 0;
  OffsetLinks links_;
  uint64_t pieceBegin_ = 0;
  ProblemCounts counts_;
};

}  // namespace ksv_kit
