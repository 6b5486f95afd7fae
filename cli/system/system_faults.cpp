#include "cli/system/system_faults.h"

#include <cerrno>
#include <new>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "common/faults.h"

namespace ksv_cli {
namespace {

std::string subjectOf(const ksv::Fault& fault) {
  switch (fault.subject) {
    case ksv::FaultSubject::kCharsetDirectory:
      return "the charset directory " + fault.path + " cannot be read: ";
    case ksv::FaultSubject::kRuleFile:
      return "the rule file " + fault.path + " cannot be read: ";
    case ksv::FaultSubject::kCodeTable:
      return "the code table " + fault.path + " cannot be read: ";
    case ksv::FaultSubject::kMemory:
      break;
  }
  return "";
}

void noteAndThrow() {
  ksv::noteNoMemory("");
  throw std::bad_alloc();
}

}  // namespace

void noteWantOfMemory() { std::set_new_handler(noteAndThrow); }

std::optional<std::string> systemFault() {
  if (ksv::faultCount() == 0) return std::nullopt;
  const ksv::Fault fault = ksv::faultBehind(0);
  return subjectOf(fault) + platform::errorText(fault.error);
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
  return error == 0 ? "" : platform::errorText(error);
}

}  // namespace ksv_cli
