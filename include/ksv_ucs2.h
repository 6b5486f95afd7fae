/*
 * ksv_ucs2.h : UCS-2 strings, classes of characters, and what goes with them.
 *
 * A UCS-2 string is an array of 16-bit units in host byte order with a 0 unit at
 * its end; lengths count units. None of these functions allocates, keeps a pointer
 * or depends on the locale, and all may be called from any thread.
 *
 * A null source acts as an empty string. A null destination gives null and nothing
 * happens. A destination has to have room for all that its function writes, the
 * terminator included, and is the caller's. A negative count acts as 0.
 */
#ifndef KSV_UCS2_H
#define KSV_UCS2_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* ---- Classes of characters. ---- */

/* 1 for the ASCII letters and digits, else 0. */
KSV_API int KSV_isucs2alnum(uint16_t unit);

/* 1 below 0x80, else 0. */
KSV_API int KSV_isucs2ascii(uint16_t unit);

/* 1 below 0x20 and for 0x7F, else 0. */
KSV_API int KSV_isucs2cntrl(uint16_t unit);

/* 1 for the ASCII digits, else 0. */
KSV_API int KSV_isucs2digit(uint16_t unit);

/* code itself when it is a Shift_JIS code of two bytes, the first one in its high
 * byte, in a range of JIS X 0208 that has characters; else 0. The trail byte is only
 * looked at as far as that it lies from 0x30 to 0xFC: inside a range that goes over
 * several lead bytes 0x7F, say, counts as well. */
KSV_API int KSV_isjis(uint16_t code);

/* code itself when it is a Shift_JIS code of one byte, 0x20 to 0x7E or 0xA0 to 0xDF;
 * else 0. */
KSV_API int KSV_isank(uint16_t code);

/* unit itself when KSV_isjis is true of its Shift_JIS code (KSV_unicodetosjis);
 * else 0. */
KSV_API int KSV_isucs2jis(uint16_t unit);

/* unit itself when KSV_isank is true of its Shift_JIS code; else 0. */
KSV_API int KSV_isucs2ank(uint16_t unit);

/* unit itself when it is full-width hiragana, Shift_JIS 0x829F to 0x82F1; else 0. */
KSV_API int KSV_isucs2zenhira(uint16_t unit);

/* unit itself when it is full-width katakana, Shift_JIS 0x8340 to 0x8396; else 0. */
KSV_API int KSV_isucs2zenkata(uint16_t unit);

/* ---- UCS-2 strings. ---- */

/* The number of units before the terminator. */
KSV_API int32_t KSV_ucs2strlen(const uint16_t* s);

/* Copies s and its terminator to d. Returns d. */
KSV_API uint16_t* KSV_ucs2strcpy(uint16_t* d, const uint16_t* s);

/* Appends s and its terminator to the string in d; s may be d. Returns d. */
KSV_API uint16_t* KSV_ucs2strcat(uint16_t* d, const uint16_t* s);

/* Copies at most n units of s to d, and always a terminator behind them, so that d
 * needs room for n + 1 units; what is left of it stays as it is. No unit of s behind
 * its n-th is read. Returns d. */
KSV_API uint16_t* KSV_ucs2strncpy(uint16_t* d, const uint16_t* s, int32_t n);

/* The first unit of s that is c, or null when there is none. The terminator is never
 * found: 0 gives null. */
KSV_API uint16_t* KSV_ucs2strchr(const uint16_t* s, uint16_t c);

/* Compares unit by unit, as unsigned numbers: 1 when a is greater at the first
 * difference, -1 when it is smaller, 0 when there is none. */
KSV_API int KSV_ucs2strcmp(const uint16_t* a, const uint16_t* b);

/* KSV_ucs2strcmp over the first n + 1 units, not n: once n units have matched, those
 * behind them are compared and decide. */
KSV_API int KSV_ucs2strncmp(const uint16_t* a, const uint16_t* b, int32_t n);

/* Makes the ASCII capitals of s small, in place. Returns s, null for null. */
KSV_API uint16_t* KSV_ucs2strlwr(uint16_t* s);

/* Makes the small ASCII letters of s capitals, in place. Returns s, null for null. */
KSV_API uint16_t* KSV_ucs2strupr(uint16_t* s);

/* ---- Bytes and names. ---- */

/* Compares two narrow strings without regard to the case of ASCII letters: negative,
 * 0 or positive. Bytes are unsigned, and letters are compared as small ones. */
KSV_API int KSV_stricmp(const char* a, const char* b);

/* Copies units that are not 0 and drops those that are.
 *
 *   dest      room for length bytes; may be src
 *   src       the text
 *   length    its bytes. A last unit that is not whole is left out
 *   width     bytes of a unit: 1, 2 or 4
 *
 * Returns the number of bytes written; 0 when dest or src is null, length is below 1
 * or there are no units of that width. */
KSV_API int32_t KSV_CopyStripNULL(void* dest, const void* src, int32_t length, int32_t width);

/* Copies units and drops control codes: 0x7F, and 0x01 to 0x1F but for TAB, LF, CR
 * and ESC. 0 is copied. Arguments and result as for KSV_CopyStripNULL; bigEndian is
 * non-zero when the most significant byte of a unit comes first. */
KSV_API int32_t KSV_CopyStripControlCode(void* dest, const void* src, int32_t length, int32_t width,
                                         int32_t bigEndian);

/* The bytes of a unit of a charset: 4 for "ISO-10646-UCS-4", 2 for "ISO-10646-UCS-2"
 * and "UTF-16", without regard to case; 1 for any other name and for null. */
KSV_API int32_t KSV_GetGroupCharWidth(const char* charsetName);

KSV_EXTERN_C_END

#endif
