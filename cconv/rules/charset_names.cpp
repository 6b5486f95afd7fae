#include "cconv/rules/charset_names.h"

#include <cstring>

#include "common/byte_blocks.h"

namespace ksv {
namespace {

// Lowers A to Z in each of eight bytes.
constexpr uint64_t lowered(uint64_t bytes) {
  return bytes | (~bytesOutside<'A', 'Z'>(bytes) & kHighBits) >> 2;
}

template <typename Word>
Word load(const char* bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

uint64_t byteAt(std::string_view name, size_t index) {
  return static_cast<unsigned char>(name[index]);
}

}  // namespace

inline CharsetNames::Key CharsetNames::keyOf(std::string_view name) {
  const char* const bytes = name.data();
  const size_t length = name.size();
  Key key;
  key.length = length;
  if (length >= 8) {
    key.first = lowered(load<uint64_t>(bytes));
    key.last = lowered(load<uint64_t>(bytes + length - 8));
  } else if (length >= 4) {
    key.first = lowered(uint64_t{load<uint32_t>(bytes)} << 32 | load<uint32_t>(bytes + length - 4));
  } else if (length > 0) {
    key.first =
        lowered(byteAt(name, 0) << 16 | byteAt(name, length / 2) << 8 | byteAt(name, length - 1));
  }
  return key;
}

// Of what is there at once: the length and both ends, without what tells cases apart.
inline size_t CharsetNames::hashOf(std::string_view name) {
  if (name.empty()) return 0;
  return name.size() + 5 * (byteAt(name, 0) & 0x1F) + 37 * (byteAt(name, name.size() - 1) & 0x1F);
}

LoadedCharset* CharsetNames::find(std::string_view name) const {
  if (name.size() > limits::kLongestQuickName) return nullptr;
  const Key key = keyOf(name);
  for (size_t place = hashOf(name);; ++place) {
    const Slot& slot = slots_[place % kSlots];
    LoadedCharset* const charset = slot.charset.load(std::memory_order_acquire);
    if (charset == nullptr || slot.key == key) return charset;
  }
}

void CharsetNames::enter(std::string_view name, LoadedCharset* charset) {
  if (name.size() > limits::kLongestQuickName || count_ == limits::kMostQuickNames ||
      find(name) != nullptr)
    return;
  size_t place = hashOf(name);
  while (slots_[place % kSlots].charset.load(std::memory_order_relaxed) != nullptr) ++place;
  Slot& slot = slots_[place % kSlots];
  slot.key = keyOf(name);
  slot.charset.store(charset, std::memory_order_release);
  ++count_;
}

}  // namespace ksv
