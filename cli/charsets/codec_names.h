// The codecs that a rule file can name.
#pragma once

namespace ksv_cli {

// Each is the end of two names: of an encoder behind "const", and of a decoder behind
// "dest".
inline constexpr const char* kCodecNames[] = {
    "SAME",
    "Shift_JIS",
    "Shift_JIS-2004",
    "WINDOWS31J",
    "ISO-10646-UCS-2",
    "UTF-16",
    "ISO-10646-UCS-4",
    "UTF-8",
    "EUC-JP",
    "EUC-JP-FIX",
    "EUC-JIS-2004",
    "ISO-2022-JP",
    "ISO-2022-JP-2004",
    "CP50220",
    "OASYS_WIN",
    "OASYS_ONLINE",
};

}  // namespace ksv_cli
