/* ksv_memory.h compiles as C, with nothing before it. */
#include "ksv_memory.h"

void* (*const ksvMemoryHeaderIsC)(int32_t size) = KSV_malloc;
