/* A library that holds settings, as a product brings one along. */
#include <string.h>

int readSetting(const char* key, char* buffer, int size);

int readSetting(const char* key, char* buffer, int size) {
  if (size != 260) return 1;
  if (strcmp(key, "Charsetpath") == 0) strcpy(buffer, "C:/from/library/\xE6\x97\xA5\xE6\x9C\xAC");
  if (strcmp(key, "KsvTestLong") == 0) memset(buffer, 'x', (size_t)size);
  return 1;
}
