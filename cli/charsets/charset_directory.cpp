#include "cli/charsets/charset_directory.h"

#include "common/platform.h"
#include "ksv_cconv.h"

namespace ksv_cli {

std::optional<std::string> charsetDirectory() {
  char setting[KSV_NAME_SIZE];
  using ksv::platform::SettingOrigin;
  if (ksv::platform::readSetting("Charsetpath", setting, sizeof setting) == SettingOrigin::kNone)
    return std::nullopt;
  std::string directory = setting;
  const bool isRoot = directory.size() == 1;
  if (!isRoot && directory.back() == ksv::platform::pathSeparator()) directory.pop_back();
  return directory;
}

}  // namespace ksv_cli
