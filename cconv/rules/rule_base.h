// The process-wide rule base: what cconvLoadRule has loaded, where from, and the
// lock under which code tables are filled.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "cconv/rules/charset_names.h"
#include "cconv/rules/loaded_charset.h"
#include "cconv/rules/packed_charsets.h"
#include "cconv/rules/packed_rule_set.h"
#include "cconv/rules/publication.h"
#include "common/platform.h"

namespace ksv {

// What the conversion engine derives from the lists and shares among all
// converters. It lives as long as they do.
class DerivedTables {
 public:
  virtual ~DerivedTables() = default;
};

// The place of the derived tables, which any thread may fill first.
class DerivedPlace {
 public:
  DerivedPlace() = default;
  ~DerivedPlace() { reset(); }
  DerivedPlace(const DerivedPlace&) = delete;
  DerivedPlace& operator=(const DerivedPlace&) = delete;

  DerivedTables* get() const { return tables_.load(std::memory_order_acquire); }
  // What is there afterwards: these, or what another thread put there before.
  DerivedTables* fill(std::unique_ptr<DerivedTables> made) {
    return publish(tables_, std::move(made));
  }
  // While nobody converts.
  void reset() { delete tables_.exchange(nullptr); }

 private:
  std::atomic<DerivedTables*> tables_ = nullptr;
};

// The two lists of the rule base, with an index by id beside each. What came from rule files stands
// in them, and behind it what is packed, which is made as it is asked for.
class RuleLists final : private PackedRuleSet::Others {
 public:
  // While nobody converts. Both return false when the list is full. What is packed is made before.
  bool addCharset(std::unique_ptr<LoadedCharset> charset);
  bool addGroup(std::unique_ptr<GroupDef> group);
  // Adds what of this the lists lack; it has to stay as long as they do.
  void addPacked(const PackedCharsets& packed);

  LoadedCharset* findCharset(CharsetId id) const;
  // The charset whose number is that of the name.
  LoadedCharset* findCharset(std::string_view name) const;
  GroupDef* findGroup(CharsetId id) const {
    const CharsetId wellKnown = id - kFirstWellKnown;
    if (wellKnown >= kWellKnownCount) return findAnyGroup(id);
    GroupDef* const group = wellKnown_[wellKnown].load(std::memory_order_acquire);
    return group != nullptr ? group : findPackedWellKnown(id);
  }

  // Filled by the conversion engine; reset before anything is added.
  DerivedPlace derived;

  // What stands packed in the installed directory; null where there is none. Set before anything
  // is added.
  std::unique_ptr<const PackedCharsets> packed;

  size_t charsetCount() const;
  // As it is written where it comes from. The index is below the count.
  std::string_view charsetName(size_t index) const;

  // All that there are, made. Without memory those that are in the lists.
  const RuleList<std::unique_ptr<LoadedCharset>>& charsets();
  const RuleList<std::unique_ptr<GroupDef>>& groups();

 private:
  static constexpr CharsetId kFirstWellKnown = 2001;
  static constexpr CharsetId kWellKnownCount = 12;

  bool hasCharset(CharsetId id) const override { return charsetsById_.contains(id); }
  GroupDef* groupOfFiles(CharsetId id) const override;
  GroupDef* findAnyGroup(CharsetId id) const;
  GroupDef* findPackedWellKnown(CharsetId id) const;
  bool listPacked();
  void enterWellKnown(GroupDef* group);

  RuleList<std::unique_ptr<LoadedCharset>> charsets_;
  RuleList<std::unique_ptr<GroupDef>> groups_;
  std::unordered_map<CharsetId, LoadedCharset*> charsetsById_;
  CharsetNames charsetsByName_;
  std::unordered_map<CharsetId, GroupDef*> groupsById_;
  mutable std::atomic<GroupDef*> wellKnown_[kWellKnownCount] = {};
  std::unique_ptr<PackedRuleSet> packedRules_;
};

struct RuleBase {
  uint32_t refCount = 0;
  std::atomic<uint16_t> blockSize = 0;  // 0: kDefaultBlockSize
  char charsetPath[kNameSize] = {};
  bool pathIsInstalled = false;
  platform::NamedMutex* tableMutex = nullptr;
  RuleLists* lists = nullptr;

  uint32_t entriesPerBlock() const {
    const uint16_t entries = blockSize.load(std::memory_order_relaxed);
    return entries != 0 ? entries : kDefaultBlockSize;
  }
  // The path, which every start may change while others read it, and whether it is that of
  // the directory which came with the library, without any setting.
  void setPath(const char* path, bool isInstalled);
  std::string path() const;
  std::optional<std::string> installedPath() const;

  // What is packed in the directory that the path names, if that counts; null else.
  const PackedCharsets* packed() const;
};

// Held by who starts, ends or loads: threads that count their own use may do so at once.
std::mutex& lifetimeMutex();

extern constinit RuleBase ruleBase;

// Null when the id is not there, or when there are no lists.
inline LoadedCharset* findCharsetById(CharsetId id) {
  return ruleBase.lists != nullptr ? ruleBase.lists->findCharset(id) : nullptr;
}
inline GroupDef* findGroupById(CharsetId id) {
  return ruleBase.lists != nullptr ? ruleBase.lists->findGroup(id) : nullptr;
}
// Adds the group to the charset. The first definition of a group in the process wins; a later
// one is dropped. False when a list is full.
bool addGroup(CharsetDef& charset, std::unique_ptr<GroupDef> group);

// By name, without regard to case. A null name, or one of 260 bytes or more, is
// unknown.
LoadedCharset* findCharsetByName(const char* name);

}  // namespace ksv
