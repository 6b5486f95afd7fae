// What tests compare the bulk path with the step-by-step engine by.
#pragma once

#include "cconv/convert/bulk.h"
#include "tests/convert/converter.h"

namespace ksv_test {

inline constexpr const char* kCharsets[] = {
    "Shift_JIS",       "WINDOWS31J", "Shift_JIS-2004",   "UTF-8",        "UTF-16",
    "EUC-JP",          "EUC-JP-MS",  "EUC-JIS-2004",     "EUC-JP-FIX",   "ISO-10646-UCS-2",
    "ISO-2022-JP",     "OASYS_WIN",  "ISO-2022-JP-2004", "OASYS_ONLINE", "ISO-10646-UCS-4",
    "ChineseGBK",      "GB18030",    "KoreanKSC",        "ISO-8859-1",   "windows-1252",
    "ISO-2022-JP-KANA"};

// Within a scope of the other, only the engine converts.
class BulkAlways {
 public:
  BulkAlways() { ksv::setBulkPath(ksv::BulkPath::kAlways); }
  ~BulkAlways() { ksv::setBulkPath(ksv::BulkPath::kWhereItPays); }
  BulkAlways(const BulkAlways&) = delete;
  BulkAlways& operator=(const BulkAlways&) = delete;
};
class EngineOnly {
 public:
  EngineOnly() { ksv::setBulkPath(ksv::BulkPath::kNever); }
  ~EngineOnly() { ksv::setBulkPath(ksv::BulkPath::kAlways); }
  EngineOnly(const EngineOnly&) = delete;
  EngineOnly& operator=(const EngineOnly&) = delete;
};

// The shipped charsets, and the bulk path for every text.
class BulkTest : public ConversionTest {
 private:
  BulkAlways bulkAlways_;
};

}  // namespace ksv_test
