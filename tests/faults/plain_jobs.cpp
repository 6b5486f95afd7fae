// Calls that need neither memory nor the system, and detection.
#include <cstdint>
#include <cstring>

#include "ksv_cconv.h"
#include "ksv_cut.h"
#include "ksv_detect.h"
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"
#include "ksv_sjis.h"
#include "ksv_ucs2.h"
#include "tests/faults/job.h"

namespace ksv::test {
namespace {

constexpr char kJapanese[] = "Hello, \x82\xA0\x82\xA2\x93\xFA\x96\x7B\r\n";

void answersByteOrders(Answer& answer) {
  const uint8_t bytes[4] = {0x12, 0x34, 0x56, 0x78};
  uint8_t stored[4] = {};
  answer.add("KSV_GetW_x", KSV_GetW_x(bytes));
  answer.add("KSV_GetDW_x", KSV_GetDW_x(bytes));
  answer.add("KSV_PutW_x", KSV_PutW_x(stored, 0x1234));
  answer.add("KSV_PutDW_x", KSV_PutDW_x(stored, 0x12345678));
  answer.add("system", KSV_Is_NT() + KSV_Is64bitOS() + KSV_Is64bitFS());
}

void cuts(Answer& answer) {
  for (const char* name : {"Shift_JIS", "EUC-JP", "EUC-JISX0213", "ISO-2022-JP", "ISO-2022-JP-3",
                           "UTF-8", "UTF-16", "ISO-10646-UCS-4", "GB18030", "ISO-8859-1", "none"}) {
    answer.add(name, CutStr(kJapanese, sizeof kJapanese - 1, 10, name));
  }
}

void handlesUcs2(Answer& answer) {
  const uint16_t text[] = {'A', 'b', 0x3042, 0};
  uint16_t copy[16] = {};
  KSV_ucs2strcpy(copy, text);
  KSV_ucs2strcat(copy, text);
  KSV_ucs2strncpy(copy + 8, text, 2);
  KSV_ucs2strlwr(copy);
  KSV_ucs2strupr(copy + 8);
  answer.add("KSV_ucs2strlen", KSV_ucs2strlen(copy));
  answer.add("KSV_ucs2strchr", KSV_ucs2strchr(copy, 0x3042) - copy);
  answer.add("KSV_ucs2strcmp", KSV_ucs2strcmp(copy, text));
  answer.add("KSV_ucs2strncmp", KSV_ucs2strncmp(copy, text, 1));
  answer.add("KSV_stricmp", KSV_stricmp("Abc", "aBD"));
  char narrow[8];
  answer.add("KSV_CopyStripNULL", KSV_CopyStripNULL(narrow, "a\0b", 3, 1));
  answer.add("KSV_CopyStripControlCode", KSV_CopyStripControlCode(narrow, "a\1b", 3, 1, 0));
  answer.add("KSV_GetGroupCharWidth", KSV_GetGroupCharWidth("UTF-16"));
  int classes = 0;
  for (const auto is :
       {KSV_isucs2alnum, KSV_isucs2ascii, KSV_isucs2cntrl, KSV_isucs2digit, KSV_isjis, KSV_isank,
        KSV_isucs2jis, KSV_isucs2ank, KSV_isucs2zenhira, KSV_isucs2zenkata}) {
    classes = classes * 4 + (is('A') != 0 ? 2 : 0) + (is(0x3042) != 0 ? 1 : 0);
  }
  answer.add("classes", classes);
}

void mapsSjis(Answer& answer) {
  answer.add("KSV_sjistounicode", KSV_sjistounicode(0x82A0));
  answer.add("KSV_unicodetosjis", KSV_unicodetosjis(0x3042));
}

void answersResources(Answer& answer) {
  char text[32] = {};
  int32_t number = -1;
  answer.add("KSV_GetResouceString", KSV_GetResouceString(KSV_STRING_EUC_JP, text, sizeof text));
  answer.add("is", text);
  answer.add("KSV_GetResouceInteger", KSV_GetResouceInteger(1, &number));
  answer.add("is", number);
}

void checksEncodings(Answer& answer) {
  static EncodingCheckRecord record;
  std::memset(&record, 0, sizeof record);
  record.input = reinterpret_cast<const uint8_t*>(kJapanese);
  record.end = sizeof kJapanese - 1;
  answer.add("cconvChkEncode", cconvChkEncode(&record));
  answer.add("is", record.name);
  answer.add("cconvIsEndianAware", cconvIsEndianAware("UTF-16"));
}

constexpr char kText[] = "text.txt";

// Neither its first chunk nor the first block settles it.
void installTie() { writeInput(kText, std::string(60000, 'a') + "\xA4\xA2\xA4\xA4\xC6\xFC\r\n"); }
void installShort() {
  std::string text;
  for (int i = 0; i < 200; ++i) text += kJapanese;
  writeInput(kText, text);
}

void detects(Answer& answer) {
  for (const char* language : {"Japanese", "a language with a name that is long", ""}) {
    answer.expects("dtctText", dtctText(kText, language), KSV_TEXT_FAILURE);
  }
}

}  // namespace

void addPlainJobs(Jobs& jobs) {
  const auto add = [&](const char* name, SimpleJob::Act act, SimpleJob::Install install = nullptr) {
    jobs.push_back(std::make_unique<SimpleJob>(name, act, install));
  };
  add("byte_orders", answersByteOrders);
  add("string_cutting", cuts);
  add("ucs2_strings", handlesUcs2);
  add("sjis_codes", mapsSjis);
  add("resources", answersResources);
  add("encoding_check", checksEncodings);
  add("detection", detects, installShort);
  add("detection_of_a_tie", detects, installTie);
}

}  // namespace ksv::test
