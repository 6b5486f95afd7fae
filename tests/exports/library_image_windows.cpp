// The form of a shared library on Windows: a portable executable.
#include <windows.h>

#include <vector>

#include "tests/exports/byte_reader.h"
#include "tests/exports/library_image.h"

namespace ksv_exports {
namespace {

class ExecutableReader {
 public:
  explicit ExecutableReader(const std::string& bytes) : file_(bytes) {
    const auto start = file_.at<IMAGE_DOS_HEADER>(0);
    EXPECT_EQ(start.e_magic, IMAGE_DOS_SIGNATURE);
    const auto header = static_cast<uint64_t>(start.e_lfanew);
    headers_ = file_.at<IMAGE_NT_HEADERS64>(header);
    EXPECT_EQ(headers_.Signature, static_cast<DWORD>(IMAGE_NT_SIGNATURE));
    const uint64_t table = header + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) +
                           headers_.FileHeader.SizeOfOptionalHeader;
    for (uint64_t i = 0; i < headers_.FileHeader.NumberOfSections; ++i) {
      sections_.push_back(file_.at<IMAGE_SECTION_HEADER>(table + i * sizeof(IMAGE_SECTION_HEADER)));
    }
  }

  LibraryImage read() const {
    LibraryImage image;
    readExports(image);
    readImports(image);
    return image;
  }

 private:
  // Where in the file an address of the loaded image comes from.
  uint64_t offsetOf(uint64_t address) const {
    for (const IMAGE_SECTION_HEADER& section : sections_) {
      const uint64_t begin = section.VirtualAddress;
      if (address >= begin && address < begin + section.SizeOfRawData) {
        return address - begin + section.PointerToRawData;
      }
    }
    ADD_FAILURE() << "no section has address " << address;
    return 0;
  }
  template <typename Record>
  Record at(uint64_t address, uint64_t index) const {
    return file_.at<Record>(offsetOf(address + index * sizeof(Record)));
  }
  uint64_t directoryAt(size_t entry) const {
    return headers_.OptionalHeader.DataDirectory[entry].VirtualAddress;
  }

  void readExports(LibraryImage& image) const {
    const auto table = at<IMAGE_EXPORT_DIRECTORY>(directoryAt(IMAGE_DIRECTORY_ENTRY_EXPORT), 0);
    for (uint64_t i = 0; i < table.NumberOfNames; ++i) {
      const std::string name = file_.stringAt(offsetOf(at<DWORD>(table.AddressOfNames, i)));
      const auto index = at<WORD>(table.AddressOfNameOrdinals, i);
      image.symbols[name] = at<DWORD>(table.AddressOfFunctions, index);
      image.ordinals[name] = static_cast<int>(table.Base + index);
    }
    readNamelessExports(table, image);
  }

  // Exports without a name appear as "#7" among the symbols.
  void readNamelessExports(const IMAGE_EXPORT_DIRECTORY& table, LibraryImage& image) const {
    std::set<int> named;
    for (const auto& [name, ordinal] : image.ordinals) named.insert(ordinal);
    for (uint64_t i = 0; i < table.NumberOfFunctions; ++i) {
      const auto address = at<DWORD>(table.AddressOfFunctions, i);
      const int ordinal = static_cast<int>(table.Base + i);
      if (address == 0 || named.contains(ordinal)) continue;
      image.symbols["#" + std::to_string(ordinal)] = address;
    }
  }

  void readImports(LibraryImage& image) const {
    const uint64_t table = directoryAt(IMAGE_DIRECTORY_ENTRY_IMPORT);
    for (uint64_t i = 0;; ++i) {
      const auto library = at<IMAGE_IMPORT_DESCRIPTOR>(table, i);
      if (library.Name == 0) return;
      image.imports.insert(file_.stringAt(offsetOf(library.Name)));
    }
  }

  ByteReader file_;
  IMAGE_NT_HEADERS64 headers_;
  std::vector<IMAGE_SECTION_HEADER> sections_;
};

}  // namespace

LibraryImage readLibraryImage(const std::string& path) {
  const std::string bytes = readFile(path);
  return ExecutableReader(bytes).read();
}

}  // namespace ksv_exports
