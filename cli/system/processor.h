// What the library makes use of in the processor that the command runs on.
#pragma once

namespace ksv_cli {

// The vector instructions by which it converts, or "none".
const char* vectorInstructions();

}  // namespace ksv_cli
