/*
 * ksv_detect.h : in which encoding a text file is written.
 */
#ifndef KSV_DETECT_H
#define KSV_DETECT_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* Encodings in a result of dtctText. More than one is set when they fit a text
 * equally well, which short texts and plain ranges of bytes bring about. */
#define KSV_TEXT_UNDETERMINED 0x00000001u /* no encoding fits nine characters of ten */
#define KSV_TEXT_UTF8 0x00000002u
#define KSV_TEXT_UTF16 0x00000004u
#define KSV_TEXT_UCS4 0x00000010u
#define KSV_TEXT_ISO_2022_JP 0x00000020u
#define KSV_TEXT_EUC_JP 0x00000040u
#define KSV_TEXT_EUC_JP_FIX 0x00000080u /* every character two bytes */
#define KSV_TEXT_SHIFT_JIS 0x00000100u
#define KSV_TEXT_ASCII 0x00000200u
#define KSV_TEXT_SIMPLIFIED_CHINESE 0x00000400u  /* GBK */
#define KSV_TEXT_TRADITIONAL_CHINESE 0x00000800u /* Big5 */
#define KSV_TEXT_KOREAN 0x00001000u              /* EUC-KR and its extension UHC */
#define KSV_TEXT_ENCODINGS 0x00FFFFFFu           /* the part of a result that names encodings */

/* Attributes in a result of dtctText. Of the line ends only the first convention
 * that the text has is told. */
#define KSV_TEXT_LINE_SEPARATOR 0x01000000u      /* U+2028 occurs */
#define KSV_TEXT_PARAGRAPH_SEPARATOR 0x02000000u /* U+2029 occurs */
#define KSV_TEXT_CRLF 0x04000000u
#define KSV_TEXT_LF 0x08000000u
#define KSV_TEXT_CR 0x10000000u
#define KSV_TEXT_BIG_ENDIAN 0x20000000u /* also set for every encoding made of bytes */
#define KSV_TEXT_SETTLED 0x40000000u    /* one encoding won; set for most ties as well */
#define KSV_TEXT_MARK 0x80000000u       /* the text begins with a byte-order mark */

#define KSV_TEXT_FAILURE 0xFFFFFFFFu

/* Tells in which encoding a file of plain text is written. A byte-order mark
 * decides when the text behind it fits; else the encodings are scored over the
 * first 2,048 bytes, and, when that leaves a tie, over more of the file, up to
 * 4 MiB.
 *
 *   path      the file, with the limits of ksv_file.h
 *   language  "Japanese", "Simplified Chinese", "Traditional Chinese" or "Korean",
 *             without regard to case: the encodings of that language are taken
 *             first when a text fits them without a flaw (for Japanese that is so
 *             for plain ASCII). Any other text states no preference. Null or empty:
 *             the language is taken from the environment variable LANG, or, where
 *             there is none, from the locale.
 *
 * Returns encodings and attributes: KSV_TEXT_UTF8 | KSV_TEXT_LF | ...; or
 * KSV_TEXT_FAILURE when path is null, or the file cannot be opened, is empty or
 * cannot be read, or there is no memory. The file is closed again in any case.
 *
 * Threads: may be called from any. Without a language it reads the environment,
 * and without LANG it calls setlocale(LC_CTYPE, ""), which changes the locale of
 * the process. */
KSV_API uint32_t dtctText(const char* path, const char* language);

KSV_EXTERN_C_END

#endif
