// The lists of exports as the tests read them.
#pragma once

#include <string>
#include <vector>

namespace ksv_exports {

struct Export {
  int ordinal;
  std::string name;
};

// One of the libraries that are built.
struct Library {
  const char* file;
  const char* list;        // of its exports, in include/
  const char* onlyHeader;  // that declares them; null: all that no other library has
};
inline constexpr Library kComm = {KSV_LIBRARY, "exports.list", nullptr};
inline constexpr Library kKit = {KSV_KIT_LIBRARY, "exports_ksv.list", "ksv.h"};
inline constexpr Library kLibraries[] = {kComm, kKit};

// Whether the library's functions may stand in the header.
bool isHeaderOf(const Library& library, const std::string& header);

std::vector<Export> exportList(const Library& library);

}  // namespace ksv_exports
