/* Puts a temporary file beside a document, and lists the directory. */
#include <stdio.h>

#include "ksv_file.h"
#include "ksv_path.h"

static void list(const char* pattern) {
  KsvDirectoryListing listing;
  KsvDirectoryEntry entry;
  if (KSV_ASC_opendir(pattern, &listing) == 0) return;
  while (KSV_ASC_readdir(&listing, &entry) == 1) printf("%s: %s\n", pattern, entry.name);
  KSV_ASC_closedir(&listing);
}

int main(void) {
  static const char kDocument[] = "letters/soseki.1.txt";
  char directory[KSV_PART_SIZE];
  char base[KSV_PART_SIZE];
  char extension[KSV_PART_SIZE];
  char backup[KSV_PATH_SIZE];
  char temporary[KSV_PATH_SIZE];
  FILE* stream;

  if (KSV_splitpath(kDocument, NULL, directory, base, extension) != 0) return 1;
  printf("[%s] [%s] [%s]\n", directory, base, extension);
  if (KSV_makepath(backup, NULL, directory, base, "bak") != 0) return 1;

  if (KSV_MkDir("letters") != 0) return 1;
  if (KSV_ASC_tmpnam1(kDocument, temporary) == NULL) return 1;
  printf("a new file: %s\n", KSV_IsFile(temporary) ? "yes" : "no");
  stream = KSV_FileOpen(backup, "wb");
  if (stream == NULL || KSV_FileClose(stream) != 0) return 1;

  list("letters/*.bak");
  printf("last separator at %d\n", (int)KSV_getPathBreak(kDocument));
  KSV_ASC_remove(temporary);
  KSV_ASC_remove(backup);
  printf("directory gone: %s\n", KSV_RmDir("letters") == 0 ? "yes" : "no");
  return 0;
}
