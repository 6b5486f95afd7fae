// Which outside reference each charset is held against: references.txt.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tests/repertoire/repertoire.h"

namespace repertoire {

struct Reference {
  std::string kind;  // "iconv", "icu", "perl" or "python"
  std::string name;
};

struct ReferencedCharset {
  std::string name;
  Shape shape;
  std::vector<Reference> references;
};

void PrintTo(const ReferencedCharset& charset, std::ostream* out);

// In the order of the file.
std::vector<ReferencedCharset> referencedCharsets();

}  // namespace repertoire
