/*
 * ksv_cconv.h : conversion between character encodings.
 *
 * A host brackets its use of these functions with startProcess and endProcess,
 * loads the charset directory once with cconvLoadRule, and then converts with
 * as many converter records as it likes:
 *
 *     startProcess();
 *     cconvLoadRule();
 *     ConverterRecord record;
 *     memset(&record, 0, sizeof record);
 *     cconvInitConvert(&record, NULL, "UTF-8");
 *     uint32_t source[3] = {1, 0, 0};              // most significant byte first
 *     cconvChgCharset(&record, source, "Shift_JIS");
 *     record.input = text;   record.inputLength = textLength;
 *     record.output = buffer; record.outputCapacity = bufferSize;
 *     uint32_t status = cconvConvert(&record);
 *     cconvTermConvert(&record);
 *     endProcess();
 */
#ifndef KSV_CCONV_H
#define KSV_CCONV_H

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* Status codes: results of the converter functions, and ConverterRecord.status. */
enum {
  KSV_STATUS_DONE = 0,        /* the input is used up, or the call succeeded */
  KSV_STATUS_FAILURE = 1,     /* unknown charset, converter not set up, no memory */
  KSV_STATUS_DECODED = 11,    /* a character has been decoded and waits to be encoded */
  KSV_STATUS_INCOMPLETE = 12, /* the input ends inside a multi-byte sequence */
  KSV_STATUS_INVALID = 13,    /* invalid input bytes */
  KSV_STATUS_WRITTEN = 21,    /* the character was written; go on decoding */
  KSV_STATUS_FULL = 22,       /* the output buffer is full */
  KSV_STATUS_UNMAPPABLE = 23, /* the character cannot be written in the target charset */
  KSV_STATUS_FLUSH = 31       /* flush request, set by cconvTermConvert */
};

/* How a line end of the input is written when ConvertOptions.convertNewlines is
 * set. Any other value means CR LF. The last two need a target group at least
 * two bytes wide and are CR LF elsewhere. */
enum {
  KSV_NEWLINE_CRLF = 1,
  KSV_NEWLINE_CR = 2,
  KSV_NEWLINE_LF = 3,
  KSV_NEWLINE_LINE_SEPARATOR = 4,
  KSV_NEWLINE_PARAGRAPH_SEPARATOR = 5
};

enum { KSV_NAME_SIZE = 260 }; /* bytes of a charset or language name, terminator included */

#pragma pack(push, 2)
/* Options of a converter, 288 bytes. All zero: little-endian output, no mark, no
 * replacement, no language tags, line ends left as they are. */
typedef struct ConvertOptions {
  uint32_t outputBigEndian;            /* non-zero: units are written most significant byte first */
  uint32_t writeByteOrderMark;         /* non-zero: Unicode targets begin with a byte-order mark */
  uint32_t replaceUnmappable;          /* non-zero: unmappable characters are replaced */
  uint16_t narrowReplacement;          /* Unicode code, for group codes below 256; 0: the default */
  uint16_t wideReplacement;            /* Unicode code, for all others; 0: the default */
  char defaultLanguage[KSV_NAME_SIZE]; /* empty: no language tags */
  uint8_t unused[2];                   /* fills the place up */
  uint32_t convertNewlines;            /* non-zero: every line end becomes newlineForm */
  uint32_t newlineForm;                /* KSV_NEWLINE_... */
  uint16_t supplementaryMode; /* UCS-2 targets: 0 refuse, 1 "&#x1F600;", else "&#128512;" */
} ConvertOptions;
#pragma pack(pop)

/* A converter, 1272 bytes, allocated and zeroed by the caller; the library keeps
 * no pointer to it and frees nothing in it. Set the fields marked "set" before
 * cconvConvert; the others are the library's to write and the caller's to read. */
typedef struct ConverterRecord {
  const uint8_t* input;      /* set: the source text */
  int32_t inputPosition;     /* set: bytes consumed so far, normally 0 to begin with */
  int32_t inputLength;       /* set: bytes in the input */
  int32_t charactersRead;    /* characters decoded so far */
  uint8_t* output;           /* set: the target buffer */
  int32_t outputPosition;    /* set: bytes written so far */
  int32_t outputCapacity;    /* set: bytes in the output buffer */
  int32_t unitsWritten;      /* code units written so far */
  uint32_t status;           /* KSV_STATUS_... of the last call */
  uint32_t sourceCharsetId;  /* number of the source charset's name */
  const void* sourceCharset; /* the library's; null: none is set */
  const void* sourceDecoder; /* the library's; null: the charset names none */
  uint32_t decodedGroup;     /* group (sub-charset) in which the last character was found */
  uint32_t decodedGroupType; /* that group's type: 1 base, 2 difference, 3 user-defined */
  uint32_t decoderState;     /* designated group of a stateful decoder; 2001 to begin with */
  uint32_t preConversion;    /* 0 none, 1 UTF-7, 2 HZ-GB-2312 */
  uint32_t targetCharsetId;  /* number of the target charset's name */
  const void* targetCharset; /* the library's; null: none is set */
  const void* targetEncoder; /* the library's; null: the charset names none */
  uint32_t targetGroup;      /* group chosen for the last character written */
  uint32_t targetGroupType;  /* that group's type, as decodedGroupType */
  uint32_t designatedGroup;  /* group that a stateful encoder last switched to */
  uint32_t designatedPlane;  /* JIS X 0213 plane that a stateful encoder last switched to */
  uint32_t rawCode;          /* input bytes of the current character as one number */
  uint32_t groupCode;        /* the character's code inside its source group */
  uint32_t unicodeCode;      /* the character as a Unicode scalar value */
  uint32_t outputCode;       /* the code to write in the target group */
  uint16_t outputWidth;      /* bytes per output unit */
  uint16_t sequenceLength;   /* non-zero: outputCode is a sequence of this many bytes */
  uint32_t previousRawCode;  /* rawCode of the character before */
  uint32_t secondCode;       /* a combining mark written behind outputCode, 0 for none */
  char defaultLanguage[KSV_NAME_SIZE]; /* that of the options */
  char emittedLanguage[KSV_NAME_SIZE]; /* the language last announced in the output */
  char currentLanguage[KSV_NAME_SIZE]; /* set by cconvChgLang and by tags in the input */
  uint32_t inputBigEndian;             /* non-zero: units are read most significant byte first */
  uint32_t detectByteOrderMark;        /* non-zero: a leading mark decides the byte order */
  uint32_t skipInvalid;                /* non-zero: invalid input is skipped */
  ConvertOptions options;              /* copied by cconvInitConvert */
  uint32_t narrowReplacement[4];       /* group, type, code and width of the replacement */
  uint32_t wideReplacement[4];         /* the same of the wide replacement */
} ConverterRecord;

/* What kind of line end a text has, in EncodingCheckRecord.lineEnd. */
enum {
  KSV_LINE_END_NONE = 0,
  KSV_LINE_END_CRLF = 1,
  KSV_LINE_END_CR = 2,
  KSV_LINE_END_LF = 3,
  KSV_LINE_END_LINE_SEPARATOR = 4,     /* U+2028 */
  KSV_LINE_END_PARAGRAPH_SEPARATOR = 5 /* U+2029 */
};

/* Results of the encoding check, in EncodingCheckRecord.resultClass. */
enum {
  KSV_CHECK_NOTHING = 0,
  KSV_CHECK_NAMED = 1,
  KSV_CHECK_NAMED_WITH_ORDER = 4098 /* the name is that of a charset whose byte order matters */
};

/* What cconvChkEncode is asked about and answers, 296 bytes, the caller's own. Set
 * the first three fields; all others are the library's to write. */
typedef struct EncodingCheckRecord {
  const uint8_t* input; /* set: the bytes */
  uint32_t position;    /* set: the offset of the first byte to be looked at */
  uint32_t end;         /* set: the offset behind the last byte */
  char name[KSV_NAME_SIZE]; /* the charset, or "unknown" */
  uint32_t declared;        /* 1: an XML declaration was found */
  uint32_t mark;            /* 1: a byte-order mark was found */
  uint32_t bigEndian;       /* 1: most significant byte first, as in charsets made of bytes */
  uint32_t lineEnd;         /* KSV_LINE_END_... that is the most frequent */
  uint32_t resultClass;     /* KSV_CHECK_... */
} EncodingCheckRecord;

/* Starts the use of the conversion functions. Calls nest; only the first creates
 * the rule base, its named lock "CtableMutex" and its default block size. Every
 * call reads the setting "Charsetpath" anew.
 *
 * Threads may each call startProcess, cconvLoadRule and, in the end, endProcess on
 * their own, while others convert: the first loads, and the last end frees. Only
 * a cconvLoadRule that finds new charsets in a directory that is in use must not
 * run while other threads convert. setBlockSize is for one thread while no
 * conversion runs. Returns 1, or 0 when there is no memory. */
KSV_API int startProcess(void);

/* Undoes one startProcess; the last one frees all that was loaded. An unmatched
 * call frees nothing and leaves the count at 2^32-1. */
KSV_API void endProcess(void);

/* Sets the number of entries per block of the code tables filled from now on;
 * 0 restores the default of 4096. The first startProcess resets it to 0. */
KSV_API void setBlockSize(unsigned short entries);

/* Takes the lock under which code tables are filled: it excludes the threads and
 * processes of one user from each other. The thread that holds it may take it
 * again, and releases it as often. Waits without a time-out. Returns 1 when it
 * was acquired normally; 0 outside startProcess and endProcess (nothing is held),
 * and 0 once after its holder died (the lock is held then). */
KSV_API int lockMutex(void);

/* Releases the lock once. Returns non-zero when the calling thread held it. */
KSV_API int unlockMutex(void);

/* Returns 1 and does nothing: the charset path comes from the settings only. */
KSV_API int KSV_setCharsetPath(const char* ignored);

/* Loads every "*.xml" rule file of the charset directory. Returns 1 when at least
 * one was accepted (one whose charset is present already counts), else 0. */
KSV_API int cconvLoadRule(void);

/* Sets up a converter for the target charset, a name of the charset directory
 * without regard to case, at most 259 bytes. options may be null (all zero) and is
 * copied. Clears the state of the record (status up to currentLanguage, and the
 * replacements); buffers, counts and source parameters keep their values. Returns
 * 0, or 1 when the charset is unknown: the record then has no encoder. */
KSV_API uint32_t cconvInitConvert(ConverterRecord* record, const ConvertOptions* options,
                                  const char* targetCharset);

/* Sets or changes the source charset of a converter that cconvInitConvert has set
 * up. sourceParameters holds input big-endian, detect byte-order mark and skip
 * invalid, or is null (all zero). The exact names "UTF-7" (which sets
 * sourceParameters[0] to 0) and "HZ-GB-2312" ask for a pre-conversion. Returns 0,
 * or 1 when the charset is unknown: the previous source then stays. */
KSV_API uint32_t cconvChgCharset(ConverterRecord* record, uint32_t sourceParameters[3],
                                 const char* sourceCharset);

/* Sets the language that Unicode targets announce before the next character, at
 * most 259 bytes. Takes effect only when the options name a default language.
 * Returns 0. */
KSV_API uint32_t cconvChgLang(ConverterRecord* record, const char* language);

/* Converts from the input position until the input is used up (0), it ends inside
 * a sequence (12), it is invalid (13), the output is full (22) or a character
 * cannot be mapped (23); 1 when the converter is not set up. After 12 and 22 the
 * positions are such that the caller can go on with more input or room; after 23
 * the input position is behind the character. */
KSV_API uint32_t cconvConvert(ConverterRecord* record);

/* Ends a conversion: a stateful target writes its closing sequence. Returns 0, or
 * 22 when it does not fit (call again with more room). */
KSV_API uint32_t cconvTermConvert(ConverterRecord* record);

/* Copies the name of the loaded charset at index, in load order from 0, into
 * nameOut (260 bytes). Returns 1, or 0 when there is none or nameOut is null. */
KSV_API uint32_t cconvEnumGroup(int32_t index, char* nameOut);

/* Returns 1 for exactly "UTF-16", "ISO-10646-UCS-2" and "ISO-10646-UCS-4", whose
 * byte order matters; else 0. */
KSV_API uint32_t cconvIsEndianAware(const char* charsetName);

/* Names the charset of a text in memory, as the charset directory names it: after
 * its byte-order mark, after the encoding of its XML declaration, or, when it has
 * neither, after its first 2,048 bytes, which are scored as ISO-2022-JP, UTF-8,
 * EUC-JP, EUC-JP-FIX, UTF-16, UCS-4 and Windows-31J. A declared name is passed on as
 * it stands, known or not. Needs no startProcess and keeps no state; may be called
 * from any thread.
 *
 *   record  the text, from position to end, at most 2^32-1 bytes; position and end
 *           are left as they are. A null input, or a position above the end, is an
 *           empty text. The declaration's encoding is looked for from the first byte
 *           of input, so that is where a text with a declaration should begin.
 *
 * Returns 1 when a name was found; else 0, with the name "unknown". A null record
 * gives 0. */
KSV_API uint32_t cconvChkEncode(EncodingCheckRecord* record);

KSV_EXTERN_C_END

#endif
