// What the step-by-step engine leaves in the record behind a character that it has
// written: remembered for characters that short texts end with, so that the engine need
// not convert them again only for the fields.
//
// Only what the engine has left is in here. It is a function of the character's bytes
// where there is nothing else that it could depend on: neither escape sequences, nor a
// character before or behind, nor a mark or a language that is due.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "ksv_cconv.h"

namespace ksv {

// The fields of a record that tell of its last character.
struct CharacterTrace {
  uint32_t decodedGroup;
  uint32_t decodedGroupType;
  uint32_t targetGroup;
  uint32_t targetGroupType;
  uint32_t rawCode;
  uint32_t groupCode;
  uint32_t unicodeCode;
  uint32_t outputCode;
  uint16_t outputWidth;
  uint16_t sequenceLength;
  uint32_t secondCode;

  static CharacterTrace of(const ConverterRecord& record);
  void leaveIn(ConverterRecord& record) const;
};

// The traces of one converter, entered character by character by whoever converts it
// first; safe from any thread: the key is the flag that publishes its trace, and no key
// is ever replaced. Later characters that find no place are not remembered.
class CharacterTraces {
 public:
  CharacterTraces() = default;
  ~CharacterTraces();
  CharacterTraces(const CharacterTraces&) = delete;
  CharacterTraces& operator=(const CharacterTraces&) = delete;

  // By the one to four bytes of the character. Null when there is none.
  const CharacterTrace* find(const uint8_t* bytes, ptrdiff_t length) const;
  // Does nothing when there is no memory, or no place left.
  void remember(const uint8_t* bytes, ptrdiff_t length, const ConverterRecord& record);

 private:
  // 128 KB, made when the first character is remembered.
  static constexpr size_t kSlots = 2048;
  static constexpr size_t kProbes = 2;

  using Key = uint64_t;  // length and bytes
  static constexpr Key kFree = 0;
  static constexpr Key kBeingFilled = ~Key{0};
  struct alignas(64) Slot {
    std::atomic<Key> key = kFree;
    CharacterTrace trace;  // never changed once the key is there
  };
  using Slots = std::array<Slot, kSlots>;

  static Key keyOf(const uint8_t* bytes, ptrdiff_t length);
  static size_t slotOf(Key key);
  Slots* slotsToFill();

  std::atomic<Slots*> slots_ = nullptr;
};

}  // namespace ksv
