// Prints what the command takes as one JSON object: its jobs, their options and operands, and what
// the help says of them.

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/jobs/command_line.h"

namespace ksv_cli {
namespace {

using Json = nlohmann::ordered_json;

Json asJson(const DeclaredJob& job);

Json asJson(const DeclaredOption& option) {
  return {{"names", option.names},
          {"value", option.value},
          {"valueMayLack", option.valueMayLack},
          {"required", option.required},
          {"repeats", option.repeats},
          {"oneOf", option.oneOf},
          {"usual", option.usual},
          {"help", option.help}};
}

template <typename Element>
Json asJson(const std::vector<Element>& elements) {
  Json list = Json::array();
  for (const Element& element : elements) list.push_back(asJson(element));
  return list;
}

Json asJson(const DeclaredJob& job) {
  return {{"name", job.name},
          {"group", job.group},
          {"help", job.help},
          {"footer", job.footer},
          {"options", asJson<DeclaredOption>(job.options)},
          {"operands", asJson<DeclaredOption>(job.operands)},
          {"parts", asJson<DeclaredJob>(job.parts)}};
}

Json asJson(const DeclaredCommand& command) {
  return {{"name", command.name},
          {"version", command.version},
          {"help", command.help},
          {"footer", command.footer},
          {"options", asJson<DeclaredOption>(command.options)},
          {"jobs", asJson<DeclaredJob>(command.jobs)}};
}

}  // namespace
}  // namespace ksv_cli

int main() {
  const std::string table = ksv_cli::asJson(ksv_cli::declaredCommand()).dump(1) + "\n";
  return std::fputs(table.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
