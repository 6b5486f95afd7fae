#include <array>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "common/faults.h"
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
// Where this build is to be installed, for programs that hold the library and lie elsewhere.
// Empty where nobody can say who may write there.
constexpr char kCharsetsOfBuild[] = KSV_CHARSET_OF_BUILD;

// Where those have put the charset directory who install nothing, such as the tests of a
// program that is built together with the library.
constexpr char kCharsetVariable[] = "KSV_CHARSETS";

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

class LineReader {
 public:
  explicit LineReader(InputFile& file) : file_(file) {}

  // A line of any length without its line end; false at the end of the file.
  bool read(std::string& line) {
    line.clear();
    bool isLine = false;
    while (next_ != held_ || fill()) {
      isLine = true;
      const char c = piece_[next_++];
      if (c == '\n') break;
      line.push_back(c);
    }
    while (!line.empty() && line.back() == '\r') line.pop_back();
    return isLine;
  }

 private:
  bool fill() {
    next_ = 0;
    held_ = file_.read(piece_.data(), piece_.size());
    return held_ != 0;
  }

  InputFile& file_;
  size_t next_ = 0;
  size_t held_ = 0;
  std::array<char, 512> piece_;
};

// A file that cannot be read is not one that lacks the setting. One that is somebody else's
// does not count.
void noteUnread(const std::string& path, SystemError error) {
  if (error != accessDenied()) noteFault(FaultSubject::kRuleFile, path, error);
}

bool findInFile(InputFile& file, const Destination& destination) {
  const std::string wanted = std::string(destination.key).append("=");
  std::string line;
  LineReader lines(file);
  for (bool isFirst = true; lines.read(line); isFirst = false) {
    if (isFirst && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    if (line.starts_with(wanted) && destination.accept(line.substr(wanted.size()))) return true;
  }
  return false;
}

bool acceptFromFile(const std::string& path, const Destination& destination) {
  InputFile file(path.c_str(), InputFile::Takes::kRegularFile);
  const bool isFound = file.size() > 0 && findInFile(file, destination);
  if (!isFound) noteUnread(path, file.error());
  return isFound;
}

// The file that has the setting.
std::optional<std::string> acceptFromConfiguration(const Destination& destination) {
  for (const std::string& directory : configurationDirectories()) {
    std::string file = withSeparator(directory) + kConfigurationFile;
    if (acceptFromFile(file, destination)) return file;
  }
  return std::nullopt;
}

// The build tree has its charset directory beside the library, an installation
// in its data directory.
bool acceptFromOwnPlace(const Destination& destination) {
  const std::optional<std::string> library = libraryDirectory();
  if (!library) return false;
  for (const char* relative : {"charset", kInstalledCharsets, kInstalledCharsetsFromPrograms,
                               "../share/ksv_comm/charset"}) {
    const auto directory = canonicalDirectory((withSeparator(*library) + relative).c_str());
    if (directory && destination.accept(*directory)) return true;
  }
  return false;
}

// For the charset directory alone, behind all that is looked up for any key.
SettingOrigin acceptInstalled(const Destination& destination) {
  using Place = SettingOrigin::Place;
  const std::optional<std::string> named = environmentValue(kCharsetVariable);
  if (named && destination.accept(*named)) return {Place::kNamedInstallation, kCharsetVariable};
  if (acceptFromOwnPlace(destination)) return {Place::kInstallation, ""};
  const auto directory = canonicalDirectory(kCharsetsOfBuild);
  if (directory && destination.accept(*directory)) return {Place::kInstallation, ""};
  return {};
}

SettingOrigin lookUp(const Destination& destination) {
  using Place = SettingOrigin::Place;
  const std::string key(destination.key);
  if (const auto value = settingFromLibrary(key.c_str()); value && destination.accept(*value))
    return {Place::kSettingsLibrary, ""};
  if (const auto value = environmentValue(key.c_str()); value && destination.accept(*value))
    return {Place::kEnvironment, key};
  if (auto file = acceptFromConfiguration(destination))
    return {Place::kConfigurationFile, std::move(*file)};
  return destination.isDirectory() ? acceptInstalled(destination) : SettingOrigin();
}

}  // namespace

bool readSetting(const char* key, char* buffer, size_t size, SettingOrigin* origin) {
  if (size == 0) return false;
  buffer[0] = '\0';
  try {
    SettingOrigin found = lookUp({key, buffer, size});
    const bool isFound = found.place != SettingOrigin::Place::kNowhere;
    if (origin != nullptr) *origin = std::move(found);
    if (isFound) return true;
  } catch (const std::bad_alloc&) {
    noteNoMemory(key);
  }
  buffer[0] = '\0';
  return false;
}

}  // namespace ksv::platform
