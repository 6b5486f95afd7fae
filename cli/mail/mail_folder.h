// Folders of mails, a file each.
#pragma once

#include <string>
#include <vector>

namespace ksv_cli {

// The files of a Maildir (those in cur and new) or of a folder in which numbers are the names of
// the messages, in the order of their names and numbers. Throws Failure where the directory is
// neither.
std::vector<std::string> filesOfMailFolder(const std::string& directory);

}  // namespace ksv_cli
