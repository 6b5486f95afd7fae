/* Logs what a program does when its caller asks for that, and nothing otherwise. */
#include <stdio.h>

#include "ksv_file.h"
#include "ksv_log.h"

/* All calls stay in place, whatever flags says. */
static void work(uint32_t flags, const char* input) {
  char path[KSV_LOG_PATH_SIZE];
  FILE* log;
  if (GetLogFileName(input, "_import", path) != 0) return;
  log = ksv_logfopen(flags, path);
  ksv_logfprint_path(flags, log, input);
  ksv_logfprintf(flags, log, ": %d pages\n", 12);
  ksv_logfclose(flags, log);
  printf("%s has %d bytes\n", path, (int)KSV_GetFileSizeByPath(path));
}

int main(void) {
  char name[33];
  char line[80];
  FILE* log;
  work(0, "report.doc");
  work(KSV_LOG_ENABLED, "report.doc");

  log = KSV_FileOpen("report_import.log", "rb");
  if (log == NULL) return 1;
  while (KSV_FileReadLine(line, (int32_t)sizeof line, log) != NULL) printf("%s", line);
  KSV_FileClose(log);

  KSV_GetResouceString(KSV_STRING_WINDOWS31J, name, (int32_t)sizeof name);
  printf("built-in name: %s\n", name);
  return 0;
}
