#include "tests/common/sjis_facts.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace ksv::test {
namespace {

// Every pair of bytes that Shift_JIS can have, in order: 94 cells a row, from row 1.
std::vector<uint16_t> pairsInOrder() {
  std::vector<uint16_t> pairs;
  for (int lead = 0x81; lead <= 0xEF; ++lead) {
    if (lead >= 0xA0 && lead <= 0xDF) continue;
    for (int trail = 0x40; trail <= 0xFC; ++trail) {
      if (trail != 0x7F) pairs.push_back(static_cast<uint16_t>(lead * 256 + trail));
    }
  }
  return pairs;
}

// Lines of a row and cell code, a character and its name behind a header.
void addFacts(SjisMap& map) {
  const std::vector<uint16_t> pairs = pairsInOrder();
  std::ifstream file(KSV_FACTS_DIRECTORY "/jis_x0208_windows.txt");
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    unsigned code = 0;
    unsigned character = 0;
    if (!(words >> std::hex >> code >> character)) throw std::runtime_error(line);
    const unsigned row = code / 0x100 - 0x20;
    const unsigned cell = code % 0x100 - 0x20;
    map[pairs.at((row - 1) * 94 + cell - 1)] = static_cast<uint16_t>(character);
  }
}

SjisMap readFacts() {
  SjisMap map;
  for (uint16_t ascii = ' '; ascii <= '~'; ++ascii) map[ascii] = ascii;
  uint16_t katakana = 0xFF61;
  for (uint16_t code = 0xA1; code <= 0xDF; ++code) map[code] = katakana++;
  addFacts(map);
  return map;
}

SjisMap reversed(const SjisMap& map) {
  SjisMap result = {{0x00AD, 0x2D}, {0x00B7, 0x8145}, {0x203E, 0x7E}};
  for (const auto& [code, character] : map) {
    if (!result.emplace(character, code).second) throw std::runtime_error("a character twice");
  }
  return result;
}

}  // namespace

const SjisMap& sjisFacts() {
  static const SjisMap map = readFacts();
  return map;
}

const SjisMap& sjisFactsReversed() {
  static const SjisMap map = reversed(sjisFacts());
  return map;
}

}  // namespace ksv::test
