#include "cli/text/output_charset.h"

#include <optional>
#include <string_view>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/memory_streams.h"
#include "cli/text/text_conversion.h"
#include "kit/convert/visible_replacement.h"
#include "kit/text/unicode_check.h"
#include "ksv_cconv.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;
using ksv_kit::ScanEnd;
using ksv_kit::ScanResult;
using ksv_kit::scanUnicode;
using ksv_kit::UnicodeForm;

namespace {

// With U+FFFD for what is no UTF-8: names of files may hold anything.
std::string wellFormed(std::string_view text) {
  std::string result;
  for (;;) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const ScanResult scan = scanUnicode(UnicodeForm::kUtf8, false, bytes, text.size());
    result += text.substr(0, scan.wellFormed);
    if (scan.end == ScanEnd::kAll) return result;
    result += "\uFFFD";
    text.remove_prefix(scan.wellFormed + scan.badLength);
  }
}

std::string converted(const ConversionSettings& settings, const std::string& utf8) {
  const std::string text = wellFormed(utf8);
  TextSource source(text);
  TextSink sink;
  convertText(settings, source, sink);
  return std::move(sink.text);
}

}  // namespace

OutputCharset::OutputCharset(const CharsetNames& names, const std::string& name, Lacking lacking) {
  const std::optional<CharsetChoice> target = names.find(name);
  const std::optional<CharsetChoice> source = names.find("UTF-8");
  if (!target) throw UsageError(names.unknown(name));
  if (!source) throw UsageError(names.unknown("UTF-8"));
  settings_.source = *source;
  settings_.target = *target;
  ConvertOptions& options = settings_.options;
  options.outputBigEndian = !target->hasByteOrder() || target->order == ByteOrder::kBig;
  options.replaceUnmappable = 1;
  if (lacking == Lacking::kIsShown) ksv_kit::makeReplacementVisible(settings_.target.name, options);
}

void OutputCharset::setUnmappable(ksv_policy policy) {
  settings_.options.replaceUnmappable = 0;
  settings_.changes.unmappable(policy);
}

bool OutputCharset::holds(const std::string& utf8) const {
  if (hasEverything()) return true;
  ConversionSettings strict = settings_;
  strict.options.replaceUnmappable = 0;
  strict.changes.unmappable(KSV_FAIL);
  try {
    converted(strict, utf8);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

std::string OutputCharset::encoded(const std::string& utf8) const {
  return settings_.target.form == UnicodeForm::kUtf8 ? utf8 : converted(settings_, utf8);
}

}  // namespace ksv_cli
