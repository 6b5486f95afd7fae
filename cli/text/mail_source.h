// A text in UTF-7 or HZ-GB-2312, handed on as the UTF-8 that the library makes of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "cli/system/streams.h"
#include "cli/text/conversion_counts.h"
#include "cli/text/file_converter.h"
#include "cli/text/mail_text.h"
#include "cli/text/offset_links.h"
#include "ksv_cconv.h"

namespace ksv_cli {

class MailSource : public ByteSource {
 public:
  MailSource(const ConversionSettings& settings, ByteSource& source);

  // Bad text throws when all in front of it has been read.
  size_t read(uint8_t* buffer, size_t size) override;
  uint64_t fileOffset(uint64_t offset) const override;
  void forgetBefore(uint64_t offset) override;

  const ConversionCounts& counts() const { return counts_; }

 private:
  void readPiece();
  void fill();
  void discard(size_t used);
  void judgeEnd(const MailPiece& piece);
  void convertPiece(const MailPiece& piece);
  size_t linkCharacters(const MailPiece& piece, size_t first);
  uint64_t originOf(size_t position) const;
  template <typename Reason>
  void leaveOutOr(size_t length, Reason reason);

  const ConversionSettings& settings_;
  ByteSource& source_;
  std::unique_ptr<MailReader> reader_;
  ConverterRecord record_{};

  std::vector<uint8_t> held_;  // of the text
  uint64_t base_ = 0;          // offset of the first of them
  bool atEnd_ = false;
  std::exception_ptr failure_;

  std::vector<uint8_t> piece_;  // UTF-8 to be read
  size_t pieceRead_ = 0;
  uint64_t written_ = 0;
  OffsetLinks links_;
  ConversionCounts counts_;
};

}  // namespace ksv_cli
