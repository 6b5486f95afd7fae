/*
 * ksv.h : conversion between character encodings, in one call or as a stream.
 *
 *     char* text;
 *     size_t length;
 *     ksv_error error;
 *     if (ksv_convert("SJIS", "utf8", NULL, bytes, count, &text, &length, &error) != KSV_OK)
 *       fprintf(stderr, "%s\n", error.message);
 *     ksv_free(text);
 *
 * Nothing has to be started or ended: the charset directory is loaded at the first call that
 * needs it. Charsets are named as people name them: without regard to case and punctuation, by
 * IANA's names, the labels of the web, code page numbers and the directory's own names. Lengths
 * and offsets have 64 bits; a text has no longest length.
 *
 * Results are values. A function that can fail returns KSV_OK (0) or one of the other results, and
 * fills in a ksv_error for whoever hands one in. No function throws, prints, or ends the process.
 * Any thread may call any function. A plan may be used by many threads at once; a converter and a
 * report by one at a time.
 *
 * Structures that a caller makes begin with their own size, so that a library of a later
 * version knows which fields there are: use the KSV_..._INIT that stands beside them.
 */
#ifndef KSV_H
#define KSV_H

#include <stddef.h>
#include <stdint.h>

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* What a function answers. */
typedef enum ksv_result {
  KSV_OK = 0,
  KSV_NO_ROOM = 1,         /* the output buffer is too small; what is needed is told */
  KSV_INVALID = 2,         /* bytes that are no character of the source charset */
  KSV_TRUNCATED = 3,       /* the text ends inside a character */
  KSV_UNMAPPABLE = 4,      /* a character that the target charset does not have */
  KSV_TOO_LONG = 5,        /* a single thing in the text that is longer than any text has it */
  KSV_UNKNOWN_CHARSET = 6, /* a name that names no charset that can be read or written */
  KSV_BAD_ARGUMENT = 7,    /* an option that cannot be followed, or a null where none may be */
  KSV_NO_MEMORY = 8,
  KSV_SYSTEM = 9,          /* a file, such as one of the charset directory, cannot be read */
  KSV_NO_DOCUMENT = 10,    /* bytes that are no compound document */
  KSV_DAMAGED = 11         /* a part of a document that cannot be read for its damages */
} ksv_result;

enum {
  KSV_MESSAGE_SIZE = 256, /* bytes of a message, its terminator included */
  KSV_BYTES_SHOWN = 16    /* of those that an error is about */
};

#define KSV_NO_CODE_POINT UINT32_C(0xFFFFFFFF)

/* What went wrong, and where. */
typedef struct ksv_error {
  int32_t result;       /* a ksv_result */
  uint32_t code_point;  /* of KSV_UNMAPPABLE; else KSV_NO_CODE_POINT */
  uint64_t offset;      /* of the first byte concerned, from the beginning of the whole text */
  uint64_t line;        /* from 1 on; 0: the error is not about a place */
  uint64_t column;      /* in characters, from 1 on */
  uint32_t byte_count;  /* of the bytes concerned, the first of which stand here */
  uint8_t bytes[KSV_BYTES_SHOWN]; /* these */
  char message[KSV_MESSAGE_SIZE]; /* one line of UTF-8, without a line end */
  uint32_t reserved;              /* 0 */
} ksv_error;

/* What is done about bytes that are no text, and about characters that the target lacks. */
typedef enum ksv_policy {
  KSV_FAIL = 0,              /* the conversion ends there */
  KSV_SKIP = 1,              /* left out */
  KSV_REPLACE = 2,           /* by the text of the options */
  KSV_HEX_REFERENCE = 3,     /* &#x3042; */
  KSV_DECIMAL_REFERENCE = 4, /* &#12354; */
  KSV_ESCAPE = 5,            /* \u{3042}; for bytes \xE3 */
  KSV_PERCENT = 6,           /* %E3%81%82: the bytes; of a character those of its UTF-8 */
  KSV_LOOK_ALIKE = 7,        /* what looks most like it (characters only), else as KSV_REPLACE */
  KSV_BUILT_IN = 8,          /* the replacement that suits the target (characters only) */
  KSV_ASK = 9                /* what the caller's function answers */
} ksv_policy;

/* One problem, as a caller's function is asked about it. The pointers hold during the call. */
typedef struct ksv_problem {
  int32_t result;      /* KSV_INVALID, KSV_TRUNCATED or KSV_UNMAPPABLE */
  uint32_t code_point; /* of KSV_UNMAPPABLE; else KSV_NO_CODE_POINT */
  uint64_t offset;     /* of the first byte, from the beginning of the whole text */
  const uint8_t* bytes; /* the bytes concerned */
  size_t byte_count;    /* how many they are */
} ksv_problem;

/* Answers one of KSV_FAIL, KSV_SKIP, or KSV_REPLACE with a text in UTF-8 in *text and *length,
 * which has to hold until the function is called again or the conversion ends. */
typedef int32_t (*ksv_ask_function)(void* context, const ksv_problem* problem, const char** text,
                                    size_t* length);

/* Line ends of what is written. */
typedef enum ksv_newline {
  KSV_KEEP_NEWLINES = 0,
  KSV_NEWLINES_LF = 1,
  KSV_NEWLINES_CRLF = 2,
  KSV_NEWLINES_CR = 3
} ksv_newline;

/* The byte-order mark of Unicode forms. */
typedef enum ksv_mark {
  KSV_DROP_MARK = 0, /* the mark of the source is read, and none is written */
  KSV_ADD_MARK = 1,  /* one is written, whether the source has one or not */
  KSV_KEEP_MARK = 2  /* one is written if the source has one */
} ksv_mark;

/* The order of bytes in the units of UTF-16, UCS-2 and UCS-4 that are written, where the name of
 * the target does not say it. Charsets made of bytes have none, and nothing swaps theirs. */
typedef enum ksv_byte_order {
  KSV_LITTLE_ENDIAN = 0,
  KSV_BIG_ENDIAN = 1
} ksv_byte_order;

/* The forms of Unicode, and one for charsets that are older than it. */
typedef enum ksv_normalization {
  KSV_NO_NORMALIZATION = 0,
  KSV_NFC = 1,
  KSV_NFD = 2,
  KSV_NFKC = 3,
  KSV_NFKD = 4,
  /* Marks are joined with what they stand behind, and nothing else is changed: what a legacy
   * charset wants of a text whose marks stand apart. */
  KSV_COMPOSED = 5
} ksv_normalization;

/* Widths of Japanese text; may be added up. */
enum {
  KSV_WIDEN_KATAKANA = 1,  /* half-width katakana become full-width, with their voice marks */
  KSV_NARROW_KATAKANA = 2, /* and the other way round */
  KSV_NARROW_ASCII = 4,    /* full-width letters, digits and signs become ASCII */
  KSV_WIDEN_ASCII = 8      /* and the other way round */
};

/* How a text is converted. All zero but for the size: fail at the first problem, change nothing. */
typedef struct ksv_options {
  uint32_t size;         /* sizeof(ksv_options) */
  int32_t invalid;       /* a ksv_policy for bytes that are no text */
  int32_t unmappable;    /* a ksv_policy for characters that the target lacks */
  int32_t newlines;      /* a ksv_newline */
  int32_t mark;          /* a ksv_mark */
  int32_t byte_order;    /* a ksv_byte_order */
  int32_t normalization; /* a ksv_normalization, before the text is written */
  uint32_t widths;       /* KSV_WIDEN_... and KSV_NARROW_... */
  const char* invalid_text;    /* UTF-8, for KSV_REPLACE; null: U+FFFD, or "?" in charsets without */
  const char* unmappable_text; /* the same */
  const char* profile;         /* the name of a mapping profile, or null */
  const char* profile_text;    /* the text of a profile of the caller's own, or null */
  ksv_ask_function ask;        /* for KSV_ASK */
  void* ask_context;           /* what that function is handed */
} ksv_options;

#define KSV_OPTIONS_INIT {sizeof(ksv_options), 0, 0, 0, 0, 0, 0, 0, NULL, NULL, NULL, NULL, NULL, NULL}

/* The version of the library as a text, "1.0.0", and as a number, 10000 * major + 100 * minor +
 * patch. Never fail. */
KSV_API const char* ksv_version(void);
KSV_API uint32_t ksv_version_number(void);

/* The name of a result: "KSV_INVALID". Never null. */
KSV_API const char* ksv_result_name(int32_t result);

/* Gives back what a function of this library has allocated. Takes null. */
KSV_API void ksv_free(void* block);

/* ---- Conversion in one call ---- */

/* Converts a text. *output is allocated, has a zero byte behind its end that *output_length does
 * not count, and is the caller's: ksv_free. input may be null when length is 0; options and
 * error may be null. When the call fails, *output is null and *output_length 0. */
KSV_API ksv_result ksv_convert(const char* from, const char* to, const ksv_options* options,
                               const void* input, size_t length, char** output,
                               size_t* output_length, ksv_error* error);

/* The same into a buffer of the caller's. *output_length is what the whole text takes, also when
 * it is more than the capacity: then KSV_NO_ROOM is returned, and of the buffer nothing is to be
 * used. buffer may be null when capacity is 0. */
KSV_API ksv_result ksv_convert_into(const char* from, const char* to, const ksv_options* options,
                                    const void* input, size_t length, void* buffer,
                                    size_t capacity, size_t* output_length, ksv_error* error);

/* ---- Plans ---- */

/* What does not change from text to text: the charsets, looked up, and the options. */
typedef struct ksv_plan ksv_plan;

/* Makes a plan; everything in the options is copied but what ask_context points to. *plan is null
 * when the call fails. */
KSV_API ksv_result ksv_plan_new(const char* from, const char* to, const ksv_options* options,
                                ksv_plan** plan, ksv_error* error);

/* The caller needs the plan no more. Converters that were made of it go on. Takes null. */
KSV_API void ksv_plan_free(ksv_plan* plan);

/* As ksv_convert and ksv_convert_into. */
KSV_API ksv_result ksv_plan_convert(const ksv_plan* plan, const void* input, size_t length,
                                    char** output, size_t* output_length, ksv_error* error);
KSV_API ksv_result ksv_plan_convert_into(const ksv_plan* plan, const void* input, size_t length,
                                         void* buffer, size_t capacity, size_t* output_length,
                                         ksv_error* error);

/* ---- Streams ---- */

/* A text on its way, in pieces of any size. What comes out does not depend on where the pieces were
 * cut. */
typedef struct ksv_converter ksv_converter;

/* Makes a converter of a plan, which may be freed before it. *converter is null when the call
 * fails. */
KSV_API ksv_result ksv_converter_new(const ksv_plan* plan, ksv_converter** converter,
                                     ksv_error* error);
/* Takes null. */
KSV_API void ksv_converter_free(ksv_converter* converter);

/* Begins with a new text. Costs next to nothing. */
KSV_API void ksv_converter_reset(ksv_converter* converter);

/* Takes a piece of the text. *used is how many of its bytes were taken, *written how many bytes were
 * put into the buffer. KSV_OK: all were taken. KSV_NO_ROOM: the buffer is full; call again with
 * the rest of the piece and a new buffer. Anything else: the text is at an end, and what was
 * converted in front of the problem has been written; every further call gives the same. */
KSV_API ksv_result ksv_converter_feed(ksv_converter* converter, const void* input, size_t length,
                                      size_t* used, void* buffer, size_t capacity, size_t* written,
                                      ksv_error* error);

/* The text is complete: what waited for more is written, and what closes the text. KSV_NO_ROOM: call
 * again with a new buffer. */
KSV_API ksv_result ksv_converter_finish(ksv_converter* converter, void* buffer, size_t capacity,
                                        size_t* written, ksv_error* error);

/* What was left out or written otherwise since the text began. */
typedef struct ksv_counts {
  uint64_t invalid_bytes; /* of what is no text */
  uint64_t unmappable;    /* characters */
} ksv_counts;

/* Fills in the counts. */
KSV_API void ksv_converter_counts(const ksv_converter* converter, ksv_counts* counts);

/* ---- What would be lost ---- */

/* In what way something is lost. */
typedef enum ksv_loss_kind {
  KSV_LOSS_INVALID = 0,    /* bytes that are no text */
  KSV_LOSS_TRUNCATED = 1,  /* the text ends inside a character */
  KSV_LOSS_UNMAPPABLE = 2, /* a character that the target does not have */
  KSV_LOSS_RETURNS = 3     /* a character that is written, and is another one when it is read back */
} ksv_loss_kind;

/* One thing that is lost, told once however often it stands in the text. The texts are the report's. */
typedef struct ksv_loss {
  int32_t kind;        /* a ksv_loss_kind */
  uint32_t code_point; /* KSV_NO_CODE_POINT where there is no character */
  uint64_t count;      /* how often it stands in the text */
  uint64_t offset;     /* the first place: from the beginning of the text, */
  uint64_t line;       /* from 1 on, */
  uint64_t column;     /* in characters, from 1 on */
  uint32_t byte_count; /* of the source's bytes there, 0 where it is of no interest */
  uint8_t bytes[KSV_BYTES_SHOWN]; /* these */
  uint32_t reserved;              /* 0 */
  const char* character_class; /* "private use", "emoji", "half-width", ...; "" without character */
  const char* returns_as;      /* UTF-8, of KSV_LOSS_RETURNS; else "" */
} ksv_loss;

/* The sums of a report, in places of the text. */
typedef struct ksv_loss_totals {
  uint64_t bytes;           /* of the text */
  uint64_t characters;      /* of the text */
  uint64_t invalid;         /* sequences of bytes */
  uint64_t unmappable;      /* characters that the target does not have */
  uint64_t return_as_other; /* characters that are others when they are read back */
  uint64_t untold;          /* losses that found no entry any more, of which there are 10,000 */
} ksv_loss_totals;

/* A text that is looked at, and what was seen of it. */
typedef struct ksv_report ksv_report;

/* A report on a text that comes in pieces, and on what the conversion would do to it. Nothing is
 * converted for good; the policies of the options say only what replacements would be. */
KSV_API ksv_result ksv_report_new(const char* from, const char* to, const ksv_options* options,
                                  ksv_report** report, ksv_error* error);
KSV_API void ksv_report_free(ksv_report* report);
KSV_API ksv_result ksv_report_feed(ksv_report* report, const void* input, size_t length,
                                   ksv_error* error);
/* The text is complete. Only then there is something to be read in the report. */
KSV_API ksv_result ksv_report_finish(ksv_report* report, ksv_error* error);

/* How many different losses there are, and the one at an index, in the order of their first places;
 * null behind the last. */
KSV_API size_t ksv_report_count(const ksv_report* report);
KSV_API const ksv_loss* ksv_report_loss(const ksv_report* report, size_t index);
KSV_API void ksv_report_totals(const ksv_report* report, ksv_loss_totals* totals);

/* What would stand in the place of a loss under a policy, as UTF-8; null where the policy has no say,
 * and when there is no memory. The caller's: ksv_free. */
KSV_API char* ksv_report_outcome(const ksv_report* report, size_t index, ksv_policy policy);

/* The report as one JSON object, and as lines for a terminal. The caller's: ksv_free. */
KSV_API char* ksv_report_json(const ksv_report* report);
KSV_API char* ksv_report_table(const ksv_report* report);

/* ---- Charsets ---- */

/* A charset that can be read. It belongs to the library, which keeps it until the process ends. */
typedef struct ksv_charset ksv_charset;

/* By any of its names; null when no charset has it, or the charset directory cannot be read. */
KSV_API const ksv_charset* ksv_charset_find(const char* name);
/* The charsets in their order; null behind the last. */
KSV_API const ksv_charset* ksv_charset_at(size_t index);

/* Names. The name is the usual spelling; of the others null behind the last. */
KSV_API const char* ksv_charset_name(const ksv_charset* charset);
KSV_API const char* ksv_charset_alias(const ksv_charset* charset, size_t index);
/* As mail names it (IANA's preferred MIME name), as the Encoding Standard does, and the number of
 * the code page; null and 0 where there is none. */
KSV_API const char* ksv_charset_mime_name(const ksv_charset* charset);
KSV_API const char* ksv_charset_web_name(const ksv_charset* charset);
KSV_API uint32_t ksv_charset_code_page(const ksv_charset* charset);

/* Whether texts can be written in it; some can be read only. */
KSV_API int ksv_charset_can_be_written(const ksv_charset* charset);
/* Whether what bytes mean depends on escape or shift sequences in front of them. */
KSV_API int ksv_charset_is_stateful(const ksv_charset* charset);
/* The most bytes that one character takes when it is written, without what switches between sets. */
KSV_API uint32_t ksv_charset_longest_character(const ksv_charset* charset);

/* The characters that can be written, as ranges of code points, ascending and apart from each other:
 * *ranges holds first and last of each, *count says how many ranges. Both are the library's. */
KSV_API ksv_result ksv_charset_repertoire(const ksv_charset* charset, const uint32_t** ranges,
                                          size_t* count, ksv_error* error);
KSV_API int ksv_charset_has(const ksv_charset* charset, uint32_t code_point);

/* Whether a text in UTF-8 can be written; when not, error tells the first character that cannot. */
KSV_API ksv_result ksv_charset_can_hold(const ksv_charset* charset, const char* utf8, size_t length,
                                        ksv_error* error);
/* How many bytes it takes. */
KSV_API ksv_result ksv_charset_encoded_length(const ksv_charset* charset, const char* utf8,
                                              size_t length, size_t* encoded_length,
                                              ksv_error* error);

/* ---- Cutting ---- */

/* How many leading bytes of a text can be kept, at most limit, so that no character, no escape or
 * shift sequence and no CR LF is cut apart. Bytes that are no text count one by one. In charsets with
 * escape sequences the piece may end in another set than it began in. charset: its name, of any that
 * can be read. *piece is 0 when the call fails. */
KSV_API ksv_result ksv_leading_piece(const char* charset, const void* text, size_t length,
                                     size_t limit, size_t* piece, ksv_error* error);

/* ---- Detection ---- */

/* What kind of thing the bytes are. */
typedef enum ksv_content {
  KSV_CONTENT_TEXT = 0,
  KSV_CONTENT_EMPTY = 1,  /* there are no bytes */
  KSV_CONTENT_BINARY = 2, /* no text in any charset: a picture, an archive, a program */
  KSV_CONTENT_UNKNOWN = 3 /* no charset fits, though it does not look like anything else */
} ksv_content;

/* How the lines of a text end. */
typedef enum ksv_line_end {
  KSV_LINE_ENDS_NONE = 0, /* there is one line */
  KSV_LINE_ENDS_LF = 1,
  KSV_LINE_ENDS_CRLF = 2,
  KSV_LINE_ENDS_CR = 3,
  KSV_LINE_ENDS_MIXED = 4
} ksv_line_end;

/* What is known of a text before it is looked at. Each may be null. Names that are unknown are no
 * failure: they help nothing. */
typedef struct ksv_hints {
  uint32_t size;         /* sizeof(ksv_hints) */
  uint32_t reserved;     /* 0 */
  const char* languages; /* what the text may be in, as "ja,zh-TW": others become unlikely */
  const char* charsets;  /* what it may be, as "EUC-JP,UTF-8": nothing else is answered */
  const char* declared;  /* the charset that a mail's or a page's header names */
  const char* file_name; /* its name or path: "ru.koi8-r.po", "page.html" */
} ksv_hints;

#define KSV_HINTS_INIT \
  { sizeof(ksv_hints), 0, NULL, NULL, NULL, NULL }

/* A charset that a text may be in. The texts are the detection's. */
typedef struct ksv_guess {
  const char* charset;     /* the narrowest that holds all of the text, as ksv_charset_name has it;
                              for UTF-16 and UTF-32 with the order of bytes: "UTF-16LE" */
  const char* decode_as;   /* what to convert from: the same, or one that has all its characters and
                              those of its vendors; null where the library cannot read it */
  const char* language;    /* as BCP 47 has it, "ja", "zh-TW"; "" where nothing tells */
  const char* reason;      /* in words: one line of UTF-8 */
  double confidence;       /* how likely it is, from 0 to 1: of the texts given 0.9, nine in ten */
  uint64_t invalid_offset; /* the first byte that is no text in decode_as; KSV_NO_OFFSET: none of
                             those that were looked at */
  int32_t line_end;        /* a ksv_line_end */
  uint32_t mark_length;    /* bytes of the byte-order mark; 0: there is none */
} ksv_guess;

#define KSV_NO_OFFSET UINT64_MAX

/* What was found out about a text. */
typedef struct ksv_detection ksv_detection;

/* What holds of a text whatever its charset. */
typedef struct ksv_text_facts {
  int32_t content;        /* a ksv_content */
  int32_t settled;        /* 1: more of the same text would not change the first guess */
  uint64_t bytes;         /* how many were looked at */
  const char* misread_as; /* UTF-8 was taken for this charset, and written so once more; or null */
} ksv_text_facts;

/* Finds out in which charset a text is written. hints may be null. *detection is the caller's:
 * ksv_detection_free; null when the call fails, which it does not because of what the bytes are. */
KSV_API ksv_result ksv_detect(const void* text, size_t length, const ksv_hints* hints,
                              ksv_detection** detection, ksv_error* error);

/* The same of a file, whose path is UTF-8. Where no name is among the hints, the path is it. As
 * much is read as settles it. KSV_SYSTEM: the file cannot be read. */
KSV_API ksv_result ksv_detect_file(const char* path, const ksv_hints* hints,
                                   ksv_detection** detection, ksv_error* error);

/* Takes null. */
KSV_API void ksv_detection_free(ksv_detection* detection);

/* How many guesses there are, none where it is no text, and the one at an index, the best one
 * first; null behind the last. */
KSV_API size_t ksv_detection_count(const ksv_detection* detection);
KSV_API const ksv_guess* ksv_detection_guess(const ksv_detection* detection, size_t index);
KSV_API void ksv_detection_facts(const ksv_detection* detection, ksv_text_facts* facts);

/* A text that comes in pieces. What is found does not depend on where they were cut. */
typedef struct ksv_detector ksv_detector;

/* The hints are copied. *detector is null when the call fails. */
KSV_API ksv_result ksv_detector_new(const ksv_hints* hints, ksv_detector** detector,
                                    ksv_error* error);
/* Takes null. */
KSV_API void ksv_detector_free(ksv_detector* detector);

/* Takes a piece. *settled (which may be null) is 1 from where on more of the same text would not
 * change the first guess. */
KSV_API ksv_result ksv_detector_feed(ksv_detector* detector, const void* text, size_t length,
                                     int* settled, ksv_error* error);

/* The verdict on what was taken so far. complete: whether that is the whole text, else it may end
 * inside a character. May be called again and again, between pieces too. */
KSV_API ksv_result ksv_detector_verdict(const ksv_detector* detector, int complete,
                                        ksv_detection** detection, ksv_error* error);

/* A part of a text, of whole lines, in one charset. The texts are the library's for good. */
typedef struct ksv_segment {
  uint64_t offset;       /* in bytes */
  uint64_t length;       /* in bytes, at least 1 */
  const char* charset;   /* as in ksv_guess; null where no charset fits */
  const char* decode_as; /* as in ksv_guess */
  double confidence;     /* as in ksv_guess */
} ksv_segment;

/* Finds where a text changes its charset: the segments follow each other without gaps and hold the
 * whole text; a text in one charset has one, an empty text none. *segments is the caller's:
 * ksv_free. */
KSV_API ksv_result ksv_segments(const void* text, size_t length, const ksv_hints* hints,
                                ksv_segment** segments, size_t* count, ksv_error* error);

/* What was done about a text that had been written as UTF-8 twice. */
typedef struct ksv_repair_counts {
  uint64_t repaired;   /* lines that are as they once were */
  uint64_t lost;       /* lines that were written twice, but lost bytes on the way: left alone */
  uint64_t ambiguous;  /* lines with more than one way back: left alone */
  uint64_t first_left; /* where the first line begins that was left alone; KSV_NO_OFFSET */
  uint64_t first_left_line; /* its number, from 1 on; 0 */
  const char* misread_as; /* what the lines were taken for; null: none was. The library's */
} ksv_repair_counts;

/* Undoes what ksv_text_facts calls misread, line by line, where there is one way back. misread_as
 * names the charset; null: it is found out. A text that is no UTF-8 is KSV_INVALID. *output as with
 * ksv_convert. counts may be null. */
KSV_API ksv_result ksv_repair(const char* misread_as, const char* utf8, size_t length,
                              char** output, size_t* output_length, ksv_repair_counts* counts,
                              ksv_error* error);

/* ---- Compound documents ---- */

/* An open document: a tree of storages with streams of bytes in them, as the compound file format has
 * it in its versions 3 and 4. Damaged ones are read as far as they go. One thread at a time may
 * use a document. */
typedef struct ksv_document ksv_document;

/* Opens a document: by its path in UTF-8; by a descriptor, on Windows a HANDLE, that is open for
 * reading, is not closed here, and stays open as long as the document; or of bytes that stay where
 * they are as long as the document. Of a file the directory is read, and later what is asked for.
 * KSV_SYSTEM: the file cannot be read. KSV_NO_DOCUMENT: it does not begin as documents do. *document is
 * the caller's: ksv_document_close; null when the call fails. */
KSV_API ksv_result ksv_document_open(const char* path, ksv_document** document, ksv_error* error);
KSV_API ksv_result ksv_document_open_descriptor(intptr_t descriptor, ksv_document** document,
                                                ksv_error* error);
KSV_API ksv_result ksv_document_open_memory(const void* bytes, size_t size,
                                            ksv_document** document, ksv_error* error);
/* Takes null. */
KSV_API void ksv_document_close(ksv_document* document);

/* What holds of a document as a whole. */
typedef struct ksv_document_facts {
  uint32_t version;      /* of the format: 3 or 4 */
  uint32_t sector_size;  /* in bytes */
  uint64_t file_size;    /* in bytes */
  uint32_t orphans;      /* entries that are in use, and in no storage's tree */
  uint32_t is_checked;   /* 1: ksv_document_check has looked at all of it */
  uint64_t lost_sectors; /* in use, and of no entry; known when it is checked */
} ksv_document_facts;

/* What is known of it. */
KSV_API void ksv_document_get_facts(const ksv_document* document, ksv_document_facts* facts);

/* What an entry is. */
typedef enum ksv_entry_kind {
  KSV_ENTRY_ROOT = 0,
  KSV_ENTRY_STORAGE = 1,
  KSV_ENTRY_STREAM = 2
} ksv_entry_kind;

/* No entry. */
#define KSV_NO_ENTRY UINT32_MAX

/* An entry of the tree. The pointers are the document's. In a name control characters, those that turn
 * the direction of a text, halves of pairs, slashes and backslashes are \xHH or \uHHHH. */
typedef struct ksv_entry {
  const char* name;           /* UTF-8, with what cannot be shown escaped: \x05SummaryInformation */
  const uint16_t* name_units; /* the same as it stands in the document, in UTF-16 */
  uint32_t name_length;       /* in such units */
  int32_t kind;               /* a ksv_entry_kind */
  uint32_t id;                /* its number in the directory of the document */
  uint32_t parent;            /* the index of its storage; KSV_NO_ENTRY: it has none */
  uint64_t size;              /* of a stream in bytes, as the directory claims it */
  uint64_t created;           /* FILETIME: units of 100 ns since 1601, in UTC; 0: not told */
  uint64_t modified;          /* the same */
  uint8_t class_id[16];       /* as it stands in the document */
  uint32_t state_bits;        /* as the program that made the storage set them */
  int32_t is_orphan;          /* 1: in use, and in no storage's tree */
} ksv_entry;

/* How many entries there are, and the one at an index: the root first, each storage in front of what is
 * in it, siblings in the order of the document, orphans last; null behind the last. */
KSV_API size_t ksv_document_entry_count(const ksv_document* document);
KSV_API const ksv_entry* ksv_document_entry(const ksv_document* document, size_t index);

/* The index of the entry at a path: names as ksv_entry has them, with '/' between. What is not there
 * as it is given is looked for without regard to case. KSV_NO_ENTRY in *index: there is none. */
KSV_API ksv_result ksv_document_find(const ksv_document* document, const char* path,
                                     uint32_t* index, ksv_error* error);
/* The path of an entry, which finds it; of an orphan without storage it is "\orphaned/ID/NAME". *path
 * is the caller's: ksv_free. */
KSV_API ksv_result ksv_document_path(const ksv_document* document, uint32_t index, char** path,
                                     ksv_error* error);

/* Reads bytes of a stream from an offset on. *length is how many came: fewer than count only behind the
 * end of the stream, and with KSV_DAMAGED, when those that came are sound and error tells the place
 * in the file. */
KSV_API ksv_result ksv_document_read(ksv_document* document, uint32_t index, uint64_t offset,
                                     void* buffer, size_t count, size_t* length, ksv_error* error);

/* What can be wrong with a document. */
typedef enum ksv_damage_kind {
  KSV_DAMAGE_HEADER = 0,       /* a value of the header that is wrong or unusual */
  KSV_DAMAGE_CUT_SHORT = 1,    /* the file ends inside something */
  KSV_DAMAGE_SECTOR_TABLE = 2, /* the table of sectors, or the list of its own ones */
  KSV_DAMAGE_CHAIN = 3,        /* a chain of sectors that leads nowhere */
  KSV_DAMAGE_CYCLE = 4,        /* a chain of sectors that comes back to itself */
  KSV_DAMAGE_SHARED = 5,       /* a sector that belongs to two */
  KSV_DAMAGE_SIZE = 6,         /* a stream that is shorter than it claims */
  KSV_DAMAGE_ENTRY = 7,        /* an entry of the directory with a value that is wrong */
  KSV_DAMAGE_LINK = 8,         /* a link between entries */
  KSV_DAMAGE_ROOT = 9,         /* there is no root */
  KSV_DAMAGE_ORDER = 10        /* siblings that are not in the order of their names */
} ksv_damage_kind;

/* One thing that is wrong. */
typedef struct ksv_damage {
  int32_t kind;        /* a ksv_damage_kind */
  uint32_t entry;      /* the index of the entry concerned, or KSV_NO_ENTRY */
  uint64_t offset;     /* in the file, of what is wrong */
  const char* message; /* in words, as "has a ..."; the library's for good */
} ksv_damage;

/* Looks at all that can be wrong with the structure of a document. Without it, damages are told
 * as reading comes upon them. Fails only as reading does: KSV_SYSTEM, KSV_NO_MEMORY. */
KSV_API ksv_result ksv_document_check(ksv_document* document, ksv_error* error);

/* How many different damages were come upon so far, and the one at an index: 0 behind the last, when
 * *damage stays as it was. Of more than 10,000 the first are told. */
KSV_API size_t ksv_document_damage_count(const ksv_document* document);
KSV_API int ksv_document_damage(const ksv_document* document, size_t index, ksv_damage* damage);

/* ---- Properties of documents ---- */

/* Which kind of document it is. The texts are the library's for good. */
typedef struct ksv_document_kind {
  const char* name;        /* "word", "excel", "powerpoint", "visio", "mail", "installer", ...; null:
                              nothing is known */
  const char* description; /* "Word document"; null */
  double confidence;       /* 1: the class of the root and the streams both say so; 0: nothing does */
  int32_t has_macros;      /* 1: it, or something embedded in it, has code */
  int32_t is_encrypted;    /* 1: it needs a password */
  int32_t is_template;     /* 1, 0; -1: this kind of document does not say */
  uint32_t reserved;       /* 0 */
} ksv_document_kind;

/* Finds out the kind by the class of the root and by how a few streams begin. */
KSV_API ksv_result ksv_document_get_kind(ksv_document* document, ksv_document_kind* kind,
                                         ksv_error* error);

/* The property sets of a document, or of bytes, with texts as UTF-8. Immutable, and of its own: the
 * document may be closed before it. */
typedef struct ksv_properties ksv_properties;

/* Which sets are read. */
typedef enum ksv_property_scope {
  KSV_PROPERTIES_KNOWN = 0, /* the two that all kinds of documents have */
  KSV_PROPERTIES_ALL = 1    /* each stream that begins as a set does, those two first */
} ksv_property_scope;

/* Reads the sets of a document; it may have none. What is damaged in them is told
 * (ksv_properties_damage), and what is sound is read. scope: a ksv_property_scope. *properties is the
 * caller's: ksv_properties_free; null when the call fails. */
KSV_API ksv_result ksv_document_properties(ksv_document* document, int32_t scope,
                                           ksv_properties** properties, ksv_error* error);
/* The same of the bytes of one set, which need not stay. */
KSV_API ksv_result ksv_properties_read(const void* bytes, size_t length,
                                       ksv_properties** properties, ksv_error* error);
/* Takes null. */
KSV_API void ksv_properties_free(ksv_properties* properties);

/* A section of a set: a list of properties of one format. The texts are those of the properties. */
typedef struct ksv_property_section {
  const char* path;        /* of the stream in the document; "" of bytes */
  const char* format;      /* "{F29F85E0-4FF9-1068-AB91-08002B27B3D9}" */
  const char* format_name; /* "summary", "documentSummary", "userDefined"; null of other formats */
  uint64_t offset;         /* in the stream */
  uint32_t index;          /* in the set: 0 is its first section */
  uint32_t code_page;      /* the one that is declared; 0: none is */
  size_t property_count;   /* how many properties it has */
} ksv_property_section;

/* How many sections all sets have, and the one at an index; null behind the last. */
KSV_API size_t ksv_properties_section_count(const ksv_properties* properties);
KSV_API const ksv_property_section* ksv_properties_section(const ksv_properties* properties,
                                                           size_t index);

/* What a value is, whatever its type in the set. */
typedef enum ksv_value_form {
  KSV_VALUE_NOTHING = 0,    /* empty or null */
  KSV_VALUE_INTEGER = 1,    /* integer: signed numbers, error codes */
  KSV_VALUE_NATURAL = 2,    /* natural: unsigned numbers */
  KSV_VALUE_REAL = 3,       /* real */
  KSV_VALUE_BOOLEAN = 4,    /* integer: 1 or 0 */
  KSV_VALUE_TEXT = 5,       /* text; names of streams and storages, too */
  KSV_VALUE_TIME = 6,       /* natural: FILETIME, units of 100 ns since 1601, in UTC */
  KSV_VALUE_DURATION = 7,   /* natural: a length of time in such units */
  KSV_VALUE_DATE = 8,       /* real: days since 1899-12-30, of no time zone */
  KSV_VALUE_DECIMAL = 9,    /* text: "-12.345" */
  KSV_VALUE_CLASS_ID = 10,  /* text: as ksv_property_section has formats; bytes: 16 */
  KSV_VALUE_CLIPBOARD = 11, /* text: the format, "Windows metafile"; bytes: without what says so */
  KSV_VALUE_BYTES = 12,     /* bytes */
  KSV_VALUE_SEQUENCE = 13   /* a vector or an array: its elements */
} ksv_value_form;

/* A value. What its form does not name is 0, null or empty, but bytes, which are those of the set
 * without lengths and padding, where no more is said. The pointers are those of the properties. */
typedef struct ksv_property_value {
  uint32_t type;         /* as the format numbers it: 30 is VT_LPSTR; vectors have 0x1000 */
  int32_t form;          /* a ksv_value_form */
  int64_t integer;       /* a signed number */
  uint64_t natural;      /* an unsigned number */
  double real;           /* a number with a fraction */
  const char* text;      /* UTF-8 with a zero byte behind its end; may hold zero bytes */
  size_t text_length;    /* in bytes */
  const uint8_t* bytes;  /* as they stand there */
  size_t byte_count;     /* how many they are */
  size_t element_count;  /* of KSV_VALUE_SEQUENCE */
} ksv_property_value;

/* A property. The texts are those of the properties. */
typedef struct ksv_property {
  uint32_t id;       /* its number in the section */
  uint32_t reserved; /* 0 */
  const char* key;   /* of those that all kinds of documents have: "title", "lastSavedBy"; else null */
  const char* name;  /* the one that users have given it, UTF-8; else null */
  const char* note;  /* what is to be known of it beside the value, such as a code page that is declared
                        wrongly: one line of UTF-8; else null */
  uint64_t offset;   /* in the stream */
  ksv_property_value value;
} ksv_property;

/* A property by its place; null behind the last. */
KSV_API const ksv_property* ksv_properties_at(const ksv_properties* properties, size_t section,
                                              size_t index);
/* A property by its key, or by the name that users have given it; null: there is none. */
KSV_API const ksv_property* ksv_properties_find(const ksv_properties* properties, const char* key);

/* An element of a vector or an array. 0: there is none of that index, and *element stays as it was. Of
 * elements that are vectors themselves only the number of elements is told, of decimals, class ids
 * and clipboard values only the bytes. */
KSV_API int ksv_properties_element(const ksv_properties* properties, const ksv_property* property,
                                   size_t index, ksv_property_value* element);

/* What can be wrong with a set. */
typedef enum ksv_property_damage_kind {
  KSV_PROPERTY_NO_HEADER = 0,       /* the bytes do not begin as a set does */
  KSV_PROPERTY_SECTION_OUTSIDE = 1, /* a section begins behind the end */
  KSV_PROPERTY_SECTION_CUT = 2,     /* a section says that it is longer than what is there */
  KSV_PROPERTY_LIST_CUT = 3,        /* a list of sections or properties is cut */
  KSV_PROPERTY_OUTSIDE = 4,         /* a property begins outside its section */
  KSV_PROPERTY_BEYOND_SECTION = 5,  /* a property ends behind its section; it was read */
  KSV_PROPERTY_VALUE_CUT = 6,       /* a value is longer than what is there */
  KSV_PROPERTY_DICTIONARY_CUT = 7,  /* the names of users are longer than what is there */
  KSV_PROPERTY_UNKNOWN_TYPE = 8,    /* a type that the format does not have; its bytes were read */
  KSV_PROPERTY_TOO_DEEP = 9,        /* values within values beyond any sense */
  KSV_PROPERTY_TWICE = 10,          /* a number that an earlier property has */
  KSV_PROPERTY_OVERLAPPING = 11     /* properties lie upon each other; the rest was not read */
} ksv_property_damage_kind;

/* One thing that is wrong. The texts are those of the properties. */
typedef struct ksv_property_damage {
  int32_t kind;        /* a ksv_property_damage_kind */
  uint32_t has_id;     /* 1: it is about a property */
  uint32_t id;         /* its number */
  uint32_t reserved;   /* 0 */
  uint64_t offset;     /* in the stream */
  const char* path;    /* of the stream; "" of bytes */
  const char* message; /* in words, one line */
} ksv_property_damage;

/* How many different damages there are, and the one at an index; null behind the last. */
KSV_API size_t ksv_properties_damage_count(const ksv_properties* properties);
KSV_API const ksv_property_damage* ksv_properties_damage(const ksv_properties* properties,
                                                         size_t index);

KSV_EXTERN_C_END

#endif
