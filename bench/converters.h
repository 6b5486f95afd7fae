// The library and its peers behind one face.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/charset.h"

namespace ksv_bench {

struct Pair {
  const Charset* source;
  const Charset* target;

  std::string name() const { return std::string(source->library) + "_to_" + target->library; }
};

// Room enough for any output of so many bytes of input.
constexpr size_t roomFor(size_t inputBytes) { return 4 * inputBytes + 64; }

// Converts whole texts; the handle is kept from one to the next.
class Converter {
 public:
  virtual ~Converter() = default;
  // The bytes written; kFailed when the text was not converted to its end.
  virtual size_t convert(std::string_view input, char* output, size_t capacity) = 0;

  static constexpr size_t kFailed = static_cast<size_t>(-1);
};

// One of the programs that are compared.
struct Contestant {
  const char* name;
  bool isLibrary;
  // Null when the contestant lacks one of the charsets.
  std::unique_ptr<Converter> (*open)(const Pair& pair);
};

// The library, the library with its bulk path off, iconv and ICU.
const std::vector<Contestant>& contestants();

// The library's record kept from text to text, which is not terminated in between: with the charset
// of the input set anew for each text, and with nothing but new buffers.
const Contestant& libraryWithCharsetAgain();
const Contestant& libraryWithBuffersOnly();

// Set up, convert and release in one go, as a caller with a single string does.
// Returns what Converter::convert returns.
size_t convertOnceWithLibrary(const Pair& pair, std::string_view input, char* output,
                              size_t capacity);
size_t convertOnceWithIconv(const Pair& pair, std::string_view input, char* output,
                            size_t capacity);
size_t convertOnceWithIcu(const Pair& pair, std::string_view input, char* output, size_t capacity);

// Starts the library and loads its rule files, for the life of the object.
class LibrarySession {
 public:
  LibrarySession();
  ~LibrarySession();
  LibrarySession(const LibrarySession&) = delete;
  LibrarySession& operator=(const LibrarySession&) = delete;
};

// Prints the message and ends the program: figures that compare different things
// are worth nothing.
[[noreturn]] void fail(const std::string& message);

}  // namespace ksv_bench
