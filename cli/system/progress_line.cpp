#include "cli/system/progress_line.h"

#include <cstdio>
#include <vector>

#include "cli/system/name_characters.h"

namespace ksv_cli {
namespace {

// In less time a rate says nothing.
constexpr double kLeastSeconds = 0.5;
constexpr uint64_t kLeastBytes = 64 * 1024;
// With less room for it a name is not worth showing.
constexpr size_t kLeastName = 8;

std::string withOneDigit(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f", number);
  return text;
}

std::string megabytes(double bytes) { return withOneDigit(bytes / 1e6); }

// "0:05", "12:34", "1:02:03"
std::string asTime(double seconds) {
  constexpr double kLongest = 360'000;  // a hundred hours
  const auto whole = static_cast<unsigned>(seconds < kLongest ? seconds + 0.5 : kLongest);
  char text[64];
  if (whole >= 3600)
    std::snprintf(text, sizeof text, "%u:%02u:%02u", whole / 3600, whole / 60 % 60, whole % 60);
  else
    std::snprintf(text, sizeof text, "%u:%02u", whole / 60, whole % 60);
  return text;
}

// The parts of the line, the more important ones first.
std::vector<std::string> partsOf(const Progress& progress) {
  std::vector<std::string> parts;
  if (progress.fileCount > 1)
    parts.push_back(std::to_string(progress.files) + '/' + std::to_string(progress.fileCount) +
                    " files");
  const auto bytes = static_cast<double>(progress.bytes);
  const auto total = static_cast<double>(progress.totalBytes);
  const bool isTotalKnown = progress.totalBytes != 0 && progress.bytes <= progress.totalBytes;
  parts.push_back(megabytes(bytes) + (isTotalKnown ? " of " + megabytes(total) : "") + " MB");
  if (progress.seconds < kLeastSeconds || progress.bytes < kLeastBytes) return parts;
  const double rate = bytes / progress.seconds;
  parts.push_back(megabytes(rate) + " MB/s");
  if (isTotalKnown) parts.push_back(asTime((total - bytes) / rate) + " left");
  return parts;
}

}  // namespace

std::string progressLine(const Progress& progress, size_t columns) {
  std::string line;
  for (const std::string& part : partsOf(progress)) {
    const std::string longer = line + (line.empty() ? "" : ", ") + part;
    if (longer.size() > columns) return line;
    line = longer;
  }
  constexpr size_t kGap = 2;
  if (progress.name.empty() || line.size() + kGap + kLeastName > columns) return line;
  return line + std::string(kGap, ' ') + fittedInto(columns - line.size() - kGap, progress.name);
}

}  // namespace ksv_cli
