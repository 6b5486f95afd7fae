// include/exports.list as the tests read it.
#pragma once

#include <string>
#include <vector>

namespace ksv_exports {

struct Export {
  int ordinal;
  std::string name;
};

std::vector<Export> exportList();

}  // namespace ksv_exports
