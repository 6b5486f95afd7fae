// The charsets and groups of a packed directory, of which each is made when it is first asked for:
// a text is converted by two of more than a hundred. Any thread may ask. What is made is what
// would be there if all had been made at once, in the order of the directory: of charsets that
// share a number the first counts, and of groups the one that the first charset has.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "cconv/rules/charset_names.h"
#include "cconv/rules/loaded_charset.h"
#include "cconv/rules/packed_charsets.h"
#include "cconv/rules/publication.h"

namespace ksv {

// Things of one kind: where each stands in the catalog, in the order in which they count, and as
// far as they are made what they are. All are entered before the first is looked for.
template <class Item>
class ItemsToMake {
 public:
  ~ItemsToMake() {
    for (size_t place = 0; made_ != nullptr && place < entries_.size(); ++place)
      delete made_[place].load(std::memory_order_relaxed);
  }

  // False when one with the number is there already.
  bool enter(CharsetId id, uint32_t packed) {
    if (placeOf(id)) return false;
    if (2 * entries_.size() >= slots_.size()) enlarge();
    entries_.push_back({id, packed});
    slots_[slotOf(id)] = static_cast<uint32_t>(entries_.size());
    return true;
  }
  void complete() { made_ = std::make_unique<std::atomic<Item*>[]>(entries_.size()); }

  size_t count() const { return entries_.size(); }
  uint32_t packed(size_t place) const { return entries_[place].packed; }
  std::optional<size_t> placeOf(CharsetId id) const {
    if (slots_.empty()) return std::nullopt;
    const uint32_t found = slots_[slotOf(id)];
    return found == 0 ? std::nullopt : std::optional<size_t>(found - 1);
  }

  // Null as long as it is not made.
  Item* get(size_t place) const { return made_[place].load(std::memory_order_acquire); }
  // By one thread at a time.
  Item* put(size_t place, std::unique_ptr<Item> item) {
    pauseForTests(PublicationStep::kMade);
    made_[place].store(item.get(), std::memory_order_release);
    return item.release();
  }
  std::unique_ptr<Item> take(size_t place) {
    return std::unique_ptr<Item>(made_[place].exchange(nullptr));
  }

 private:
  struct Entry {
    CharsetId id;
    uint32_t packed;
  };

  // The one that has the number, or the free one where it belongs.
  size_t slotOf(CharsetId id) const {
    const size_t mask = slots_.size() - 1;
    size_t slot = id & mask;
    while (slots_[slot] != 0 && entries_[slots_[slot] - 1].id != id) slot = (slot + 1) & mask;
    return slot;
  }
  void enlarge() {
    slots_.assign(slots_.empty() ? 256 : 2 * slots_.size(), 0);
    for (uint32_t place = 0; place < entries_.size(); ++place)
      slots_[slotOf(entries_[place].id)] = place + 1;
  }

  std::vector<Entry> entries_;
  std::vector<uint32_t> slots_;  // open addressing by number: the place plus 1, 0 when free
  std::unique_ptr<std::atomic<Item*>[]> made_;
};

class PackedRuleSet {
 public:
  // What has been read from files goes before what is packed.
  class Others {
   public:
    virtual bool hasCharset(CharsetId id) const = 0;
    virtual GroupDef* groupOfFiles(CharsetId id) const = 0;

   protected:
    ~Others() = default;
  };

  // names: where charsets are entered that have been made. May throw std::bad_alloc.
  PackedRuleSet(const PackedCharsets& packed, const Others& others, CharsetNames& names);

  size_t charsetCount() const { return charsets_.count(); }
  size_t groupCount() const { return groups_.count(); }
  // As the directory writes it.
  std::string_view charsetName(size_t place) const;

  // Null where there is none; without memory as well, which is noted: the next call tries again.
  LoadedCharset* findCharset(CharsetId id);
  GroupDef* findGroup(CharsetId id);

  // Makes what is not made yet. May throw std::bad_alloc.
  void makeAll();
  // Then: what there is, in the order in which it counts, and handing it over.
  LoadedCharset* charsetAt(size_t place) const { return charsets_.get(place); }
  GroupDef* groupAt(size_t place) const { return groups_.get(place); }
  std::unique_ptr<LoadedCharset> takeCharset(size_t place) { return charsets_.take(place); }
  std::unique_ptr<GroupDef> takeGroup(size_t place) { return groups_.take(place); }

 private:
  template <class Make>
  auto withMemory(Make make) -> decltype(make());
  void enterMembers(const PackedCatalog::Charset& charset, std::vector<bool>& isEntered);
  LoadedCharset* madeCharset(size_t place);
  GroupDef* madeGroup(size_t place);
  GroupDef* groupWithNumberOf(const PackedCatalog::Group& packed);
  std::unique_ptr<LoadedCharset> makeCharset(const PackedCatalog::Charset& packed);

  const PackedCharsets& packed_;
  const PackedCatalog& catalog_;
  const Others& others_;
  CharsetNames& names_;
  std::mutex making_;
  ItemsToMake<LoadedCharset> charsets_;
  ItemsToMake<GroupDef> groups_;
};

}  // namespace ksv
