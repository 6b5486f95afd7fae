// Calls SummaryInfo on documents that tests make.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "ksv_cconv.h"
#include "tests/ole/ole_file.h"
#include "tests/ole/property_set_writer.h"

namespace ksv::test {

// Found before a test moves to another drive.
inline const std::string kCharsetDirectory =
    textOf(std::filesystem::absolute(KSV_TEST_CHARSET_DIRECTORY));

struct Reading {
  uint32_t result = 0;
  std::string record;

  // A text of the record, up to its first zero.
  std::string operator[](size_t offset) const { return record.c_str() + offset; }
  std::string bytes(size_t offset, size_t count) const { return record.substr(offset, count); }
  bool isEmpty() const { return record == std::string(KSV_SUMMARY_RECORD_SIZE, '\0'); }
};

constexpr uint16_t kAllOfSlides = 9003;
constexpr uint16_t kSlidesWithoutTime = 7000;
constexpr uint16_t kSheets = 6000;
constexpr uint16_t kTexts = 5000;
constexpr uint16_t kShort = 10002;

class SummaryTest : public OleTest {
 protected:
  SummaryTest() : setting_("Charsetpath", kCharsetDirectory) {
    EXPECT_EQ(startProcess(), 1);
    EXPECT_EQ(cconvLoadRule(), 1);
    setTarget("UTF-8");
    setLanguage("Japanese");
  }
  ~SummaryTest() override { endProcess(); }

  void setTarget(const char* name) { std::strcpy(settings_.targetCharset, name); }
  void setLanguage(const char* name) { std::strcpy(settings_.language, name); }

  Reading readDocument(const std::string& bytes, uint16_t kind, uint16_t initialCodePage = 932) {
    return readPath(writeNext(bytes).c_str(), kind, initialCodePage);
  }
  Reading readPath(const char* path, uint16_t kind, uint16_t initialCodePage = 932) {
    Reading reading;
    // Whatever stood there is cleared, and nothing behind it is touched.
    reading.record.assign(KSV_SUMMARY_RECORD_SIZE + 8, 'x');
    const uint16_t parameters[3] = {kind, 0xFFFF, initialCodePage};
    reading.result = SummaryInfo(path, &settings_, reading.record.data(), parameters);
    EXPECT_EQ(reading.record.substr(KSV_SUMMARY_RECORD_SIZE), "xxxxxxxx");
    reading.record.resize(KSV_SUMMARY_RECORD_SIZE);
    return reading;
  }
  Reading readSummary(const std::vector<Property>& properties, uint16_t kind = kSlidesWithoutTime,
                      uint16_t initialCodePage = 932) {
    return readDocument(document(summary(properties)), kind, initialCodePage);
  }

  KsvSummarySettings settings_ = {};

 private:
  ScopedVariable setting_;
};

}  // namespace ksv::test
