#include "cconv/bulk/character_traces.h"

#include <memory>
#include <new>

#include "cconv/limits.h"
#include "cconv/rules/publication.h"
#include "common/budget.h"

namespace ksv {
namespace {

// The tables of a process together.
constinit Budget tableBudget(limits::kMostTraceTables);

}  // namespace

CharacterTrace CharacterTrace::of(const ConverterRecord& record) {
  return {record.decodedGroup, record.decodedGroupType, record.targetGroup, record.targetGroupType,
          record.rawCode,      record.groupCode,        record.unicodeCode, record.outputCode,
          record.outputWidth,  record.sequenceLength,   record.secondCode};
}

void CharacterTrace::leaveIn(ConverterRecord& record) const {
  record.decodedGroup = decodedGroup;
  record.decodedGroupType = decodedGroupType;
  record.targetGroup = targetGroup;
  record.targetGroupType = targetGroupType;
  record.rawCode = rawCode;
  record.groupCode = groupCode;
  record.unicodeCode = unicodeCode;
  record.outputCode = outputCode;
  record.outputWidth = outputWidth;
  record.sequenceLength = sequenceLength;
  record.secondCode = secondCode;
}

CharacterTraces::~CharacterTraces() {
  Slots* slots = slots_.load(std::memory_order_relaxed);
  if (slots == nullptr) return;
  delete slots;
  tableBudget.giveBack();
}

inline CharacterTraces::Key CharacterTraces::keyOf(const uint8_t* bytes, ptrdiff_t length) {
  Key key = static_cast<Key>(length);
  for (ptrdiff_t i = 0; i < length; ++i) key = key << 8 | bytes[i];
  return key;
}

inline size_t CharacterTraces::slotOf(Key key) {
  return static_cast<size_t>(key * 0x9E3779B97F4A7C15 >> 53);
}

const CharacterTrace* CharacterTraces::find(const uint8_t* bytes, ptrdiff_t length) const {
  const Slots* slots = slots_.load(std::memory_order_acquire);
  if (slots == nullptr) return nullptr;
  const Key key = keyOf(bytes, length);
  for (size_t probe = 0; probe < kProbes; ++probe) {
    const Slot& slot = (*slots)[(slotOf(key) + probe) % kSlots];
    if (slot.key.load(std::memory_order_acquire) == key) return &slot.trace;
  }
  return nullptr;
}

void CharacterTraces::remember(const uint8_t* bytes, ptrdiff_t length,
                               const ConverterRecord& record) {
  Slots* slots = slotsToFill();
  if (slots == nullptr) return;
  const Key key = keyOf(bytes, length);
  for (size_t probe = 0; probe < kProbes; ++probe) {
    Slot& slot = (*slots)[(slotOf(key) + probe) % kSlots];
    Key present = kFree;
    if (slot.key.compare_exchange_strong(present, kBeingFilled, std::memory_order_acquire)) {
      pauseForTests(PublicationStep::kWord);
      slot.trace = CharacterTrace::of(record);
      pauseForTests(PublicationStep::kWord);
      slot.key.store(key, std::memory_order_release);
      return;
    }
    if (present == key) return;
  }
}

CharacterTraces::Slots* CharacterTraces::slotsToFill() {
  Slots* const present = slots_.load(std::memory_order_acquire);
  if (present != nullptr) return present;
  if (!tableBudget.take()) return nullptr;
  std::unique_ptr<Slots> made(new (std::nothrow) Slots);
  Slots* const own = made.get();
  Slots* const published = own == nullptr ? nullptr : publish(slots_, std::move(made));
  if (published != own || own == nullptr) tableBudget.giveBack();
  return published;
}

}  // namespace ksv
