/* Libraries are loaded by other calls on each system; here the oldest hosts take
 * the rule base by its numbers, others all by names. */
#include <string.h>
#include <windows.h>

#include "tests/exports/host_functions.h"

static int get(HMODULE library, const char* name, void* function) {
  const FARPROC address = GetProcAddress(library, name);
  memcpy(function, &address, sizeof address);
  return address != NULL;
}

int getHostFunctions(struct HostFunctions* functions, const char* path) {
  const HMODULE library = LoadLibraryA(path);
  return library != NULL && get(library, MAKEINTRESOURCEA(7000), &functions->start) &&
         get(library, MAKEINTRESOURCEA(7001), &functions->end) &&
         get(library, MAKEINTRESOURCEA(7002), &functions->loadRules) &&
         get(library, "cconvInitConvert", &functions->initialise) &&
         get(library, "cconvChgCharset", &functions->changeCharset) &&
         get(library, "cconvConvert", &functions->convert) &&
         get(library, "cconvTermConvert", &functions->terminate);
}
