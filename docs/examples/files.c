/* Writes numbers most significant byte first to a file with a Japanese name, and reads
 * them back. */
#include <stdio.h>

#include "ksv_file.h"
#include "ksv_memory.h"

static const char kPath[] = "\xE8\xA1\xA8.bin"; /* UTF-8, on every system */

static KsvByteOrderStream* openStream(const char* mode) {
  KsvByteOrderStream* s = KSV_malloc((int32_t)sizeof(KsvByteOrderStream));
  if (s == NULL) return NULL;
  s->stream = KSV_FileOpen(kPath, mode);
  s->nativeOrder = 0;
  if (s->stream != NULL) return s;
  KSV_free(s);
  return NULL;
}

int main(void) {
  uint32_t number = 0;
  uint8_t byte = 0;
  KsvByteOrderStream* s = openStream("wb");
  if (s == NULL) return 1;
  KSV_X_FilePutDWord(s, 0x12345678);
  KSV_X_FilePutWord(s, 0xABCD);
  if (KSV_X_FileClose(s) != 0) return 1; /* the disk may have been full until now */

  printf("%d bytes:", (int)KSV_GetFileSizeByPath(kPath));
  s = openStream("rb");
  if (s == NULL) return 1;
  while (KSV_X_FileGetByte(s, &byte) == 1) printf(" %02X", (unsigned)byte);
  KSV_X_FileSeek(s, 2, SEEK_SET);
  if (KSV_X_FileGetDWord(s, &number) == 1) printf("\nthe four from 2 on: %08X\n", (unsigned)number);
  KSV_X_FileClose(s); /* releases the record too */

  printf("removed: %d\n", KSV_FileRemove(kPath));
  return 0;
}
