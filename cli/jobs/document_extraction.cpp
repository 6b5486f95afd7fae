#include "cli/jobs/document_extraction.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "cli/mail/part_saver.h"
#include "cli/system/escapes.h"
#include "cli/system/files.h"
#include "cli/system/paths.h"
#include "cli/system/resource_limits.h"
#include "kit/documents/entry_names.h"

namespace ksv_cli {
namespace {

constexpr size_t kBlock = 256 * 1024;

// The stream cannot be had whole.
class UnwholeStream : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace

DocumentExtraction::DocumentExtraction(Document& document, const std::string& directory,
                                       bool replaces)
    : document_(document),
      directory_(directory),
      replaces_(replaces),
      places_(document.entries().size()),
      isThere_(document.entries().size()),
      left_(document.fileSize()) {
  placeEntries();
  refuseTaken();
}

// Storages stand in front of what is in them. Orphans have no place.
void DocumentExtraction::placeEntries() {
  const std::vector<Entry>& entries = document_.entries();
  for (uint32_t index = 0; index < entries.size(); ++index) {
    const Entry& entry = entries[index];
    if (entry.isOrphan || entry.depth > limits::kDeepestStorage) continue;
    places_[index] = index == 0 ? directory_ : freePlace(places_[entry.parent], index);
  }
}

// Names that differ for a document may be one for a directory: the next number is taken.
std::string DocumentExtraction::freePlace(const std::string& directory, uint32_t index) {
  const std::string name =
      safeFileName(ksv_kit::documents::shownName(document_.entries()[index].name()));
  std::string place = platform::joinPath(directory, name);
  for (uint32_t number = 2; !taken_.insert(platform::placeKey(place)).second; ++number)
    place = platform::joinPath(directory, numberedName(name, number));
  return place;
}

void DocumentExtraction::refuseTaken() {
  for (uint32_t index = 0; index < places_.size(); ++index) {
    const std::string& place = places_[index];
    if (place.empty() || !document_.entries()[index].isStream()) continue;
    if (platform::isLink(place)) throw Failure(shownName(place) + ": " + platform::kLinkIsThere);
    if (replaces_ || platform::fileFacts(place).kind == platform::FileKind::kMissing) continue;
    if (!hasSameBytes(index)) throw Failure(shownName(place) + " is there already");
    isThere_[index] = true;
  }
}

bool DocumentExtraction::hasSameBytes(uint32_t index) {
  const uint64_t size = document_.entries()[index].size();
  const platform::FileFacts facts = platform::fileFacts(places_[index]);
  if (facts.kind != platform::FileKind::kRegular || facts.size != size) return false;
  const std::unique_ptr<ByteSource> file = platform::openInput(places_[index]);
  std::vector<uint8_t> theirs(kBlock);
  std::vector<uint8_t> ours(kBlock);
  uint64_t done = 0;
  while (const size_t count = file->read(theirs.data(), theirs.size())) {
    if (document_.read(index, done, ours.data(), count) != count) return false;
    if (std::memcmp(ours.data(), theirs.data(), count) != 0) return false;
    done += count;
  }
  return done == size;
}

void DocumentExtraction::write(const Tell& tell, const TellFailure& tellFailure) {
  platform::createDirectories(directory_);
  for (uint32_t index = 1; index < places_.size(); ++index) {
    const Entry& entry = document_.entries()[index];
    if (places_[index].empty()) continue;
    if (!entry.isStream()) {
      platform::makeDirectoryItself(places_[index]);
      continue;
    }
    try {
      if (!isThere_[index]) writeStream(index);
    } catch (const UnwholeStream& unwhole) {
      tellFailure(Failure(document_.pathOf(index) + ": " + unwhole.what()));
      continue;
    }
    tell(index, places_[index]);
  }
}

// Streams that share their sectors would make much of little.
void DocumentExtraction::writeStream(uint32_t index) {
  const uint64_t size = document_.entries()[index].size();
  PartSaver::File file(places_[index]);
  std::vector<char> block(static_cast<size_t>(std::min<uint64_t>(size, kBlock)));
  for (uint64_t done = 0; done < size;) {
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(size - done, block.size()));
    const size_t came = document_.read(index, done, block.data(), wanted);
    if (came > left_) throw UnwholeStream("shares its bytes with others; the file has no more");
    left_ -= came;
    done += came;
    if (came < wanted)
      throw UnwholeStream("holds only " + std::to_string(done) + " of " + std::to_string(size) +
                          " bytes");
    file.write({block.data(), came});
  }
  file.commit();
}

}  // namespace ksv_cli
