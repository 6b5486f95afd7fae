/* Libraries are loaded by other calls on each system; here a symbol has a name. */
#include <dlfcn.h>
#include <string.h>

#include "tests/exports/host_functions.h"

/* A function comes as a pointer to data, which C does not convert. */
static int get(void* library, const char* name, void* function) {
  void* const address = dlsym(library, name);
  memcpy(function, &address, sizeof address);
  return address != NULL;
}

int getHostFunctions(struct HostFunctions* functions, const char* path) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  return library != NULL && get(library, "startProcess", &functions->start) &&
         get(library, "endProcess", &functions->end) &&
         get(library, "cconvLoadRule", &functions->loadRules) &&
         get(library, "cconvInitConvert", &functions->initialise) &&
         get(library, "cconvChgCharset", &functions->changeCharset) &&
         get(library, "cconvConvert", &functions->convert) &&
         get(library, "cconvTermConvert", &functions->terminate);
}
