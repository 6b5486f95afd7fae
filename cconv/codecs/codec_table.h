// The codec table: the decoders and encoders that a rule file can name.
#pragma once

#include "cconv/engine/codec.h"
#include "cconv/rules/loaded_charset.h"

namespace ksv {

// The entry of exactly that name, in table order; null for an empty or unknown
// name.
const CodecEntry* findRuleRecordByName(const char* name);

// The same for the names of a charset, looked up once.
const CodecEntry* encoderOf(const LoadedCharset& charset);
const CodecEntry* decoderOf(const LoadedCharset& charset);

}  // namespace ksv
