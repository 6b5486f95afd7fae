/*
 * ksv_sjis.h : Shift_JIS and UCS-2, character by character and string by string.
 *
 * The mapping of single characters is part of the library: that of Windows, without
 * the vendor's extensions and user-defined characters. It needs no charset directory
 * and no startProcess, and any thread may call it. The functions for strings are
 * conversions with a converter of their own: they need startProcess and cconvLoadRule,
 * and charsets "WINDOWS31J" and "ISO-10646-UCS-2" in the charset directory.
 */
#ifndef KSV_SJIS_H
#define KSV_SJIS_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* The UCS-2 unit of a Shift_JIS code: of one byte 0x20 to 0x7E and 0xA1 to 0xDF, of
 * two bytes, the lead byte in the high one, the codes of JIS X 0208 from 0x8140 to
 * 0xEAA4. 0 for every other code, those below 0x20 included. */
KSV_API uint16_t KSV_sjistounicode(uint16_t code);

/* The Shift_JIS code of a UCS-2 unit: what KSV_sjistounicode gives, turned round, and
 * besides U+00AD as 0x2D, U+00B7 as 0x8145 and U+203E as 0x7E. Above 0xFF it is a code
 * of two bytes, the high one to be written first. 0 when there is none, and for units
 * below 0x20. */
KSV_API uint16_t KSV_unicodetosjis(uint16_t unit);

/* Converts a UCS-2 string into WINDOWS31J, whose pairs are written least significant
 * byte first (0x82A0 as A0 82); line ends become CR LF, what cannot be written is
 * replaced, what cannot be read skipped.
 *
 *   dest   room for 2 * n + 1 bytes, where n is the length of src. No terminator is
 *          written; bytes behind the text may have been written over
 *   src    its bytes and the first byte of its terminator are converted
 *
 * Returns 1 when the converter ended with status 0, else 0: so does the lone byte of
 * the terminator, which is half a unit. What was converted before stands in dest all
 * the same. 0 for null, for a string whose 2 * n + 1 does not fit 32 bits and while
 * nothing is loaded: nothing is written then. */
KSV_API int KSV_ucs2sjisstr(char* dest, const uint16_t* src);

/* Converts a WINDOWS31J string and its terminator into UCS-2, least significant byte
 * first. Its pairs are read lead byte first (82 A0 is U+3042), not as KSV_ucs2sjisstr
 * writes them; line ends and what cannot be converted as there.
 *
 *   dest   room for 2 * n - 1 bytes, where n counts the bytes of src and the
 *          terminator: a text without pairs finds one byte too few for its terminator
 *   src    its bytes and its terminator are converted
 *
 * Returns 1 when the converter ended with status 0: the terminator is written then.
 * Else 0, as for KSV_ucs2sjisstr. */
KSV_API int KSV_sjis2ucsstr(uint16_t* dest, const char* src);

KSV_EXTERN_C_END

#endif
