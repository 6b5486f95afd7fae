// The headers say today what callers have been compiled against.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>

#include "ksv.h"
#include "ksv_cconv.h"
#include "ksv_cut.h"
#include "ksv_detect.h"
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_memory.h"
#include "ksv_ole.h"
#include "ksv_path.h"
#include "ksv_sjis.h"
#include "ksv_ucs2.h"
#include "tests/exports/export_list.h"
#include "tests/exports/library_image.h"

namespace ksv_exports {
namespace {

#define KSV_CONSTANT(name, value) \
  static_assert((name) == (value), #name " has another value than callers have");
#define KSV_FUNCTION(ordinal, result, name, ...)                          \
  static_assert(std::is_same_v<decltype(&name), result (*)(__VA_ARGS__)>, \
                #name " has another type than callers have");
#include "tests/exports/recorded_interface.inc"
#include "tests/exports/recorded_interface_ksv.inc"
#undef KSV_CONSTANT
#undef KSV_FUNCTION

#define KSV_CONSTANT(name, value)
#define KSV_FUNCTION(ordinal, result, name, ...) {#name, ordinal},
const std::map<std::string, int> kRecordedOrdinals = {
#include "tests/exports/recorded_interface.inc"
#include "tests/exports/recorded_interface_ksv.inc"
};
#undef KSV_CONSTANT
#undef KSV_FUNCTION

#define KSV_CONSTANT(name, value) #name,
#define KSV_FUNCTION(ordinal, result, name, ...)
const std::set<std::string> kRecordedConstants = {
#include "tests/exports/recorded_interface.inc"
#include "tests/exports/recorded_interface_ksv.inc"
};
#undef KSV_CONSTANT
#undef KSV_FUNCTION

// A constant stands on a line of its own, as "NAME = 1," or "#define NAME 1".
std::string constantOf(const std::string& line) {
  std::istringstream words(line);
  std::string name, value;
  words >> name;
  const bool isMacro = name == "#define";
  if (isMacro) words >> name;
  words >> value;
  if (!isMacro && value == "=") words >> value;
  const bool isNumber = !value.empty() && std::isdigit(static_cast<unsigned char>(value[0])) != 0;
  return name.starts_with("KSV_") && isNumber ? name : "";
}

TEST(RecordedInterface, has_every_export_with_its_ordinal) {
  std::map<std::string, int> ordinals;
  for (const Library& library : kLibraries)
    for (const Export& e : exportList(library)) ordinals[e.name] = e.ordinal;
  EXPECT_EQ(ordinals, kRecordedOrdinals);
}

TEST(RecordedInterface, has_every_constant_of_the_headers) {
  std::set<std::string> constants;
  for (const auto& entry : std::filesystem::directory_iterator(KSV_INCLUDE_DIRECTORY)) {
    if (entry.path().extension() != ".h") continue;
    std::istringstream lines(readFile(entry.path().string()));
    for (std::string line; std::getline(lines, line);) {
      if (const std::string name = constantOf(line); !name.empty()) constants.insert(name);
    }
  }
  EXPECT_EQ(constants, kRecordedConstants);
}

}  // namespace
}  // namespace ksv_exports
