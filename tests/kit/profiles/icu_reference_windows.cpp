// Bound to Windows, for which the tests are built without ICU.
#include "tests/kit/profiles/icu_reference.h"

namespace ksv_kit {

std::unique_ptr<repertoire::Codec> icuCodec(const std::string& /*charset*/) { return nullptr; }

}  // namespace ksv_kit
