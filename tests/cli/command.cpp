#include "command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

extern char** environ;

namespace ksv_cli_tests {
namespace {

std::string makeDirectory() {
  std::string path = testing::TempDir() + "ksv-cli-XXXXXX";
  return ::mkdtemp(path.data()) == nullptr ? "" : path;
}

std::string readAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

int openFor(const std::string& path, int flags) {
  return ::open(path.c_str(), flags | O_CLOEXEC, 0600);
}

}  // namespace

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

CommandTest::CommandTest() : directory_(makeDirectory()), streams_(makeDirectory()) {
  setEnvironment("Charsetpath", KSV_CHARSET_DIRECTORY);
}

CommandTest::~CommandTest() {
  std::filesystem::remove_all(directory_);
  std::filesystem::remove_all(streams_);
}

void CommandTest::setEnvironment(const std::string& name, const std::string& value) {
  std::erase_if(environment_,
                [&](const std::string& entry) { return entry.starts_with(name + "="); });
  environment_.push_back(name + "=" + value);
}

int CommandTest::start(const std::vector<std::string>& arguments, int standardInput,
                       int standardOutput, int standardError) const {
  std::vector<char*> argumentPointers = {const_cast<char*>("ksv")};
  for (const std::string& argument : arguments)
    argumentPointers.push_back(const_cast<char*>(argument.c_str()));
  argumentPointers.push_back(nullptr);

  std::vector<char*> environmentPointers;
  for (const std::string& entry : environment_)
    environmentPointers.push_back(const_cast<char*>(entry.c_str()));
  for (char** entry = environ; *entry != nullptr; ++entry) environmentPointers.push_back(*entry);
  environmentPointers.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, standardInput, 0);
  posix_spawn_file_actions_adddup2(&actions, standardOutput, 1);
  posix_spawn_file_actions_adddup2(&actions, standardError, 2);
  posix_spawn_file_actions_addchdir_np(&actions, directory_.c_str());
  pid_t process = -1;
  const int error = ::posix_spawn(&process, KSV_COMMAND, &actions, nullptr, argumentPointers.data(),
                                  environmentPointers.data());
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(error, 0) << "cannot start " << KSV_COMMAND;
  return process;
}

Outcome CommandTest::finish(int process) {
  Outcome outcome;
  int status = 0;
  rusage usage{};
  if (::wait4(process, &status, 0, &usage) != process) return outcome;
  if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  outcome.peakKilobytes = usage.ru_maxrss;
  return outcome;
}

Outcome CommandTest::ksv(const std::vector<std::string>& arguments,
                         const std::string& input) const {
  std::ofstream(streams_ + "/in", std::ios::binary) << input;
  const int in = openFor(streams_ + "/in", O_RDONLY);
  const int out = openFor(streams_ + "/out", O_WRONLY | O_CREAT | O_TRUNC);
  const int err = openFor(streams_ + "/err", O_WRONLY | O_CREAT | O_TRUNC);
  Outcome outcome = finish(start(arguments, in, out, err));
  for (const int descriptor : {in, out, err}) ::close(descriptor);
  outcome.out = readAll(streams_ + "/out");
  outcome.err = readAll(streams_ + "/err");
  return outcome;
}

void CommandTest::write(const std::string& name, const std::string& content) const {
  std::ofstream(path(name), std::ios::binary) << content;
}

std::string CommandTest::read(const std::string& name) const { return readAll(path(name)); }

bool CommandTest::exists(const std::string& name) const {
  return std::filesystem::exists(path(name));
}

std::vector<std::string> CommandTest::files(const std::string& below) const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path(below)))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace ksv_cli_tests
