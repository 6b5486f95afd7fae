#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "process.h"

extern char** environ;

namespace ksv_cli_tests {
namespace {

Stream open(const std::string& path, int flags) {
  return ::open(path.c_str(), flags | O_CLOEXEC, 0600);
}

int descriptor(Stream stream) { return static_cast<int>(stream); }

}  // namespace

Stream openForReading(const std::string& path) { return open(path, O_RDONLY); }
Stream openForAppending(const std::string& path) {
  return open(path, O_WRONLY | O_CREAT | O_APPEND);
}
Stream openNullDevice() { return open("/dev/null", O_RDWR); }

void writeTo(Stream stream, const std::string& text) {
  EXPECT_EQ(::write(descriptor(stream), text.data(), text.size()),
            static_cast<ssize_t>(text.size()));
}

void closeStreams(std::initializer_list<Stream> streams) {
  for (const Stream stream : streams) ::close(descriptor(stream));
}

Pipe makePipe() {
  int ends[2] = {-1, -1};
  EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  return {ends[0], ends[1]};
}

Process startCommand(const std::string& directory, const std::vector<std::string>& arguments,
                     const StandardStreams& streams) {
  std::vector<char*> argumentPointers = {const_cast<char*>("ksv")};
  for (const std::string& argument : arguments)
    argumentPointers.push_back(const_cast<char*>(argument.c_str()));
  argumentPointers.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, descriptor(streams.in), 0);
  posix_spawn_file_actions_adddup2(&actions, descriptor(streams.out), 1);
  posix_spawn_file_actions_adddup2(&actions, descriptor(streams.err), 2);
  posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
  pid_t process = -1;
  const int error =
      ::posix_spawn(&process, KSV_COMMAND, &actions, nullptr, argumentPointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(error, 0) << "cannot start " << KSV_COMMAND;
  return process;
}

Outcome finishCommand(Process process) {
  Outcome outcome;
  int status = 0;
  rusage usage{};
  if (::wait4(static_cast<pid_t>(process), &status, 0, &usage) != process) return outcome;
  if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  outcome.peakKilobytes = usage.ru_maxrss;
  return outcome;
}

}  // namespace ksv_cli_tests
