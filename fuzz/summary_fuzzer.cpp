// Two property sets of any bytes in a sound document: every call ends, keeps to its record
// and gives the same again.
//
// Input: kind; code page; target; language; line ends; then the two sets, with the length
// of the first in front.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_cconv.h"
#include "ksv_ole.h"
#include "tests/ole/compound_writer.h"

namespace {

using ksv_fuzz::require;

constexpr uint16_t kKinds[] = {9003, 7000, 6000, 5000, 10002, 1};
constexpr uint16_t kCodePages[] = {932, 936, 949, 950, 1200, 65001, 1252};
constexpr const char* kTargets[] = {
    "UTF-8",           "WINDOWS31J",  "ISO-8859-1", "ISO-10646-UCS-2",
    "ISO-10646-UCS-4", "ISO-2022-JP", "none"};
constexpr const char* kLanguages[] = {"Japanese", "Simplified Chinese", "Korean", "English"};

template <class Value, size_t kCount>
Value choose(const Value (&values)[kCount], uint8_t choice) {
  return values[choice % kCount];
}

// The charsets are loaded once.
class Library {
 public:
  Library() {
    directory_.copyFilesOf(KSV_FUZZ_CHARSET_DIRECTORY);
    require(startProcess() == 1 && cconvLoadRule() == 1, "the library starts");
  }
  ~Library() { endProcess(); }

  const ksv_fuzz::ScratchDirectory& directory() const { return directory_; }

 private:
  ksv_fuzz::ScratchDirectory directory_;
};

std::string document(std::string_view first, std::string_view second) {
  ksv::test::CompoundWriter writer;
  writer.addStream(0, u"\u0005SummaryInformation", first);
  writer.addStream(0, u"\u0005DocumentSummaryInformation", second);
  return writer.write();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Library library;
  ksv_fuzz::Input input(data, size);
  const uint16_t parameters[3] = {choose(kKinds, input.byte()), 0,
                                  choose(kCodePages, input.byte())};
  KsvSummarySettings settings = {};
  const uint8_t target = input.byte();
  std::strcpy(settings.targetCharset, choose(kTargets, target));
  settings.outputBigEndian = target & 0x80;
  std::strcpy(settings.language, choose(kLanguages, input.byte()));
  settings.lineEndFlags = input.byte();
  const size_t firstLength = input.word();
  const std::string_view sets = input.rest();
  const std::string_view first = sets.substr(0, firstLength);
  const std::string path = library.directory().path() + "document";
  library.directory().write("document", document(first, sets.substr(first.size())));

  std::string record(KSV_SUMMARY_RECORD_SIZE, 'x');
  const uint32_t result = SummaryInfo(path.c_str(), &settings, record.data(), parameters);
  require(result == KSV_SUMMARY_DONE || result == KSV_SUMMARY_NO_MEMORY ||
              result == KSV_SUMMARY_MALFORMED,
          "a sound document gives one of three results");
  const bool takesAny = parameters[0] != 1;
  require(takesAny || std::all_of(record.begin(), record.end(), [](char c) { return c == 0; }),
          "an unknown kind takes nothing");
  std::string again(KSV_SUMMARY_RECORD_SIZE, 'y');
  require(
      SummaryInfo(path.c_str(), &settings, again.data(), parameters) == result && record == again,
      "the same document gives the same again");
  return 0;
}
