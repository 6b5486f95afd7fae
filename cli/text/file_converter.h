// Converts one text of any length with one converter record.
//
// The text goes through in pieces: a piece is read, checked when it is in a
// Unicode form or in ISO-2022-JP, cut where a cut changes nothing, and converted; what the cut
// leaves over goes in front of the next piece. The result is that of a single
// cconvConvert call over the whole text, whatever the size of the pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "cli/charsets/charset_names.h"
#include "cli/system/streams.h"
#include "cli/text/buffer_offsets.h"
#include "cli/text/conversion_counts.h"
#include "cli/text/iso_2022_check.h"
#include "ksv_cconv.h"

namespace ksv_cli {

struct ConversionSettings {
  CharsetChoice source;  // without a name: not known yet
  CharsetChoice target;
  ConvertOptions options{};
  bool skipInvalid = false;
  bool isStrict = false;  // a text of which something was skipped or replaced has failed
  std::string language;   // announced in front of the text; empty: none
  size_t blockSize = 256 * 1024;
};

class ConversionJournal;

class FileConverter {
 public:
  // journal, when there is one, is told of every call.
  FileConverter(const ConversionSettings& settings, ByteSource& source, ByteSink& sink,
                ConversionJournal* journal = nullptr);

  // Converts everything. Throws Failure with the reason and the offset; what was
  // converted before the bad character has gone to the sink by then. A source that
  // throws ends the text; what was read before is converted, too.
  void run();

  // The same by hand: begins, and converts the next piece; false behind the last.
  void begin();
  bool convertPiece();

  // What was left out and replaced so far.
  const ConversionCounts& counts() const { return counts_; }

 private:
  void setUpTarget();
  void setUpSource();
  void fill();
  void skipByteOrderMark();
  void checkNewBytes();
  void findIllFormed();
  void dropIllFormed();
  ScanResult scanNewBytes(size_t from);
  size_t cutOfHeld() const;
  void convertHeld();
  size_t convert(size_t begin, size_t end);
  uint32_t convertOnce(ConverterRecord& before);
  bool takeInvalid(size_t start, size_t end);
  void takeUnmappable(const ConverterRecord& before);
  void takeEscape(size_t at);
  void writeReplacement(size_t start, size_t end);
  size_t nextEscape(size_t begin, size_t end) const;
  size_t unmappableStart(const ConverterRecord& before) const;
  size_t convertBehindTruncated(size_t at, size_t end);
  void aimAtOutput();
  void drain();
  void finish();
  void discard(size_t used);
  bool isLastPiece() const { return atEnd_ || malformed_; }

  uint64_t fileOffset(size_t position) const;
  [[noreturn]] void failMalformed() const;
  [[noreturn]] void failInvalid(size_t position) const;
  [[noreturn]] void failTruncated(size_t position) const;
  [[noreturn]] void failUnmappable(size_t position) const;

  const ConversionSettings& settings_;
  ByteSource& source_;
  ByteSink& sink_;
  ConversionJournal* journal_;
  ConverterRecord record_{};
  Iso2022Scanner iso2022_;
  ConversionCounts counts_;
  bool refusesEscape_ = false;  // U+001B would begin an escape sequence of the target

  std::unique_ptr<uint8_t[]> input_;
  size_t inputCapacity_;
  std::unique_ptr<uint8_t[]> output_;
  size_t outputCapacity_;

  size_t held_ = 0;     // bytes in the input buffer
  size_t checked_ = 0;  // of these, whole well-formed characters
  BufferOffsets offsets_;
  bool bigEndian_ = false;
  bool atEnd_ = false;      // the buffer holds the end of the text
  bool malformed_ = false;  // bad bytes stand at checked_
  bool truncated_ = false;  // and they are the beginning of a character
  bool wroteAny_ = false;
  std::exception_ptr readFailure_;
};

}  // namespace ksv_cli
