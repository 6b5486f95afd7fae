#include <cstddef>
#include <cstring>
#include <memory>
#include <system_error>

#include "common/guard.h"
#include "ksv_ole.h"
#include "ole/compound_file.h"
#include "ole/property_set.h"

static_assert(sizeof(KsvSummarySettings) == 520);
static_assert(offsetof(KsvSummarySettings, targetCharset) == 0);
static_assert(offsetof(KsvSummarySettings, language) == 256);
static_assert(offsetof(KsvSummarySettings, outputBigEndian) == 512);
static_assert(offsetof(KsvSummarySettings, lineEndFlags) == 516);

namespace ksv {
namespace {

// The values of the caller's array.
constexpr size_t kKind = 0;
constexpr size_t kCodePage = 2;

uint32_t readSummary(const char* path, SummaryReading& reading) {
  CompoundFault fault;
  const std::unique_ptr<CompoundFile> file = CompoundFile::open(path, fault);
  if (!file) return KSV_SUMMARY_NOT_OPENED;
  const uint32_t result = readPropertySet(*file, PropertySet::kSummary, reading);
  if (result == KSV_SUMMARY_DONE) readPropertySet(*file, PropertySet::kDocumentSummary, reading);
  return result;
}

}  // namespace
}  // namespace ksv

uint32_t SummaryInfo(const char* path, const KsvSummarySettings* settings, void* output,
                     const uint16_t* parameters) {
  if (output == nullptr) return KSV_SUMMARY_NOT_OPENED;
  std::memset(output, 0, KSV_SUMMARY_RECORD_SIZE);
  if (settings == nullptr || parameters == nullptr) return KSV_SUMMARY_NOT_OPENED;
  return ksv::guarded<uint32_t>(KSV_SUMMARY_NO_MEMORY, [&] {
    ksv::SummaryReading reading{ksv::SummaryKind(parameters[ksv::kKind]),
                                parameters[ksv::kCodePage], ksv::SummaryText(*settings),
                                static_cast<uint8_t*>(output)};
    try {
      return ksv::readSummary(path, reading);
    } catch (const std::system_error&) {
      return uint32_t{KSV_SUMMARY_NOT_OPENED};
    }
  });
}
