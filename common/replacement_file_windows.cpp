// A file that appears complete or not at all.
//
// It is written to a fixed name beside its place, so that what a killed writer
// leaves behind is taken up by the next one instead of piling up. Its writer lets
// nobody else open it, and renames or deletes it through its own handle: at no
// instant does the name stand for another writer's file.
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "common/guard.h"
#include "common/handle_windows.h"
#include "common/platform.h"
#include "common/wide_text_windows.h"
#include "common/write_buffer.h"

namespace ksv::platform {
namespace {

constexpr wchar_t kTemporarySuffix[] = L".tmp";

bool somethingStandsAt(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A link, and a file that has another name or may only be read, are not ours to
// overwrite.
bool isPlainFile(HANDLE file) {
  constexpr DWORD kOthers =
      FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_READONLY;
  BY_HANDLE_FILE_INFORMATION status;
  return GetFileInformationByHandle(file, &status) && status.nNumberOfLinks == 1 &&
         (status.dwFileAttributes & kOthers) == 0;
}

Handle openAlone(const std::wstring& path) {
  Handle file(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE | FILE_READ_ATTRIBUTES, 0, nullptr,
                          OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT,
                          nullptr));
  return file && isPlainFile(file.get()) ? std::move(file) : Handle();
}

struct StoreIn {
  bool operator()(const char* bytes, size_t count) const {
    while (count > 0) {
      const DWORD most = std::numeric_limits<DWORD>::max();
      const auto piece = static_cast<DWORD>(std::min<size_t>(count, most));
      DWORD stored = 0;
      if (!WriteFile(file, bytes, piece, &stored, nullptr) || stored == 0) return false;
      bytes += stored;
      count -= stored;
    }
    return true;
  }

  HANDLE file;
};

// Fails when something stands at path.
bool renameTo(HANDLE file, const std::wstring& path) {
  const size_t nameSize = path.size() * sizeof(wchar_t);
  const size_t size = offsetof(FILE_RENAME_INFO, FileName) + nameSize + sizeof(wchar_t);
  // Zeroed: nothing is replaced, and the name ends.
  const auto memory = std::make_unique<uint64_t[]>(size / sizeof(uint64_t) + 1);
  auto* information = reinterpret_cast<FILE_RENAME_INFO*>(memory.get());
  information->FileNameLength = static_cast<DWORD>(nameSize);
  std::memcpy(information->FileName, path.data(), nameSize);
  return SetFileInformationByHandle(file, FileRenameInfo, information, static_cast<DWORD>(size));
}

class WindowsReplacementFile final : public ReplacementFile {
 public:
  explicit WindowsReplacementFile(const wchar_t* path) : path_(absolutePath(path)) {}

  ~WindowsReplacementFile() override { discard(); }

  bool open() {
    if (path_.empty() || path_.back() == L'\\' || somethingStandsAt(path_)) return false;
    file_ = openAlone(path_ + kTemporarySuffix);
    // What another writer put into the place before us is seen now at the latest.
    return file_ && !somethingStandsAt(path_) && SetEndOfFile(file_.get());
  }

  bool write(const void* bytes, size_t count) override {
    return file_ && buffer_.write(bytes, count, StoreIn{file_.get()});
  }

  bool commit() override {
    if (!file_) return false;
    const bool placed = guarded(false, [&] {
      return buffer_.flush(StoreIn{file_.get()}) && FlushFileBuffers(file_.get()) &&
             renameTo(file_.get(), path_);
    });
    if (!placed) discard();
    file_ = Handle();
    return placed;
  }

 private:
  void discard() {
    if (!file_) return;
    FILE_DISPOSITION_INFO information = {TRUE};
    SetFileInformationByHandle(file_.get(), FileDispositionInfo, &information, sizeof information);
    file_ = Handle();
  }

  // Absolute: the current directory may change before it is asked for again.
  const std::wstring path_;
  Handle file_;
  WriteBuffer buffer_;
};

}  // namespace

std::unique_ptr<ReplacementFile> ReplacementFile::create(const char* path) {
  return guarded(std::unique_ptr<ReplacementFile>(), [&]() -> std::unique_ptr<ReplacementFile> {
    const WideText wide(path);
    if (!wide) return nullptr;
    auto file = std::make_unique<WindowsReplacementFile>(wide.get());
    if (!file->open()) return nullptr;
    return file;
  });
}

}  // namespace ksv::platform
