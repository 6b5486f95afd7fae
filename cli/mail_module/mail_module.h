/* What the command and its mail reader, ksv_mail.so, tell each other.
 *
 * The reader stands in a module of its own, since the library that takes messages apart brings more
 * shared libraries than the rest of the command takes to start. Both sides speak C: the command has
 * its C++ library linked in, and a second one must not meet it in one process. So nothing is thrown
 * across: a function of the visitor keeps what it has caught, answers KSV_MAIL_STOP, and the
 * command throws it once the reader has returned.
 *
 * The reader converts nothing. Headers come as the bytes that stand there, contents without their
 * transfer encoding and otherwise as they are. */
#ifndef KSV_MAIL_MODULE_H
#define KSV_MAIL_MODULE_H

#include <stddef.h>
#include <stdint.h>

#include "ksv_api.h"

KSV_EXTERN_C_BEGIN

/* Changes with everything that changes below: both sides come from one build, or do not meet. */
enum { KSV_MAIL_INTERFACE = 1 };

/* A message, in bytes that can be read from any place. */
typedef struct ksv_mail_source {
  void* context;
  uint64_t size;
  /* How many bytes came; 0: there are none at this place, or they cannot be read. */
  size_t (*read)(void* context, uint64_t offset, char* buffer, size_t size);
} ksv_mail_source;

typedef enum ksv_mail_kind {
  KSV_MAIL_LEAF = 0,      /* has a content */
  KSV_MAIL_MULTIPART = 1, /* has parts */
  KSV_MAIL_MESSAGE = 2    /* has a message, as its only part */
} ksv_mail_kind;

/* The pointers hold during the call. */
typedef struct ksv_mail_part {
  const char* path; /* "1"; of its parts "1.1", "1.2" */
  const char* type; /* "text/plain", in small letters; the default where nothing else is said */
  int32_t kind;     /* a ksv_mail_kind */
} ksv_mail_part;

typedef struct ksv_mail_content_end {
  uint64_t size;      /* of the content, decoded */
  uint64_t bad_bytes; /* of the transfer encoding */
  const char* sha256; /* of the content, in hexadecimal; null of one that was skipped */
} ksv_mail_content_end;

typedef enum ksv_mail_answer {
  KSV_MAIL_GO_ON = 0,
  KSV_MAIL_STOP = 1,
} ksv_mail_answer;

/* Called in this order for each part: begin_part; header for each field; content for each piece
 * and end_content, of a leaf; then its parts; end_part. Problems come at any time. */
typedef struct ksv_mail_visitor {
  void* context;
  ksv_mail_answer (*begin_part)(void* context, const ksv_mail_part* part);
  /* value: as it stands behind the colon, folded, with its line end. */
  ksv_mail_answer (*header)(void* context, const char* name, const char* value, int64_t offset);
  ksv_mail_answer (*content)(void* context, const char* bytes, size_t size);
  ksv_mail_answer (*end_content)(void* context, const ksv_mail_content_end* end);
  ksv_mail_answer (*end_part)(void* context);
  /* offset: in the message; -1 where it is not known. */
  void (*problem)(void* context, int64_t offset, const char* reason);
} ksv_mail_visitor;

typedef struct ksv_mail_limits {
  uint32_t depth; /* of parts in parts; what lies deeper is not shown */
  uint32_t parts; /* of a message */
} ksv_mail_limits;

typedef struct ksv_mail_reader {
  uint32_t interface_number; /* KSV_MAIL_INTERFACE */
  /* Takes a message apart. May be called from several threads. */
  void (*read)(const ksv_mail_source* source, const ksv_mail_visitor* visitor,
               const ksv_mail_limits* limits);
  /* The time that a Date field names, in seconds since 1970, and the minutes by which its clock is
   * ahead of UTC. 0 when it names none. */
  int32_t (*date)(const char* value, int64_t* seconds, int32_t* minutes_ahead);
} ksv_mail_reader;

/* The one function that the module exports. */
#define KSV_MAIL_READER_FUNCTION "ksv_mail_reader_of_module"
typedef const ksv_mail_reader* (*ksv_mail_reader_function)(void);

KSV_API const ksv_mail_reader* ksv_mail_reader_of_module(void);

KSV_EXTERN_C_END

#endif
