// Where the bytes of a document come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace ksv_kit::documents {

// The system refuses to open or to read a document: what() is why, in its words. That is no damage.
class UnreadableDocument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class ByteStore {
 public:
  virtual ~ByteStore() = default;

  // In bytes, when it was opened.
  virtual uint64_t size() const = 0;
  // How many bytes came: fewer than count only behind the end. Throws UnreadableDocument.
  virtual size_t read(uint64_t offset, void* buffer, size_t count) = 0;
};

// A file. Throws UnreadableDocument, also where there is none.
std::unique_ptr<ByteStore> bytesOfFile(const char* path);
// An open file, of which the descriptor (on Windows the handle) stays the caller's and open.
std::unique_ptr<ByteStore> bytesOfDescriptor(intptr_t descriptor);
// Bytes that stay where they are.
std::unique_ptr<ByteStore> bytesAt(const void* bytes, size_t size);

}  // namespace ksv_kit::documents
