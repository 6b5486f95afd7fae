#include "cli/charsets/loaded_rules.h"

#include <atomic>
#include <optional>
#include <utility>

#include "cconv/rules/charset_path.h"
#include "cli/charsets/directory_aliases.h"
#include "cli/system/process.h"
#include "cli/system/system_faults.h"
#include "common/platform.h"
#include "kit/charsets/charset_directory.h"
#include "ksv_cconv.h"

namespace ksv_cli {

using ksv_kit::AliasLine;
using ksv_kit::CharsetAlias;
using ksv_kit::charsetDirectory;
using ksv_kit::CharsetNames;

namespace {

// As the user has written it, if he has.
std::string directoryForMessages() {
  const std::string fromEnvironment = platform::environmentValue("Charsetpath");
  if (!fromEnvironment.empty()) return fromEnvironment;
  return charsetDirectory().value_or("charset directory");
}

// Where the library that has been started has its directory, without looking for it once more.
std::optional<std::string> loadedCharsetDirectory() {
  std::string directory = ksv::charsetPath();
  const bool isRoot = directory.size() == 1;
  if (!isRoot && directory.ends_with(ksv::platform::pathSeparator())) directory.pop_back();
  return directory.empty() ? std::nullopt : std::optional(std::move(directory));
}

std::atomic<bool> isLeftToSystem = false;

}  // namespace

RuleBase::RuleBase() {
  if (startProcess() == 0) throw Unusable{directoryForMessages(), platform::kOutOfMemory};
  const bool isLoaded = cconvLoadRule() != 0;
  const std::optional<std::string> fault = systemFault();
  if (isLoaded && !fault) return;
  endProcess();
  throw Unusable{directoryForMessages(),
                 fault.value_or("holds no charset rule file that can be read")};
}

RuleBase::~RuleBase() {
  if (!isLeftToSystem) endProcess();
}

void RuleBase::leaveToSystem() { isLeftToSystem = true; }

std::vector<std::string> RuleBase::charsets() const { return ksv_kit::loadedCharsets(); }

CharsetNames RuleBase::names() const {
  std::vector<CharsetAlias> aliases;
  if (const std::optional<std::string> directory = loadedCharsetDirectory())
    for (AliasLine& line : directoryAliases(*directory).aliases)
      aliases.push_back(std::move(line.alias));
  return CharsetNames(charsets(), std::move(aliases));
}

}  // namespace ksv_cli
