#include "cconv/bulk/direct_table.h"

#include <new>

#include "cconv/convert/driver.h"
#include "cconv/engine/converter.h"
#include "cconv/limits.h"
#include "cconv/rules/code_table.h"
#include "cconv/rules/publication.h"
#include "common/heap.h"

namespace ksv {
namespace {

// The pages of all tables of a process together.
constinit std::atomic<uint32_t> pagesInUse = 0;

// The short tables of a process together.
constinit std::atomic<uint32_t> shortTablesInUse = 0;

Entry lineEndFlag(uint32_t rawCode) {
  if (rawCode == '\r') return kCarriageReturn;
  return rawCode == '\n' ? kLineFeed : 0;
}

// What the engine makes of one character in a record of its own.
struct Answer {
  uint8_t output[16];
  ConverterRecord record;
  bool isOneCharacter = false;
};

void ask(const ConverterRecord& record, const uint8_t* input, int32_t length,
         uint32_t designatedGroup, Answer& answer) {
  ConverterRecord& scratch = answer.record;
  scratch = record;
  scratch.input = input;
  scratch.inputPosition = 0;
  scratch.inputLength = length;
  scratch.output = answer.output;
  scratch.outputPosition = 0;
  scratch.outputCapacity = sizeof answer.output;
  scratch.charactersRead = 0;
  scratch.unitsWritten = 0;
  scratch.rawCode = 0;  // no carriage return before
  scratch.skipInvalid = 0;
  scratch.options.replaceUnmappable = 0;
  scratch.defaultLanguage[0] = '\0';
  scratch.designatedGroup = designatedGroup;
  scratch.status = KSV_STATUS_WRITTEN;
  const ProvisionalAnswers provisional;
  convertByCharacters(scratch, 1);
  answer.isOneCharacter = !provisional.any() && scratch.status == KSV_STATUS_WRITTEN &&
                          scratch.inputPosition == length && scratch.charactersRead == 1 &&
                          scratch.outputPosition <= kLongestOutput &&
                          scratch.unitsWritten <= kMostUnits;
}

Entry entryOf(const Answer& answer) {
  const ConverterRecord& scratch = answer.record;
  return makeEntry(answer.output, scratch.outputPosition, scratch.unitsWritten) |
         (scratch.options.convertNewlines != 0 ? lineEndFlag(scratch.rawCode) : 0);
}

// With its escape sequence, where nothing is designated before.
Entry askForDesignation(const ConverterRecord& record, const uint8_t* input, int32_t length) {
  Answer whole;
  ask(record, input, length, 0, whole);
  const uint32_t group = whole.record.designatedGroup;
  // A group that is not remembered gets its sequence from the engine each time.
  if (!whole.isOneCharacter || group == 0 || designationIndex(group) > kMostDesignatedGroup ||
      whole.record.unitsWritten != 1) {
    return kNoEntry;
  }
  Answer bare;
  ask(record, input, length, group, bare);
  const int32_t escapeLength = whole.record.outputPosition - bare.record.outputPosition;
  if (!bare.isOneCharacter || escapeLength <= 0) return kNoEntry;
  return designatingEntry(entryOf(whole), static_cast<uint32_t>(escapeLength), group);
}

}  // namespace

Entry askEngine(const ConverterRecord& record, const uint8_t* input, int32_t length) {
  if (targetEncoder(record)->keepsState) return askForDesignation(record, input, length);
  Answer answer;
  ask(record, input, length, record.designatedGroup, answer);
  return answer.isOneCharacter ? entryOf(answer) : kNoEntry;
}

DirectTable::~DirectTable() {
  for (auto& page : pages_) deletePage(page.load(std::memory_order_relaxed));
}

DirectTable::Page* DirectTable::newPage() {
  if (pagesInUse.fetch_add(1, std::memory_order_relaxed) < limits::kMostPages) {
    if (Page* page = new (std::nothrow) Page()) return page;
    timesWithoutMemory_.fetch_add(1, std::memory_order_relaxed);
  }
  pagesInUse.fetch_sub(1, std::memory_order_relaxed);
  return nullptr;
}

void DirectTable::deletePage(const Page* page) {
  if (page == nullptr) return;
  delete page;
  pagesInUse.fetch_sub(1, std::memory_order_relaxed);
}

const DirectTable::Page* DirectTable::publish(uint32_t index, const Page* made) {
  const Page* published = nullptr;
  pauseForTests(PublicationStep::kMade);
  if (pages_[index].compare_exchange_strong(published, made, std::memory_order_acq_rel)) {
    return made;
  }
  deletePage(made);
  return published;
}

ShortTable::ShortTable() {
  if (shortTablesInUse.fetch_add(1, std::memory_order_relaxed) < limits::kMostShortTables) {
    // Zeroed memory that the system hands out page by page as it is used.
    entries_ = static_cast<Slot*>(heap::allocateZeroed(kSize, sizeof(Slot)));
    hadNoMemory_ = entries_ == nullptr;
  }
  if (entries_ == nullptr) shortTablesInUse.fetch_sub(1, std::memory_order_relaxed);
}

ShortTable::~ShortTable() {
  if (entries_ == nullptr) return;
  heap::release(entries_);
  shortTablesInUse.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace ksv
