// Directories, status, paths and temporary files.
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "ksv_file.h"
#include "ksv_path.h"
#include "tests/faults/job.h"

namespace ksv::test {
namespace {

constexpr char kDirectory[] = "a_directory_with_a_long_name";
constexpr char kFile[] = "a_directory_with_a_long_name/a_file_with_a_long_name.txt";
constexpr char kNew[] = "own_directory_that_is_new_and_long";
constexpr char kPattern[] = "a_directory_with_a_long_name/a_*_with_a_long_name.*";

void installDirectory() {
  std::filesystem::create_directory(kDirectory);
  writeInput(kFile, "12345");
  writeInput(std::string(kDirectory) + "/a_second_file_with_a_long_name.txt", "1");
  writeInput(std::string(kDirectory) + "/a_third_file_with_a_long_name.txt", "");
}

void lists(Answer& answer) {
  KsvDirectoryListing listing;
  if (!answer.needs(KSV_ASC_opendir(kPattern, &listing) == 1, "KSV_ASC_opendir")) return;
  KsvDirectoryEntry entry;
  while (KSV_ASC_readdir(&listing, &entry) == 1) {
    answer.add("name", entry.name);
    answer.add("size", listing.size);
  }
  answer.needs(KSV_ASC_closedir(&listing) == 0, "KSV_ASC_closedir");
}

void finds(Answer& answer) {
  answer.expects("KSV_FindFile of a pattern", KSV_FindFile(kPattern), -1);
  answer.expects("KSV_FindFile of a name", KSV_FindFile(kFile), -1);
}

void tellsStatus(Answer& answer) {
  KsvStat status;
  if (answer.needs(KSV_STAT(kFile, &status) == 0, "KSV_STAT")) {
    answer.add("size", status.size);
    answer.add("type", status.mode & 0xF000);
  }
  answer.expects("KSV_IsFile", KSV_IsFile(kFile), 0);
  answer.expects("KSV_IsFileA", KSV_IsFileA(kFile), 0);
  answer.expects("KSV_IsDirectory", KSV_IsDirectory(kDirectory), 0);
  answer.expects("KSV_IsDirectoryA", KSV_IsDirectoryA(kDirectory), 0);
  answer.expects("KSV_IsExist", KSV_IsExist(kFile), 0);
  answer.expects("KSV_GetFileSizeByPath", KSV_GetFileSizeByPath(kFile), -1);
}

void changesDirectories(Answer& answer) {
  if (answer.expects("KSV_MkDir", KSV_MkDir(kNew), -1)) {
    answer.expects("KSV_IsDirectory", KSV_IsDirectory(kNew), 0);
    answer.expects("KSV_RmDir", KSV_RmDir(kNew), -1);
  }
  KSV_RmDir(kNew);
}

void removesFiles(Answer& answer) {
  FILE* stream = KSV_FileOpen(kNew, "wb");
  if (!answer.needs(stream != nullptr, "KSV_FileOpen")) return;
  if (answer.needs(KSV_FileClose(stream) == 0, "KSV_FileClose"))
    answer.expects("KSV_ASC_remove", KSV_ASC_remove(kNew), -1);
  std::remove(kNew);
}

void splitsAndJoins(Answer& answer) {
  char directory[KSV_PART_SIZE];
  char base[KSV_PART_SIZE];
  char extension[KSV_PART_SIZE];
  char path[KSV_PATH_SIZE];
  if (answer.needs(KSV_splitpath(kFile, nullptr, directory, base, extension) == 0,
                   "KSV_splitpath")) {
    answer.add("base", base);
    if (answer.needs(KSV_makepath(path, nullptr, directory, base, extension) == 0, "KSV_makepath"))
      answer.add("path", path);
  }
  KSV_splitpathA(kFile, nullptr, directory, base, extension);
  if (answer.needs(base[0] != '\0' && directory[0] != '\0', "KSV_splitpathA")) {
    answer.add("directory", directory);
    KSV_makepathA(path, nullptr, directory, base, extension);
    if (answer.needs(path[0] != '\0', "KSV_makepathA")) answer.add("path", path);
  }
  answer.add("KSV_getPathBreak", KSV_getPathBreak(kFile));
}

void recodesPaths(Answer& answer) {
  char path[KSV_PATH_SIZE];
  uint16_t wide[KSV_PATH_UNITS];
  if (answer.needs(KSV_FilePathTransAnsiToUTF8(path, kFile, sizeof path) == 0,
                   "KSV_FilePathTransAnsiToUTF8")) {
    answer.add("is", path);
  }
  if (answer.needs(KSV_FilePathTransUTF8ToAnsi(path, kFile, sizeof path) == 0,
                   "KSV_FilePathTransUTF8ToAnsi")) {
    answer.add("is", path);
  }
  if (answer.needs(KSV_FilePathTransUTF8ToUTF16(wide, kFile, KSV_PATH_UNITS) == 0,
                   "KSV_FilePathTransUTF8ToUTF16") &&
      answer.needs(KSV_FilePathTransUTF16ToUTF8(path, wide, sizeof path) == 0,
                   "KSV_FilePathTransUTF16ToUTF8")) {
    answer.add("is", path);
  }
}

// The name is another one each time; nothing is left of it.
void makesTemporaryFiles(Answer& answer) {
  char path[KSV_PATH_SIZE];
  if (answer.needs(KSV_ASC_tmpnam1(kFile, path) == path, "KSV_ASC_tmpnam1")) {
    answer.add("is in", std::string_view(path).substr(0, sizeof kDirectory + 3));
    std::remove(path);
  }
  if (answer.needs(KSV_ASC_tmpnam(path) == path, "KSV_ASC_tmpnam")) std::remove(path);
}

}  // namespace

void addDirectoryJobs(Jobs& jobs) {
  const auto add = [&](const char* name, SimpleJob::Act act) {
    jobs.push_back(std::make_unique<SimpleJob>(name, act, installDirectory));
  };
  add("directory_listed", lists);
  add("directory_searched", finds);
  add("directories_changed", changesDirectories);
  add("file_status", tellsStatus);
  add("files_removed_by_name", removesFiles);
  add("paths_split_and_joined", splitsAndJoins);
  add("paths_recoded", recodesPaths);
  add("temporary_files", makesTemporaryFiles);
}

}  // namespace ksv::test
