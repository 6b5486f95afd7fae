#include "cli/jobs/ole_tree.h"

#include <algorithm>
#include <cstdio>

#include "cli/jobs/unsupported_document.h"
#include "cli/system/failure.h"
#include "cli/system/resource_limits.h"
#include "cli/system/system_faults.h"
#include "common/utf16.h"

namespace ksv_cli {
namespace {

constexpr uint32_t kNoEntry = 0xFFFFFFFF;

void appendUtf8(std::string& text, char32_t c) {
  const auto append = [&](char32_t value) { text.push_back(static_cast<char>(value)); };
  if (c < 0x80) {
    append(c);
    return;
  }
  if (c < 0x800) {
    append(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      append(0xE0 | c >> 12);
    } else {
      append(0xF0 | c >> 18);
      append(0x80 | (c >> 12 & 0x3F));
    }
    append(0x80 | (c >> 6 & 0x3F));
  }
  append(0x80 | (c & 0x3F));
}

void appendEscape(std::string& text, char16_t unit) {
  char escape[8];
  std::snprintf(escape, sizeof escape, unit < 0x100 ? "\\x%02X" : "\\u%04X", unsigned{unit});
  text += escape;
}

bool isShown(char16_t unit) {
  const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
  return !isControl && unit != '/' && unit != '\\';
}

std::string shownEntryName(const std::u16string& name) {
  std::string shown;
  for (size_t i = 0; i < name.size(); ++i) {
    const char16_t unit = name[i];
    const bool isPair =
        ksv::isHighSurrogate(unit) && i + 1 < name.size() && ksv::isLowSurrogate(name[i + 1]);
    if (isPair) {
      appendUtf8(shown, ksv::joinSurrogates(unit, name[++i]));
    } else if (ksv::isSurrogate(unit) || !isShown(unit)) {
      appendEscape(shown, unit);
    } else {
      appendUtf8(shown, unit);
    }
  }
  return shown;
}

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool isSameButCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowered(x) == lowered(y); });
}

}  // namespace

std::unique_ptr<ksv::CompoundFile> openDocument(const std::string& path) {
  ksv::CompoundFault fault;
  forgetCause();
  std::unique_ptr<ksv::CompoundFile> file = ksv::CompoundFile::open(path.c_str(), fault);
  if (file) return file;
  if (fault.reason == nullptr) throw Failure("cannot be opened" + causeInWords());
  if (const auto unsupported = unsupportedFile(path)) throw *unsupported;
  throw Failure::at(static_cast<uint64_t>(fault.offset), fault.reason);
}

// What is still to be listed: siblings, of which some have been.
struct OleTree::Place {
  std::vector<uint32_t> siblings;
  size_t done = 0;
};

OleTree::OleTree(ksv::CompoundFile& file) : file_(file), visited_(file.directory().size()) {
  const ksv::Directory& directory = file_.directory();
  visited_[directory.rootId()] = true;
  std::vector<Place> path;
  path.push_back({siblingsFrom(directory[directory.rootId()].child, directory.rootId())});
  while (!path.empty()) {
    Place& place = path.back();
    if (place.done == place.siblings.size()) {
      path.pop_back();
      continue;
    }
    const uint32_t id = place.siblings[place.done++];
    const bool isLast = place.done == place.siblings.size();
    const ksv::DirectoryEntry& entry = directory[id];
    const bool isStorage = entry.type != ksv::DirectoryEntry::kStream;
    entries_.push_back(
        {id, path.size() - 1, isStorage, isLast, entry.size, shownEntryName(file_.nameOf(id))});
    if (!isStorage || entry.child == kNoEntry) continue;
    if (path.size() == limits::kDeepestStorage) {
      damage_ = directory.offsetOf(id);
    } else {
      path.push_back({siblingsFrom(entry.child, id)});
    }
  }
}

// The entries linked to each other, from the leftmost to the rightmost.
std::vector<uint32_t> OleTree::siblingsFrom(uint32_t id, uint32_t above) {
  const ksv::Directory& directory = file_.directory();
  std::vector<uint32_t> siblings;
  std::vector<uint32_t> path;
  const auto descend = [&](uint32_t from, uint32_t at) {
    for (; at != kNoEntry; from = at, at = directory[at].left) {
      const bool isThere = at < directory.size() && directory[at].type != 0;
      if (!isThere || visited_[at]) {
        damage_ = directory.offsetOf(from);
        return;
      }
      visited_[at] = true;
      path.push_back(at);
    }
  };
  descend(above, id);
  while (!path.empty()) {
    const uint32_t at = path.back();
    path.pop_back();
    siblings.push_back(at);
    descend(at, directory[at].right);
  }
  return siblings;
}

const OleTree::Entry* OleTree::find(std::string_view path) const {
  const Entry* found = nullptr;
  for (size_t depth = 0;; ++depth) {
    const size_t first = found == nullptr ? 0 : static_cast<size_t>(found - entries_.data()) + 1;
    const size_t end = path.find('/');
    found = findChild(first, depth, path.substr(0, end));
    if (found == nullptr || end == path.npos) return found;
    path.remove_prefix(end + 1);
  }
}

// The children of the entry in front of the first stand behind it, up to one that is not
// below it.
const OleTree::Entry* OleTree::findChild(size_t first, size_t depth, std::string_view name) const {
  const Entry* other = nullptr;
  for (size_t i = first; i < entries_.size() && entries_[i].depth >= depth; ++i) {
    const Entry& entry = entries_[i];
    if (entry.depth != depth) continue;
    if (entry.name == name) return &entry;
    if (other == nullptr && isSameButCase(entry.name, name)) other = &entry;
  }
  return other;
}

}  // namespace ksv_cli
