#include "cli/jobs/zipped_document.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <vector>

#include "cli/system/files.h"
#include "cli/system/inputs.h"

namespace ksv_cli {
namespace {

// Archives of documents begin with what tells their kind, and all have it in their first part.
constexpr size_t kLook = 65536;
constexpr std::string_view kLocalHeader("PK\3\4", 4);

struct PartRow {
  std::string_view part;
  const char* document;
};
// Names of parts in front of which there are others of the same archive only.
constexpr PartRow kParts[] = {
    {"word/", "a zipped Word document"},
    {"xl/", "a zipped Excel workbook"},
    {"ppt/", "a zipped PowerPoint presentation"},
    {"visio/", "a zipped Visio drawing"},
    {"[Content_Types].xml", "a zipped office document"},
};
constexpr PartRow kMediaTypes[] = {
    {"application/vnd.oasis.opendocument.text", "an OpenDocument text"},
    {"application/vnd.oasis.opendocument.spreadsheet", "an OpenDocument spreadsheet"},
    {"application/vnd.oasis.opendocument.presentation", "an OpenDocument presentation"},
    {"application/vnd.oasis.opendocument.graphics", "an OpenDocument drawing"},
    {"application/vnd.oasis.opendocument.", "an OpenDocument document"},
    {"application/epub+zip", "an electronic book"},
};

uint32_t unitAt(std::string_view bytes, size_t at) {
  if (at + 2 > bytes.size()) return 0;
  return static_cast<uint8_t>(bytes[at]) | uint32_t{static_cast<uint8_t>(bytes[at + 1])} << 8;
}

// The row whose part the text begins with; behind the last: none does.
template <size_t kCount>
size_t rowOf(const PartRow (&rows)[kCount], std::string_view text) {
  const auto found = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const PartRow& row) { return text.starts_with(row.part); });
  return static_cast<size_t>(found - std::begin(rows));
}

struct Part {
  std::string_view name;
  std::string_view content;  // and what follows
};

Part partAt(std::string_view bytes, size_t at) {
  constexpr size_t kNameLength = 26;
  constexpr size_t kExtraLength = 28;
  constexpr size_t kName = 30;
  const auto from = [&](size_t place) { return bytes.substr(std::min(place, bytes.size())); };
  const size_t length = unitAt(bytes, at + kNameLength);
  return {from(at + kName).substr(0, length),
          from(at + kName + length + unitAt(bytes, at + kExtraLength))};
}

}  // namespace

std::optional<std::string> zippedDocument(const std::string& path) {
  const std::vector<uint8_t> look = readAtMost(*platform::openInput(path), kLook);
  const std::string_view bytes(reinterpret_cast<const char*>(look.data()), look.size());
  if (!bytes.starts_with(kLocalHeader)) return std::nullopt;
  size_t best = std::size(kParts);
  for (size_t at = 0; at != std::string_view::npos; at = bytes.find(kLocalHeader, at + 1)) {
    const Part part = partAt(bytes, at);
    const size_t media =
        part.name == "mimetype" ? rowOf(kMediaTypes, part.content) : std::size(kMediaTypes);
    if (media != std::size(kMediaTypes)) return kMediaTypes[media].document;
    best = std::min(best, rowOf(kParts, part.name));
  }
  if (best == std::size(kParts)) return std::nullopt;
  return kParts[best].document;
}

}  // namespace ksv_cli
