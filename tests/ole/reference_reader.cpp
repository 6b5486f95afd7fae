#include "tests/ole/reference_reader.h"

#include <cctype>
#include <set>

#include "ksv_sjis.h"

namespace ksv::test {
namespace {

constexpr uint32_t kFree = 0xFFFFFFFF;
constexpr uint32_t kStop = 0xFFFFFFFE;

uint64_t number(const std::string& bytes, size_t at, size_t width) {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) {
    value += uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  }
  return value;
}

uint32_t number32(const std::string& bytes, size_t at) {
  return static_cast<uint32_t>(number(bytes, at, 4));
}

std::string lowered(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return text;
}

}  // namespace

std::unique_ptr<ReferenceFile> ReferenceFile::open(const std::string& bytes) {
  std::unique_ptr<ReferenceFile> file(new ReferenceFile);
  file->bytes_ = bytes;
  if (bytes.size() < 512 || bytes.compare(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1") != 0) {
    return nullptr;
  }
  const uint64_t shift = number(bytes, 30, 2);
  const uint64_t miniShift = number(bytes, 32, 2);
  if (shift > 30 || miniShift > 30) return nullptr;
  file->sectorSize_ = uint64_t{1} << shift;
  file->miniSectorSize_ = uint64_t{1} << miniShift;
  file->fatCount_ = number32(bytes, 44);
  file->cutoff_ = number32(bytes, 56);
  file->miniFatCount_ = number32(bytes, 64);
  if (file->fatCount_ > bytes.size() || file->sectorSize_ > bytes.size() ||
      file->miniSectorSize_ > bytes.size()) {
    return nullptr;
  }
  if (!file->loadFat() || !file->loadMiniFat() || !file->loadDirectory()) return nullptr;
  return file;
}

std::optional<int64_t> ReferenceFile::place(uint64_t sector, uint64_t within) const {
  const auto offset = static_cast<int32_t>(
      static_cast<uint32_t>((sector * sectorSize_ + 512 + within) & 0xFFFFFFFF));
  if (offset < 0) return std::nullopt;
  return offset;
}

std::optional<std::string> ReferenceFile::sector(uint32_t number) const {
  const auto offset = place(number, 0);
  if (!offset || static_cast<uint64_t>(*offset) + sectorSize_ > bytes_.size()) return std::nullopt;
  return bytes_.substr(static_cast<size_t>(*offset), sectorSize_);
}

bool ReferenceFile::loadFat() {
  for (uint32_t i = 0; i < 109 && i < fatCount_; ++i) {
    const auto read = sector(number32(bytes_, 76 + 4 * size_t{i}));
    if (!read) return false;
    fat_.push_back(*read);
  }
  if (fatCount_ <= 109) return true;
  uint32_t current = number32(bytes_, 68);
  if (current >= 0xFFFFFFFC || number32(bytes_, 72) < 1) return false;
  const size_t entries = sectorSize_ / 4 % 65536;
  if (entries < 2) return false;
  while (true) {
    const auto list = sector(current);
    if (!list) return false;
    for (size_t i = 0; i + 1 < entries && fat_.size() < fatCount_; ++i) {
      const auto read = sector(number32(*list, 4 * i));
      if (!read) return false;
      fat_.push_back(*read);
    }
    if (fat_.size() == fatCount_) return true;
    const uint32_t following = number32(*list, 4 * (entries - 1));
    if (following == current && following == kFree) return false;
    current = following;
  }
}

uint32_t ReferenceFile::next(uint32_t sector) const {
  const int index = static_cast<int16_t>((sector / 128) & 0xFFFF);
  if (index < 0 || index >= static_cast<int64_t>(fat_.size())) return kFree;
  const size_t at = sector % 128 * 4;
  const std::string& table = fat_[static_cast<size_t>(index)];
  return at + 4 <= table.size() ? number32(table, at) : kFree;
}

bool ReferenceFile::loadMiniFat() {
  if (miniFatCount_ == 0) return true;
  if (miniFatCount_ * sectorSize_ > 0x7FFFFFFF) return false;
  // Only as much as a chain can fill is made; what is behind it reads as zero.
  uint32_t done = 0;
  std::set<uint32_t> visited;
  for (uint32_t at = number32(bytes_, 60); at != kStop; at = next(at), ++done) {
    if (!visited.insert(at).second) return false;
    const auto read = sector(at);
    if (at == kFree || !read || done == miniFatCount_) return false;
    for (size_t i = 0; i < sectorSize_; i += 4) miniFat_.push_back(number32(*read, i));
  }
  miniFatCount_ = static_cast<uint32_t>(miniFatCount_ * sectorSize_ / 4);
  return true;
}

bool ReferenceFile::loadDirectory() {
  if (sectorSize_ < 128) return false;
  uint64_t length = 0;
  uint32_t previous = kStop;
  for (auto at = static_cast<int32_t>(number32(bytes_, 48)); at > -2;) {
    if (at == -1 || static_cast<uint32_t>(at) == previous) return false;
    if (++length > fatCount_ * sectorSize_ / 4 + 1) return false;
    if (length * sectorSize_ > bytes_.size()) return false;
    previous = static_cast<uint32_t>(at);
    at = static_cast<int32_t>(next(previous));
  }
  slots_.resize(length * (sectorSize_ / 128));
  uint32_t at = number32(bytes_, 48);
  for (size_t i = 0; i < slots_.size(); ++i) {
    if (i != 0 && i % (sectorSize_ / 128) == 0) at = next(at);
    const auto offset = place(at, i % (sectorSize_ / 128) * 128);
    if (!offset || static_cast<uint64_t>(*offset) + 128 > bytes_.size()) return false;
    if (!fillSlot(bytes_.substr(static_cast<size_t>(*offset), 128), slots_[i])) return false;
  }
  if (slots_.empty() || next(at) != kStop) return false;
  if (valid_ == 0) return false;
  for (uint32_t i = 0; i <= valid_ && i < slots_.size(); ++i) {
    if (slots_[i].name == "Root Entry" || slots_[i].type == 5) {
      root_ = i;
      return slots_[i].child != kFree;
    }
  }
  return false;
}

bool ReferenceFile::fillSlot(const std::string& entry, Slot& slot) {
  const uint64_t length = number(entry, 64, 2);
  if (length == 0 || entry[66] == 0) return true;
  if (length >= 128) return false;
  ++valid_;
  for (size_t i = 0; i < length / 2 + 1; ++i) {
    const auto unit = static_cast<uint16_t>(number(entry, 2 * i, 2));
    const uint16_t code = KSV_unicodetosjis(unit);
    if (code == 0) {
      slot.name += static_cast<char>(unit % 256);
    } else {
      if (code >= 256) slot.name += static_cast<char>(code / 256);
      slot.name += static_cast<char>(code % 256);
    }
  }
  slot.name = slot.name.c_str();
  slot.type = static_cast<unsigned char>(entry[66]);
  slot.left = number32(entry, 68);
  slot.right = number32(entry, 72);
  slot.child = number32(entry, 76);
  if (slot.type == 1 || slot.type == 5) slot.classId = entry.substr(80, 16);
  slot.start = kFree;
  if (slot.type == 2 || slot.type == 5) {
    slot.start = number32(entry, 116);
    slot.size = number32(entry, 120);
  }
  if (slot.type == 5) miniStart_ = slot.start;
  return true;
}

std::optional<uint32_t> ReferenceFile::findStorage(uint32_t parent, const std::string& name) const {
  std::set<uint32_t> visited;
  std::vector<uint32_t> stack = {slots_[parent].child};
  while (!stack.empty()) {
    const uint32_t id = stack.back();
    stack.pop_back();
    if (id > valid_ || id >= slots_.size() || !visited.insert(id).second) continue;
    if (slots_[id].name == name) return id;
    stack.push_back(slots_[id].right);
    stack.push_back(slots_[id].left);
  }
  return std::nullopt;
}

ReferenceFile::Search ReferenceFile::search(uint32_t id, uint32_t level, const std::string& name,
                                            uint32_t& found) const {
  if (id == kFree) return Search::kAbsent;
  if (++steps_ > kMostSteps) throw TooManySteps();
  if (level > 256 || id >= slots_.size()) return Search::kFailed;
  if (lowered(slots_[id].name) == lowered(name)) {
    found = id;
    return Search::kFound;
  }
  const Search left = search(slots_[id].left, level + 1, name, found);
  return left != Search::kAbsent ? left : search(slots_[id].right, level + 1, name, found);
}

std::optional<uint32_t> ReferenceFile::findStream(uint32_t parent, const std::string& name) const {
  uint32_t found = 0;
  const Search result = search(slots_[parent].child, 1, name, found);
  if (result != Search::kFound || slots_[found].type != 2) return std::nullopt;
  return found;
}

std::unique_ptr<ReferenceStream> ReferenceStream::open(const ReferenceFile& file, uint32_t slot) {
  std::unique_ptr<ReferenceStream> stream(new ReferenceStream(file));
  stream->size_ = file.slots_[slot].size;
  stream->mini_ = stream->size_ < file.cutoff_;
  stream->unit_ = stream->mini_ ? file.miniSectorSize_ : file.sectorSize_;
  if (stream->mini_ && file.miniStart_ == kFree) return nullptr;
  if (!stream->measure(file.slots_[slot].start)) return nullptr;
  return stream->set(0) == kFree ? nullptr : std::move(stream);
}

bool ReferenceStream::measure(uint32_t start) {
  const size_t most = mini_ ? file_.miniFatCount_ : size_t{file_.fatCount_} * 128;
  for (uint32_t at = start; at != kStop && at != 0xFFFFFFFD && at != 0xCFFFFFFE;) {
    chain_.push_back(at);
    if (chain_.size() > most) return false;
    if (mini_) {
      if (at >= file_.miniFatCount_) return false;
      at = at < file_.miniFat_.size() ? file_.miniFat_[at] : 0;
      // Zeroes lead to the first entry again and again.
      if (chain_.size() > file_.miniFat_.size() + 2) return false;
    } else {
      at = file_.next(at);
      if (at == kFree) return false;
    }
  }
  chain_.push_back(kStop);
  return true;
}

std::optional<int64_t> ReferenceStream::placeNow() const {
  const uint64_t index = position_ / unit_;
  if (index >= chain_.size()) return std::nullopt;
  const uint32_t link = chain_[index];
  if (link == kStop) return static_cast<int64_t>(file_.bytes_.size());
  if (!mini_) return file_.place(link, position_ % unit_);
  if (file_.miniSectorSize_ > file_.sectorSize_) return std::nullopt;
  const uint64_t perSector = file_.sectorSize_ / file_.miniSectorSize_;
  uint32_t sector = file_.miniStart_;
  std::set<uint32_t> visited = {sector};
  for (uint64_t i = 0; i < link / perSector; ++i) {
    sector = file_.next(sector);
    if (sector == kFree || sector == kStop || !visited.insert(sector).second) return std::nullopt;
  }
  if (sector == kStop) return std::nullopt;
  return file_.place(sector, link % perSector * unit_ + position_ % unit_);
}

uint32_t ReferenceStream::set(uint32_t target) {
  const int64_t wanted = static_cast<int32_t>(target);
  position_ = wanted < 0 ? 0 : wanted > size_ ? size_ : static_cast<uint32_t>(wanted);
  return placeNow() ? position_ : kFree;
}

void ReferenceStream::refill() {
  buffer_.clear();
  cursor_ = 0;
  while (buffer_.size() < 1024 && position_ < size_) {
    const auto at = placeNow();
    if (!at || static_cast<uint64_t>(*at) >= file_.bytes_.size()) return;
    uint64_t piece = unit_ - position_ % unit_;
    piece = std::min<uint64_t>(piece, 1024 - buffer_.size());
    piece = std::min<uint64_t>(piece, size_ - position_);
    const std::string got = file_.bytes_.substr(static_cast<size_t>(*at), piece);
    buffer_ += got;
    position_ += static_cast<uint32_t>(got.size());
    if (got.size() < piece) return;
  }
}

std::string ReferenceStream::read(uint32_t count) {
  std::string result;
  while (result.size() < count) {
    if (cursor_ == buffer_.size()) refill();
    if (buffer_.empty()) break;
    const std::string piece = buffer_.substr(cursor_, count - result.size());
    cursor_ += piece.size();
    result += piece;
  }
  return result;
}

uint32_t ReferenceStream::seek(uint32_t offset, uint32_t origin) {
  const uint32_t begin = position_ - static_cast<uint32_t>(buffer_.size());
  uint32_t target = offset;
  if (origin == 1) target = begin + static_cast<uint32_t>(cursor_) + offset;
  if (origin == 2) target = size_ + offset;
  if (origin > 2) return kFree;
  if (target >= begin && target < position_) {
    cursor_ = target - begin;
    return target;
  }
  buffer_.clear();
  cursor_ = 0;
  return set(target);
}

}  // namespace ksv::test
