// The charsets that are measured, and what each converter calls them.
#pragma once

namespace ksv_bench {

struct Charset {
  const char* library;
  const char* iconv;
  const char* icu;  // null: ICU has no such converter
  bool littleEndian;
};

extern const Charset kWindows31J;
extern const Charset kShiftJis;
extern const Charset kShiftJis2004;
extern const Charset kUtf8;
extern const Charset kUtf16;

}  // namespace ksv_bench
