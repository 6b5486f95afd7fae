// Where an installation has its charset directory.
#ifndef KSV_CLI_INSTALLED_CHARSETS_H
#define KSV_CLI_INSTALLED_CHARSETS_H

namespace ksv_cli {

// As seen from the library's directory: of a build tree, of this build's installation,
// and of a usual one.
inline constexpr const char* kCharsetsFromLibrary[] = {"charset", KSV_CHARSET_RELATIVE,
                                                       "../share/ksv_comm/charset"};

}  // namespace ksv_cli

#endif
