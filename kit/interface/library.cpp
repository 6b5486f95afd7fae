#include <cstdlib>

#include "ksv.h"

namespace {

constexpr const char* kResultNames[] = {
    "KSV_OK",         "KSV_NO_ROOM",  "KSV_INVALID",         "KSV_TRUNCATED",
    "KSV_UNMAPPABLE", "KSV_TOO_LONG", "KSV_UNKNOWN_CHARSET", "KSV_BAD_ARGUMENT",
    "KSV_NO_MEMORY",  "KSV_SYSTEM",   "KSV_NO_DOCUMENT",     "KSV_DAMAGED"};

}  // namespace

const char* ksv_version() { return KSV_VERSION; }

uint32_t ksv_version_number() { return KSV_VERSION_NUMBER; }

const char* ksv_result_name(int32_t result) {
  const bool isKnown = result >= 0 && result <= KSV_DAMAGED;
  return isKnown ? kResultNames[result] : "unknown";
}

void ksv_free(void* block) { std::free(block); }
