#include "common/directory.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

#include "common/guard.h"
#include "common/path.h"
#include "common/path_encoding.h"
#include "common/platform.h"
#include "common/wildcard.h"
#include "ksv_path.h"

static_assert(sizeof(KsvDirectoryListing) == 312);
static_assert(offsetof(KsvDirectoryListing, handle) == 0);
static_assert(offsetof(KsvDirectoryListing, attrib) == 8);
static_assert(offsetof(KsvDirectoryListing, timeCreate) == 16);
static_assert(offsetof(KsvDirectoryListing, timeAccess) == 24);
static_assert(offsetof(KsvDirectoryListing, timeWrite) == 32);
static_assert(offsetof(KsvDirectoryListing, size) == 40);
static_assert(offsetof(KsvDirectoryListing, name) == 44);
static_assert(offsetof(KsvDirectoryListing, firstEntry) == 304);
static_assert(sizeof(KsvDirectoryEntry) == 272);
static_assert(offsetof(KsvDirectoryEntry, name) == 12);

namespace ksv {
namespace {

constexpr intptr_t kNoHandle = -1;

struct Matches {
  std::string directory;  // with a separator
  std::vector<std::string> names;
  platform::SystemError error = 0;  // why names may be missing
};

// What a listing's handle stands for. All that needs memory is made when it is opened:
// KSV_ASC_readdir could not tell want of memory from the end of the listing.
struct Listing {
  struct Entry {
    std::string name;
    std::string ansi;
  };

  std::vector<Entry> entries;
  size_t next = 0;
  std::string path;  // of the directory, with room for the longest name behind it
  size_t directoryLength;
};

enum class WildCards { kOwn, kOfSystem };

// In no order; none when the directory cannot be read.
std::vector<std::string> namesFor(const std::string& directory, const std::string& component,
                                  WildCards wildCards, platform::SystemError& error) {
  if (wildCards == WildCards::kOfSystem) {
    auto found = platform::namesFoundBySystem(directory, component);
    if (found) return std::move(*found);
  }
  auto names = platform::directoryNames(directory.c_str(), &error);
  if (!names) return {};
  std::erase_if(*names, [&](const std::string& name) { return !matchesWildcard(component, name); });
  return std::move(*names);
}

Matches findMatches(const char* pattern, WildCards wildCards) {
  const PathPieces parts = splitIntoPieces(pattern);
  const std::string component = std::string(parts.base).append(parts.extension);
  Matches matches;
  if (component.empty()) return matches;
  // A drive without a directory is the directory that the drive stands in.
  const bool driveOnly = !parts.drive.empty() && parts.directory.empty();
  matches.directory = driveOnly ? std::string(parts.drive)
                                : std::string(parts.drive) + openableDirectory(parts.directory);
  if (!driveOnly && !isSeparator(matches.directory.back())) matches.directory.push_back('/');

  if (!hasWildcard(component)) {
    auto name = platform::entryName(matches.directory, component);
    if (name) matches.names.push_back(std::move(*name));
    return matches;
  }
  matches.names = namesFor(matches.directory, component, wildCards, matches.error);
  std::sort(matches.names.begin(), matches.names.end());
  return matches;
}

void describeEntry(const char* path, KsvDirectoryListing& listing) {
  constexpr uint32_t kAnyoneMayWrite = 0222;
  platform::FileStatus status = {};
  platform::fileStatus(path, status) || platform::entryStatus(path, status);
  const bool isDirectory = (status.mode & platform::kFileTypeMask) == platform::kDirectory;
  const bool readOnly = (status.mode & kAnyoneMayWrite) == 0;
  listing.attrib = (isDirectory ? static_cast<uint32_t>(KSV_ATTRIBUTE_DIRECTORY) : 0u) |
                   (readOnly ? static_cast<uint32_t>(KSV_ATTRIBUTE_READ_ONLY) : 0u);
  listing.timeCreate = status.changeTime;
  listing.timeAccess = status.accessTime;
  listing.timeWrite = status.writeTime;
  listing.size = static_cast<uint32_t>(status.size);
}

// A name that has no ANSI form or does not fit is left out: cut short it would name another
// file.
void addEntry(std::string&& name, Listing& listing) {
  std::optional<std::string> ansi = platform::utf8ToAnsi(name.c_str());
  if (!ansi || ansi->size() >= sizeof KsvDirectoryListing::name) return;
  listing.path.reserve(listing.directoryLength + name.size());
  listing.entries.push_back({std::move(name), std::move(*ansi)});
}

std::unique_ptr<Listing> listingOf(Matches&& matches) {
  auto listing = std::make_unique<Listing>();
  listing->path = std::move(matches.directory);
  listing->directoryLength = listing->path.size();
  for (std::string& name : matches.names) addEntry(std::move(name), *listing);
  return listing;
}

// Steps on to the next entry and describes it, without memory.
bool advance(Listing& entries, KsvDirectoryListing& listing) {
  if (entries.next == entries.entries.size()) return false;
  const Listing::Entry& entry = entries.entries[entries.next++];
  entries.path.resize(entries.directoryLength);
  entries.path.append(entry.name);
  describeEntry(entries.path.c_str(), listing);
  return copyText(entry.ansi, listing.name, sizeof listing.name);
}

Listing* listingBehind(const KsvDirectoryListing* listing) {
  if (listing == nullptr || listing->handle == kNoHandle) return nullptr;
  return reinterpret_cast<Listing*>(listing->handle);
}

bool openListing(const char* pattern, KsvDirectoryListing& listing) {
  const std::optional<std::string> utf8 = platform::ansiToUtf8(pattern);
  if (!utf8) return false;
  Matches matches = findMatches(utf8->c_str(), WildCards::kOfSystem);
  // Better no listing than one that ends too soon.
  if (matches.error != 0) return false;
  std::unique_ptr<Listing> entries = listingOf(std::move(matches));
  if (!advance(*entries, listing)) return false;
  listing.handle = reinterpret_cast<intptr_t>(entries.release());
  listing.firstEntry = 1;
  return true;
}

}  // namespace

std::vector<std::string> matchingNames(const char* pattern, platform::SystemError* error) {
  Matches matches = findMatches(pattern, WildCards::kOwn);
  if (error != nullptr) *error = matches.error;
  return std::move(matches.names);
}

}  // namespace ksv

int KSV_ASC_opendir(const char* pattern, KsvDirectoryListing* listing) {
  if (listing == nullptr) return 0;
  listing->handle = ksv::kNoHandle;
  listing->firstEntry = 0;
  if (pattern == nullptr) return 0;
  return ksv::guarded(false, [&] { return ksv::openListing(pattern, *listing); }) ? 1 : 0;
}

int KSV_ASC_readdir(KsvDirectoryListing* listing, KsvDirectoryEntry* entry) {
  ksv::Listing* entries = ksv::listingBehind(listing);
  if (entries == nullptr || entry == nullptr) return 0;
  if (listing->firstEntry != 0) {
    listing->firstEntry = 0;
  } else if (!ksv::advance(*entries, *listing)) {
    return 0;
  }
  return ksv::copyText(listing->name, entry->name, sizeof entry->name) ? 1 : 0;
}

int KSV_ASC_closedir(KsvDirectoryListing* listing) {
  ksv::Listing* entries = ksv::listingBehind(listing);
  if (entries == nullptr) return -1;
  delete entries;
  listing->handle = ksv::kNoHandle;
  return 0;
}

int KSV_FindFile(const char* pattern) {
  if (pattern == nullptr || !ksv::isUsablePath(pattern)) return -1;
  const bool found = ksv::guarded(
      false, [&] { return !ksv::findMatches(pattern, ksv::WildCards::kOfSystem).names.empty(); });
  return found ? 0 : -1;
}
