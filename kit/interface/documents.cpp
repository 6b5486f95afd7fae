// Compound documents.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "kit/documents/document.h"
#include "kit/documents/entry_names.h"
#include "kit/interface/document_handle.h"
#include "kit/interface/errors.h"
#include "ksv.h"

namespace documents = ksv_kit::documents;

namespace ksv_kit {
namespace {

int32_t kindOf(const documents::Entry& entry, size_t index) {
  if (index == 0) return KSV_ENTRY_ROOT;
  return entry.isStream() ? KSV_ENTRY_STREAM : KSV_ENTRY_STORAGE;
}

ksv_entry entryOf(const documents::Entry& found, size_t index) {
  ksv_entry entry{};
  entry.name_length = static_cast<uint32_t>(found.name().size());
  entry.kind = kindOf(found, index);
  entry.id = found.id;
  entry.parent = found.parent;
  entry.size = found.size();
  entry.created = found.stored->created;
  entry.modified = found.stored->modified;
  std::copy(found.stored->classId.begin(), found.stored->classId.end(), entry.class_id);
  entry.state_bits = found.stored->stateBits;
  entry.is_orphan = found.isOrphan ? 1 : 0;
  return entry;
}

ksv_result give(std::unique_ptr<documents::ByteStore> store, ksv_document** document,
                ksv_error* error) {
  std::unique_ptr<documents::Document> opened = documents::Document::open(std::move(store));
  if (opened == nullptr)
    return refuse(error, KSV_NO_DOCUMENT, "the bytes are no compound document");
  *document = std::make_unique<ksv_document>(std::move(opened)).release();
  return succeed(error);
}

// What keeps a stream from being read: the damage that was come upon last.
ksv_result refuseDamaged(const documents::Document& document, uint32_t id, ksv_error* error) {
  const std::vector<documents::Damage>& told = document.damages().told();
  const auto found =
      std::find_if(told.rbegin(), told.rend(), [&](const auto& damage) { return damage.id == id; });
  if (found == told.rend()) return refuse(error, KSV_DAMAGED, "the document is damaged");
  refuse(error, KSV_DAMAGED, std::string("the document ") + found->reason);
  if (error != nullptr) error->offset = found->offset;
  return KSV_DAMAGED;
}

constexpr char kNull[] = "an argument is null";
constexpr char kNoBytes[] = "there are no bytes, and they have a length";
constexpr char kNoSuchEntry[] = "there is no entry of that index";

}  // namespace
}  // namespace ksv_kit

ksv_document::ksv_document(std::unique_ptr<documents::Document> read) : document(std::move(read)) {
  const std::vector<documents::Entry>& found = document->entries();
  names.reserve(found.size());
  units.reserve(found.size());
  entries.reserve(found.size());
  for (size_t i = 0; i < found.size(); ++i) {
    names.push_back(documents::shownName(found[i].name()));
    units.emplace_back(found[i].name().begin(), found[i].name().end());
    entries.push_back(ksv_kit::entryOf(found[i], i));
    entries.back().name = names.back().c_str();
    entries.back().name_units = units.back().data();
  }
}

using namespace ksv_kit;

ksv_result ksv_document_open(const char* path, ksv_document** document, ksv_error* error) {
  if (path == nullptr || document == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *document = nullptr;
  return guarded(error, [&] {
    try {
      return give(documents::bytesOfFile(path), document, error);
    } catch (const documents::UnreadableDocument& refused) {
      return refuse(error, KSV_SYSTEM, std::string(path) + " cannot be read: " + refused.what());
    }
  });
}

ksv_result ksv_document_open_descriptor(intptr_t descriptor, ksv_document** document,
                                        ksv_error* error) {
  if (document == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *document = nullptr;
  return guarded(error,
                 [&] { return give(documents::bytesOfDescriptor(descriptor), document, error); });
}

ksv_result ksv_document_open_memory(const void* bytes, size_t size, ksv_document** document,
                                    ksv_error* error) {
  if (document == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *document = nullptr;
  if (bytes == nullptr && size != 0) return refuse(error, KSV_BAD_ARGUMENT, kNoBytes);
  return guarded(error, [&] { return give(documents::bytesAt(bytes, size), document, error); });
}

void ksv_document_close(ksv_document* document) { delete document; }

void ksv_document_get_facts(const ksv_document* document, ksv_document_facts* facts) {
  if (document == nullptr || facts == nullptr) return;
  const documents::Document& read = *document->document;
  *facts = {};
  facts->version = read.header().version;
  facts->sector_size = static_cast<uint32_t>(read.header().sectorSize());
  facts->file_size = read.fileSize();
  facts->orphans = static_cast<uint32_t>(
      std::count_if(read.entries().begin(), read.entries().end(),
                    [](const documents::Entry& entry) { return entry.isOrphan; }));
  facts->is_checked = document->isChecked ? 1 : 0;
  facts->lost_sectors = document->checked.lostSectors;
}

size_t ksv_document_entry_count(const ksv_document* document) {
  return document == nullptr ? 0 : document->entries.size();
}

const ksv_entry* ksv_document_entry(const ksv_document* document, size_t index) {
  if (document == nullptr || index >= document->entries.size()) return nullptr;
  return &document->entries[index];
}

ksv_result ksv_document_find(const ksv_document* document, const char* path, uint32_t* index,
                             ksv_error* error) {
  if (document == nullptr || path == nullptr || index == nullptr)
    return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *index = KSV_NO_ENTRY;
  return guarded(error, [&] {
    *index = document->document->find(path).value_or(KSV_NO_ENTRY);
    return succeed(error);
  });
}

ksv_result ksv_document_path(const ksv_document* document, uint32_t index, char** path,
                             ksv_error* error) {
  if (document == nullptr || path == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *path = nullptr;
  if (index >= document->entries.size()) return refuse(error, KSV_BAD_ARGUMENT, kNoSuchEntry);
  return guarded(error, [&] {
    const std::string found = document->document->pathOf(index);
    *path = static_cast<char*>(std::malloc(found.size() + 1));
    if (*path == nullptr) throw std::bad_alloc();
    std::memcpy(*path, found.c_str(), found.size() + 1);
    return succeed(error);
  });
}

ksv_result ksv_document_read(ksv_document* document, uint32_t index, uint64_t offset, void* buffer,
                             size_t count, size_t* length, ksv_error* error) {
  if (document == nullptr || length == nullptr || (buffer == nullptr && count != 0))
    return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *length = 0;
  if (index >= document->entries.size()) return refuse(error, KSV_BAD_ARGUMENT, kNoSuchEntry);
  const ksv_entry& entry = document->entries[index];
  if (entry.kind != KSV_ENTRY_STREAM)
    return refuse(error, KSV_BAD_ARGUMENT, "the entry is no stream");
  return guarded(error, [&] {
    *length = document->document->read(index, offset, buffer, count);
    const uint64_t left = entry.size > offset ? entry.size - offset : 0;
    if (*length < std::min<uint64_t>(left, count))
      return refuseDamaged(*document->document, entry.id, error);
    return succeed(error);
  });
}

ksv_result ksv_document_check(ksv_document* document, ksv_error* error) {
  if (document == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  return guarded(error, [&] {
    document->checked = document->document->check();
    document->isChecked = true;
    return succeed(error);
  });
}

size_t ksv_document_damage_count(const ksv_document* document) {
  return document == nullptr ? 0 : document->document->damages().told().size();
}

int ksv_document_damage(const ksv_document* document, size_t index, ksv_damage* damage) {
  if (damage == nullptr || index >= ksv_document_damage_count(document)) return 0;
  const documents::Damage& found = document->document->damages().told()[index];
  *damage = {found.kind, document->document->indexOf(found.id).value_or(KSV_NO_ENTRY), found.offset,
             found.reason};
  return 1;
}
