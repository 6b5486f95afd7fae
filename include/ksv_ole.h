/*
 * ksv_ole.h : compound documents, and the properties kept in them.
 *
 * A compound document is a file with storages and streams in it, as [MS-CFB] has
 * them. It is read, never written. A file that is damaged where it is looked at, by
 * a chain that loops or leaves its table or by an end that comes too soon, fails.
 *
 * A handle is used by one thread at a time, and so are all handles that come from one
 * KSV_2OLEopen. What was opened from a handle has to be closed before the handle.
 * When it was not, it only fails from then on, and still has to be closed.
 *
 * Names are Shift_JIS. Of a character that Shift_JIS lacks, a name has the low byte of
 * the UCS-2 code. A null handle, name or buffer gives the operation's failure value.
 */
#ifndef KSV_OLE_H
#define KSV_OLE_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

typedef struct Ksv2Ole Ksv2Ole;             /* a file, or a storage in it */
typedef struct Ksv2OleStream Ksv2OleStream; /* a stream in a file or storage */

enum {
  KSV_2OLE_CLASS_ID_SIZE = 16,
  KSV_2OLE_CHILDREN_OPEN = 4096 /* a file was closed before what was opened from it */
};

/* A position that could not be reached. */
#define KSV_2OLE_NO_POSITION 0xFFFFFFFFu

/* Opens a compound document of less than 2 GB and stands on its root storage. path is
 * UTF-8. Null when there is no such file, when it is no compound document or a damaged
 * one, and when there is no memory. Release it with KSV_2OLEclose. */
KSV_API Ksv2Ole* KSV_2OLEopen(const char* path);

/* Closes a file. Returns 1, or KSV_2OLE_CHILDREN_OPEN when storages or streams that
 * were opened from it are still open, or when file is null. The handle is gone in
 * either case. */
KSV_API int KSV_2OLEclose(Ksv2Ole* file);

/* Opens a storage that is a child of parent, a file or a storage. Case counts. Null
 * when there is none of that name, and when there is no memory. Release it with
 * KSV_2OLEcloseStorage. */
KSV_API Ksv2Ole* KSV_2OLEopenStorage(Ksv2Ole* parent, const char* name);

/* Closes a storage. Returns 1, or 0 when something that was opened from it is still
 * open, or when storage is null. The handle is gone in either case. */
KSV_API int KSV_2OLEcloseStorage(Ksv2Ole* storage);

/* Opens a stream that is a child of owner, a file or a storage, and stands at its
 * start. The case of ASCII letters does not count. Null when there is none of that
 * name, when the first entry of that name is no stream, when the entries are damaged
 * or more than 256 levels deep, when the stream's chain is damaged, and when there is
 * no memory. Release it with KSV_2OLEcloseStream. */
KSV_API Ksv2OleStream* KSV_2OLEopenStream(Ksv2Ole* owner, const char* name);

/* Closes a stream. Returns 1, or 0 when stream is null. */
KSV_API int KSV_2OLEcloseStream(Ksv2OleStream* stream);

/* Reads up to count bytes into buffer and moves on behind them. Returns how many bytes
 * there were: fewer than count at the end of the stream or of the file, and when the
 * stream has no place for more; 0 when count is 0. */
KSV_API uint32_t KSV_2OLEreadStream(Ksv2OleStream* stream, void* buffer, uint32_t count);

/* Moves to offset bytes from origin: 0 the start, 1 the position, 2 the end. The sum is
 * taken modulo 2^32, so that offset can be negative; as a signed number it is then
 * brought into 0 to the size of the stream. Returns the new position, or
 * KSV_2OLE_NO_POSITION for another origin (the position stays) and when the stream has no
 * place for it (it has moved, and nothing can be read there). */
KSV_API uint32_t KSV_2OLEseekStream(Ksv2OleStream* stream, uint32_t offset, uint16_t origin);

/* Copies the class identifier of a file's root or of a storage, 16 bytes as they stand
 * in the file, zeroes where it has none. Returns 1, or 0 when there is none to give. */
KSV_API int KSV_2OLEGetClassID(Ksv2Ole* handle, uint8_t classId[KSV_2OLE_CLASS_ID_SIZE]);

/* ---- Properties. ---- */

/* What the texts of SummaryInfo are converted to and from, 520 bytes.
 *
 * The language is "Japanese", "Simplified Chinese", "Traditional Chinese", "Korean" or
 * "English"; it gives the charset of documents whose code page is not told or not known.
 * Line ends become, for the first bit of the flags that is set, 0x08 CR LF, 0x10 CR, 0x20 LF,
 * 0x40 U+2028; CR LF when none is. */
typedef struct KsvSummarySettings {
  char targetCharset[256];  /* a name of the charset directory */
  char language[256];       /* see above */
  uint32_t outputBigEndian; /* non-zero: units are written most significant byte first */
  uint32_t lineEndFlags;    /* see above */
} KsvSummarySettings;

/* Results of SummaryInfo. */
enum {
  KSV_SUMMARY_DONE = 0,
  KSV_SUMMARY_NO_MEMORY = 12,
  KSV_SUMMARY_NOT_OPENED = 22, /* no compound document that the system lets be read */
  KSV_SUMMARY_MALFORMED = 3002,
  KSV_SUMMARY_NO_SUMMARY = 3003 /* the document has no summary information */
};

/* Where the properties stand in the record of SummaryInfo. */
enum {
  KSV_SUMMARY_RECORD_SIZE = 26964,
  KSV_SUMMARY_TEXT_SIZE = 1028, /* the most bytes that one property gets */

  KSV_SUMMARY_TITLE = 0,
  KSV_SUMMARY_AUTHOR = 1028,
  KSV_SUMMARY_KEYWORDS = 2056,
  KSV_SUMMARY_SUBJECT = 3084,
  KSV_SUMMARY_COMMENTS = 4112,
  KSV_SUMMARY_MANAGER = 5140,
  KSV_SUMMARY_COMPANY = 6168,
  KSV_SUMMARY_CATEGORY = 7196,
  KSV_SUMMARY_CREATED = 8224,
  KSV_SUMMARY_LAST_SAVED_BY = 9508,
  KSV_SUMMARY_REVISION = 10536,
  KSV_SUMMARY_SLIDES = 13392,
  KSV_SUMMARY_PARAGRAPHS = 13648,
  KSV_SUMMARY_BYTES = 13904,
  KSV_SUMMARY_NOTES = 14160,
  KSV_SUMMARY_PRESENTATION_FORMAT = 14416,
  KSV_SUMMARY_LAST_SAVED = 15700,
  KSV_SUMMARY_APPLICATION = 15956
};

/* Reads the properties of a compound document as texts.
 *
 *   path        UTF-8
 *   settings    see above; only read
 *   output      KSV_SUMMARY_RECORD_SIZE bytes. They are cleared, and then each
 *               property found is written to its place, in the target charset. What a
 *               failure leaves is what was read before it. There is no terminator but the
 *               zeroes of the record
 *   parameters  three values: the kind of document, which says what properties are
 *               taken; one that is not looked at; and the code page of the texts until
 *               the document tells its own
 *
 * The kinds take these properties of the summary information and of the document summary
 * information ([MS-OLEPS], the identifiers of the latter with 4096 added); other kinds take
 * none:
 *
 *   9003, 9004                               2 to 6, 8, 9, 12; 4098 to 4100, 4102 to
 *                                            4104, 4110, 4111
 *   7000, 7001, 7006, 7008, 21000 to 21006   the same without 12
 *   6000 to 6002, 6004, 6008                 2 to 6, 12; 4098, 4110, 4111
 *   5000 to 5007, 12000 to 12002, 15000,
 *   15001, 17000, 17001, 21007 to 21009,
 *   21015                                    2 to 6; 4098, 4110, 4111
 *   10002                                    2 to 6, 12, 13, 18, the texts cut: subject 16
 *                                            bytes, author and application 30, keywords
 *                                            210, comments 80
 *
 * Texts are cut to 256 bytes before they are converted. A time is written
 * "2024-03-31 12:34:56", as it stands, without regard to a time zone; times before
 * 1899-12-30 are left out. The charset directory has to be loaded (ksv_cconv.h); without
 * it, or with an unknown target charset, the properties stay empty.
 *
 * Returns a KSV_SUMMARY_... result. The document summary information is read only when the
 * summary information has been, and does not change the result. A null settings, output
 * or parameters gives KSV_SUMMARY_NOT_OPENED. */
KSV_API uint32_t SummaryInfo(const char* path, const KsvSummarySettings* settings, void* output,
                             const uint16_t* parameters);

KSV_EXTERN_C_END

#endif
