#include "tests/exports/host_functions.h"

int getHostFunctions(struct HostFunctions* functions, const char* path) {
  (void)path;
  functions->start = startProcess;
  functions->end = endProcess;
  functions->loadRules = cconvLoadRule;
  functions->initialise = cconvInitConvert;
  functions->changeCharset = cconvChgCharset;
  functions->convert = cconvConvert;
  functions->terminate = cconvTermConvert;
  return 1;
}
