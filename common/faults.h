// System errors that calls must not speak of. Many exported calls take a file that cannot be
// read for one that is not there, and memory that cannot be had for the end of a list. So that
// nobody has to rest on such an answer, each error is noted here with its cause; whoever
// converts a user's text looks here before the result takes the place of the original.
//
// Noting never fails, allocates nothing and waits for nobody. Any thread may call any of
// these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/platform.h"

namespace ksv {

enum class FaultSubject : uint8_t {
  kCharsetDirectory,  // could not be listed
  kRuleFile,          // could not be read
  kCodeTable,         // could not be read
  kMemory             // was not to be had, for what the path names or where it is empty for any
};

struct Fault {
  FaultSubject subject;
  std::string path;
  platform::SystemError error;
};

// Notes an error other than 0. A path of 512 bytes or more is cut.
void noteFault(FaultSubject subject, std::string_view path, platform::SystemError error) noexcept;
// The same for memory.
void noteNoMemory(std::string_view path) noexcept;

// How many have been noted since the process began.
uint64_t faultCount() noexcept;

// The first that was noted behind so many. Only the latest 64 are kept: it may be a later one.
// Call it when there are more.
Fault faultBehind(uint64_t count);

// The same in words: "the code table PATH cannot be read: Too many open files".
std::string faultInWords(const Fault& fault);

// The two for another library that is linked to this one and sees only what it exports: the list is
// one for the process. text gets as much as fits, and a terminator.
struct FaultAccess {
  uint64_t (*count)() noexcept;
  void (*inWordsBehind)(uint64_t count, char* text, size_t size) noexcept;
};
extern const FaultAccess kFaultAccess;

// Why a compiled table could not be written, which matters to nobody but who asks for it: the
// first such error on this thread since it was taken; 0: there was none.
void noteUnwrittenTable(platform::SystemError error) noexcept;
platform::SystemError takeUnwrittenTable() noexcept;

}  // namespace ksv
