// A compound document of any bytes, in versions 3 and 4. Reading has to end and to be honest about
// what is missing; what can be written anew has to be sound then, and to have the same in it.
//
// Input: a number whose lowest bit says whether the document is checked before it is read; then the
// file.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/support.h"
#include "kit/documents/document.h"
#include "kit/documents/document_edit.h"

namespace {

using ksv_fuzz::require;
using ksv_kit::documents::bytesAt;
using ksv_kit::documents::Damage;
using ksv_kit::documents::Document;
using ksv_kit::documents::DocumentEdit;
using ksv_kit::documents::Entry;
using ksv_kit::documents::LossyEdit;

constexpr uint64_t kMostRead = 1 << 20;

std::unique_ptr<Document> opened(const std::string& bytes) {
  return Document::open(bytesAt(bytes.data(), bytes.size()));
}

void readEntries(Document& document, size_t size) {
  uint64_t left = kMostRead;
  for (uint32_t index = 0; index < document.entries().size() && left > 0; ++index) {
    const Entry& entry = document.entries()[index];
    require(document.indexOf(entry.id) == index, "an entry is found by its number");
    require(document.find(document.pathOf(index)).has_value(), "a path leads to an entry");
    const auto content = document.readWhole(index, SIZE_MAX);
    require(content && content->size() <= entry.size(), "no more is read than is claimed");
    require(content->size() <= size, "a stream has no more bytes than the file");
    require(content->size() == entry.size() || !document.damages().told().empty(),
            "what is missing is told");
    left -= std::min<uint64_t>(left, content->size());
  }
}

std::string writtenBy(const DocumentEdit& edit) {
  std::string written;
  edit.write([&](const uint8_t* bytes, size_t count) {
    written.append(reinterpret_cast<const char*>(bytes), count);
  });
  return written;
}

// Siblings change their order, and keep it when it is that of their names.
void compare(Document& source, const DocumentEdit& edit, Document& again) {
  require(source.entries().size() == again.entries().size(), "all entries are written");
  for (uint32_t index = 0; index < again.entries().size(); ++index) {
    const auto number = edit.find(again.pathOf(index));
    require(number.has_value(), "only what there was is written");
    const DocumentEdit::Node& node = edit.node(*number);
    const Entry& entry = again.entries()[index];
    require(entry.stored->classId == node.classId && entry.stored->stateBits == node.stateBits &&
                entry.stored->created == node.created && entry.stored->modified == node.modified,
            "what is said of entries stays");
    require(entry.size() == node.size, "sizes stay");
    if (entry.isStream())
      require(again.readWhole(index, SIZE_MAX) == source.readWhole(*node.source, SIZE_MAX),
              "bytes stay");
  }
}

bool hasTwoOfOneName(const Document& document) {
  for (const Damage& damage : document.damages().told())
    if (damage.kind == KSV_DAMAGE_ORDER) return true;
  return false;
}

void writeAnew(Document& document) {
  try {
    const DocumentEdit edit(document);
    const std::string written = writtenBy(edit);
    const auto again = opened(written);
    require(again != nullptr, "what is written is a document");
    require(again->check().lostSectors == 0, "no sector is lost");
    if (hasTwoOfOneName(*again)) return;  // and had two before
    require(again->damages().told().empty(), "what is written is sound");
    compare(document, edit, *again);
    require(writtenBy(DocumentEdit(*again)) == written, "the same is written again");
  } catch (const LossyEdit&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ksv_fuzz::Input input(data, size);
  const bool isCheckedFirst = (input.byte() & 1) != 0;
  const std::string bytes(input.rest());
  const auto document = opened(bytes);
  if (document == nullptr) return 0;
  if (isCheckedFirst) document->check();
  readEntries(*document, bytes.size());
  writeAnew(*document);
  return 0;
}
