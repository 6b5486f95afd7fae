#include "cli/text/valid_text.h"

#include <memory>

#include "cli/system/failure.h"
#include "cli/system/streams.h"
#include "cli/system/system_faults.h"
#include "cli/text/text_conversion.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

namespace {

// A source that remembers that it failed itself, whatever becomes of the failure.
class WatchedSource : public ByteSource {
 public:
  explicit WatchedSource(ByteSource& source) : source_(source) {}
  size_t read(uint8_t* buffer, size_t size) override {
    try {
      return source_.read(buffer, size);
    } catch (const Failure&) {
      hasFailed_ = true;
      throw;
    }
  }
  bool hasFailed() const { return hasFailed_; }

 private:
  ByteSource& source_;
  bool hasFailed_ = false;
};

class NoSink : public ByteSink {
 public:
  void write(const uint8_t*, size_t) override {}
};

bool hasMarkOf(const CharsetChoice& target, RereadableText& text) {
  const std::vector<uint8_t>& beginning = text.beginning();
  bool bigEndian = target.order == ByteOrder::kBig;
  return ksv_kit::byteOrderMark(target.form, true, beginning.data(), beginning.size(), bigEndian) !=
         0;
}

}  // namespace

bool isWhollyOf(RereadableText& text, const CharsetNames& names, const CharsetChoice& charset) {
  const std::optional<CharsetChoice> utf8 = names.find("UTF-8");
  if (!utf8) return false;
  ConversionSettings settings;
  settings.source = charset;
  settings.target = *utf8;
  settings.blockSize = 64 * 1024;
  const std::unique_ptr<ByteSource> opened = text.reopen();
  WatchedSource source(*opened);
  NoSink unused;
  try {
    convertText(settings, source, unused);
    return true;
  } catch (const Failure&) {
    if (source.hasFailed()) throw;
    return false;
  }
}

bool isTextOf(RereadableText& text, const CharsetNames& names, const ConversionSettings& settings) {
  if (text.beginning().empty()) return true;
  CharsetChoice target = settings.target;
  if (target.hasByteOrder()) {
    target.order = settings.options.outputBigEndian != 0 ? ByteOrder::kBig : ByteOrder::kLittle;
    if (!hasMarkOf(target, text)) return false;
  }
  const bool isValid = isWhollyOf(text, names, target);
  refuseSystemFaults();
  return isValid;
}

}  // namespace ksv_cli
