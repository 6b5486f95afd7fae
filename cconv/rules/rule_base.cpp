#include "cconv/rules/rule_base.h"

#include <cstring>
#include <new>

#include "cconv/rules/charset_path.h"
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
  if (!listPacked() || !enter(charsets_, charsetsById_, std::move(charset))) return false;
  // Another charset may have its number, and is then found under its name.
  if (findCharset(added->id) == added) charsetsByName_.enter(added->name, added);
  return true;
}

bool RuleLists::addGroup(std::unique_ptr<GroupDef> group) {
  derived.reset();
  GroupDef* added = group.get();
  if (!listPacked() || !enter(groups_, groupsById_, std::move(group))) return false;
  enterWellKnown(added);
  return true;
}

void RuleLists::addPacked(const PackedCharsets& charsets) {
  if (packedRules_ != nullptr) return;
  const Others& others = *this;
  auto rules = std::make_unique<PackedRuleSet>(charsets, others, charsetsByName_);
  // Threads that convert look for it: it is never put there anew for nothing.
  if (rules->charsetCount() != 0) packedRules_ = std::move(rules);
}

// Moves what is packed into the lists, in its order. False when they are full.
bool RuleLists::listPacked() {
  if (packedRules_ == nullptr) return true;
  const size_t charsets = packedRules_->charsetCount();
  const size_t groups = packedRules_->groupCount();
  if (charsets_.count() + charsets > limits::kMostItems ||
      groups_.count() + groups > limits::kMostItems)
    return false;
  packedRules_->makeAll();
  charsets_.reserve(charsets_.count() + charsets);
  groups_.reserve(groups_.count() + groups);
  // Twice the same, after a first time that found no memory.
  for (size_t place = 0; place < charsets; ++place) {
    LoadedCharset* const charset = packedRules_->charsetAt(place);
    charsetsById_[charset->id] = charset;
  }
  for (size_t place = 0; place < groups; ++place) {
    GroupDef* const group = packedRules_->groupAt(place);
    groupsById_[group->id] = group;
    enterWellKnown(group);
  }
  // From here on nothing needs memory.
  for (size_t place = 0; place < charsets; ++place)
    charsets_.append(packedRules_->takeCharset(place));
  for (size_t place = 0; place < groups; ++place) groups_.append(packedRules_->takeGroup(place));
  packedRules_.reset();
  return true;
}

void RuleLists::enterWellKnown(GroupDef* group) {
  const CharsetId wellKnown = group->id - kFirstWellKnown;
  if (wellKnown >= kWellKnownCount || wellKnown_[wellKnown].load() != nullptr) return;
  wellKnown_[wellKnown].store(group, std::memory_order_release);
}

LoadedCharset* RuleLists::findCharset(CharsetId id) const {
  const auto found = charsetsById_.find(id);
  if (found != charsetsById_.end()) return found->second;
  return packedRules_ != nullptr ? packedRules_->findCharset(id) : nullptr;
}

LoadedCharset* RuleLists::findCharset(std::string_view name) const {
  if (LoadedCharset* charset = charsetsByName_.find(name)) return charset;
  return name.size() < kNameSize ? findCharset(idOfName(name)) : nullptr;
}

GroupDef* RuleLists::groupOfFiles(CharsetId id) const {
  const auto found = groupsById_.find(id);
  return found == groupsById_.end() ? nullptr : found->second;
}

GroupDef* RuleLists::findAnyGroup(CharsetId id) const {
  if (GroupDef* const group = groupOfFiles(id)) return group;
  return packedRules_ != nullptr ? packedRules_->findGroup(id) : nullptr;
}

// Whoever finds it enters it: it is the same for all.
GroupDef* RuleLists::findPackedWellKnown(CharsetId id) const {
  if (packedRules_ == nullptr) return nullptr;
  GroupDef* const group = packedRules_->findGroup(id);
  wellKnown_[id - kFirstWellKnown].store(group, std::memory_order_release);
  return group;
}

size_t RuleLists::charsetCount() const {
  return charsets_.count() + (packedRules_ != nullptr ? packedRules_->charsetCount() : 0);
}

std::string_view RuleLists::charsetName(size_t index) const {
  if (index < charsets_.count()) return charsets_[index]->name;
  return packedRules_->charsetName(index - charsets_.count());
}

const RuleList<std::unique_ptr<LoadedCharset>>& RuleLists::charsets() {
  listPacked();
  return charsets_;
}

const RuleList<std::unique_ptr<GroupDef>>& RuleLists::groups() {
  listPacked();
  return groups_;
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

std::string charsetPath() { return ruleBase.path(); }

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
