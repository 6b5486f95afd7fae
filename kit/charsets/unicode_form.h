// The forms in which Unicode text is encoded.
#pragma once

namespace ksv_kit {

enum class UnicodeForm { kNone, kUtf8, kUtf16, kUcs2, kUcs4 };

}  // namespace ksv_kit
