#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "common/guard.h"
#include "common/path.h"
#include "common/path_encoding.h"
#include "common/platform.h"

namespace ksv::platform {
namespace {

constexpr char kCharsetKey[] = "Charsetpath";
constexpr char kConfigurationFile[] = "ksv_conf.ini";

// Some editors put it in front of UTF-8.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Where an installation puts the charset directory, as seen from the library's and from
// that of programs which hold the library themselves: the build knows.
constexpr char kInstalledCharsets[] = KSV_CHARSET_RELATIVE;
constexpr char kInstalledCharsetsFromPrograms[] = KSV_CHARSET_RELATIVE_TO_PROGRAMS;

std::string withSeparator(std::string directory) {
  if (!directory.empty() && !isSeparator(directory.back())) directory.push_back(pathSeparator());
  return directory;
}

// The destination of one look-up.
struct Destination {
  std::string_view key;
  char* buffer;
  size_t size;

  bool isDirectory() const { return key == kCharsetKey; }

  // False when there is no value or it does not fit, so that the next place has
  // its turn.
  bool accept(const std::string& value) const {
    if (value.empty()) return false;
    return copyText(isDirectory() ? withSeparator(value) : value, buffer, size);
  }
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Reads a line of any length without its line end; false at the end of the file.
bool readLine(std::FILE* file, std::string& line) {
  line.clear();
  std::array<char, 512> piece;
  while (std::fgets(piece.data(), static_cast<int>(piece.size()), file) != nullptr) {
    line.append(piece.data());
    if (!line.empty() && line.back() == '\n') break;
  }
  if (line.empty()) return false;
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
  return true;
}

bool acceptFromFile(const std::string& path, const Destination& destination) {
  const std::unique_ptr<std::FILE, CloseFile> file(openFile(path.c_str(), "rb"));
  if (!file) return false;
  const std::string wanted = std::string(destination.key).append("=");
  std::string line;
  for (bool isFirst = true; readLine(file.get(), line); isFirst = false) {
    if (isFirst && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    if (line.starts_with(wanted) && destination.accept(line.substr(wanted.size()))) return true;
  }
  return false;
}

bool acceptFromConfiguration(const Destination& destination) {
  for (const std::string& directory : configurationDirectories()) {
    if (acceptFromFile(withSeparator(directory) + kConfigurationFile, destination)) return true;
  }
  return false;
}

// The build tree has its charset directory beside the library, an installation
// in its data directory.
bool acceptInstalled(const Destination& destination) {
  const std::optional<std::string> library = libraryDirectory();
  if (!library) return false;
  for (const char* relative : {"charset", kInstalledCharsets, kInstalledCharsetsFromPrograms,
                               "../share/ksv_comm/charset"}) {
    const auto directory = canonicalDirectory((withSeparator(*library) + relative).c_str());
    if (directory && destination.accept(*directory)) return true;
  }
  return false;
}

bool lookUp(const Destination& destination) {
  const std::string key(destination.key);
  for (const auto& find : {settingFromLibrary, environmentValue}) {
    const std::optional<std::string> value = find(key.c_str());
    if (value && destination.accept(*value)) return true;
  }
  if (acceptFromConfiguration(destination)) return true;
  return destination.isDirectory() && acceptInstalled(destination);
}

}  // namespace

bool readSetting(const char* key, char* buffer, size_t size) {
  if (size == 0) return false;
  buffer[0] = '\0';
  if (guarded(false, [&] { return lookUp({key, buffer, size}); })) return true;
  buffer[0] = '\0';
  return false;
}

}  // namespace ksv::platform
