// The library's own Shift_JIS mapping, beside Python's codec for code page 932.
#include <gtest/gtest.h>

#include <map>

#include "ksv_sjis.h"
#include "tests/repertoire/repertoire.h"

namespace repertoire {
namespace {

using Mapping = std::map<unsigned, unsigned>;

// What the mapping leaves out of the code page: control codes, what Python has for
// single bytes that are none, row 13, and what stands behind the last row of JIS X 0208.
bool isMapped(const Bytes& sequence) {
  const auto lead = static_cast<uint8_t>(sequence[0]);
  if (sequence.size() == 2) return lead != 0x87 && lead <= 0xEA;
  return (lead >= 0x20 && lead <= 0x7E) || (lead >= 0xA1 && lead <= 0xDF);
}

unsigned codeOf(const Bytes& sequence) {
  unsigned code = 0;
  for (const char byte : sequence) code = code << 8 | static_cast<uint8_t>(byte);
  return code;
}

Mapping referenceMapping() {
  const Repertoire reference =
      readRepertoire(std::filesystem::path(REPERTOIRE_BINARY_DIRECTORY) / "python_cp932.txt");
  Mapping mapping;
  for (const auto& [sequence, text] : reference.decoded) {
    if (isMapped(sequence)) mapping[codeOf(sequence)] = text[0];
  }
  return mapping;
}

Mapping libraryMapping(uint16_t (*map)(uint16_t)) {
  Mapping mapping;
  for (unsigned key = 0; key < 0x10000; ++key) {
    const unsigned value = map(static_cast<uint16_t>(key));
    if (value != 0) mapping[key] = value;
  }
  return mapping;
}

TEST(SjisMapping, is_code_page_932_without_its_extensions) {
  const Mapping mapping = libraryMapping(KSV_sjistounicode);
  EXPECT_EQ(mapping.size(), 7037u);
  EXPECT_EQ(mapping, referenceMapping());
}

TEST(SjisMapping, is_written_as_it_is_read_and_three_characters_more) {
  Mapping wanted = {{0x00AD, 0x2D}, {0x00B7, 0x8145}, {0x203E, 0x7E}};
  for (const auto& [code, character] : referenceMapping()) wanted[character] = code;
  EXPECT_EQ(libraryMapping(KSV_unicodetosjis), wanted);
}

}  // namespace
}  // namespace repertoire
