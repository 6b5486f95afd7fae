// Writes titles to a catalogue in ISO-8859-1, which lacks some of their characters.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "ksv.hpp"

int main() {
  const std::vector<std::string> titles = {"caf\u00E9", "\u201Cquoted\u201D \u2026",
                                           "\u8349\u6795"};
  const ksv::Options options = ksv::Options().unmappable(KSV_LOOK_ALIKE).newlines(KSV_NEWLINES_LF);
  const ksv::Plan plan("UTF-8", "ISO-8859-1", options);
  for (const std::string& title : titles) {
    const std::string bytes = plan.convert(title);
    std::cout << bytes.size() << " bytes: " << ksv::convert("ISO-8859-1", "UTF-8", bytes) << '\n';
  }

  // Without a policy a character that is not there is an error.
  try {
    ksv::convert("UTF-8", "ISO-8859-1", titles[2]);
  } catch (const ksv::Error& error) {
    std::cout << error.what() << '\n';
  }

  // The same without an exception, and what the charset says of itself.
  const ksv::Attempt attempt = ksv::try_convert("UTF-8", "ISO-8859-1", titles[2]);
  std::cout << (attempt ? attempt.text : ksv_result_name(attempt.error.result)) << '\n';
  if (const auto charset = ksv::Charset::find("latin1"))
    std::cout << charset->name() << (charset->has(0x20AC) ? " has " : " does not have ")
              << "U+20AC\n";
}
