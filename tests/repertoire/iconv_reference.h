// iconv as a reference: the C library's own where it has one, and elsewhere the
// answers that the building machine's iconv gave.
#pragma once

#include <memory>
#include <string>

#include "tests/repertoire/repertoire.h"

namespace repertoire {

// One charset under iconv's name for it.
std::unique_ptr<Codec> iconvCodec(const std::string& charset);

// A long text in one charset, which must have all of its characters.
Bytes iconvText(const std::string& charset, const Text& text);

}  // namespace repertoire
