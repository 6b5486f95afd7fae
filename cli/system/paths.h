// Paths and directories. Paths are UTF-8. What fails throws Failure with the system's own words.
#pragma once

#include <string>
#include <vector>

namespace ksv_cli::platform {

// The files that an operand names: where the shell leaves that to its commands,
// those that match * and ? in its last component, in ascending order, with the directories
// among them if they are wanted. An operand without a match stands for itself.
enum class Wanted { kFiles, kFilesAndDirectories };
std::vector<std::string> filesNamedBy(const std::string& operand, Wanted wanted = Wanted::kFiles);

void createDirectories(const std::string& path);

// One directory in one that is there. It may be there already; throws Failure where a link is.
void makeDirectoryItself(const std::string& path);
inline constexpr char kLinkIsThere[] = "a symbolic link has its name";

// Whether what is at a path stands for another place.
bool isLink(const std::string& path);

std::string currentDirectory();

// A path as it is seen from another directory; an absolute one stays.
std::string pathFrom(const std::string& directory, const std::string& path);

// The names of the files in a directory, in ascending order. Throws Failure.
std::vector<std::string> filesIn(const std::string& directory);

// What is in a directory, in ascending order of the names' bytes. A link is the file that it leads
// to, or one that cannot be looked at, and nothing to be worked on where it leads to anything else.
// Throws Failure.
enum class EntryKind { kFile, kDirectory, kOther };
struct DirectoryEntry {
  std::string name;
  EntryKind kind;
};
std::vector<DirectoryEntry> entriesOf(const std::string& directory);

// Whether names that differ in case only are one file's.
bool namesHaveNoCase();

// The path of a file of that name in the directory, and the name that a path ends in.
std::string joinPath(const std::string& directory, const std::string& name);
std::string lastComponent(const std::string& path);

// A path without what it begins at: a separator, a drive.
std::string withoutRoot(const std::string& path);

// Whether a backslash parts the components of the paths of this system. Otherwise it is
// a character of names.
bool backslashSeparates();

// Equal for two paths that can be seen to name one place, whether or not a file is
// there.
std::string placeKey(const std::string& path);

}  // namespace ksv_cli::platform
