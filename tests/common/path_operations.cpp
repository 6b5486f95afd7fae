#include "tests/common/path_operations.h"

#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"
#include "tests/common/support.h"

namespace ksv::test {
namespace {

int64_t closedAgain(std::FILE* stream) {
  if (stream == nullptr) return 0;
  EXPECT_EQ(KSV_FileClose(stream), 0);
  return 1;
}

int64_t read(const char* path) { return closedAgain(KSV_FileOpen(path, "rb")); }
int64_t readAnsi(const char* path) { return closedAgain(KSV_FileOpenA(path, "rb")); }
int64_t change(const char* path) { return closedAgain(KSV_FileOpen(path, "r+b")); }
int64_t write(const char* path) { return closedAgain(KSV_FileOpen(path, "wb")); }
int64_t writeAnsi(const char* path) { return closedAgain(KSV_FileOpenA(path, "wb")); }
int64_t append(const char* path) { return closedAgain(KSV_FileOpen(path, "ab")); }

int64_t find(const char* path) { return KSV_FindFile(path); }
int64_t isFile(const char* path) { return KSV_IsFile(path); }
int64_t isFileAnsi(const char* path) { return KSV_IsFileA(path); }
int64_t isDirectory(const char* path) { return KSV_IsDirectory(path); }
int64_t isDirectoryAnsi(const char* path) { return KSV_IsDirectoryA(path); }
int64_t isThere(const char* path) { return KSV_IsExist(path); }

int64_t status(const char* path) {
  KsvStat status;
  return KSV_STAT(path, &status);
}

int64_t listing(const char* path) {
  KsvDirectoryListing listing;
  if (KSV_ASC_opendir(path, &listing) == 0) return 0;
  return 1 + KSV_ASC_closedir(&listing);
}

int64_t remove(const char* path) { return KSV_FileRemove(path); }
int64_t removeAnsi(const char* path) { return KSV_FileRemoveA(path); }
int64_t removeAsc(const char* path) { return KSV_ASC_remove(path); }
int64_t removeIfEmpty(const char* path) { return KSV_FileRemoveIfSizeIsZero(path); }
int64_t removeDirectory(const char* path) { return KSV_RmDir(path); }

int64_t makeDirectory(const char* path) { return KSV_MkDir(path); }

int64_t makeTemporary(const char* path) {
  char name[780] = "before";
  return KSV_ASC_tmpnam1(path, name) != nullptr;
}

int64_t openLog(const char* path) {
  std::FILE* log = ksv_logfopen(KSV_LOG_ENABLED, path);
  return log != nullptr && ksv_logfclose(KSV_LOG_ENABLED, log) == 0;
}

}  // namespace

const std::vector<PathOperation>& lookingOperations() {
  static const std::vector<PathOperation> operations = {
      {"KSV_FileOpen to read", read, 0, true},
      {"KSV_FileOpenA to read", readAnsi, 0, false},
      {"KSV_FileOpen to change", change, 0, true},
      {"KSV_GetFileSizeByPath", KSV_GetFileSizeByPath, -1, true},
      {"KSV_FindFile", find, -1, true},
      {"KSV_STAT", status, -1, true},
      {"KSV_IsFile", isFile, 0, true},
      {"KSV_IsFileA", isFileAnsi, 0, false},
      {"KSV_IsDirectory", isDirectory, 0, true},
      {"KSV_IsDirectoryA", isDirectoryAnsi, 0, false},
      {"KSV_IsExist", isThere, 0, true},
      {"KSV_ASC_opendir", listing, 0, false}};
  return operations;
}

const std::vector<PathOperation>& removingOperations() {
  static const std::vector<PathOperation> operations = {
      {"KSV_FileRemove", remove, -1, true},
      {"KSV_FileRemoveA", removeAnsi, -1, false},
      {"KSV_ASC_remove", removeAsc, -1, true},
      {"KSV_FileRemoveIfSizeIsZero", removeIfEmpty, -1, true},
      {"KSV_RmDir", removeDirectory, -1, true}};
  return operations;
}

const std::vector<PathOperation>& creatingOperations() {
  static const std::vector<PathOperation> operations = {
      {"KSV_FileOpen to write", write, 0, true},   {"KSV_FileOpenA to write", writeAnsi, 0, false},
      {"KSV_FileOpen to append", append, 0, true}, {"KSV_MkDir", makeDirectory, -1, true},
      {"KSV_ASC_tmpnam1", makeTemporary, 0, true}, {"ksv_logfopen", openLog, 0, true}};
  return operations;
}

void expectAllFail(const std::vector<PathOperation>& operations, const char* path) {
  const ptrdiff_t before = openDescriptors();
  for (const PathOperation& operation : operations) {
    EXPECT_EQ(operation.run(path), operation.failure) << operation.name << " of " << path;
  }
  EXPECT_EQ(openDescriptors(), before) << path;
}

}  // namespace ksv::test
