// Every bound of what a text, a mail or a document may cost the command beyond its output.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv_cli::limits {

// ---- Texts. Memory does not grow with them but for the last. ----

// What a text from a pipe that is read more than once keeps in memory; the rest goes to a file.
constexpr size_t kMostInMemory = 4 * 1024 * 1024;
// More of a text than this changes nothing: detection reads no chunk behind 4 MiB, and this is
// more than the chunk that reaches over it.
constexpr size_t kMostLookedAt = 4 * 1024 * 1024 + 64 * 1024;
// So much of a text is checked; a declaration stands at its beginning.
constexpr size_t kMostChecked = 1024 * 1024;

// A text that can be judged or mended as a whole only is held in memory; a longer one is refused.
constexpr uint64_t kLongestHeld = uint64_t{2} * 1024 * 1024 * 1024;

// ---- Documents. ----

// Deeper than any document nests its storages; each level is shown in front of all below.
constexpr size_t kDeepestStorage = 256;

// ---- Work side by side. ----

constexpr uint64_t kMostJobs = 256;

}  // namespace ksv_cli::limits
