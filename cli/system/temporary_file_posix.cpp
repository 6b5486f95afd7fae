#include "cli/system/process.h"
#include "cli/system/temporary_file.h"
#include "cli/system/temporary_names_posix.h"

namespace ksv_cli::platform {
namespace {

class PosixTemporaryFile : public TemporaryFile {
 public:
  explicit PosixTemporaryFile(const std::string& directory) : file_(directory) {}

  void write(const uint8_t* bytes, size_t size) override {
    onTemporaryFile([&] { file_.descriptor().writeAll(bytes, size); });
  }
  const std::string& finish() override {
    onTemporaryFile([&] { file_.descriptor().closeChecked(); });
    return file_.path();
  }

 private:
  PassingFile file_;
};

}  // namespace

std::unique_ptr<TemporaryFile> TemporaryFile::create() {
  const std::string directory = environmentValue("TMPDIR");
  return onTemporaryFile(
      [&] { return std::make_unique<PosixTemporaryFile>(directory.empty() ? "/tmp" : directory); });
}

}  // namespace ksv_cli::platform
