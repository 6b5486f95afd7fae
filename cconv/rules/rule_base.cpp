#include "cconv/rules/rule_base.h"

#include <cstring>
#include <new>

#include "ksv_cconv.h"

namespace ksv {

constinit RuleBase ruleBase;

namespace {

// Appends the item and enters it into the index, or does neither.
template <typename Item>
bool enter(RuleList<std::unique_ptr<Item>>& list, std::unordered_map<CharsetId, Item*>& index,
           std::unique_ptr<Item> item) {
  const auto [place, isNew] = index.emplace(item->id, item.get());
  try {
    if (list.append(std::move(item)) != 0) return true;
  } catch (...) {
    if (isNew) index.erase(place);
    throw;
  }
  if (isNew) index.erase(place);
  return false;
}

std::mutex& pathMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

bool RuleLists::addCharset(std::unique_ptr<LoadedCharset> charset) {
  derived.reset();
  LoadedCharset* added = charset.get();
  if (!enter(charsets_, charsetsById_, std::move(charset))) return false;
  // Another charset may have its number, and is then found under its name.
  if (findCharset(added->id) == added) charsetsByName_.enter(added->name, added);
  return true;
}

bool RuleLists::addGroup(std::unique_ptr<GroupDef> group) {
  derived.reset();
  GroupDef* added = group.get();
  if (!enter(groups_, groupsById_, std::move(group))) return false;
  const CharsetId wellKnown = added->id - kFirstWellKnown;
  if (wellKnown < kWellKnownCount && wellKnown_[wellKnown] == nullptr) {
    wellKnown_[wellKnown] = added;
  }
  return true;
}

LoadedCharset* RuleLists::findCharset(CharsetId id) const {
  const auto found = charsetsById_.find(id);
  return found == charsetsById_.end() ? nullptr : found->second;
}

LoadedCharset* RuleLists::findCharset(std::string_view name) const {
  if (LoadedCharset* charset = charsetsByName_.find(name)) return charset;
  char lowered[kNameSize];
  if (name.size() >= sizeof lowered) return nullptr;
  lowered[name.copy(lowered, name.size())] = '\0';
  return findCharset(nameToId(lowered));
}

bool addGroup(CharsetDef& charset, std::unique_ptr<GroupDef> group) {
  const CharsetId id = group->id;
  if (findGroupById(id) == nullptr && !ruleBase.lists->addGroup(std::move(group))) return false;
  return charset.groups.append(findGroupById(id)) != 0;
}

LoadedCharset* findCharsetByName(const char* name) {
  if (name == nullptr || ruleBase.lists == nullptr) return nullptr;
  return ruleBase.lists->findCharset(std::string_view(name, strnlen(name, kNameSize)));
}

std::mutex& lifetimeMutex() {
  static std::mutex mutex;
  return mutex;
}

void RuleBase::setPath(const char* path, bool isInstalled) {
  const std::lock_guard<std::mutex> guard(pathMutex());
  std::strcpy(charsetPath, path);
  pathIsInstalled = isInstalled;
}

std::string RuleBase::path() const {
  const std::lock_guard<std::mutex> guard(pathMutex());
  return charsetPath;
}

std::optional<std::string> RuleBase::installedPath() const {
  const std::lock_guard<std::mutex> guard(pathMutex());
  return pathIsInstalled ? std::optional<std::string>(charsetPath) : std::nullopt;
}

const PackedCharsets* RuleBase::packed() const {
  if (lists == nullptr || lists->packed == nullptr) return nullptr;
  return installedPath() == lists->packed->directory() ? lists->packed.get() : nullptr;
}

namespace {

constexpr char kMutexName[] = "CtableMutex";
constexpr char kPathSetting[] = "Charsetpath";

}  // namespace
}  // namespace ksv

using ksv::ruleBase;

int startProcess() {
  char path[sizeof ruleBase.charsetPath];
  ksv::platform::SettingOrigin origin;
  ksv::platform::readSetting(ksv::kPathSetting, path, sizeof path, &origin);
  ruleBase.setPath(path, origin.isInstallation());
  const std::lock_guard<std::mutex> guard(ksv::lifetimeMutex());
  if (ruleBase.refCount != 0) {
    // Behind an unmatched endProcess this wraps to 0 without lists; every
    // conversion function then fails until the next pair.
    ++ruleBase.refCount;
    return 1;
  }
  // Left from a start that failed: the lock outlives it.
  if (ruleBase.tableMutex == nullptr)
    ruleBase.tableMutex = ksv::platform::NamedMutex::open(ksv::kMutexName).release();
  ruleBase.blockSize = 0;
  ruleBase.lists = new (std::nothrow) ksv::RuleLists;
  if (ruleBase.lists == nullptr) return 0;
  ruleBase.refCount = 1;
  return 1;
}

void endProcess() {
  const std::lock_guard<std::mutex> guard(ksv::lifetimeMutex());
  // No guard against an unmatched call: the counter wraps and nothing is freed.
  if (ruleBase.refCount-- != 1) return;
  delete ruleBase.tableMutex;
  ruleBase.tableMutex = nullptr;
  delete ruleBase.lists;
  ruleBase.lists = nullptr;
}

void setBlockSize(unsigned short entries) { ruleBase.blockSize = entries; }

int lockMutex() {
  if (ruleBase.tableMutex == nullptr) return 0;
  return ruleBase.tableMutex->lock() == ksv::platform::NamedMutex::LockResult::kAcquired ? 1 : 0;
}

int unlockMutex() {
  return ruleBase.tableMutex != nullptr && ruleBase.tableMutex->unlock() ? 1 : 0;
}
