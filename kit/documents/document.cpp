#include "kit/documents/document.h"

#include <algorithm>
#include <charconv>

#include "kit/documents/entry_names.h"
#include "kit/documents/limits.h"

namespace ksv_kit::documents {
namespace {

constexpr std::string_view kOrphans = "\\orphaned/";

// The first name of a path, which is taken from it with the separator behind it.
std::string_view takeName(std::string_view& path) {
  const size_t end = std::min(path.find('/'), path.size());
  const std::string_view name = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return name;
}

// Links each entry to the next one in the same storage.
void linkSiblings(std::vector<Entry>& entries) {
  std::vector<uint32_t> latest(entries.size(), kNoEntry);
  uint32_t latestOrphan = kNoEntry;
  for (uint32_t index = 0; index < entries.size(); ++index) {
    const Entry& entry = entries[index];
    const bool isTop = entry.parent == kNoEntry;
    if (isTop && !entry.isOrphan) continue;
    uint32_t& before = isTop ? latestOrphan : latest[entry.parent];
    if (before != kNoEntry) entries[before].nextSibling = index;
    before = index;
  }
}

}  // namespace

std::unique_ptr<Document> Document::open(std::unique_ptr<ByteStore> store) {
  std::unique_ptr<Document> document(new Document(std::move(store)));
  const std::optional<Header> header = readHeader(document->bytes_, document->damages_);
  if (!header) return nullptr;
  document->header_ = *header;
  document->takeTree();
  return document;
}

void Document::takeTree() {
  sectors_.emplace(bytes_, header_, damages_);
  miniTable_.emplace(bytes_, *sectors_, header_, damages_);
  directory_.read(bytes_, *sectors_, header_, damages_);
  for (const TreePlace& place : directory_.places(damages_))
    entries_.push_back({&directory_.entries()[place.id], place.id, place.parent, kNoEntry,
                        place.depth, place.isOrphan});
  linkSiblings(entries_);
  indexes_.assign(directory_.entries().size(), kNoEntry);
  for (uint32_t index = 0; index < entries_.size(); ++index) indexes_[entries_[index].id] = index;
  Chain::Start start = {ksv::kEndOfChain, 0};
  const bool hasMini =
      !entries_.empty() && (entries_[0].stored->size != 0 || header_.miniFatSectors != 0);
  if (hasMini)
    start = {entries_[0].stored->start,
             entries_[0].stored->offset + ksv::compound_entry::kStartingSector, entries_[0].id};
  miniStream_.emplace(*sectors_, damages_, start);
  tables_.emplace(StreamTables{bytes_, header_, damages_, *sectors_, *miniTable_, *miniStream_});
}

std::optional<uint32_t> Document::indexOf(uint32_t id) const {
  if (id >= indexes_.size() || indexes_[id] == kNoEntry) return std::nullopt;
  return indexes_[id];
}

std::optional<uint32_t> Document::firstChild(uint32_t index) const {
  const uint32_t behind = index + 1;
  if (behind >= entries_.size() || entries_[behind].parent != index) return std::nullopt;
  return behind;
}

std::optional<uint32_t> Document::childNamed(std::optional<uint32_t> first,
                                             std::u16string_view name) const {
  std::optional<uint32_t> other;
  for (uint32_t at = first.value_or(kNoEntry); at != kNoEntry; at = entries_[at].nextSibling) {
    if (entries_[at].name() == name) return at;
    if (!other && compareNames(entries_[at].name(), name) == 0) other = at;
  }
  return other;
}

// Takes the part of a path that leads to an orphan, and its name.
std::optional<uint32_t> Document::orphanAt(std::string_view& path) const {
  path.remove_prefix(kOrphans.size());
  const std::string_view digits = takeName(path);
  uint32_t id = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  const std::optional<uint32_t> index = indexOf(id);
  if (!index || !entries_[*index].isOrphan || entries_[*index].parent != kNoEntry)
    return std::nullopt;
  return nameShownAs(takeName(path)) == entries_[*index].name() ? index : std::nullopt;
}

std::optional<uint32_t> Document::find(std::string_view path) const {
  if (entries_.empty()) return std::nullopt;
  std::optional<uint32_t> at = 0;
  if (path.substr(0, kOrphans.size()) == kOrphans) at = orphanAt(path);
  while (at && !path.empty()) {
    const std::optional<std::u16string> name = nameShownAs(takeName(path));
    at = name ? childNamed(firstChild(*at), *name) : std::nullopt;
  }
  return at;
}

std::string Document::pathOf(uint32_t index) const {
  std::vector<uint32_t> way;
  for (uint32_t at = index; at != kNoEntry && at != 0; at = entries_[at].parent) way.push_back(at);
  std::string path;
  if (entries_[index].isOrphan)
    path = std::string(kOrphans) + std::to_string(entries_[way.back()].id) + "/";
  for (auto at = way.rbegin(); at != way.rend(); ++at)
    path += shownName(entries_[*at].name()) + (at + 1 == way.rend() ? "" : "/");
  return path;
}

StreamBytes& Document::opened(uint32_t index) {
  const auto found = std::find_if(opened_.begin(), opened_.end(),
                                  [&](const auto& stream) { return stream.first == index; });
  if (found != opened_.end()) {
    opened_.splice(opened_.begin(), opened_, found);
  } else {
    opened_.emplace_front(
        std::piecewise_construct, std::forward_as_tuple(index),
        std::forward_as_tuple(*tables_, *entries_[index].stored, entries_[index].id));
    if (opened_.size() > limits::kOpenStreams) opened_.pop_back();
  }
  return opened_.front().second;
}

size_t Document::read(uint32_t index, uint64_t offset, void* buffer, size_t count) {
  if (!entries_[index].isStream()) return 0;
  return opened(index).read(offset, static_cast<uint8_t*>(buffer), count);
}

// The size is a claim: memory is taken as bytes come.
std::optional<std::vector<uint8_t>> Document::readWhole(uint32_t index, size_t most) {
  const uint64_t size = entries_[index].size();
  if (size > most) return std::nullopt;
  std::vector<uint8_t> whole;
  while (whole.size() < size) {
    const size_t done = whole.size();
    const size_t wanted = static_cast<size_t>(std::min<uint64_t>(size - done, limits::kBlock));
    whole.resize(done + wanted);
    const size_t came = read(index, done, whole.data() + done, wanted);
    whole.resize(done + came);
    if (came < wanted) break;
  }
  return whole;
}

}  // namespace ksv_kit::documents
