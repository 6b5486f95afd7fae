// A document as it is to be written: that of a source with changes, or a new one. It is written
// anew as a whole, sound whatever the source was like inside, with each stream in one piece; the
// same tree gives the same bytes.
//
//     DocumentEdit edit(*document);                       // throws LossyEdit
//     edit.setStream("\\x05SummaryInformation", bytes);   // replaced, or added
//     edit.remove("\\x05DocumentSummaryInformation");
//     edit.write([&](const uint8_t* bytes, size_t count) { sink.write(bytes, count); });
//
// Bytes of the source's streams are copied block by block while it writes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "kit/documents/document.h"

namespace ksv_kit::documents {

// The source has something that would be lost if it was written anew: what() says what, and
// offset() where.
class LossyEdit : public std::runtime_error {
 public:
  LossyEdit(const char* reason, uint64_t offset) : std::runtime_error(reason), offset_(offset) {}
  uint64_t offset() const { return offset_; }

 private:
  uint64_t offset_;
};

// A stream cannot have that name or stand at that path.
class UnfitPath : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class DocumentEdit {
 public:
  using Output = std::function<void(const uint8_t* bytes, size_t count)>;

  struct Node {
    uint8_t type = 0;  // a compound_type
    std::u16string name = {};
    std::array<uint8_t, 16> classId = {};
    uint32_t stateBits = 0;
    uint64_t created = 0;
    uint64_t modified = 0;
    std::optional<uint32_t> source = {};  // the stream of the source that its bytes are those of
    uint64_t size = 0;                    // of a stream
    std::vector<uint8_t> bytes = {};      // of a stream without a source
    std::vector<uint32_t> children = {};  // nodes
  };

  // A root with nothing in it.
  DocumentEdit();
  // All that the source has, which has to stay. Looks at all of it: throws LossyEdit where streams
  // are damaged or entries orphaned.
  explicit DocumentEdit(Document& source);

  // The node at a path, as Document::find() has them; 0 is the root.
  std::optional<uint32_t> find(std::string_view path) const;
  const Node& node(uint32_t number) const { return nodes_[number]; }

  // Gives the stream at a path these bytes. It is added where it is not there, with the storages
  // on the way to it. Throws UnfitPath.
  void setStream(std::string_view path, std::vector<uint8_t> bytes);
  // Leaves out the entry at a path with all that is in it. False: there is none, or it is the root.
  bool remove(std::string_view path);

  // Calls the output with all bytes in their order. Throws what it throws, and LossyEdit where the
  // source cannot be read any more as it was.
  void write(const Output& output) const;

 private:
  std::optional<uint32_t> childNamed(uint32_t parent, std::u16string_view name) const;
  uint32_t addNode(uint32_t parent, uint8_t type, std::u16string name);

  Document* source_ = nullptr;
  bool hasLargeSectors_ = false;
  uint32_t transaction_ = 0;
  std::vector<Node> nodes_;  // those that were removed are no node's child
};

}  // namespace ksv_kit::documents
