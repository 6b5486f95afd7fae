#include "cli/mail/part_saver.h"

#include <algorithm>
#include <cstdint>

#include "cli/mail/mail_limits.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/paths.h"
#include "common/utf8.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

constexpr char kNameless[] = "part";
constexpr std::string_view kUnsafe = "/\\:*?\"<>|";

// Names of devices, which some systems take for them with any extension.
constexpr std::string_view kDevices[] = {"con", "prn", "aux", "nul", "conin$", "conout$"};
constexpr std::string_view kNumberedDevices[] = {"com", "lpt"};

bool isDevice(std::string_view name) {
  std::string stem = ksv_kit::lowered(name.substr(0, name.find('.')));
  while (stem.ends_with(' ')) stem.pop_back();
  for (const std::string_view device : kNumberedDevices)
    if (stem.starts_with(device) && stem.size() > device.size()) return true;
  return std::ranges::find(kDevices, stem) != std::end(kDevices);
}

bool isContinuation(char c) { return ksv::isUtf8Continuation(static_cast<uint8_t>(c)); }

// At most so many bytes, no character cut apart.
std::string_view cutTo(std::string_view text, size_t size) {
  if (text.size() <= size) return text;
  while (size > 0 && isContinuation(text[size])) --size;
  return text.substr(0, size);
}

// Where the extension begins, with its dot.
size_t extensionAt(std::string_view name) {
  constexpr size_t kLongestExtension = 16;
  const size_t dot = name.rfind('.');
  const bool isExtension =
      dot != std::string_view::npos && dot != 0 && name.size() - dot <= kLongestExtension;
  return isExtension ? dot : name.size();
}

template <typename Action>
void onFile(const std::string& path, Action action) {
  try {
    action();
  } catch (const Failure& failure) {
    throw Failure("cannot write " + shownName(path) + ": " + failure.what());
  }
}

}  // namespace

std::string safeFileName(std::string_view name) {
  std::string safe;
  for (const char c : name)
    safe += isAsciiControl(c) || kUnsafe.find(c) != std::string_view::npos ? '_' : c;
  // Dots in front hide a file, and those at the end some systems leave out, as they do blanks.
  const size_t begin = std::min(safe.find_first_not_of(". "), safe.size());
  safe.erase(0, begin);
  const size_t at = extensionAt(safe);
  const std::string extension = safe.substr(at);
  safe = std::string(cutTo(safe.substr(0, at), limits::kLongestSavedName - extension.size())) +
         extension;
  while (safe.ends_with('.') || safe.ends_with(' ')) safe.pop_back();
  if (safe.empty()) return kNameless;
  return isDevice(safe) ? "_" + safe : safe;
}

std::string numberedName(const std::string& name, uint32_t number) {
  const size_t at = extensionAt(name);
  return name.substr(0, at) + "-" + std::to_string(number) + name.substr(at);
}

PartSaver::PartSaver(const std::string& directory) : directory_(directory) {
  platform::createDirectories(directory);
}

// Mails may have thousands of parts of one name: each number is looked at once.
std::string PartSaver::freePath(const std::string& name) {
  uint32_t& number = numbers_[platform::placeKey(platform::joinPath(directory_, name))];
  while (++number <= limits::kMostSameNames) {
    const std::string path =
        platform::joinPath(directory_, number == 1 ? name : numberedName(name, number));
    const bool isTaken = platform::fileFacts(path).kind != platform::FileKind::kMissing;
    const std::string key = platform::placeKey(path);
    if (!isTaken && (number == 1 || numbers_.try_emplace(key, 1).second)) return path;
  }
  throw Failure("too many files are called " + shownName(name) + " in " + shownName(directory_));
}

std::unique_ptr<PartSaver::File> PartSaver::begin(std::string_view name) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::make_unique<File>(freePath(safeFileName(name)));
}

PartSaver::File::File(const std::string& path) : path_(path) {
  onFile(path_, [&] { pending_ = platform::PendingFile::create(path_); });
}

void PartSaver::File::write(std::string_view bytes) {
  onFile(path_,
         [&] { pending_->write(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()); });
}

std::string PartSaver::File::commit() {
  onFile(path_, [&] { pending_->commit(); });
  return path_;
}

}  // namespace ksv_cli
