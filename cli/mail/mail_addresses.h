// The addresses that a field such as From or To names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ksv_cli {

// In bytes as they stand there, encoded words and all.
struct MailAddress {
  std::string name;
  std::string address;
};

// field: unfolded. Those of groups stand in the row of the others. A name may be quoted, be
// several words, or stand behind the address as a comment; what is no address is shown as one.
std::vector<MailAddress> addressesIn(std::string_view field);

}  // namespace ksv_cli
