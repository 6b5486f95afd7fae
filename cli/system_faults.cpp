#include "system_faults.h"

#include <new>

#include "common/faults.h"
#include "failure.h"
#include "platform.h"

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

void forgetInputErrors() { ksv::takeFileError(ksv::FileUse::kInput); }

void refuseInputErrors(const std::string& what) {
  const auto error = ksv::takeFileError(ksv::FileUse::kInput);
  if (error == 0) return;
  throw Failure(what + (what.empty() ? "" : " ") + "cannot be read: " + platform::errorText(error));
}

std::string compiledTableError() {
  const auto error = ksv::takeFileError(ksv::FileUse::kCompiledTable);
  return error == 0 ? "" : platform::errorText(error);
}

}  // namespace ksv_cli
