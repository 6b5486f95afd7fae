// Whether texts are in the code page that is declared for them.
#pragma once

#include <string>
#include <string_view>

namespace ksv_kit::properties {

// Whether bytes that are declared UTF-16 are text of single bytes instead.
bool isNarrowText(std::string_view bytes);

// Whether bytes that are declared to be in a code page of bytes are UTF-16 instead.
bool isWideText(std::string_view bytes);

// What texts are in, one a line, all without ASCII alone, that are declared to be in a charset;
// empty: none that is known. Another one than declared is answered only where the bytes leave
// little doubt: most texts of documents are a few words. isSound: all are text in the declared one.
// Throws UnusableEngine.
std::string charsetOfTexts(const std::string& lines, const std::string& declared, bool isSound);

}  // namespace ksv_kit::properties
