// Files that take their place when they are complete: what has to be known of the process.
#pragma once

namespace ksv_cli::platform {

// To be called once, before any thread starts: the permissions of new files can only
// be asked for by changing them.
void readModeOfNewFiles();

}  // namespace ksv_cli::platform
