// What the command needs of the operating system; one platform_*.cpp a system.
// Paths are UTF-8. Everything here reports errors by throwing Failure with the
// system's own words.
#ifndef KSV_CLI_PLATFORM_H
#define KSV_CLI_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "streams.h"

namespace ksv_cli::platform {

// The arguments of main() behind the name of the program.
std::vector<std::string> commandLineArguments(int argumentCount, char** arguments);

// Empty when the variable is not set.
std::string environmentValue(const char* name);

// The files that an operand names: where the shell leaves that to its commands,
// those that match * and ? in its last component, in ascending order. An operand
// without a match stands for itself.
std::vector<std::string> filesNamedBy(const std::string& operand);

// To be called once, before any thread starts: a closed pipe becomes a write
// error, and an interrupt removes the temporary files.
void prepareProcess();

// Standard streams are binary. Where a console takes characters, UTF-8 is what is
// read from it and shown on it.
bool standardErrorIsTerminal();

// Whether that terminal obeys escape sequences, once it has been asked to.
bool standardErrorTakesEscapes();

// Writes to standard error in one go, so that lines of threads do not mix.
void writeToStandardError(const std::string& text);

enum class FileKind { kMissing, kRegular, kDirectory, kOther };

struct FileFacts {
  FileKind kind = FileKind::kMissing;
  uint64_t size = 0;
  uint64_t device = 0;
  uint64_t number = 0;  // of the file on its device

  bool isSameFileAs(const FileFacts& other) const {
    return kind != FileKind::kMissing && kind == other.kind && device == other.device &&
           number == other.number;
  }
};

// Follows links.
FileFacts fileFacts(const std::string& path);
FileFacts standardInputFacts();
FileFacts standardOutputFacts();

// Opening a directory fails.
std::unique_ptr<ByteSource> openInput(const std::string& path);
std::unique_ptr<ByteSource> openStandardInput();

std::unique_ptr<ByteSink> openStandardOutput();

// Opens a file that is no regular one, such as a device or a pipe, for writing.
std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path);

// A file that comes into being whole or not at all. It is written under a passing
// name in the directory of its place and takes its place at commit(); without
// commit() it disappears again.
class PendingFile : public ByteSink {
 public:
  // path: the place; where it is a link, the file that the link leads to. A file
  // that is there already gives the new one its permissions.
  static std::unique_ptr<PendingFile> create(const std::string& path);

  // backup: the path at which the file that is there already is kept; empty: it is
  // not kept. Path and backup are on one volume.
  virtual void commit(const std::string& backup) = 0;
};

void createDirectories(const std::string& path);

// The path of a file of that name in the directory, and the name that a path ends in.
std::string joinPath(const std::string& directory, const std::string& name);
std::string lastComponent(const std::string& path);

// Equal for two paths that can be seen to name one place, whether or not a file is
// there.
std::string placeKey(const std::string& path);

}  // namespace ksv_cli::platform

#endif
