// The places of files, and that what stands there is on the disk. Throws Failure.
#pragma once

#include <string>

namespace ksv_cli::platform {

// What has no disk behind it has nothing to wait for.
void synchronise(int number);

// A directory that may be written to, but not read, waits for all there is.
void synchroniseDirectory(const std::string& path);

// Empty: the current one.
std::string directoryOf(const std::string& path);

// Where a chain of links ends, whether or not a file is there.
std::string linkEnd(const std::string& path);

}  // namespace ksv_cli::platform
