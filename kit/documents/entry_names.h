// The names of entries: the order in which the format has siblings ([MS-CFB] 2.6.4), and the form
// in which they are shown and read back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksv_kit::documents {

char16_t upperCase(char16_t unit);

// Below 0, 0, above 0: shorter names come first, others are compared by their upper case.
int compareNames(std::u16string_view a, std::u16string_view b);

// In UTF-8. Control characters, those that turn the direction of a text, halves of pairs, '/' and
// '\' are \xHH or \uHHHH, so that each name is shown in one way and separators stand between names.
std::string shownName(std::u16string_view name);

// The name that is shown so; none where the text is no UTF-8, or has a backslash that begins no
// such escape.
std::optional<std::u16string> nameShownAs(std::string_view shown);

}  // namespace ksv_kit::documents
