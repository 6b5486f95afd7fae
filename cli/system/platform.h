// What the command needs of the operating system; one platform_*.cpp a system.
// Paths are UTF-8. Everything here reports errors by throwing Failure with the
// system's own words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/streams.h"

namespace ksv_cli::platform {

// The arguments of main() behind the name of the program.
std::vector<std::string> commandLineArguments(int argumentCount, char** arguments);

// Empty when the variable is not set.
std::string environmentValue(const char* name);

// The files that an operand names: where the shell leaves that to its commands,
// those that match * and ? in its last component, in ascending order. An operand
// without a match stands for itself.
std::vector<std::string> filesNamedBy(const std::string& operand);

// To be called once, before any thread starts: a closed pipe and a file that grows
// too large become write errors, and whatever ends the process and can be caught
// removes the temporary files.
void prepareProcess();

// Standard streams are binary. Where a console takes characters, UTF-8 is what is
// read from it and shown on it.
bool standardErrorIsTerminal();

// Whether that terminal obeys escape sequences, once it has been asked to.
bool standardErrorTakesEscapes();

// The system's words for one of its errors, by its number.
std::string errorText(int error);

// Writes to standard error in one go, so that lines of threads do not mix.
void writeToStandardError(std::string_view text);

// What is said where memory cannot be had.
extern const char kOutOfMemory[];

// Says so on standard error, without any.
void tellOutOfMemory() noexcept;

// Says so, and ends the process at once, with the status of a failure and without its temporary
// files.
[[noreturn]] void endOutOfMemory() noexcept;

enum class FileKind { kMissing, kRegular, kDirectory, kOther };

struct FileFacts {
  FileKind kind = FileKind::kMissing;
  uint64_t size = 0;
  uint64_t device = 0;
  uint64_t number = 0;  // of the file on its device
  uint64_t names = 0;   // hard links
  // In the system's own count, by which nothing is lost when they are given back.
  int64_t readTime = 0;
  int64_t writeTime = 0;

  bool isSameFileAs(const FileFacts& other) const {
    return kind != FileKind::kMissing && kind == other.kind && device == other.device &&
           number == other.number;
  }
  // Not written to since, as far as that can be seen.
  bool isSameTextAs(const FileFacts& other) const {
    return isSameFileAs(other) && size == other.size && writeTime == other.writeTime;
  }
};

// Follows links. What cannot be reached is kMissing, which whoever opens it is told as well.
// Throws Failure where the system cannot say what there is.
FileFacts fileFacts(const std::string& path);
FileFacts standardInputFacts();
FileFacts standardOutputFacts();

// Opening a directory fails.
std::unique_ptr<ByteSource> openInput(const std::string& path);
std::unique_ptr<ByteSource> openStandardInput();

std::unique_ptr<ByteSink> openStandardOutput();

// Opens a file that is no regular one, such as a device or a pipe, for writing.
std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path);

// What a file becomes that is converted where it is.
struct InPlace {
  FileFacts original;  // as it was before it was read
  std::string backup;  // the path at which it is kept; empty: it is not. On its volume
  bool keepsTimes = true;
};

// A file that comes into being whole or not at all. It is written under a passing
// name in the directory of its place and takes its place at commit(); without
// commit() it disappears again. Where it replaces a file, it is safe from a loss of
// power when commit() returns. A file that cannot be removed is told (console.h).
class PendingFile : public ByteSink {
 public:
  // path: the place; where it is a link, the file that the link leads to. A file
  // that is there already gives the new one its permissions and attributes.
  static std::unique_ptr<PendingFile> create(const std::string& path);

  // The same with all that the file at path has: its owner and, when they are to be
  // kept, its times. Fails where something of it cannot be kept, where it has further
  // names, which would go on naming the older text, where it has been changed since,
  // and where there is something at the path of the backup. A file whose bytes stay
  // the same is left alone, and not kept.
  static std::unique_ptr<PendingFile> createInPlace(const std::string& path, const InPlace& how);

  virtual void commit() = 0;
};

// A file in the system's directory for temporary files, which goes with the object.
class TemporaryFile : public ByteSink {
 public:
  static std::unique_ptr<TemporaryFile> create();
  // Under which others can open it, once nothing more is written.
  virtual const std::string& finish() = 0;
};

void createDirectories(const std::string& path);

// The names of the files in a directory, in ascending order. Throws Failure.
std::vector<std::string> filesIn(const std::string& directory);

// Whether names that differ in case only are one file's.
bool namesHaveNoCase();

// The path of a file of that name in the directory, and the name that a path ends in.
std::string joinPath(const std::string& directory, const std::string& name);
std::string lastComponent(const std::string& path);

// Whether a backslash parts the components of the paths of this system. Otherwise it is
// a character of names.
bool backslashSeparates();

// Equal for two paths that can be seen to name one place, whether or not a file is
// there.
std::string placeKey(const std::string& path);

}  // namespace ksv_cli::platform
