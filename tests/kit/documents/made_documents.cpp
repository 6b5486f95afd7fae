// Writes documents for others to read: made_documents DIRECTORY SEED COUNT.
//
// N.made is of the model writer of the tests, whose trees and chains have all shapes, and N.written
// is what the library writes of it. large.written has a list of its table behind the header.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "kit/documents/document_edit.h"
#include "kit/documents/entry_names.h"
#include "tests/ole/compound_writer.h"

namespace {

using ksv::test::CompoundWriter;
using ksv::test::Node;
using ksv::test::pattern;
using namespace ksv_kit::documents;

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string writtenBy(const DocumentEdit& edit) {
  std::string written;
  edit.write([&](const uint8_t* bytes, size_t count) {
    written.append(reinterpret_cast<const char*>(bytes), count);
  });
  return written;
}

// Readers that look names up in their order find nothing in trees without it.
void sortChildren(CompoundWriter& writer, uint32_t storage) {
  std::vector<uint32_t>& children = writer.node(storage).children;
  std::sort(children.begin(), children.end(), [&](uint32_t a, uint32_t b) {
    return compareNames(writer.node(a).name, writer.node(b).name) < 0;
  });
}

std::string madeDocument(std::mt19937& random) {
  CompoundWriter writer;
  if (random() % 3 == 0) writer.useVersion4();
  writer.backwards = random() % 2 == 0;
  std::vector<uint32_t> storages = {0};
  const auto count = static_cast<uint32_t>(1 + random() % 12);
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t parent = storages[random() % storages.size()];
    const char16_t letter = u"aBz日é"[random() % 5];
    std::u16string name(1 + random() % 12, letter);
    for (const char c : std::to_string(i)) name.push_back(static_cast<char16_t>(c));
    if (random() % 4 == 0) {
      storages.push_back(writer.addStorage(parent, name));
    } else {
      writer.addStream(parent, name, pattern(random() % 10000, i + 1));
    }
  }
  for (const uint32_t storage : storages) sortChildren(writer, storage);
  return writer.write();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string directory = std::string(argv[1]) + "/";
  std::mt19937 random(static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)));
  const int count = std::atoi(argv[3]);
  for (int i = 0; i < count; ++i) {
    const std::string made = madeDocument(random);
    const auto document = Document::open(bytesAt(made.data(), made.size()));
    writeFile(directory + std::to_string(i) + ".made", made);
    writeFile(directory + std::to_string(i) + ".written", writtenBy(DocumentEdit(*document)));
  }
  const std::string large = pattern(9'000'000);
  DocumentEdit edit;
  edit.setStream("large", {large.begin(), large.end()});
  edit.setStream("Storage/small", {'s'});
  writeFile(directory + "large.written", writtenBy(edit));
  return 0;
}
