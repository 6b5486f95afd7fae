/*
 * ksv_file.h : files on UTF-8 paths, byte order, and path encodings.
 *
 * Streams are the C runtime's. A UTF-8 path has at most 779 UTF-16 units and a
 * terminator; a longer one, and one that is not well-formed UTF-8, fails as if
 * there were no such file. The operations whose names end in A take the ANSI code
 * page as it stands and have no such limit. A null path acts as an empty one, a
 * null stream or record as one on which the operation fails.
 *
 * Sizes, counts and capacities are what their names say, in elements or bytes;
 * negative ones read and write nothing.
 */
#ifndef KSV_FILE_H
#define KSV_FILE_H

#include <stdarg.h>
#include <stdio.h>

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

enum {
  KSV_PATH_UNITS = 780,         /* UTF-16 units of a path, terminator included */
  KSV_PATH_NOT_CONVERTED = 3000 /* a path does not fit or is not well-formed */
};

/* A stream and the order of its 16- and 32-bit values, 16 bytes. The caller
 * allocates it with KSV_malloc and fills both fields; KSV_X_FileClose releases
 * it. */
typedef struct KsvByteOrderStream {
  FILE* stream;        /* from KSV_FileOpen */
  int32_t nativeOrder; /* non-zero: values are in host order; 0: most significant byte first */
} KsvByteOrderStream;

/* ---- Byte order in memory: always reversed, at any alignment. p is not null. ---- */

/* The 16-bit value at p with its two bytes exchanged. */
KSV_API uint16_t KSV_GetW_x(const void* p);

/* Reads the 16-bit value at p, widens it to 32 bits and reverses the four bytes:
 * 12 34 56 78 gives 0x12340000 on a little-endian host. The upper two bytes in
 * memory are not read. */
KSV_API uint32_t KSV_GetDW_x(const void* p);

/* Stores value with its bytes reversed at p, and returns what was stored. */
KSV_API uint16_t KSV_PutW_x(void* p, uint16_t value);
KSV_API uint32_t KSV_PutDW_x(void* p, uint32_t value);

/* ---- Streams. ---- */

/* Open a file; mode as for fopen. Null when that fails and when path is a directory.
 * Close it with KSV_FileClose. The mode of KSV_FileOpen has at most 31 UTF-16 units;
 * that of KSV_FileOpenA goes to the system whatever its length. */
KSV_API FILE* KSV_FileOpen(const char* path, const char* mode);
KSV_API FILE* KSV_FileOpenA(const char* path, const char* mode);

/* Closes a stream: 0, or EOF when that fails. The stream is gone either way. */
KSV_API int KSV_FileClose(FILE* stream);

/* Reads or writes count elements of size bytes. Returns how many whole elements
 * were read or written, fewer than count at the end of the file or after an error. */
KSV_API int32_t KSV_FileRead(void* buffer, int32_t size, int32_t count, FILE* stream);
KSV_API int32_t KSV_FileWrite(const void* buffer, int32_t size, int32_t count, FILE* stream);

/* Reads up to and including the next newline, at most capacity - 1 bytes, and
 * terminates them. Returns buffer, or null at the end of the file, after an error
 * and when capacity is below 1. At a capacity of 1 nothing is read: the result is
 * buffer with the empty string, at the end of the file too. */
KSV_API char* KSV_FileReadLine(char* buffer, int32_t capacity, FILE* stream);

/* Moves to offset bytes from origin: 0 the start, 1 the position, 2 the end.
 * 0 on success, else non-zero. */
KSV_API int KSV_FileSeek(FILE* stream, int64_t offset, int origin);

/* The position in bytes, or -1. */
KSV_API int64_t KSV_FileTell(FILE* stream);

/* The size of the file in bytes, or -1; the position stays. */
KSV_API int64_t KSV_FileTellSize(FILE* stream);

/* Read one value in host order: 1, or 0 when it could not be read whole. */
KSV_API int KSV_FileGetByte(FILE* stream, uint8_t* value);
KSV_API int KSV_FileGetWord(FILE* stream, uint16_t* value);
KSV_API int KSV_FileGetDWord(FILE* stream, uint32_t* value);

/* Write one value in host order: 1, or 0 when it could not be written. */
KSV_API int KSV_FilePutByte(FILE* stream, uint8_t value);
KSV_API int KSV_FilePutWord(FILE* stream, uint16_t value);
KSV_API int KSV_FilePutDWord(FILE* stream, uint32_t value);

/* vfprintf: the bytes written, or a negative number. */
KSV_API int KSV_VfPrintf(FILE* stream, const char* format, va_list arguments);

/* Remove a file, not a directory: 0, or -1 when that fails. */
KSV_API int KSV_FileRemove(const char* path);
KSV_API int KSV_FileRemoveA(const char* path);

/* The size in bytes of what stands at path, or -1. */
KSV_API int64_t KSV_GetFileSizeByPath(const char* path);

/* Removes a file of size 0. 1 when the size is 0, whether or not the file could be
 * removed; 0 when it is greater; -1 when it cannot be told. */
KSV_API int KSV_FileRemoveIfSizeIsZero(const char* path);

/* ---- Streams with a byte order. ---- */

/* Closes the stream and releases the record, whatever the result: 0, or EOF. */
KSV_API int KSV_X_FileClose(KsvByteOrderStream* s);

/* As the plain functions of the same name; no bytes are reversed. */
KSV_API int32_t KSV_X_FileRead(void* buffer, int32_t size, int32_t count, KsvByteOrderStream* s);
KSV_API int32_t KSV_X_FileWrite(const void* buffer, int32_t size, int32_t count,
                                KsvByteOrderStream* s);
KSV_API char* KSV_X_FileReadLine(char* buffer, int32_t capacity, KsvByteOrderStream* s);
KSV_API int KSV_X_FileSeek(KsvByteOrderStream* s, int32_t offset, int origin);
KSV_API int KSV_X_FileGetByte(KsvByteOrderStream* s, uint8_t* value);
KSV_API int KSV_X_FilePutByte(KsvByteOrderStream* s, uint8_t value);

/* Read one value in the stream's order: 1, or 0 when it could not be read whole.
 * Unless the order is native the bytes at value are reversed in either case. */
KSV_API int KSV_X_FileGetWord(KsvByteOrderStream* s, uint16_t* value);
KSV_API int KSV_X_FileGetDWord(KsvByteOrderStream* s, uint32_t* value);

/* Write one value in the stream's order: 1, or 0 when it could not be written. */
KSV_API int KSV_X_FilePutWord(KsvByteOrderStream* s, uint16_t value);
KSV_API int KSV_X_FilePutDWord(KsvByteOrderStream* s, uint32_t value);

/* ---- Path encodings. ----
 *
 * Convert src, terminator included, into dest, which holds capacity units. 0 on
 * success; KSV_PATH_NOT_CONVERTED when src is ill-formed (lone surrogates
 * included), has a character the destination lacks, or does not fit: dest is the
 * empty string then. A null dest gives 0 and nothing happens; a null or empty src
 * gives 0 and the empty string. Nothing is written when capacity is below 1. dest and
 * src do not overlap: dest is emptied before src is read. */

/* A path of at most 779 UTF-16 units. */
KSV_API int KSV_FilePathTransAnsiToUTF8(char* dest, const char* src, int32_t capacity);
KSV_API int KSV_FilePathTransUTF8ToAnsi(char* dest, const char* src, int32_t capacity);

/* A string of any length. */
KSV_API int KSV_FilePathTransUTF16ToUTF8(char* dest, const uint16_t* src, int32_t capacity);
KSV_API int KSV_FilePathTransUTF8ToUTF16(uint16_t* dest, const char* src, int32_t capacity);

/* ---- The system. ---- */

/* Each returns 1: the system is one of the NT family or like it, and has 64 bits, as
 * have its files. */
KSV_API int KSV_Is_NT(void);
KSV_API int KSV_Is64bitOS(void);
KSV_API int KSV_Is64bitFS(void);

KSV_EXTERN_C_END

#endif
