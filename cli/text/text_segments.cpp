#include "cli/text/text_segments.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "cli/system/failure.h"
#include "cli/text/detection.h"
#include "cli/text/text_conversion.h"
#include "cli/text/text_failure.h"
#include "cli/text/text_verdict.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

namespace {

// What comes next of a text, so many bytes of it.
class PartSource : public ByteSource {
 public:
  PartSource(ByteSource& whole, uint64_t length) : whole_(whole), left_(length) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t most = static_cast<size_t>(std::min<uint64_t>(size, left_));
    const size_t count = most == 0 ? 0 : whole_.read(buffer, most);
    left_ -= count;
    return count;
  }

 private:
  ByteSource& whole_;
  uint64_t left_;
};

std::string placeIn(std::string_view text, uint64_t offset) {
  const std::string_view before = text.substr(0, static_cast<size_t>(offset));
  const auto lines = std::count(before.begin(), before.end(), '\n') + 1;
  return atOffset(offset) + " (line " + std::to_string(lines) + ")";
}

std::string_view partOf(std::string_view text, const ksv::Segment& segment) {
  return text.substr(static_cast<size_t>(segment.offset), static_cast<size_t>(segment.length));
}

[[noreturn]] void refuseDoubtful(std::string_view text, const ksv::Segment& segment,
                                 const ksv::Hints& hints) {
  const std::vector<std::string> names =
      likelyCharsets(ksv::detect(partOf(text, segment), hints), segment.charset);
  const std::string taken =
      names.size() == 1 ? " (--guess takes it)" : " (--guess takes the first)";
  throw Failure::at(segment.offset, "a segment may be " + joinedByOr(names) + taken,
                    placeIn(text, segment.offset));
}

CharsetChoice readableCharset(std::string_view text, const ksv::Segment& segment,
                              const CharsetNames& names) {
  if (segment.decode_as)
    if (const std::optional<CharsetChoice> charset = names.findSource(*segment.decode_as))
      return *charset;
  throw Failure::at(segment.offset,
                    "a segment is " + segment.charset + ", which the charset directory lacks",
                    placeIn(text, segment.offset));
}

// What stands in front of a text as a whole stands in front of its first part.
ConversionSettings settingsOf(const ConversionSettings& settings, const TextSegment& segment) {
  ConversionSettings made = settings;
  made.source = segment.charset;
  if (segment.found.offset == 0) return made;
  made.options.writeByteOrderMark = 0;
  made.language.clear();
  made.declared.reset();
  return made;
}

ConversionCounts convertSegment(const ConversionSettings& settings, const TextSegment& segment,
                                ByteSource& source, ByteSink& sink) {
  PartSource part(source, segment.found.length);
  try {
    return convertText(settingsOf(settings, segment), part, sink);
  } catch (const Failure& failure) {
    if (!failure.offset()) throw;
    const uint64_t offset = segment.found.offset + *failure.offset();
    throw Failure::at(offset, failure.reason(), atOffset(offset));
  }
}

}  // namespace

std::vector<TextSegment> readableSegments(std::string_view text, const ksv::Hints& hints,
                                          const CharsetNames& names, bool guess) {
  std::vector<TextSegment> segments;
  for (ksv::Segment& segment : ksv::segments(text, hints)) {
    if (segment.charset.empty())
      throw Failure::at(segment.offset, "no charset fits a segment", placeIn(text, segment.offset));
    if (!guess && segment.confidence < kLeastToConvert) refuseDoubtful(text, segment, hints);
    const CharsetChoice charset = readableCharset(text, segment, names);
    segments.push_back({std::move(segment), charset});
  }
  return segments;
}

std::vector<std::string> charsetsOf(const std::vector<TextSegment>& segments) {
  std::vector<std::string> names;
  for (const TextSegment& segment : segments)
    if (std::find(names.begin(), names.end(), segment.charset.display) == names.end())
      names.push_back(segment.charset.display);
  return names;
}

std::string segmentsInWords(const std::vector<TextSegment>& segments) {
  const std::vector<std::string> names = charsetsOf(segments);
  std::string words = "read as ";
  for (size_t i = 0; i < names.size(); ++i)
    words += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
  return words + ": " + std::to_string(segments.size()) +
         (segments.size() == 1 ? " segment" : " segments");
}

ConversionCounts convertSegments(const ConversionSettings& settings,
                                 const std::vector<TextSegment>& segments, ByteSource& source,
                                 ByteSink& sink) {
  ConversionCounts all;
  for (const TextSegment& segment : segments) {
    const ConversionCounts counts = convertSegment(settings, segment, source, sink);
    all.invalidBytes += counts.invalidBytes;
    all.replaced += counts.replaced;
  }
  return all;
}

}  // namespace ksv_cli
