/*
 * ksv_memory.h : the heap of the library, and a heap that finds leaks.
 *
 * Every heap block that crosses the library's boundary comes from KSV_malloc,
 * KSV_realloc or KSV_calloc and goes back through KSV_free, so that both sides
 * use the same heap. Sizes are bytes; a negative size always fails.
 *
 * The debug family adds a guard of 8 bytes behind every block. Between
 * KSV_start_mem_dbg and KSV_end_mem_dbg it also keeps a table of its live blocks
 * and appends what it finds to "memdbg_log.txt" in the current directory, one
 * line a finding; when that file cannot be opened the line is dropped. While
 * tracking is off it allocates with the guard and reports nothing. The debug
 * family is meant for one thread: it takes no lock.
 */
#ifndef KSV_MEMORY_H
#define KSV_MEMORY_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* A block of size bytes, contents undefined; size 0 gives an empty block. Null
 * when size is negative or there is no memory. Release it with KSV_free. */
KSV_API void* KSV_malloc(int32_t size);

/* Releases a block of either family. Null is ignored. */
KSV_API void KSV_free(void* block);

/* Changes a block's size and keeps what fits of its contents; the block may move.
 * A null block acts as KSV_malloc. Null when size is negative or there is no
 * memory (the old block stays valid), and when size is 0 and the system's realloc
 * released the block. */
KSV_API void* KSV_realloc(void* block, int32_t size);

/* A zeroed block of count elements of size bytes. Null when the size is negative,
 * the count is negative and the size is not 0, or there is no memory. Release it
 * with KSV_free. */
KSV_API void* KSV_calloc(int32_t count, int32_t size);

/* Does nothing, whatever the argument. */
KSV_API void KSV_memend(void* unused);

/* KSV_malloc with a guard. label (copied; null counts as empty) and number say in
 * the log whose block this is: the source file and line, say. A failure logs
 * "malloc NULL". Release the block with KSV_free_dbg. */
KSV_API void* KSV_malloc_dbg(int32_t size, const char* label, int32_t number);

/* Releases a block; null is ignored. While tracking, a block that is not in the
 * table logs "unallocated free ADDRESS" (low 32 bits, hexadecimal), one whose
 * guard was overwritten logs "overrun"; both are released all the same. */
KSV_API void KSV_free_dbg(void* block);

/* KSV_realloc with a guard. While tracking, a block that is not in the table logs
 * "unallocated realloc ADDRESS"; the old guard is not looked at. A failure logs
 * "realloc NULL" and returns null; the old block stays valid but is no longer in
 * the table, so that it is not reported as a leak and its release is logged as
 * "unallocated free". */
KSV_API void* KSV_realloc_dbg(void* block, int32_t size, const char* label, int32_t number);

/* KSV_calloc with a guard. The size is the product as a 32-bit number: one that
 * wraps gives a block of the wrapped size, one that is negative then fails. A
 * failure logs "calloc NULL COUNT SIZE". */
KSV_API void* KSV_calloc_dbg(int32_t count, int32_t size, const char* label, int32_t number);

/* Switches tracking on, with an empty table, and logs title (null counts as empty)
 * as a line. Nothing happens when tracking is on already. Without memory for the
 * table tracking stays off; without memory for an entry the block is untracked. */
KSV_API void KSV_start_mem_dbg(const char* title);

/* Logs "leak SIZE LABEL NUMBER" for every block still in the table, in ascending
 * order of address, and switches tracking off. The blocks stay valid. Nothing
 * happens when tracking is off. */
KSV_API void KSV_end_mem_dbg(void);

KSV_EXTERN_C_END

#endif
