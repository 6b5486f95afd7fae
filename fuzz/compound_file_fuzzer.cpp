// A compound file of any bytes: what opens, what is found and what is read has to be what
// a plain reader makes of it.
//
// Input: a number that the reads and seeks are drawn from; then the file.
#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_ole.h"
#include "tests/ole/reference_reader.h"

namespace {

using ksv::test::ReferenceFile;
using ksv::test::ReferenceStream;
using ksv_fuzz::require;

constexpr const char* kNames[] = {"small", "LARGE", "empty", "storage", "inner", "\5x", ""};
constexpr uint32_t kMostBytes = 20000;
constexpr int kMostStorages = 20;

// What is open closes when a search of the plain reader is given up.
struct CloseFile {
  void operator()(Ksv2Ole* file) const { KSV_2OLEclose(file); }
};
struct CloseStorage {
  void operator()(Ksv2Ole* storage) const {
    require(KSV_2OLEcloseStorage(storage) == 1, "a storage closes");
  }
};
struct CloseStream {
  void operator()(Ksv2OleStream* stream) const {
    require(KSV_2OLEcloseStream(stream) == 1, "a stream closes");
  }
};

std::string read(Ksv2OleStream* stream, uint32_t count) {
  std::string bytes(count, '\0');
  const uint32_t got = KSV_2OLEreadStream(stream, bytes.data(), count);
  require(got <= count, "no more is read than is asked for");
  bytes.resize(got);
  return bytes;
}

void compareStreams(Ksv2OleStream* stream, ReferenceStream& expected, std::minstd_rand& random) {
  require(read(stream, kMostBytes) == expected.read(kMostBytes), "both read the same");
  for (int i = 0; i < 8; ++i) {
    const auto origin = static_cast<uint16_t>(random() % 3);
    const uint32_t offset = static_cast<uint32_t>(random() % 10000) - 5000;
    require(KSV_2OLEseekStream(stream, offset, origin) == expected.seek(offset, origin),
            "both seek to the same position");
    const uint32_t count = static_cast<uint32_t>(random() % 1500);
    require(read(stream, count) == expected.read(count), "both read the same behind a seek");
  }
}

void compareChildren(Ksv2Ole* owner, const ReferenceFile& reference, uint32_t parent,
                     std::minstd_rand& random, int& storages) {
  for (const char* name : kNames) {
    const std::unique_ptr<Ksv2OleStream, CloseStream> stream(KSV_2OLEopenStream(owner, name));
    const auto slot = reference.findStream(parent, name);
    const auto expected = slot ? ReferenceStream::open(reference, *slot) : nullptr;
    require((stream != nullptr) == (expected != nullptr), "both open the same streams");
    if (stream) compareStreams(stream.get(), *expected, random);
    const std::unique_ptr<Ksv2Ole, CloseStorage> storage(KSV_2OLEopenStorage(owner, name));
    const auto found = reference.findStorage(parent, name);
    require((storage != nullptr) == found.has_value(), "both find the same storages");
    if (storage && ++storages < kMostStorages) {
      compareChildren(storage.get(), reference, *found, random, storages);
    }
  }
}

void compareFiles(Ksv2Ole* file, const ReferenceFile& reference, std::minstd_rand& random) {
  std::string classId(KSV_2OLE_CLASS_ID_SIZE, 'x');
  require(KSV_2OLEGetClassID(file, reinterpret_cast<uint8_t*>(classId.data())) == 1 &&
              classId == reference.slots()[reference.root()].classId,
          "both find the same class");
  int storages = 0;
  compareChildren(file, reference, reference.root(), random, storages);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  ksv_fuzz::Input input(data, size);
  std::minstd_rand random(input.byte());
  const std::string bytes(input.rest());
  directory.write("file", bytes);
  const std::unique_ptr<Ksv2Ole, CloseFile> file(KSV_2OLEopen((directory.path() + "file").c_str()));
  const auto reference = ReferenceFile::open(bytes);
  require((file != nullptr) == (reference != nullptr), "both open the same files");
  if (!file) return 0;
  try {
    compareFiles(file.get(), *reference, random);
  } catch (const ReferenceFile::TooManySteps&) {
    // There is nothing to compare with.
  }
  return 0;
}
