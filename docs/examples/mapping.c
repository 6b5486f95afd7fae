/* Maps characters one at a time, which needs no charset directory. */
#include <stdio.h>

#include "ksv_sjis.h"
#include "ksv_ucs2.h"

static void show(uint16_t unit) {
  const uint16_t code = KSV_unicodetosjis(unit);
  printf("U+%04X ", (unsigned)unit);
  if (code == 0) {
    printf("has no code\n");
  } else if (code <= 0xFF) {
    printf("is %02X\n", (unsigned)code);
  } else {
    printf("is %02X %02X%s\n", (unsigned)code >> 8, (unsigned)code & 0xFF,
           KSV_isucs2zenhira(unit) ? ", hiragana" : "");
  }
}

int main(void) {
  show('A');
  show(0x3042); /* a hiragana letter */
  show(0xFF71); /* a half-width katakana letter */
  show(0xFF5E); /* the tilde that Windows has where others have U+301C */
  show(0x301C);
  printf("95 5C is U+%04X\n", (unsigned)KSV_sjistounicode(0x955C));
  return 0;
}
