// A result as one line of standard output.
#ifndef KSV_CLI_RESULT_LINE_H
#define KSV_CLI_RESULT_LINE_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ksv_cli {

// Bytes that are no UTF-8, which paths may hold, are replaced.
inline std::string jsonLine(const nlohmann::ordered_json& line) {
  return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

inline nlohmann::ordered_json orNull(const char* text) {
  return text == nullptr ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

// Fields with tabs between.
std::string textLine(const std::vector<std::string>& fields);

std::string orHyphen(const char* text);

// A hyphen when there are none.
std::string joinedByCommas(const std::vector<std::string>& words);

}  // namespace ksv_cli

#endif
