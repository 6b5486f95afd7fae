/*
 * ksv_path.h : paths, directories and temporary files.
 *
 * UTF-8 paths have the limits of ksv_file.h: one of 780 UTF-16 units or more, and
 * one that is not well-formed, fails. Operations whose names end in A, and the
 * directory listing, take the ANSI code page as it stands and have no such limit.
 * A null path acts as an empty one.
 *
 * Both '/' and '\' separate wherever a path is split, joined or searched.
 */
#ifndef KSV_PATH_H
#define KSV_PATH_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

enum {
  KSV_FILE_NAME_SIZE = 260, /* bytes of a listed name, terminator included */
  KSV_DRIVE_SIZE = 3,       /* bytes of a drive, terminator included */
  KSV_PART_SIZE = 768,      /* bytes of a directory, base name or extension */
  KSV_PATH_SIZE = 780       /* bytes of a joined path or a temporary file's name */
};

enum {
  KSV_ATTRIBUTE_READ_ONLY = 0x01, /* nobody may write the entry */
  KSV_ATTRIBUTE_DIRECTORY = 0x10
};

/* A directory listing, 312 bytes, allocated by the caller and written by the
 * library: the fields behind the handle describe the entry last found. Times are
 * seconds since 1970; timeCreate is the time of the last change of status where
 * the file system knows no time of creation. */
typedef struct KsvDirectoryListing {
  intptr_t handle;               /* the library's; -1 when nothing is open */
  uint32_t attrib;               /* KSV_ATTRIBUTE_... */
  int64_t timeCreate;            /* of creation */
  int64_t timeAccess;            /* of the last access */
  int64_t timeWrite;             /* of the last write */
  uint32_t size;                 /* bytes, the low 32 bits */
  char name[KSV_FILE_NAME_SIZE]; /* ANSI, without the directory */
  uint32_t firstEntry;           /* non-zero until the first KSV_ASC_readdir */
} KsvDirectoryListing;

/* An entry of a listing, 272 bytes. */
typedef struct KsvDirectoryEntry {
  uint32_t reserved[3];          /* left alone */
  char name[KSV_FILE_NAME_SIZE]; /* ANSI, without the directory */
} KsvDirectoryEntry;

/* The status of a file, 48 bytes. A value that does not fit keeps its low bits.
 * Times are seconds since 1970. */
typedef struct KsvStat {
  uint32_t dev;  /* the device; on Windows the drive, 0 for A: */
  uint16_t ino;  /* the number on the device; 0 on Windows */
  uint16_t mode; /* 0x8000 a file, 0x4000 a directory, and the permissions */
  int16_t nlink; /* names that lead to it */
  int16_t uid;   /* its user; 0 on Windows */
  int16_t gid;   /* its group; 0 on Windows */
  uint32_t rdev; /* the device that it stands for; on Windows as dev */
  int32_t size;  /* bytes */
  int64_t atime; /* of the last access */
  int64_t mtime; /* of the last write */
  int64_t ctime; /* of the last change of status; on Windows of creation */
} KsvStat;

/* ---- Listing and finding. ----
 *
 * The last component of a pattern may hold '*' for any characters, none included,
 * and '?' for one character; every other character stands for itself. They match
 * every entry, "." and ".." and names that begin with a dot included. A pattern
 * without them finds the entry of that name.
 *
 * On Windows they mean what they mean to the system there: case is not regarded,
 * "*.*" matches names without a dot as well, and a short name may match in place of
 * the one that is told. */

/* Looks for pattern (ANSI) and opens a listing of the matches in ascending byte
 * order: 1, or 0 when nothing matches, when there is no memory and when the directory
 * cannot be read to its end. Entries are told as they are now. After 1, end it with
 * KSV_ASC_closedir; after 0 there is nothing to close. Names that have no ANSI form, or
 * KSV_FILE_NAME_SIZE bytes and more, are left out, though KSV_FindFile finds them. */
KSV_API int KSV_ASC_opendir(const char* pattern, KsvDirectoryListing* listing);

/* Copies the next name (ANSI) to entry->name, the first name first: 1, or 0 when
 * there is none left. */
KSV_API int KSV_ASC_readdir(KsvDirectoryListing* listing, KsvDirectoryEntry* entry);

/* Ends a listing: 0, or -1 when it is not open. */
KSV_API int KSV_ASC_closedir(KsvDirectoryListing* listing);

/* 0 when something matches a UTF-8 pattern, else -1. */
KSV_API int KSV_FindFile(const char* pattern);

/* ---- Files and directories. ---- */

/* KSV_FileRemove: removes a file (UTF-8), not a directory. 0, or -1. */
KSV_API int KSV_ASC_remove(const char* path);

/* Make a directory, which everybody may enter, read and write as far as the umask of
 * the process allows (on Windows as its parent says); remove an empty one. 0, or -1. */
KSV_API int KSV_MkDir(const char* path);
KSV_API int KSV_RmDir(const char* path);

/* Writes the status of what stands at path, links followed, to out: 0, or -1 when
 * there is nothing (out is left alone). */
KSV_API int KSV_STAT(const char* path, KsvStat* out);

/* 1 when path is a regular file; a directory; anything at all; else 0. Links are
 * followed. */
KSV_API int KSV_IsFile(const char* path);
KSV_API int KSV_IsFileA(const char* path);
KSV_API int KSV_IsDirectory(const char* path);
KSV_API int KSV_IsDirectoryA(const char* path);
KSV_API int KSV_IsExist(const char* path);

/* ---- Parts of a path. ---- */

/* Splits a path into its drive (KSV_DRIVE_SIZE bytes; empty where the system has
 * no drive letters), its directory with the separator that ends it, its base name
 * and its extension, which begins at the last dot of the last component
 * (KSV_PART_SIZE bytes each). Destinations may be null, and may lie over the path
 * but not over each other. 0, or KSV_PATH_NOT_CONVERTED when the path is refused,
 * in which case all parts are empty, or when a part does not fit, in which case
 * that part is empty. */
KSV_API int KSV_splitpath(const char* path, char* drive, char* directory, char* base,
                          char* extension);

/* The same in ANSI. A part may be as long as the path: the caller's buffers have
 * to have room for it. Without memory all parts are empty. */
KSV_API void KSV_splitpathA(const char* path, char* drive, char* directory, char* base,
                            char* extension);

/* Joins the parts, each null or empty when there is none, into dest (KSV_PATH_SIZE
 * bytes, which may lie over any of the parts): the first letter of the drive and a colon,
 * the directory and a separator if it has none at its end, the base name, and the
 * extension, with a dot before it if it begins with none. 0, or
 * KSV_PATH_NOT_CONVERTED when a part is ill-formed or the path does not fit: dest
 * is empty then. A null dest gives 0. */
KSV_API int KSV_makepath(char* dest, const char* drive, const char* directory, const char* base,
                         const char* extension);

/* The same in ANSI; dest has to have room for all parts, a drive's colon, a
 * separator, a dot and the terminator. */
KSV_API void KSV_makepathA(char* dest, const char* drive, const char* directory, const char* base,
                           const char* extension);

/* The index in bytes of the last separator of a path, 0 when there is none. The
 * bytes may be UTF-8 or, when they are not well-formed UTF-8, Shift_JIS: a trail
 * byte 5C is no separator. */
KSV_API int32_t KSV_getPathBreak(const char* path);

/* ---- Temporary files. ---- */

/* Creates an empty file with a new name that begins with "ksv" in the directory
 * of hint (UTF-8), or in the system's temporary directory when hint is null or
 * empty, and writes its path to dest (KSV_PATH_SIZE bytes, which may lie over hint).
 * Only the user may read and write the file (on Windows whom the directory lets).
 * Returns dest, or null when dest is null, hint has no directory, the path does not
 * fit or the file cannot be created. The caller removes the file. */
KSV_API char* KSV_ASC_tmpnam1(const char* hint, char* dest);

/* KSV_ASC_tmpnam1 without a hint. */
KSV_API char* KSV_ASC_tmpnam(char* dest);

KSV_EXTERN_C_END

#endif
