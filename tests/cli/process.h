// Starting the built command: a POSIX side (process_posix.cpp) and a Windows side
// (process_windows.cpp). Paths and arguments are UTF-8.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace ksv_cli_tests {

// A descriptor or a handle; what is started does not inherit it by itself.
using Stream = intptr_t;

Stream openForReading(const std::string& path);
Stream openForAppending(const std::string& path);  // makes a file that is missing
Stream openNullDevice();                           // for both
void writeTo(Stream stream, const std::string& text);
void closeStreams(std::initializer_list<Stream> streams);

struct Pipe {
  Stream reading;
  Stream writing;
};
Pipe makePipe();

struct StandardStreams {
  Stream in;
  Stream out;
  Stream err;
};

struct Outcome {
  int status = -1;  // exit status, or -1 when a signal ended it
  int signal = 0;
  std::string out;
  std::string err;
  long peakKilobytes = 0;
};

// A process identifier or a handle.
using Process = intptr_t;

// Starts the command in a directory, with the environment of this process.
Process startCommand(const std::string& directory, const std::vector<std::string>& arguments,
                     const StandardStreams& streams);

// Waits for its end. The texts of the outcome are left empty.
Outcome finishCommand(Process process);

}  // namespace ksv_cli_tests
