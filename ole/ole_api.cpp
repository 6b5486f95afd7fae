// The exported functions over compound files.
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "common/guard.h"
#include "ksv_ole.h"
#include "ole/compound_file.h"

// A file or a storage. It lives as long as its handle is open or something that was
// opened from it is; that is also how long the file it belongs to lives.
struct Ksv2Ole {
  std::unique_ptr<ksv::CompoundFile> file;  // of the handle that stands for the file
  ksv::CompoundFile* compound;
  Ksv2Ole* parent;
  uint32_t entry;  // in the directory
  uint32_t openChildren = 0;
  uint32_t holders = 1;  // the handle, and what was opened from it
  bool isClosed = false;
};

struct Ksv2OleStream {
  Ksv2Ole* owner;
  std::unique_ptr<ksv::CompoundStream> stream;
};

namespace ksv {
namespace {

// Whether neither the handle nor one that it was opened from has been closed.
bool isUsable(const Ksv2Ole* handle) {
  if (handle == nullptr) return false;
  for (; handle != nullptr; handle = handle->parent) {
    if (handle->isClosed) return false;
  }
  return true;
}

bool isUsable(const Ksv2OleStream* stream) { return stream != nullptr && isUsable(stream->owner); }

void release(Ksv2Ole* handle) {
  while (handle != nullptr && --handle->holders == 0) delete std::exchange(handle, handle->parent);
}

void adopt(Ksv2Ole& parent) {
  ++parent.openChildren;
  ++parent.holders;
}

void disown(Ksv2Ole* parent) {
  if (parent != nullptr) --parent->openChildren;
  release(parent);
}

// True when nothing that was opened from the handle is open.
bool closeHandle(Ksv2Ole& handle) {
  const bool isLast = handle.openChildren == 0;
  handle.isClosed = true;
  if (handle.file) handle.file->file().close();
  if (handle.parent != nullptr) --handle.parent->openChildren;
  release(&handle);
  return isLast;
}

Ksv2Ole* newHandle(CompoundFile& compound, Ksv2Ole* parent, uint32_t entry) {
  return new Ksv2Ole{nullptr, &compound, parent, entry};
}

}  // namespace
}  // namespace ksv

Ksv2Ole* KSV_2OLEopen(const char* path) {
  return ksv::guarded<Ksv2Ole*>(nullptr, [&]() -> Ksv2Ole* {
    ksv::CompoundFault fault;
    std::unique_ptr<ksv::CompoundFile> file = ksv::CompoundFile::open(path, fault);
    if (!file) return nullptr;
    Ksv2Ole* handle = ksv::newHandle(*file, nullptr, file->directory().rootId());
    handle->file = std::move(file);
    return handle;
  });
}

int KSV_2OLEclose(Ksv2Ole* file) {
  if (file == nullptr) return KSV_2OLE_CHILDREN_OPEN;
  return ksv::closeHandle(*file) ? 1 : KSV_2OLE_CHILDREN_OPEN;
}

Ksv2Ole* KSV_2OLEopenStorage(Ksv2Ole* parent, const char* name) {
  if (!ksv::isUsable(parent) || name == nullptr) return nullptr;
  return ksv::guarded<Ksv2Ole*>(nullptr, [&]() -> Ksv2Ole* {
    const std::optional<uint32_t> entry =
        parent->compound->directory().findStorage(parent->entry, name);
    if (!entry) return nullptr;
    Ksv2Ole* storage = ksv::newHandle(*parent->compound, parent, *entry);
    ksv::adopt(*parent);
    return storage;
  });
}

int KSV_2OLEcloseStorage(Ksv2Ole* storage) {
  return storage != nullptr && ksv::closeHandle(*storage) ? 1 : 0;
}

Ksv2OleStream* KSV_2OLEopenStream(Ksv2Ole* owner, const char* name) {
  if (!ksv::isUsable(owner) || name == nullptr) return nullptr;
  return ksv::guarded<Ksv2OleStream*>(nullptr, [&]() -> Ksv2OleStream* {
    ksv::CompoundFile& compound = *owner->compound;
    const std::optional<uint32_t> entry = compound.directory().findStream(owner->entry, name);
    if (!entry) return nullptr;
    auto stream = ksv::CompoundStream::open(compound, compound.directory()[*entry]);
    if (!stream) return nullptr;
    auto* handle = new Ksv2OleStream{owner, std::move(stream)};
    ksv::adopt(*owner);
    return handle;
  });
}

int KSV_2OLEcloseStream(Ksv2OleStream* stream) {
  if (stream == nullptr) return 0;
  const std::unique_ptr<Ksv2OleStream> closed(stream);
  ksv::disown(closed->owner);
  return 1;
}

uint32_t KSV_2OLEreadStream(Ksv2OleStream* stream, void* buffer, uint32_t count) {
  if (!ksv::isUsable(stream) || buffer == nullptr) return 0;
  return ksv::guarded<uint32_t>(0, [&] { return stream->stream->read(buffer, count); });
}

uint32_t KSV_2OLEseekStream(Ksv2OleStream* stream, uint32_t offset, uint16_t origin) {
  if (!ksv::isUsable(stream)) return KSV_2OLE_NO_POSITION;
  return ksv::guarded<uint32_t>(KSV_2OLE_NO_POSITION,
                                [&] { return stream->stream->seek(offset, origin); });
}

int KSV_2OLEGetClassID(Ksv2Ole* handle, uint8_t classId[KSV_2OLE_CLASS_ID_SIZE]) {
  if (!ksv::isUsable(handle) || classId == nullptr) return 0;
  const auto& source = handle->compound->directory()[handle->entry].classId;
  std::memcpy(classId, source.data(), source.size());
  return 1;
}
