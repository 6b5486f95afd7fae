// Whether all of a text is well-formed UTF-8 (RFC 3629), asked of vector instructions where the
// processor has them.
//
// Each byte is looked at together with the one in front of it. Three small tables, one for each
// half of the former and one for the upper half of the latter, say which faults a pair with that
// half may have; what all three say is one. Third and fourth bytes of a character are told from
// continuation bytes that follow nothing by the leads two and three bytes in front. The method is
// that of Keiser and Lemire, "Validating UTF-8 in less than one instruction per byte" (2020).
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv_kit {

// False also where the processor has no such instructions: then nothing is known.
bool isSurelyUtf8(const uint8_t* text, size_t length);

}  // namespace ksv_kit
