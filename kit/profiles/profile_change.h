// What a profile does to a text.
#pragma once

#include <memory>
#include <string_view>

#include "kit/profiles/profile.h"
#include "kit/unicode/text_change.h"

namespace ksv_kit {

// The charset is the one that was asked for, not the one that the profile has in its place.
// None where there is nothing to do.
std::unique_ptr<TextChange> changeAfterDecoding(const Profile& profile,
                                                std::string_view sourceCharset);
std::unique_ptr<TextChange> changeBeforeEncoding(const Profile& profile,
                                                 std::string_view targetCharset);

// Characters as the charset directory reads them, in front of the change: their codes are none
// in the profile.
RefusedCharacters refusedAfterDecoding(const Profile& profile, std::string_view sourceCharset);

// Characters of the text in front of the change: the target does not have them.
RefusedCharacters refusedBeforeEncoding(const Profile& profile, std::string_view targetCharset);

}  // namespace ksv_kit
