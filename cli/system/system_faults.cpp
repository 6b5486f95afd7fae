#include "cli/system/system_faults.h"

#include <cerrno>
#include <new>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "common/faults.h"
#include "common/platform.h"

namespace ksv_cli {
namespace {

void noteAndThrow() {
  ksv::noteNoMemory("");
  throw std::bad_alloc();
}

}  // namespace

void noteWantOfMemory() { std::set_new_handler(noteAndThrow); }

std::optional<std::string> systemFault() {
  if (ksv::faultCount() == 0) return std::nullopt;
  return ksv::faultInWords(ksv::faultBehind(0));
}

void refuseSystemFaults() {
  if (const std::optional<std::string> fault = systemFault()) throw Failure(*fault);
}

void forgetCause() { errno = 0; }

std::string causeInWords() {
  const int error = errno;
  return error == 0 ? "" : ": " + std::generic_category().message(error);
}

std::string compiledTableError() {
  const auto error = ksv::takeUnwrittenTable();
  return error == 0 ? "" : ksv::platform::errorText(error);
}

}  // namespace ksv_cli
