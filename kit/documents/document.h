// An open compound document: its tree, and the bytes of its streams.
//
//     const auto document = Document::open(bytesOfFile("letter.doc"));  // null: it is none
//     if (const auto stream = document->find("\\x05SummaryInformation"))
//       if (const auto bytes = document->readWhole(*stream, 1 << 20)) use(*bytes);
//
// A damaged document is read as far as it goes: what is wrong is told by damages(), each thing when
// it is come upon, and check() comes upon everything. Only what is asked for is read of a file;
// what the system refuses is thrown as UnreadableDocument. One thread at a time may use a document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/documents/byte_store.h"
#include "kit/documents/chain.h"
#include "kit/documents/damage.h"
#include "kit/documents/directory.h"
#include "kit/documents/document_header.h"
#include "kit/documents/paged_bytes.h"
#include "kit/documents/sector_tables.h"
#include "kit/documents/stream_bytes.h"

namespace ksv_kit::documents {

// An entry of the tree. Its number is its index in Document::entries().
struct Entry {
  const DirectoryEntry* stored;
  uint32_t id;           // in the directory
  uint32_t parent;       // index; kNoEntry of the root, and of orphans that no orphan holds
  uint32_t nextSibling;  // index; kNoEntry of the last
  uint32_t depth;        // of the root 0
  bool isOrphan;         // in use, and in no storage's tree

  std::u16string_view name() const { return stored->name(); }
  bool isStream() const { return stored->type == ksv::compound_type::kStream; }
  // Of a stream, as the directory claims it.
  uint64_t size() const { return isStream() ? stored->size : 0; }
};

// What is found out about a document as a whole.
struct CheckedFacts {
  uint64_t lostSectors = 0;  // in use as the table says, and of nothing that is known
};

class Document {
 public:
  // Null when the bytes do not begin as a compound file does.
  static std::unique_ptr<Document> open(std::unique_ptr<ByteStore> store);

  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  const Header& header() const { return header_; }
  uint64_t fileSize() const { return bytes_.size(); }

  // The root first, if there is a directory, each storage in front of what is in it, orphans last.
  const std::vector<Entry>& entries() const { return entries_; }
  // The index of what the directory has at a number; none where that is no entry in use.
  std::optional<uint32_t> indexOf(uint32_t id) const;
  // Of the first child; none of what holds nothing.
  std::optional<uint32_t> firstChild(uint32_t index) const;

  // Names as they are shown (entry_names.h) with '/' between them; an empty path is the root. A
  // name that is not there as given is looked for without regard to case. An orphan that no orphan
  // holds stands at "\orphaned/NUMBER/NAME", NUMBER being its id.
  std::optional<uint32_t> find(std::string_view path) const;
  std::string pathOf(uint32_t index) const;

  // How many bytes of a stream came from an offset on: fewer than count only behind the end of the
  // stream, and where something is damaged, which is told.
  size_t read(uint32_t index, uint64_t offset, void* buffer, size_t count);
  // All of a stream, or what there is of a damaged one. None when it claims more than most bytes.
  std::optional<std::vector<uint8_t>> readWhole(uint32_t index, size_t most);

  const DamageList& damages() const { return damages_; }

  // Looks at all that can be wrong with the structure.
  CheckedFacts check();

 private:
  friend class DocumentCheck;

  explicit Document(std::unique_ptr<ByteStore> store) : bytes_(std::move(store)) {}

  void takeTree();
  StreamBytes& opened(uint32_t index);
  std::optional<uint32_t> childNamed(std::optional<uint32_t> first, std::u16string_view name) const;
  std::optional<uint32_t> orphanAt(std::string_view& path) const;

  PagedBytes bytes_;
  DamageList damages_;
  Header header_;
  std::optional<SectorTable> sectors_;
  std::optional<MiniTable> miniTable_;
  std::optional<Chain> miniStream_;
  std::optional<StreamTables> tables_;
  Directory directory_;
  std::vector<Entry> entries_;
  std::vector<uint32_t> indexes_;  // of entries, by their numbers in the directory
  // The streams that were read last, the latest first.
  std::list<std::pair<uint32_t, StreamBytes>> opened_;
};

}  // namespace ksv_kit::documents
