#include "kit/charsets/alias_file.h"

#include <optional>
#include <sstream>

namespace ksv_kit {
namespace {

std::optional<ByteOrder> orderNamed(const std::string& word) {
  if (word.empty() || word == "-") return ByteOrder::kOpen;
  if (word == "little") return ByteOrder::kLittle;
  if (word == "big") return ByteOrder::kBig;
  return std::nullopt;
}

void readLine(const std::string& text, size_t line, AliasFile& file) {
  std::istringstream words(text);
  std::string alias;
  std::string charset;
  std::string order;
  words >> alias >> charset >> order;
  if (alias.empty() || alias[0] == '#') return;
  const std::optional<ByteOrder> fixed = orderNamed(order);
  if (charset.empty())
    file.faults.push_back({line, "names no charset for " + alias});
  else if (!fixed)
    file.faults.push_back({line, "has " + order + " in place of little, big or -"});
  else
    file.aliases.push_back({{alias, charset, *fixed}, line});
}

}  // namespace

AliasFile readAliases(std::string text) {
  AliasFile file;
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  if (text.find('\0') != std::string::npos) {
    file.faults.push_back({0, "is not UTF-8"});
    return file;
  }
  std::istringstream lines(text);
  size_t number = 0;
  for (std::string line; std::getline(lines, line);) readLine(line, ++number, file);
  return file;
}

}  // namespace ksv_kit
