// Converts one text of any length with one converter record.
//
// The text goes through in pieces, which checked_text.h reads, checks and cuts. The result is
// that of a single cconvConvert call over the whole text, whatever the size of the pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "cli/charsets/given_charset.h"
#include "cli/system/streams.h"
#include "cli/text/checked_text.h"
#include "cli/text/conversion_counts.h"
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
  bool readsBigEndian() const;
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
  [[noreturn]] void failUnmappable(size_t position) const;

  const ConversionSettings& settings_;
  CheckedText text_;
  ByteSink& sink_;
  ConversionJournal* journal_;
  ConverterRecord record_{};
  ConversionCounts counts_;
  bool refusesEscape_ = false;  // U+001B would begin an escape sequence of the target

  std::unique_ptr<uint8_t[]> output_;
  size_t outputCapacity_;

  bool wroteAny_ = false;
};

}  // namespace ksv_cli
