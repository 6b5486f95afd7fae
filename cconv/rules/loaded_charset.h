// A charset in the rule base: what its rule file says, and beside it what conversions have
// learned of it since.
#pragma once

#include <atomic>

#include "cconv/rules/encoded_code_cache.h"
#include "cconv/rules/rule_model.h"

namespace ksv {

struct CodecEntry;

// Filled by any thread that comes upon it, while others read (publication.h). It all follows
// from the rule file and the tables, so that whoever finds nothing here finds the same there.
struct CharsetFindings {
  // What the codec table has for the names of the rule file; null until somebody has looked.
  std::atomic<const CodecEntry*> encoder = nullptr;
  std::atomic<const CodecEntry*> decoder = nullptr;
  // Whether the tables from and to Unicode of all groups are as they will stay: those
  // that have a file are loaded. Set by whoever finds it so, behind what makes it so: the
  // tables' own flags, which he has seen.
  std::atomic<bool> encodingTablesAreReady = false;
  std::atomic<bool> decodingTablesAreReady = false;
  EncodedCodeCache encodedCodes;
};

struct LoadedCharset : CharsetDef {
  mutable CharsetFindings findings;
};

}  // namespace ksv
