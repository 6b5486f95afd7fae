#include "cconv/convert/direct_table.h"

#include <new>

#include "cconv/convert/driver.h"
#include "cconv/rules/code_table.h"

namespace ksv {
namespace {

// The pages of all tables of a process together: 16 MB.
constexpr uint32_t kMostPages = 8192;
constinit std::atomic<uint32_t> pagesInUse = 0;

// Also a character that is no line end, when a table gives it a line end's code.
bool isLineEnd(const ConverterRecord& record) {
  return record.rawCode == '\r' || record.rawCode == '\n' || record.outputCode == '\r' ||
         record.unicodeCode == 0x2028 || record.unicodeCode == 0x2029;
}

}  // namespace

Entry askEngine(const ConverterRecord& record, const uint8_t* input, int32_t length) {
  uint8_t output[16];
  ConverterRecord scratch = record;
  scratch.input = input;
  scratch.inputPosition = 0;
  scratch.inputLength = length;
  scratch.output = output;
  scratch.outputPosition = 0;
  scratch.outputCapacity = sizeof output;
  scratch.charactersRead = 0;
  scratch.unitsWritten = 0;
  scratch.skipInvalid = 0;
  scratch.options.replaceUnmappable = 0;
  scratch.options.convertNewlines = 0;
  scratch.defaultLanguage[0] = '\0';
  scratch.status = KSV_STATUS_WRITTEN;
  const ProvisionalAnswers provisional;
  convertByCharacters(scratch, 1);
  if (provisional.any()) return kNoEntry;
  const bool oneCharacterWritten = scratch.status == KSV_STATUS_WRITTEN &&
                                   scratch.inputPosition == length && scratch.charactersRead == 1;
  if (!oneCharacterWritten || scratch.outputPosition > kLongestOutput) return kNoEntry;
  if (record.options.convertNewlines != 0 && isLineEnd(scratch)) return kNoEntry;
  return makeEntry(output, scratch.outputPosition, scratch.unitsWritten);
}

DirectTable::~DirectTable() {
  for (auto& page : pages_) deletePage(page.load(std::memory_order_relaxed));
}

DirectTable::Page* DirectTable::newPage() {
  if (pagesInUse.fetch_add(1, std::memory_order_relaxed) < kMostPages) {
    if (Page* page = new (std::nothrow) Page()) return page;
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
  if (pages_[index].compare_exchange_strong(published, made, std::memory_order_acq_rel)) {
    return made;
  }
  deletePage(made);
  return published;
}

}  // namespace ksv
