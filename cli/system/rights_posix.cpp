// A filter in front of all system calls, which refuses the few that start programs, open
// sockets or reach into other processes. It names what is refused, not what is allowed: the C
// library takes other calls from release to release, and those above are the ones that get an
// intruder anywhere. It costs a few microseconds at the start.
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "cli/system/rights.h"

namespace ksv_cli::platform {
namespace {

#if defined(__x86_64__)
constexpr uint32_t kMachine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr uint32_t kMachine = AUDIT_ARCH_AARCH64;
#else
// The filter is written for the numbers that calls have on the machines above.
constexpr uint32_t kMachine = 0;
#endif

// Sockets can be had from an io_uring as well. A process of this kind has none before.
constexpr uint32_t kRefusedCalls[] = {
    SYS_execve,           SYS_execveat,          SYS_socket,        SYS_socketpair, SYS_ptrace,
    SYS_process_vm_readv, SYS_process_vm_writev, SYS_io_uring_setup};

// Where x86-64 has the same calls under other numbers.
constexpr uint32_t kFirstCallOfOtherNumbers = 0x40000000;

constexpr size_t kCallCount = std::size(kRefusedCalls);

using Filter = std::array<sock_filter, kCallCount + 6>;

constexpr sock_filter load(size_t offset) {
  return {BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<uint32_t>(offset)};
}

constexpr sock_filter answer(uint32_t value) { return {BPF_RET | BPF_K, 0, 0, value}; }

// The last instruction refuses, and the one before allows.
constexpr Filter makeFilter() {
  Filter filter{};
  const auto toRefusal = [&filter](size_t place) {
    return static_cast<uint8_t>(filter.size() - 1 - (place + 1));
  };
  size_t place = 0;
  filter[place++] = load(offsetof(seccomp_data, arch));
  filter[place] = {BPF_JMP | BPF_JEQ | BPF_K, 0, toRefusal(place), kMachine};
  filter[++place] = load(offsetof(seccomp_data, nr));
  ++place;
  filter[place] = {BPF_JMP | BPF_JGE | BPF_K, toRefusal(place), 0, kFirstCallOfOtherNumbers};
  ++place;
  for (const uint32_t call : kRefusedCalls) {
    filter[place] = {BPF_JMP | BPF_JEQ | BPF_K, toRefusal(place), 0, call};
    ++place;
  }
  filter[place++] = answer(SECCOMP_RET_ALLOW);
  filter[place] = answer(SECCOMP_RET_ERRNO | EPERM);
  return filter;
}

}  // namespace

void dropUnneededRights() noexcept {
  // Without this a filter is for the administrator alone.
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || kMachine == 0) return;
  Filter filter = makeFilter();
  sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  // Some systems run filtered processes without speculation, which costs conversions much and
  // is of no use to a process that holds no secrets of others.
  ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_SPEC_ALLOW, &program);
}

}  // namespace ksv_cli::platform
