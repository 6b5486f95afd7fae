/*
 * ksv_cut.h : cutting text into pieces without breaking characters.
 */
#ifndef KSV_CUT_H
#define KSV_CUT_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* How many leading bytes of a text can be taken, at most limit, so that no
 * character, escape sequence or CR LF is cut apart. Nothing is changed.
 *
 *   buffer       the text. Behind its length bytes one more unit of the charset
 *                has to be readable, such as the terminator: it tells whether a LF
 *                follows a CR.
 *   length       bytes of text
 *   limit        the most bytes to take. At 0 or less, as at a length of 0 or less,
 *                the result is 0
 *   charsetName  compared by its beginning and with case: "Shift_JIS",
 *                "Shift_JISX0213", "WINDOWS31J", "EUC-JP", "EUC-JISX0213",
 *                "ISO-2022-JP", "ISO-2022-JP-3", "ISO-10646-UCS-2",
 *                "ISO-10646-UCS-4", "UTF-16", "UTF-8", "ChineseGBK", "ChineseBIG",
 *                "GB18030", "KoreanKSC", "ISO-8859-". For any other name, or null,
 *                the result is length, whatever limit is.
 *
 * Surrogate pairs of UTF-16 may be cut apart; "EUC-JP-FIX" is cut as EUC-JP. */
KSV_API uint32_t CutStr(const void* buffer, int32_t length, int32_t limit, const char* charsetName);

KSV_EXTERN_C_END

#endif
