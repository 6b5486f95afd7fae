#include <windows.h>

#include <memory>

#include "cli/system/failure.h"
#include "cli/system/journal_file.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/system_paths_windows.h"

namespace ksv_cli::platform {
namespace {

// While it is open, others may read it only.
class WindowsJournalFile : public JournalFile {
 public:
  WindowsJournalFile(const std::string& path, DWORD how) : file_(openJournal(path, how)) {
    moveTo(0, FILE_END);
  }

  void cut(uint64_t size) override {
    moveTo(static_cast<LONGLONG>(size), FILE_BEGIN);
    if (!::SetEndOfFile(file_.get())) fail(::GetLastError());
  }

  void append(const std::string& text) override {
    writeAll(file_.get(), reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }

  void synchronise() override {
    if (!::FlushFileBuffers(file_.get())) fail(::GetLastError());
  }

 private:
  static HANDLE openJournal(const std::string& path, DWORD how) {
    const HANDLE handle = ::CreateFileW(systemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                        nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return handle;
    const DWORD error = ::GetLastError();
    if (error == ERROR_SHARING_VIOLATION) throw Failure("another run is writing to it");
    fail(error);
  }

  void moveTo(LONGLONG place, DWORD from) {
    LARGE_INTEGER distance;
    distance.QuadPart = place;
    if (!::SetFilePointerEx(file_.get(), distance, nullptr, from)) fail(::GetLastError());
  }

  OpenFile file_;
};

}  // namespace

std::unique_ptr<JournalFile> JournalFile::create(const std::string& path) {
  return std::make_unique<WindowsJournalFile>(path, CREATE_NEW);
}

std::unique_ptr<JournalFile> JournalFile::open(const std::string& path) {
  return std::make_unique<WindowsJournalFile>(path, OPEN_EXISTING);
}

}  // namespace ksv_cli::platform
