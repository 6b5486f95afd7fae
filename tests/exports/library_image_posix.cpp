// The form of a shared library on POSIX systems: ELF.
#include <elf.h>

#include "tests/exports/byte_reader.h"
#include "tests/exports/library_image.h"

namespace ksv_exports {
namespace {

class ElfReader {
 public:
  explicit ElfReader(const std::string& bytes) : file_(bytes), header_(file_.at<Elf64_Ehdr>(0)) {
    EXPECT_EQ(std::memcmp(header_.e_ident, ELFMAG, SELFMAG), 0);
  }

  LibraryImage read() const {
    LibraryImage image;
    for (uint64_t i = 0; i < header_.e_shnum; ++i) {
      const Elf64_Shdr section = sectionAt(i);
      if (section.sh_type == SHT_DYNSYM) readSymbols(section, image);
      if (section.sh_type == SHT_DYNAMIC) readImports(section, image);
      if (section.sh_type == SHT_INIT_ARRAY) {
        image.initialisers += section.sh_size / sizeof(uint64_t);
      }
    }
    return image;
  }

 private:
  Elf64_Shdr sectionAt(uint64_t index) const {
    return file_.at<Elf64_Shdr>(header_.e_shoff + index * header_.e_shentsize);
  }

  void readSymbols(const Elf64_Shdr& table, LibraryImage& image) const {
    const Elf64_Shdr strings = sectionAt(table.sh_link);
    for (uint64_t i = 0; i < table.sh_size / sizeof(Elf64_Sym); ++i) {
      const auto symbol = file_.at<Elf64_Sym>(table.sh_offset + i * sizeof(Elf64_Sym));
      if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_BIND(symbol.st_info) == STB_LOCAL) continue;
      image.symbols[file_.stringAt(strings.sh_offset + symbol.st_name)] = symbol.st_value;
    }
  }

  void readImports(const Elf64_Shdr& table, LibraryImage& image) const {
    const Elf64_Shdr strings = sectionAt(table.sh_link);
    for (uint64_t i = 0; i < table.sh_size / sizeof(Elf64_Dyn); ++i) {
      const auto entry = file_.at<Elf64_Dyn>(table.sh_offset + i * sizeof(Elf64_Dyn));
      if (entry.d_tag != DT_NEEDED) continue;
      image.imports.insert(file_.stringAt(strings.sh_offset + entry.d_un.d_val));
    }
  }

  ByteReader file_;
  Elf64_Ehdr header_;
};

}  // namespace

LibraryImage readLibraryImage(const std::string& path) {
  const std::string bytes = readFile(path);
  return ElfReader(bytes).read();
}

}  // namespace ksv_exports
