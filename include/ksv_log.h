/*
 * ksv_log.h : a log file that callers can leave their calls to, its name, and the
 * library's built-in strings and integers.
 *
 * Every log function takes the caller's flags first and does nothing unless they have
 * KSV_LOG_ENABLED. A stream is used by one thread at a time.
 */
#ifndef KSV_LOG_H
#define KSV_LOG_H

#include <stdio.h>

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

enum {
  KSV_LOG_ENABLED = 0x10000, /* the flag that switches logging on */
  KSV_LOG_PATH_SIZE = 780    /* bytes of a log file's path, terminator included */
};

/* Indices of the built-in strings. */
enum {
  KSV_STRING_ORG = 0,         /* "org" */
  KSV_STRING_ISO_2022_JP = 1, /* "ISO-2022-JP" */
  KSV_STRING_UCS2 = 2,        /* "ISO-10646-UCS-2" */
  KSV_STRING_WINDOWS31J = 3,  /* "WINDOWS31J" */
  KSV_STRING_EUC_JP = 4       /* "EUC-JP" */
};

/* Creates the log file, or empties it, for writing and reading. path is UTF-8, with
 * the limits of KSV_FileOpen. Returns the stream, to be closed by ksv_logfclose with
 * the same flags; null when logging is off (no file is created) or the file cannot be
 * opened. */
KSV_API FILE* ksv_logfopen(uint32_t flags, const char* path);

/* Closes the stream: 0, or EOF when that fails or something that was written to it before
 * could not be stored (the stream is gone all the same). With
 * logging off or a null stream nothing happens and the result is 0. */
KSV_API int ksv_logfclose(uint32_t flags, FILE* stream);

/* Writes format to the stream as fprintf does, with one argument.
 *
 * The first conversion d, i, o, u, x, X or c takes the argument, with any flags of
 * "-+ #0", width and precision (up to 4095 each); all but c take a length too, of which
 * h and hh cut the argument and the longer ones change nothing. "%%" is a per-cent sign.
 * Any other per-cent sign is written as it stands, with what follows it: one that begins
 * a second conversion, or a conversion that an integer cannot serve, such as %s, %p, %n,
 * %hc or %lc, or that takes a width or precision from an argument. So a format can do no
 * more than write text, whatever it holds.
 *
 * A null format writes nothing. Returns 0, also when nothing could be written. */
KSV_API int ksv_logfprintf(uint32_t flags, FILE* stream, const char* format, int32_t argument);

/* Writes a UTF-8 path to the stream in the ANSI code page, no line end behind it. The
 * path is handed on as the format of ksv_logfprintf, with the argument 0: a per-cent
 * sign in it is taken for a conversion where it can be one. A path of 780 units or
 * bytes or more, or that cannot be converted, writes nothing. Returns 0. */
KSV_API int ksv_logfprint_path(uint32_t flags, FILE* stream, const char* path);

/* Makes the path of a log file: that of inputPath (UTF-8), its extension left out,
 * with suffix and ".log" behind it. "C:\data\report.doc" and "_err" give
 * "C:\data\report_err.log" (on Windows and elsewhere).
 *
 *   inputPath   null counts as empty
 *   suffix      UTF-8; null counts as empty
 *   dest        KSV_LOG_PATH_SIZE bytes, which may lie over the other two
 *
 * Returns 0. Returns -1, with an empty string in dest, when one of the two is not
 * well-formed, the path is longer than KSV_splitpath takes, base name and suffix have
 * 768 bytes or more together, or the result does not fit; -1 for a null dest. */
KSV_API int GetLogFileName(const char* inputPath, const char* suffix, char* dest);

/* Copies the built-in string of an index to dest as strncpy does: at most capacity
 * bytes, the rest of them 0, and no terminator when the string fills them. A capacity
 * below 1 or a null dest stores nothing. Returns 1, for an index without a string too:
 * it counts as an empty one. */
KSV_API int KSV_GetResouceString(int32_t index, char* dest, int32_t capacity);

/* Stores the built-in integer of an index, 0 or 1, in dest unless that is null: both
 * are 0, and so is what any other index gives. Returns 1. */
KSV_API int KSV_GetResouceInteger(int32_t index, int32_t* dest);

KSV_EXTERN_C_END

#endif
