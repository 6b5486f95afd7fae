/* The mail reader: what a message consists of, by GMime. */
#include "cli/mail_module/mail_module.h"

#include <gmime/gmime.h>
#include <string.h>

#include "cli/mail_module/source_stream.h"
#include "cli/mail_module/transfer_errors.h"

enum { kBlock = 64 * 1024 };

typedef struct Run {
  const ksv_mail_visitor* visitor;
  const ksv_mail_limits* limits;
  uint32_t parts; /* that have been shown */
  ksv_mail_answer answer;
  int is_told_of_parts;
  GString* path;
} Run;

static int goes_on(const Run* run) { return run->answer == KSV_MAIL_GO_ON; }

static void tell(const Run* run, gint64 offset, const char* reason) {
  run->visitor->problem(run->visitor->context, offset, reason);
}

/* ---- Problems. Of headers the command tells what it has read of them. ---- */

static const char* reason_of(GMimeParserWarning warning) {
  switch (warning) {
    case GMIME_WARN_INVALID_CONTENT_TYPE:
      return "a content type that is none";
    case GMIME_WARN_MALFORMED_MULTIPART:
      return "a multipart without parts";
    case GMIME_WARN_TRUNCATED_MESSAGE:
      return "the end boundary of a multipart is missing";
    case GMIME_CRIT_INVALID_HEADER_NAME:
      return "a line in a header that is no field";
    case GMIME_CRIT_CONFLICTING_HEADER:
      return "a field that may stand once stands there twice";
    case GMIME_CRIT_MULTIPART_WITHOUT_BOUNDARY:
      return "a multipart that names no boundary";
    case GMIME_CRIT_NESTING_OVERFLOW:
      return "parts that are nested too deep";
    case GMIME_WARN_PART_WITHOUT_CONTENT:
    case GMIME_CRIT_PART_WITHOUT_HEADERS_OR_CONTENT:
      return "a part that ends in its header";
    default:
      return NULL;
  }
}

static void on_warning(gint64 offset, GMimeParserWarning warning, const gchar* item,
                       gpointer context) {
  const Run* run = context;
  const char* reason = reason_of(warning);
  (void)item;
  if (reason != NULL) tell(run, offset, reason);
}

/* ---- Headers ---- */

static void show_header(Run* run, GMimeHeader* header) {
  run->answer =
      run->visitor->header(run->visitor->context, g_mime_header_get_raw_name(header),
                           g_mime_header_get_raw_value(header), g_mime_header_get_offset(header));
}

static GMimeHeader* header_at(GMimeHeaderList* list, int index) {
  const int count = list == NULL ? 0 : g_mime_header_list_get_count(list);
  return index < count ? g_mime_header_list_get_header_at(list, index) : NULL;
}

/* The library hands the fields of a message out in two lists, those of its content apart. Both are
 * in the order of their places. */
static void show_headers(Run* run, GMimeHeaderList* first, GMimeHeaderList* second) {
  int i = 0;
  int k = 0;
  while (goes_on(run)) {
    GMimeHeader* a = header_at(first, i);
    GMimeHeader* b = header_at(second, k);
    if (a == NULL && b == NULL) return;
    const int takes_first =
        b == NULL || (a != NULL && g_mime_header_get_offset(a) <= g_mime_header_get_offset(b));
    show_header(run, takes_first ? a : b);
    if (takes_first)
      ++i;
    else
      ++k;
  }
}

/* ---- Contents ---- */

static TransferEncoding encoding_of(GMimeContentEncoding encoding) {
  if (encoding == GMIME_CONTENT_ENCODING_BASE64) return TRANSFER_BASE64;
  if (encoding == GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE) return TRANSFER_QUOTED_PRINTABLE;
  return TRANSFER_IDENTITY;
}

typedef struct Decoding {
  GMimeEncoding encoding;
  TransferErrors errors;
  GChecksum* checksum;
  char* decoded;
  uint64_t size;
} Decoding;

static void hand_on(Run* run, Decoding* decoding, size_t size) {
  if (size == 0 || !goes_on(run)) return;
  decoding->size += size;
  g_checksum_update(decoding->checksum, (const guchar*)decoding->decoded, (gssize)size);
  run->answer = run->visitor->content(run->visitor->context, decoding->decoded, size);
}

static void decode_stream(Run* run, GMimeStream* stream, Decoding* decoding) {
  char* block = g_malloc(kBlock);
  ssize_t count;
  g_mime_stream_reset(stream);
  while (goes_on(run) && (count = g_mime_stream_read(stream, block, kBlock)) > 0) {
    const size_t size = (size_t)count;
    ksv_transfer_errors_take(&decoding->errors, block, size);
    hand_on(run, decoding,
            g_mime_encoding_step(&decoding->encoding, block, size, decoding->decoded));
  }
  hand_on(run, decoding, g_mime_encoding_flush(&decoding->encoding, block, 0, decoding->decoded));
  g_free(block);
}

static void show_content(Run* run, GMimePart* part) {
  GMimeDataWrapper* wrapper = g_mime_part_get_content(part);
  Decoding decoding = {.checksum = g_checksum_new(G_CHECKSUM_SHA256)};
  if (wrapper != NULL) {
    const GMimeContentEncoding encoding = g_mime_data_wrapper_get_encoding(wrapper);
    g_mime_encoding_init_decode(&decoding.encoding, encoding);
    decoding.errors.encoding = encoding_of(encoding);
    decoding.decoded = g_malloc(g_mime_encoding_outlen(&decoding.encoding, kBlock));
    decode_stream(run, g_mime_data_wrapper_get_stream(wrapper), &decoding);
    g_free(decoding.decoded);
  }
  if (goes_on(run)) {
    const ksv_mail_content_end end = {.size = decoding.size,
                                      .bad_bytes = ksv_transfer_errors_end(&decoding.errors),
                                      .sha256 = g_checksum_get_string(decoding.checksum)};
    run->answer = run->visitor->end_content(run->visitor->context, &end);
  }
  g_checksum_free(decoding.checksum);
}

/* ---- Parts ---- */

static void show_part(Run* run, GMimeObject* object, GMimeMessage* owner, uint32_t depth);

static void show_child(Run* run, GMimeObject* object, GMimeMessage* owner, uint32_t depth,
                       int number) {
  const gsize length = run->path->len;
  g_string_append_printf(run->path, ".%d", number);
  show_part(run, object, owner, depth);
  g_string_truncate(run->path, length);
}

static void show_children(Run* run, GMimeObject* object, uint32_t depth) {
  if (GMIME_IS_MULTIPART(object)) {
    GMimeMultipart* multipart = (GMimeMultipart*)object;
    const int count = g_mime_multipart_get_count(multipart);
    for (int i = 0; i < count && goes_on(run) && !run->is_told_of_parts; ++i)
      show_child(run, g_mime_multipart_get_part(multipart, i), NULL, depth, i + 1);
  } else if (GMIME_IS_MESSAGE_PART(object)) {
    GMimeMessage* message = g_mime_message_part_get_message((GMimeMessagePart*)object);
    GMimeObject* content = message == NULL ? NULL : g_mime_message_get_mime_part(message);
    if (content != NULL) show_child(run, content, message, depth, 1);
  }
}

static void begin_part(Run* run, GMimeObject* object) {
  GMimeContentType* type = g_mime_object_get_content_type(object);
  char* name = g_mime_content_type_get_mime_type(type);
  char* lowered = g_ascii_strdown(name, -1);
  const ksv_mail_part part = {.path = run->path->str,
                              .type = lowered,
                              .kind = GMIME_IS_MULTIPART(object)      ? KSV_MAIL_MULTIPART
                                      : GMIME_IS_MESSAGE_PART(object) ? KSV_MAIL_MESSAGE
                                                                      : KSV_MAIL_LEAF};
  run->answer = run->visitor->begin_part(run->visitor->context, &part);
  g_free(lowered);
  g_free(name);
}

/* Whether the part is beyond the bounds, which is told once. */
static int is_too_much(Run* run, uint32_t depth) {
  if (depth > run->limits->depth) {
    tell(run, -1, "parts that are nested too deep");
    return 1;
  }
  if (run->parts < run->limits->parts) return 0;
  if (!run->is_told_of_parts) tell(run, -1, "too many parts");
  run->is_told_of_parts = 1;
  return 1;
}

/* owner: the message whose content the part is, if it is one's. */
static void show_part(Run* run, GMimeObject* object, GMimeMessage* owner, uint32_t depth) {
  if (is_too_much(run, depth)) return;
  ++run->parts;
  begin_part(run, object);
  if (!goes_on(run)) return;
  GMimeHeaderList* fields =
      owner == NULL ? NULL : g_mime_object_get_header_list((GMimeObject*)owner);
  show_headers(run, fields, g_mime_object_get_header_list(object));
  if (goes_on(run) && GMIME_IS_PART(object)) show_content(run, (GMimePart*)object);
  if (goes_on(run)) show_children(run, object, depth + 1);
  if (goes_on(run)) run->answer = run->visitor->end_part(run->visitor->context);
}

/* ---- The interface ---- */

static void be_silent(const gchar* domain, GLogLevelFlags level, const gchar* text,
                      gpointer unused) {
  (void)domain;
  (void)level;
  (void)text;
  (void)unused;
}

/* What the library tells its developers is nothing to users. */
static void prepare_once(void) {
  static gsize is_prepared = 0;
  if (!g_once_init_enter(&is_prepared)) return;
  g_mime_init();
  ksv_source_stream_prepare();
  g_log_set_default_handler(be_silent, NULL);
  g_once_init_leave(&is_prepared, 1);
}

static void read_message(const ksv_mail_source* source, const ksv_mail_visitor* visitor,
                         const ksv_mail_limits* limits) {
  prepare_once();
  Run run = {.visitor = visitor, .limits = limits, .path = g_string_new("1")};
  GMimeParserOptions* options = g_mime_parser_options_new();
  g_mime_parser_options_set_warning_callback(options, on_warning, &run);
  GMimeStream* stream = ksv_source_stream_new(source);
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  g_mime_parser_set_persist_stream(parser, TRUE);
  GMimeMessage* message = g_mime_parser_construct_message(parser, options);
  GMimeObject* content = message == NULL ? NULL : g_mime_message_get_mime_part(message);
  if (content != NULL)
    show_part(&run, content, message, 1);
  else
    tell(&run, 0, "this is no message");
  if (message != NULL) g_object_unref(message);
  g_object_unref(parser);
  g_object_unref(stream);
  g_mime_parser_options_free(options);
  g_string_free(run.path, TRUE);
}

static int32_t read_date(const char* value, int64_t* seconds, int32_t* minutes_ahead) {
  prepare_once();
  GDateTime* date = g_mime_utils_header_decode_date(value);
  if (date == NULL) return 0;
  *seconds = g_date_time_to_unix(date);
  *minutes_ahead = (int32_t)(g_date_time_get_utc_offset(date) / G_TIME_SPAN_MINUTE);
  g_date_time_unref(date);
  return 1;
}

const ksv_mail_reader* ksv_mail_reader_of_module(void) {
  static const ksv_mail_reader kReader = {
      .interface_number = KSV_MAIL_INTERFACE, .read = read_message, .date = read_date};
  return &kReader;
}
