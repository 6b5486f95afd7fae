// The forms in which Unicode text is encoded.
#ifndef KSV_CLI_UNICODE_FORM_H
#define KSV_CLI_UNICODE_FORM_H

namespace ksv_cli {

enum class UnicodeForm { kNone, kUtf8, kUtf16, kUcs2, kUcs4 };

}  // namespace ksv_cli

#endif
