// What the tests ask of the operating system: a POSIX side (system_posix.cpp) and
// a Windows side (system_windows.cpp) stand behind it. Paths and values are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ksv::test {

// A new directory that nobody else may enter, in the system's directory for
// temporary files or in parent: its canonical path, with '/' for separators.
std::string makeTemporaryDirectory(const std::string& prefix, const std::string& parent = {});

// An environment variable as std::getenv and the system itself see it; none where
// it is not set, which on Windows includes the empty ones.
std::optional<std::string> variable(const char* name);
void setVariable(const char* name, const std::optional<std::string>& value);

// The variables that say where temporary files and where settings stand.
extern const char kTemporaryVariable[];
extern const char kConfigurationVariable[];

// Between UTF-8 and the ANSI code page, which is UTF-8 itself where there is no
// other; none when a character has no counterpart.
std::optional<std::string> toAnsi(const std::string& utf8);
std::string fromAnsi(const std::string& ansi);

// How many descriptors or handles this process has open.
ptrdiff_t openDescriptors();

// How many bytes of a block of the heap may be written, at least as many as were asked for.
size_t usableSize(void* block);

// The program that runs.
std::string ownExecutable();

// The arguments of main in UTF-8.
std::vector<std::string> commandLine(int argc, char** argv);

// A call of the system that does nothing and shows a word to those who trace system calls.
void markForTracers(const char* word);

// Ends this process at once: nothing is flushed, released or told to anyone.
[[noreturn]] void killOwnProcess();

// Waits until condition holds; false after ten seconds.
bool waitUntil(const std::function<bool()>& condition);

// The seed of the random tests: KSV_TEST_SEED, else a fixed number.
uint32_t testSeed();

using Arguments = std::vector<std::string>;

// A body that a child process can run, registered by an object at namespace scope.
struct ChildBody {
  using Function = int (*)(const Arguments& arguments);

  ChildBody(const char* name, Function function);

  const char* name;
  Function function;
  const ChildBody* next;
};

// What the argument list is that runs a body instead of the tests, and the run.
inline constexpr char kChildOption[] = "--child";
int runChildBody(const std::string& name, const Arguments& arguments);

// This executable, started once more to run one registered body in the current
// directory. What a started program inherits of open files, it inherits.
class ChildProcess {
 public:
  // Throws when the process cannot be started.
  static ChildProcess start(const char* name, const Arguments& arguments = {});
  // Starts a body and gives its result.
  static int run(const char* name, const Arguments& arguments = {}) {
    return start(name, arguments).result();
  }

  ChildProcess(ChildProcess&& other) noexcept
      : handle_(std::exchange(other.handle_, kNone)), result_(other.result_) {}
  ChildProcess& operator=(ChildProcess&&) = delete;
  // Kills it when nobody asked for its result.
  ~ChildProcess();

  // Waits for its end: its exit status, -1 when it was killed.
  int result();
  // Ends it at once, as killOwnProcess does.
  void kill();

 private:
  static constexpr intptr_t kNone = -1;

  explicit ChildProcess(intptr_t handle) : handle_(handle) {}

  intptr_t handle_;  // a process identifier or a handle
  int result_ = -1;
};

// Zeroed memory that processes share: made by the first, opened by its name in
// others while the first has it.
class SharedMemory {
 public:
  explicit SharedMemory(size_t size);
  SharedMemory(const std::string& name, size_t size);
  ~SharedMemory();
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  const std::string& name() const { return name_; }
  void* address() const { return address_; }

 private:
  std::string name_;
  size_t size_;
  bool owned_;
  [[maybe_unused]] intptr_t mapping_;  // where the system has a handle for it
  void* address_;
};

// An object that processes share; the one that made it gives its name to others.
template <class Value>
class Shared {
 public:
  Shared() : memory_(sizeof(Value)), value_(new (memory_.address()) Value()) {}
  explicit Shared(const std::string& name)
      : memory_(name, sizeof(Value)), value_(static_cast<Value*>(memory_.address())) {}

  const std::string& name() const { return memory_.name(); }
  Value& operator*() const { return *value_; }
  Value* operator->() const { return value_; }

 private:
  SharedMemory memory_;
  Value* value_;
};

}  // namespace ksv::test
