#include "result_line.h"

namespace ksv_cli {
namespace {

std::string joined(const std::vector<std::string>& words, char between) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i) {
    if (i != 0) text += between;
    text += words[i];
  }
  return text;
}

}  // namespace

std::string textLine(const std::vector<std::string>& fields) { return joined(fields, '\t') + "\n"; }

std::string orHyphen(const char* text) { return text == nullptr ? "-" : text; }

std::string joinedByCommas(const std::vector<std::string>& words) {
  return words.empty() ? "-" : joined(words, ',');
}

}  // namespace ksv_cli
