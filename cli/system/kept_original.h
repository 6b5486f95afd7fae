// Originals that have been kept under a second name, and what a run that was killed leaves beside
// them. Everything here is on the disk when it returns, and throws Failure with the system's own
// words.
#pragma once

#include <string>

namespace ksv_cli::platform {

// The original takes its place again: that of the file that is there.
void restoreOriginal(const std::string& kept, const std::string& place);

// The same where nothing is in its place.
void putOriginalBack(const std::string& kept, const std::string& place);

// Removes a second name of a file, or an empty file that held the name.
void removeKept(const std::string& kept);

// Removes the file that a result was written to under this name, if it is still there.
void removePassingFile(const std::string& place, const std::string& passingName);

}  // namespace ksv_cli::platform
