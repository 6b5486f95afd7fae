#include "named_input.h"

#include <cstdio>
#include <memory>

#include "failure.h"
#include "inputs.h"
#include "ksv_file.h"
#include "ksv_path.h"
#include "platform.h"

namespace ksv_cli {
namespace {

bool copyTo(ByteSource& source, std::FILE* file) {
  constexpr size_t kBlock = 64 * 1024;
  const auto buffer = std::make_unique<uint8_t[]>(kBlock);
  while (const size_t count = source.read(buffer.get(), kBlock)) {
    const auto size = static_cast<int32_t>(count);
    if (KSV_FileWrite(buffer.get(), 1, size, file) != size) return false;
  }
  return true;
}

}  // namespace

NamedInput::NamedInput(const std::string& input) : path_(input) {
  if (!isStandardStream(input)) {
    openInput(input);
    return;
  }
  char name[KSV_PATH_SIZE];
  if (KSV_ASC_tmpnam(name) == nullptr) throw Failure("cannot be copied to a temporary file");
  path_ = name;
  isTemporary_ = true;
  std::FILE* file = KSV_FileOpen(name, "wb");
  bool isCopied = false;
  try {
    isCopied = file != nullptr && copyTo(*openInput(input), file);
  } catch (const Failure&) {
    KSV_FileClose(file);
    KSV_FileRemove(name);
    throw;
  }
  isCopied = KSV_FileClose(file) == 0 && isCopied;
  if (isCopied) return;
  KSV_FileRemove(name);
  throw Failure("cannot be copied to a temporary file");
}

NamedInput::~NamedInput() {
  if (isTemporary_) KSV_FileRemove(path_.c_str());
}

}  // namespace ksv_cli
