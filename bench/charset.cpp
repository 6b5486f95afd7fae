#include "bench/charset.h"

namespace ksv_bench {

const Charset kWindows31J = {"WINDOWS31J", "CP932", "ibm-943_P15A-2003", "japanese", false};
const Charset kShiftJis = {"Shift_JIS", "SHIFT_JIS", "ibm-943_P15A-2003", "japanese", false};
const Charset kShiftJis2004 = {"Shift_JIS-2004", "SHIFT_JISX0213", nullptr, "japanese", false};
const Charset kEucJp = {"EUC-JP", "EUC-JP", "EUC-JP", "japanese", false};
const Charset kIso2022Jp = {"ISO-2022-JP", "ISO-2022-JP", "ISO-2022-JP", "japanese", false};
const Charset kGbk = {"ChineseGBK", "GBK", "windows-936-2000", "simplified", false};
const Charset kGb18030 = {"GB18030", "GB18030", "gb18030", "simplified", false};
const Charset kBig5 = {"ChineseBIG5", "BIG5", "windows-950-2000", "traditional", false};
const Charset kCp949 = {"KoreanKSC", "UHC", "windows-949-2000", "korean", false};
const Charset kIso88591 = {"ISO-8859-1", "ISO-8859-1", "ISO-8859-1", "latin", false};
const Charset kWindows1252 = {"windows-1252", "CP1252", "ibm-5348_P100-1997", "latin", false};
const Charset kUtf8 = {"UTF-8", "UTF-8", "UTF-8", "", false};
const Charset kUtf16 = {"UTF-16", "UTF-16LE", "UTF-16LE", "", true};

const std::vector<const Charset*>& allCharsets() {
  static const std::vector<const Charset*> all = {
      &kWindows31J, &kShiftJis, &kShiftJis2004, &kEucJp,       &kIso2022Jp, &kGbk,  &kGb18030,
      &kBig5,       &kCp949,    &kIso88591,     &kWindows1252, &kUtf8,      &kUtf16};
  return all;
}

}  // namespace ksv_bench
