/* Finds a block that was written past its end and one that nobody released. */
#include <stdio.h>
#include <string.h>

#include "ksv_memory.h"

static void printLog(void) {
  char line[80];
  FILE* log = fopen("memdbg_log.txt", "r");
  while (log != NULL && fgets(line, sizeof line, log) != NULL) fputs(line, stdout);
  if (log != NULL) fclose(log);
}

int main(void) {
  char* name;
  char* kept;
  KSV_start_mem_dbg("memory example");

  name = KSV_malloc_dbg(8, "name", 1);
  kept = KSV_calloc_dbg(4, 25, "kept", 2);
  if (name == NULL || kept == NULL) return 1;
  strcpy(name, "Soseki N"); /* nine bytes with the terminator */
  KSV_free_dbg(name);

  KSV_end_mem_dbg(); /* reports kept, which stays valid */
  KSV_free(kept);    /* a block of the debug family, released as any other */
  printLog();
  return 0;
}
