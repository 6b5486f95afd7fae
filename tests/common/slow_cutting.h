// The rules of CutStr once more, the long way, byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ksv::test {

// Where the first end bytes are cut; one more unit stands behind them. name is one of
// Shift_JIS, EUC-JP, EUC-JISX0213, ISO-2022-JP, ISO-2022-JP-3, GB18030, UTF-8, UTF-16,
// ISO-10646-UCS-4 and ISO-8859-1; any other is one of pairs behind a high byte.
int64_t slowCut(const std::string& name, const std::vector<uint8_t>& bytes, int64_t end);

}  // namespace ksv::test
