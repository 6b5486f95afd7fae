// The charsets that are measured, and what each converter calls them.
#pragma once

#include <vector>

namespace ksv_bench {

struct Charset {
  const char* library;
  const char* iconv;
  const char* icu;     // null: ICU has no such converter
  const char* script;  // empty: all of Unicode
  bool littleEndian;
};

extern const Charset kWindows31J;
extern const Charset kShiftJis;
extern const Charset kShiftJis2004;
extern const Charset kEucJp;
extern const Charset kIso2022Jp;
extern const Charset kGbk;
extern const Charset kGb18030;
extern const Charset kBig5;
extern const Charset kCp949;
extern const Charset kIso88591;
extern const Charset kWindows1252;
extern const Charset kUtf8;
extern const Charset kUtf16;

const std::vector<const Charset*>& allCharsets();

}  // namespace ksv_bench
