// A result as one line of standard output.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/system/failure.h"

namespace ksv_cli {

// What a job writes: its own records, or exactly what the library's calls answer, in
// the form that programs have always been given.
enum class ResultForm { kFull, kClassic };

// Bytes that are no UTF-8, which paths may hold, are replaced.
inline std::string jsonLine(const nlohmann::ordered_json& line) {
  return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

// The same with everything beyond ASCII escaped, for charsets that lack some of it.
inline std::string asciiJsonLine(const nlohmann::ordered_json& line) {
  return line.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace) + "\n";
}

inline nlohmann::ordered_json orNull(const char* text) {
  return text == nullptr ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

// Null in the place of an empty one.
inline nlohmann::ordered_json textOrNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

// An object without members. A value that becomes one by its first member says so before it
// has the memory, and does not outlive the want of it.
nlohmann::ordered_json emptyRecord();

// The beginning of the record of an input: its path, and in the full form the bytes of
// one that is no UTF-8, in base64.
nlohmann::ordered_json recordOf(const std::string& path, ResultForm form);

// Adds a path as a field, and one that is no UTF-8 once more as its bytes: "keptBytes" beside
// "kept".
void addPath(nlohmann::ordered_json& line, const std::string& field, const std::string& path);

// What a record has in "error".
nlohmann::ordered_json errorField(const Failure& failure);

// The record of an input that failed.
nlohmann::ordered_json failureRecord(const std::string& path, const Failure& failure);

// A name as a line of text of that form has it.
std::string nameField(const std::string& name, ResultForm form);

// Fields with tabs between.
std::string textLine(const std::vector<std::string>& fields);

std::string orHyphen(const char* text);

// A hyphen when there are none.
std::string joinedByCommas(const std::vector<std::string>& words);

}  // namespace ksv_cli
