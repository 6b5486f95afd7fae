#include "kit/documents/document_edit.h"

#include <algorithm>
#include <utility>

#include "common/compound_format.h"
#include "kit/documents/document_layout.h"
#include "kit/documents/entry_names.h"

namespace ksv_kit::documents {
namespace {

namespace type = ksv::compound_type;

// Whether bytes or entries may be missing where such a damage is. Odd values of the header, shared
// sectors and names out of order leave all streams readable.
bool loses(ksv_damage_kind kind) {
  return kind != KSV_DAMAGE_HEADER && kind != KSV_DAMAGE_SHARED && kind != KSV_DAMAGE_ORDER;
}

void refuseLosses(Document& source) {
  source.check();
  for (const Damage& damage : source.damages().told())
    if (loses(damage.kind)) throw LossyEdit(damage.reason, damage.offset);
  uint64_t bytes = 0;
  for (const Entry& entry : source.entries()) {
    if (entry.isOrphan)
      throw LossyEdit("has orphaned entries, which would be lost", entry.stored->offset);
    bytes += entry.size();
  }
  // Else a small file could make a large one.
  if (bytes > source.fileSize()) throw LossyEdit("has streams that share their bytes", 0);
}

DocumentEdit::Node nodeOf(const Entry& entry, uint32_t index) {
  DocumentEdit::Node node;
  node.type = index == 0 ? type::kRoot : entry.isStream() ? type::kStream : type::kStorage;
  node.name = entry.name();
  node.classId = entry.stored->classId;
  node.stateBits = entry.stored->stateBits;
  node.created = entry.stored->created;
  node.modified = entry.stored->modified;
  node.size = entry.size();
  if (entry.isStream()) node.source = index;
  return node;
}

// The characters that the format keeps from names.
void refuseName(std::u16string_view name) {
  constexpr std::u16string_view kKept = u"/\\:!";
  if (name.empty() || name.size() >= DirectoryEntry::kMostUnits)
    throw UnfitPath("names have 1 to 31 UTF-16 units");
  if (name.find_first_of(kKept) != name.npos)
    throw UnfitPath("names have no '/', '\\', ':' or '!'");
}

// The names of a path.
std::vector<std::u16string> namesOf(std::string_view path) {
  std::vector<std::u16string> names;
  while (!path.empty()) {
    const size_t end = std::min(path.find('/'), path.size());
    std::optional<std::u16string> name = nameShownAs(path.substr(0, end));
    if (!name) throw UnfitPath("a path has an escape that is none, or is no UTF-8");
    names.push_back(*std::move(name));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

}  // namespace

DocumentEdit::DocumentEdit() {
  nodes_.emplace_back();
  nodes_[0].type = type::kRoot;
  nodes_[0].name = u"Root Entry";
}

DocumentEdit::DocumentEdit(Document& source)
    : source_(&source),
      hasLargeSectors_(source.header().hasLargeSizes()),
      transaction_(source.header().transaction) {
  refuseLosses(source);
  const std::vector<Entry>& entries = source.entries();
  nodes_.reserve(entries.size());
  for (uint32_t index = 0; index < entries.size(); ++index) {
    nodes_.push_back(nodeOf(entries[index], index));
    if (index != 0) nodes_[entries[index].parent].children.push_back(index);
  }
}

std::optional<uint32_t> DocumentEdit::childNamed(uint32_t parent, std::u16string_view name) const {
  std::optional<uint32_t> other;
  for (const uint32_t child : nodes_[parent].children) {
    if (nodes_[child].name == name) return child;
    if (!other && compareNames(nodes_[child].name, name) == 0) other = child;
  }
  return other;
}

std::optional<uint32_t> DocumentEdit::find(std::string_view path) const {
  std::optional<uint32_t> at = 0;
  for (const std::u16string& name : namesOf(path))
    if (at) at = childNamed(*at, name);
  return at;
}

uint32_t DocumentEdit::addNode(uint32_t parent, uint8_t type, std::u16string name) {
  const auto number = static_cast<uint32_t>(nodes_.size());
  nodes_.emplace_back();
  nodes_.back().type = type;
  nodes_.back().name = std::move(name);
  nodes_[parent].children.push_back(number);
  return number;
}

// Nothing is added before it is known that all can be.
void DocumentEdit::setStream(std::string_view path, std::vector<uint8_t> bytes) {
  std::vector<std::u16string> names = namesOf(path);
  uint32_t at = 0;
  size_t there = 0;
  for (; there < names.size(); ++there) {
    const std::optional<uint32_t> child = childNamed(at, names[there]);
    if (!child) break;
    at = *child;
  }
  const bool isStream = nodes_[at].type == type::kStream;
  if (there < names.size() && isStream) throw UnfitPath("a stream stands where a storage is named");
  if (there == names.size() && !isStream)
    throw UnfitPath("a storage stands where a stream is named");
  for (size_t i = there; i < names.size(); ++i) refuseName(names[i]);
  for (; there < names.size(); ++there)
    at = addNode(at, there + 1 == names.size() ? type::kStream : type::kStorage,
                 std::move(names[there]));
  nodes_[at].source.reset();
  nodes_[at].size = bytes.size();
  nodes_[at].bytes = std::move(bytes);
}

bool DocumentEdit::remove(std::string_view path) {
  const std::optional<uint32_t> found = find(path);
  if (!found || *found == 0) return false;
  for (Node& node : nodes_) {
    const auto child = std::find(node.children.begin(), node.children.end(), *found);
    if (child != node.children.end()) node.children.erase(child);
  }
  return true;
}

void DocumentEdit::write(const Output& output) const {
  DocumentLayout(nodes_, hasLargeSectors_, transaction_).write(source_, output);
}

}  // namespace ksv_kit::documents
