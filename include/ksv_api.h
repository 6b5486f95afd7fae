/*
 * ksv_api.h : conventions that hold for every function of ksv_comm.
 *
 * 1. All functions have C linkage and let no exception out.
 * 2. Paths are UTF-8 unless a function's name ends in A, or it is
 *    KSV_ASC_opendir: those take the ANSI code page (UTF-8 on Linux).
 * 3. Strings are zero-terminated. UCS-2 strings are in host byte order.
 * 4. A pointer argument is only read or written during the call; the library
 *    keeps none of them unless the function says so.
 * 5. Functions may be called from any thread, a record or handle by one thread
 *    at a time, unless the function says otherwise.
 */
#ifndef KSV_API_H
#define KSV_API_H

#include <stdint.h>

#ifdef __cplusplus
#define KSV_EXTERN_C_BEGIN extern "C" {
#define KSV_EXTERN_C_END }
#else
#define KSV_EXTERN_C_BEGIN
#define KSV_EXTERN_C_END
#endif

#if defined(__GNUC__) && !defined(_WIN32)
#define KSV_API __attribute__((visibility("default")))
#else
#define KSV_API
#endif

#endif
