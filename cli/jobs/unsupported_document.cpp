#include "cli/jobs/unsupported_document.h"

#include <cstring>
#include <vector>

#include "cli/system/files.h"
#include "cli/system/inputs.h"

namespace ksv_cli {
namespace {

// Offsets are signed 32-bit numbers.
constexpr uint64_t kTooLarge = uint64_t{1} << 31;

constexpr size_t kHeaderSize = 512;
constexpr size_t kSectorShift = 30;
constexpr unsigned kReadShift = 9;
// The other size that documents have.
constexpr unsigned kLargeShift = 12;
constexpr char kNotSupported[] = ": not supported by --classic";

bool isDocument(const std::vector<uint8_t>& header) {
  constexpr uint8_t kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
  return header.size() == kHeaderSize &&
         std::memcmp(header.data(), kSignature, sizeof kSignature) == 0;
}

}  // namespace

std::optional<Failure> unsupportedFile(const std::string& path) {
  const std::vector<uint8_t> header = readAtMost(*platform::openInput(path), kHeaderSize);
  if (!isDocument(header)) return std::nullopt;
  const unsigned shift = header[kSectorShift] | unsigned{header[kSectorShift + 1]} << 8;
  if (shift == kLargeShift)
    return Failure::at(kSectorShift, std::string("has sectors of 4,096 bytes") + kNotSupported);
  if (shift == kReadShift && platform::fileFacts(path).size >= kTooLarge)
    return Failure(std::string("is larger than 2 GB") + kNotSupported);
  return std::nullopt;
}

std::optional<Failure> unsupportedStream(const std::string& path, uint32_t size) {
  if (size >= kTooLarge)
    return Failure("has a stream of " + std::to_string(size) + " bytes, beyond 2 GB" +
                   kNotSupported);
  return unsupportedFile(path);
}

}  // namespace ksv_cli
