/* The functions of the library that the C host calls, and how it comes by them:
 * as a program that is linked to the library, or as one that loads it. */
#ifndef KSV_TESTS_EXPORTS_HOST_FUNCTIONS_H
#define KSV_TESTS_EXPORTS_HOST_FUNCTIONS_H

#include "ksv_cconv.h"

struct HostFunctions {
  int (*start)(void);
  void (*end)(void);
  int (*loadRules)(void);
  uint32_t (*initialise)(ConverterRecord*, const ConvertOptions*, const char*);
  uint32_t (*changeCharset)(ConverterRecord*, uint32_t[3], const char*);
  uint32_t (*convert)(ConverterRecord*);
  uint32_t (*terminate)(ConverterRecord*);
};

/* Fills all functions: 1, or 0 when there is no such library or one is missing.
 * path is the library's, for a host that loads it. */
int getHostFunctions(struct HostFunctions* functions, const char* path);

#endif
