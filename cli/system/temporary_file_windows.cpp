#include <windows.h>

#include "cli/system/open_file_windows.h"
#include "cli/system/system_paths_windows.h"
#include "cli/system/temporary_file.h"
#include "cli/system/temporary_names_windows.h"
#include "common/wide_text_windows.h"

namespace ksv_cli::platform {
namespace {

std::wstring temporaryDirectory() {
  return ksv::platform::writtenBy(
      [](wchar_t* buffer, DWORD size) { return ::GetTempPathW(size, buffer); });
}

class WindowsTemporaryFile : public TemporaryFile {
 public:
  WindowsTemporaryFile() : file_(temporaryDirectory()), path_(utf8Of(file_.path())) {}

  void write(const uint8_t* bytes, size_t size) override {
    onTemporaryFile([&] { writeAll(file_.handle().get(), bytes, size); });
  }
  const std::string& finish() override {
    if (file_.handle().isOpen()) onTemporaryFile([&] { file_.handle().closeChecked(); });
    return path_;
  }

 private:
  PassingFile file_;
  const std::string path_;
};

}  // namespace

std::unique_ptr<TemporaryFile> TemporaryFile::create() {
  return onTemporaryFile([] { return std::make_unique<WindowsTemporaryFile>(); });
}

}  // namespace ksv_cli::platform
