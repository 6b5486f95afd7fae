// What tests compare the bulk path with the step-by-step engine by.
#pragma once

#include "cconv/bulk/registry.h"
#include "tests/convert/converter.h"

namespace ksv_test {

inline constexpr const char* kCharsets[] = {
    "Shift_JIS",        "WINDOWS31J", "Shift_JIS-2004",   "UTF-8",        "UTF-16",
    "EUC-JP",           "EUC-JP-MS",  "EUC-JIS-2004",     "EUC-JP-FIX",   "ISO-10646-UCS-2",
    "ISO-2022-JP",      "OASYS_WIN",  "ISO-2022-JP-2004", "OASYS_ONLINE", "ISO-10646-UCS-4",
    "ChineseGBK",       "GB18030",    "KoreanKSC",        "ISO-8859-1",   "windows-1252",
    "ISO-2022-JP-KANA", "CP50220",    "CP50220-KANA"};

// While it lives, texts are converted so; behind it as they are in these tests.
class While {
 public:
  explicit While(ksv::BulkPath path, ksv::BulkPath after = ksv::BulkPath::kAlways) : after_(after) {
    ksv::setBulkPathForTests(path);
  }
  ~While() { ksv::setBulkPathForTests(after_); }
  While(const While&) = delete;
  While& operator=(const While&) = delete;

 private:
  const ksv::BulkPath after_;
};
class BulkAlways : public While {
 public:
  BulkAlways() : While(ksv::BulkPath::kAlways, ksv::BulkPath::kWhereItPays) {}
};
class EngineOnly : public While {
 public:
  EngineOnly() : While(ksv::BulkPath::kNever) {}
};
class WithoutVectors : public While {
 public:
  WithoutVectors() : While(ksv::BulkPath::kAlwaysWithoutVectors) {}
};

// Without the tables derived so far: there are only so many in a process, and those who
// come later go without.
inline void startAnew() {
  endProcess();
  startProcess();
  ASSERT_EQ(cconvLoadRule(), 1);
}

// The shipped charsets, and the bulk path for every text.
class BulkTest : public ConversionTest {
 private:
  BulkAlways bulkAlways_;
};

}  // namespace ksv_test
