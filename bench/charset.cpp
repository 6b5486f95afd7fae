#include "bench/charset.h"

namespace ksv_bench {

const Charset kWindows31J = {"WINDOWS31J", "CP932", "ibm-943_P15A-2003", false};
const Charset kShiftJis = {"Shift_JIS", "SHIFT_JIS", "ibm-943_P15A-2003", false};
const Charset kShiftJis2004 = {"Shift_JIS-2004", "SHIFT_JISX0213", nullptr, false};
const Charset kUtf8 = {"UTF-8", "UTF-8", "UTF-8", false};
const Charset kUtf16 = {"UTF-16", "UTF-16LE", "UTF-16LE", true};

}  // namespace ksv_bench
