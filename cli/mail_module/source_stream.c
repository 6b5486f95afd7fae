#include "cli/mail_module/source_stream.h"

#include <gmime/gmime.h>

typedef struct SourceStream {
  GMimeStream parent;
  const ksv_mail_source* source;
} SourceStream;

typedef struct SourceStreamClass {
  GMimeStreamClass parent;
} SourceStreamClass;

static GType stream_type = 0;

static SourceStream* self(GMimeStream* stream) { return (SourceStream*)stream; }

static gint64 end_of(GMimeStream* stream) {
  return stream->bound_end == -1 ? (gint64)self(stream)->source->size : stream->bound_end;
}

static ssize_t stream_read(GMimeStream* stream, char* buffer, size_t size) {
  const gint64 left = end_of(stream) - stream->position;
  if (left <= 0) return 0;
  const ksv_mail_source* source = self(stream)->source;
  const size_t wanted = (guint64)left < size ? (size_t)left : size;
  const size_t count = source->read(source->context, (uint64_t)stream->position, buffer, wanted);
  stream->position += (gint64)count;
  return (ssize_t)count;
}

static gboolean stream_is_at_end(GMimeStream* stream) { return stream->position >= end_of(stream); }

static int stream_reset(GMimeStream* stream) {
  stream->position = stream->bound_start;
  return 0;
}

static gint64 stream_seek(GMimeStream* stream, gint64 offset, GMimeSeekWhence whence) {
  gint64 place = offset;
  if (whence == GMIME_STREAM_SEEK_CUR) place += stream->position;
  if (whence == GMIME_STREAM_SEEK_END) place += end_of(stream);
  if (place < stream->bound_start || place > end_of(stream)) return -1;
  stream->position = place;
  return place;
}

static gint64 stream_tell(GMimeStream* stream) { return stream->position; }

static gint64 stream_length(GMimeStream* stream) { return end_of(stream) - stream->bound_start; }

static GMimeStream* new_stream(const ksv_mail_source* source, gint64 start, gint64 end) {
  SourceStream* stream = g_object_new(stream_type, NULL);
  stream->source = source;
  g_mime_stream_construct(&stream->parent, start, end);
  return &stream->parent;
}

static GMimeStream* stream_substream(GMimeStream* stream, gint64 start, gint64 end) {
  return new_stream(self(stream)->source, start, end);
}

/* Nothing is written, and there is nothing to close: the message is the caller's. */
static ssize_t stream_write(GMimeStream* stream, const char* buffer, size_t size) {
  (void)stream;
  (void)buffer;
  (void)size;
  return -1;
}

static int stream_do_nothing(GMimeStream* stream) {
  (void)stream;
  return 0;
}

static void init_class(gpointer class_data, gpointer unused) {
  GMimeStreamClass* functions = class_data;
  (void)unused;
  functions->read = stream_read;
  functions->write = stream_write;
  functions->flush = stream_do_nothing;
  functions->close = stream_do_nothing;
  functions->eos = stream_is_at_end;
  functions->reset = stream_reset;
  functions->seek = stream_seek;
  functions->tell = stream_tell;
  functions->length = stream_length;
  functions->substream = stream_substream;
}

void ksv_source_stream_prepare(void) {
  static const GTypeInfo kInfo = {.class_size = sizeof(SourceStreamClass),
                                  .class_init = init_class,
                                  .instance_size = sizeof(SourceStream)};
  stream_type = g_type_register_static(GMIME_TYPE_STREAM, "KsvSourceStream", &kInfo, 0);
}

GMimeStream* ksv_source_stream_new(const ksv_mail_source* source) {
  return new_stream(source, 0, -1);
}
