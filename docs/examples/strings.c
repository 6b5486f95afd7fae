/* Takes a Japanese name of 16-bit units apart and cleans up a buffer of them. */
#include <stdio.h>

#include "ksv_ucs2.h"

int main(void) {
  static const uint16_t kFile[] = u"\u590F\u76EE.TXT"; /* two kanji */
  static const uint16_t kDirty[] = {'a', 0x0007, 'b', '\r', '\n', 0x007F};
  uint16_t text[16];
  uint16_t clean[6];
  int32_t bytes;

  KSV_ucs2strcpy(text, kFile);
  KSV_ucs2strcat(text, u".bak");
  KSV_ucs2strlwr(text);
  printf("%d units, the first dot at %d\n", (int)KSV_ucs2strlen(text),
         (int)(KSV_ucs2strchr(text, '.') - text));

  /* The first unit is in JIS X 0208, and 1 compares as many as 2 units. */
  printf("%X is Japanese: %s\n", (unsigned)text[0], KSV_isucs2jis(text[0]) ? "yes" : "no");
  printf("two units alike: %s\n", KSV_ucs2strncmp(text, kFile, 1) == 0 ? "yes" : "no");

  bytes = KSV_CopyStripControlCode(clean, kDirty, (int32_t)sizeof kDirty, 2, 0);
  printf("%d of %d bytes are left\n", (int)bytes, (int)sizeof kDirty);
  return 0;
}
