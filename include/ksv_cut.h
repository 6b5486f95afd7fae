/*
 * ksv_cut.h : cutting text into pieces without breaking characters.
 */
#ifndef KSV_CUT_H
#define KSV_CUT_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* How many leading bytes of a text can be taken, at most limit, so that no
 * character, escape sequence or CR LF is cut apart, as far as the rules of its
 * charset see them. Nothing is changed.
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
 * The rules look at lead bytes, and not at all of them. Cut apart may be
 *
 *   - in EUC-JP pairs from lead byte E0 on, whose bytes count one by one, and the
 *     three bytes behind 8F, of which two are seen;
 *   - in EUC-JISX0213 these, and half-width katakana behind 8E;
 *   - in "EUC-JP-FIX" anything: it is cut as EUC-JP;
 *   - in GB18030 four bytes of which fewer are within the limit;
 *   - in UTF-16 surrogate pairs.
 *
 * What a byte that is counted by itself leaves behind may be taken for a lead byte,
 * so that the pairs up to the next ASCII character may be cut apart as well.
 *
 * In ISO-2022-JP and ISO-2022-JP-3 the first piece is whole by itself. The piece
 * behind it begins in the character set that the first one ended in, without the
 * escape sequence for it, and neither a converter nor the next call of this function
 * knows: put the last escape sequence in front of it. In ISO-2022-JP-3 a text that
 * begins without an escape sequence gives 0. */
KSV_API uint32_t CutStr(const void* buffer, int32_t length, int32_t limit, const char* charsetName);

KSV_EXTERN_C_END

#endif
