#include "cli/system/named_input.h"

#include <cstdio>

#include "cli/system/inputs.h"
#include "ksv_file.h"

namespace ksv_cli {
namespace {

bool libraryOpens(const std::string& path) {
  std::FILE* file = KSV_FileOpen(path.c_str(), "rb");
  if (file == nullptr) return false;
  KSV_FileClose(file);
  return true;
}

bool hasNameForLibrary(const std::string& input) {
  if (isStandardStream(input)) return false;
  return platform::fileFacts(input).kind == platform::FileKind::kRegular && libraryOpens(input);
}

std::unique_ptr<platform::TemporaryFile> copyOf(ByteSource& source) {
  auto copy = platform::TemporaryFile::create();
  copyAll(source, *copy);
  return copy;
}

}  // namespace

NamedInput::NamedInput(const std::string& input) : path_(input) {
  if (hasNameForLibrary(input)) return;
  copy_ = copyOf(*openInput(input));
  path_ = copy_->finish();
}

}  // namespace ksv_cli
