/* ksv_log.h compiles as C, with nothing before it. */
#include "ksv_log.h"

int (*const ksvLogHeaderIsC)(uint32_t flags, FILE* stream, const char* path) = ksv_logfprint_path;
