// Whether processes take packed charsets at all.
#pragma once

namespace ksv {

// Off for who wants the files of a directory to be used, whatever stands packed beside them. To
// be called before the rule files are loaded; it holds for the process.
void usePackedCharsets(bool areUsed);

}  // namespace ksv
