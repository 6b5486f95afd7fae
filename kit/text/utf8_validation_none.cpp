#include "kit/text/utf8_validation.h"

namespace ksv_kit {

bool isSurelyUtf8(const uint8_t*, size_t) { return false; }

}  // namespace ksv_kit
