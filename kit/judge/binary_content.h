// Files that are no text.
#pragma once

#include "kit/judge/decoding.h"

namespace ksv_kit::judge {

// Whether the beginning is that of a format of pictures, archives, programs and the like.
bool looksBinary(Bytes head);

}  // namespace ksv_kit::judge
