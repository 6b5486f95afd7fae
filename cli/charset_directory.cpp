#include "charset_directory.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "ksv_cconv.h"
#include "platform.h"
#include "rule_source.h"

namespace ksv_cli {
namespace {

constexpr char kVariable[] = "Charsetpath";
constexpr char kConfiguration[] = "ksv_conf.ini";
constexpr std::string_view kSetting = "Charsetpath=";

// The library's buffer has to hold the path, a separator and an end.
bool fits(const std::string& directory) {
  return !directory.empty() && directory.size() + 2 <= KSV_NAME_SIZE;
}

// The first line with the setting whose value fits.
std::optional<std::string> settingIn(const std::string& path) {
  const auto bytes = fileBytes(path);
  if (!bytes) return std::nullopt;
  std::string text(bytes->begin(), bytes->end());
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    std::string line = text.substr(at, end - at);
    while (line.ends_with('\r')) line.pop_back();
    const std::string value = line.starts_with(kSetting) ? line.substr(kSetting.size()) : "";
    if (fits(value)) return value;
    at = end + 1;
  }
  return std::nullopt;
}

bool isDirectory(const std::string& path) {
  return platform::fileFacts(path).kind == platform::FileKind::kDirectory;
}

}  // namespace

std::optional<std::string> charsetDirectory() {
  const std::string fromEnvironment = platform::environmentValue(kVariable);
  if (fits(fromEnvironment)) return fromEnvironment;
  for (const std::string& directory : platform::configurationDirectories())
    if (const auto value = settingIn(platform::joinPath(directory, kConfiguration))) return value;
  for (const std::string& directory : platform::installedCharsetDirectories())
    if (isDirectory(directory)) return directory;
  return std::nullopt;
}

}  // namespace ksv_cli
