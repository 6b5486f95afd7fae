#include "cli/jobs/classic_ole.h"

#include <memory>
#include <vector>

#include "cli/jobs/ole_tree.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/tree_drawing.h"
#include "cli/jobs/unsupported_document.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/named_input.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

namespace ksv_cli {
namespace {

std::string asTree(const OleTree& tree, const std::string& title) {
  TreeDrawing drawing(title);
  for (const OleTree::Entry& entry : tree.entries())
    drawing.add(entry.depth, entry.isLast,
                entry.name + (entry.isStorage ? "/" : "  " + std::to_string(entry.size)));
  return drawing.text();
}

std::string asJson(const OleTree& tree) {
  std::string text;
  std::vector<std::string> path;
  for (const OleTree::Entry& entry : tree.entries()) {
    path.resize(entry.depth);
    nlohmann::ordered_json line = emptyRecord();
    std::string full;
    for (const std::string& name : path) full += name + "/";
    line["path"] = full + entry.name;
    line["type"] = entry.isStorage ? "storage" : "stream";
    if (!entry.isStorage) line["size"] = entry.size;
    text += jsonLine(line);
    path.push_back(entry.name);
  }
  return text;
}

// How many bytes there were.
uint64_t copyStream(ksv::CompoundStream& stream) {
  constexpr uint32_t kBlock = 256 * 1024;
  const auto buffer = std::make_unique<uint8_t[]>(kBlock);
  const std::unique_ptr<ByteSink> sink = platform::openStandardOutput();
  uint64_t done = 0;
  while (const uint32_t count = stream.read(buffer.get(), kBlock)) {
    refuseSystemFaults();
    sink->write(buffer.get(), count);
    done += count;
  }
  return done;
}

}  // namespace

int listClassically(const std::string& name, bool isJson) {
  const NamedInput input(name);
  const auto file = openDocument(input.path());
  const OleTree tree(*file);
  const int status = writeResult(isJson ? asJson(tree) : asTree(tree, nameForMessages(name)));
  if (tree.damage()) {
    throw Failure::at(static_cast<uint64_t>(*tree.damage()), "has entries that are linked wrongly");
  }
  return status;
}

int catClassically(const std::string& name, const std::string& path) {
  const NamedInput input(name);
  const auto file = openDocument(input.path());
  const OleTree tree(*file);
  const OleTree::Entry* entry = tree.find(path);
  if (entry == nullptr) throw Failure("has no stream " + path);
  if (entry->isStorage) throw Failure(path + " is a storage");
  const auto stream = ksv::CompoundStream::open(*file, file->directory()[entry->id]);
  const auto refuseUnsupported = [&] {
    if (const auto unsupported = unsupportedStream(input.path(), entry->size)) throw *unsupported;
  };
  if (!stream) {
    refuseUnsupported();
    throw Failure::at(static_cast<uint64_t>(file->directory().offsetOf(entry->id)),
                      "has a damaged stream " + path);
  }
  const uint64_t done = copyStream(*stream);
  if (done == stream->size()) return kExitDone;
  refuseUnsupported();
  throw Failure("holds only " + std::to_string(done) + " of " + std::to_string(stream->size()) +
                " bytes of that stream");
}

}  // namespace ksv_cli
