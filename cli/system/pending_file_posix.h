#ifndef KSV_CLI_PENDING_FILE_POSIX_H
#define KSV_CLI_PENDING_FILE_POSIX_H

namespace ksv_cli::platform {

// To be called once, before any thread starts: the permissions of new files can only
// be asked for by changing them.
void readModeOfNewFiles();

}  // namespace ksv_cli::platform

#endif
