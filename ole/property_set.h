// The property sets of a document ([MS-OLEPS] 2.21, 2.20).
#pragma once

#include <cstddef>
#include <cstdint>

#include "ole/compound_file.h"
#include "ole/summary_fields.h"
#include "ole/summary_text.h"

namespace ksv {

// What is known while the properties of a document are read.
struct SummaryReading {
  SummaryKind kind;
  uint16_t codePage;
  SummaryText text;
  uint8_t* record;
};

// Reads the properties of one set into the record. Returns a KSV_SUMMARY_... result.
uint32_t readPropertySet(CompoundFile& file, PropertySet set, SummaryReading& reading);

}  // namespace ksv
