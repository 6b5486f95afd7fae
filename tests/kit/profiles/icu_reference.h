// ICU as a reference, where there is one.
#pragma once

#include <memory>
#include <string>

#include "tests/repertoire/repertoire.h"

namespace ksv_kit {

// One charset under ICU's name for it; null where there is no ICU.
std::unique_ptr<repertoire::Codec> icuCodec(const std::string& charset);

}  // namespace ksv_kit
