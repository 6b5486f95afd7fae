#include "tests/repertoire/reference_list.h"

#include <fstream>
#include <map>
#include <ostream>
#include <sstream>

namespace repertoire {
namespace {

Shape shapeNamed(const std::string& name) {
  static const std::map<std::string, Shape> kShapes = {
      {"bytes", Shape::kBytes},    {"pairs", Shape::kPairs},     {"euc", Shape::kEuc},
      {"four", Shape::kFour},      {"planes", Shape::kPlanes},   {"fixed", Shape::kFixed},
      {"ebcdic", Shape::kEbcdic},  {"escapes", Shape::kEscapes}, {"korean", Shape::kKorean},
      {"chinese", Shape::kChinese}};
  return kShapes.at(name);
}

}  // namespace

void PrintTo(const ReferencedCharset& charset, std::ostream* out) { *out << charset.name; }

std::vector<ReferencedCharset> referencedCharsets() {
  std::vector<ReferencedCharset> charsets;
  std::ifstream file(std::filesystem::path(REPERTOIRE_SOURCE_DIRECTORY) / "references.txt");
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string charset;
    std::string shape;
    Reference reference;
    words >> charset >> shape >> reference.kind >> reference.name;
    if (charsets.empty() || charsets.back().name != charset)
      charsets.push_back({charset, shapeNamed(shape), {}});
    charsets.back().references.push_back(reference);
  }
  return charsets;
}

}  // namespace repertoire
