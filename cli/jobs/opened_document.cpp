#include "cli/jobs/opened_document.h"

#include <algorithm>
#include <optional>

#include "cli/jobs/zipped_document.h"
#include "cli/system/console.h"
#include "cli/system/inputs.h"
#include "cli/system/standard_streams.h"

namespace ksv_cli {

using ksv_kit::documents::bytesOfFile;

OpenedDocument::OpenedDocument(const std::string& input)
    : input_(input), document_(Document::open(bytesOfFile(input_.path().c_str()))) {
  if (document_ != nullptr) return;
  if (const std::optional<std::string> zipped = zippedDocument(input_.path()))
    throw Failure::at(0, "is " + *zipped + ", which is no compound document");
  throw Failure::at(0, "is not a compound document");
}

const char* nameOf(ksv_damage_kind kind) {
  constexpr const char* kNames[] = {"header", "cut-short", "sector-table", "chain",
                                    "cycle",  "shared",    "size",         "entry",
                                    "link",   "root",      "order"};
  return kNames[kind];
}

Failure failureOf(const Damage& damage) { return Failure::at(damage.offset, damage.reason); }

int tellDamages(const std::string& input, const Document& document, Telling telling) {
  constexpr size_t kMostTold = 10;
  const std::vector<Damage>& damages = document.damages().told();
  const std::string name = nameForMessages(input);
  for (size_t i = 0; i < std::min(damages.size(), kMostTold); ++i) {
    const Failure failure = failureOf(damages[i]);
    platform::writeToStandardError(diagnostic(name, failure.what()));
    if (telling == Telling::kLines) continue;
    nlohmann::ordered_json record = failureRecord(input, failure);
    record["error"]["kind"] = nameOf(damages[i].kind);
    writeToStandardOutput(jsonLine(record));
  }
  if (damages.size() > kMostTold)
    platform::writeToStandardError(
        diagnostic(name, "has " + std::to_string(damages.size() - kMostTold) + " more damages"));
  return damages.empty() ? kExitDone : kExitFailed;
}

}  // namespace ksv_cli
