#include "kit/charsets/charset_directory.h"

#include <utility>

#include "common/platform.h"
#include "ksv_cconv.h"

namespace ksv_kit {
namespace {

constexpr char kSetting[] = "Charsetpath";

std::string shownOrigin(const ksv::platform::SettingOrigin& origin) {
  using Place = ksv::platform::SettingOrigin::Place;
  switch (origin.place) {
    case Place::kSettingsLibrary:
      return "by the library of settings";
    case Place::kEnvironment:
    case Place::kNamedInstallation:
      return "by the environment variable " + origin.name;
    case Place::kConfigurationFile:
      return "by " + origin.name;
    case Place::kInstallation:
      return "as installed with the program";
    case Place::kNowhere:
      break;
  }
  return "";
}

}  // namespace

std::optional<FoundCharsetDirectory> findCharsetDirectory() {
  char setting[KSV_NAME_SIZE];
  ksv::platform::SettingOrigin origin;
  if (!ksv::platform::readSetting(kSetting, setting, sizeof setting, &origin)) return std::nullopt;
  std::string directory = setting;
  const bool isRoot = directory.size() == 1;
  if (!isRoot && directory.back() == ksv::platform::pathSeparator()) directory.pop_back();
  return FoundCharsetDirectory{std::move(directory), shownOrigin(origin), origin.isInstallation()};
}

std::optional<std::string> charsetDirectory() {
  std::optional<FoundCharsetDirectory> found = findCharsetDirectory();
  if (!found) return std::nullopt;
  return std::move(found->path);
}

std::vector<std::string> loadedCharsets() {
  std::vector<std::string> names;
  char name[KSV_NAME_SIZE];
  for (int32_t index = 0; cconvEnumGroup(index, name) != 0; ++index) names.emplace_back(name);
  return names;
}

}  // namespace ksv_kit
