#include "rule_base.h"

#include <cstdlib>

#include "ksv_cconv.h"

namespace ksv_cli {
namespace {

// Names the directory for a message. Which one the library takes when the
// variable is not set is its own affair.
std::string directoryForMessages() {
  const char* fromEnvironment = std::getenv("Charsetpath");
  const bool isSet = fromEnvironment != nullptr && *fromEnvironment != '\0';
  return isSet ? fromEnvironment : "charset directory";
}

}  // namespace

RuleBase::RuleBase() {
  if (startProcess() == 0) throw Unusable{directoryForMessages(), "out of memory"};
  if (cconvLoadRule() == 0) {
    endProcess();
    throw Unusable{directoryForMessages(), "holds no charset rule file that can be read"};
  }
}

RuleBase::~RuleBase() { endProcess(); }

std::vector<std::string> RuleBase::charsets() const {
  std::vector<std::string> names;
  char name[KSV_NAME_SIZE];
  for (int32_t index = 0; cconvEnumGroup(index, name) != 0; ++index) names.emplace_back(name);
  return names;
}

}  // namespace ksv_cli
