/* A message as the stream that the library reads it from. */
#ifndef KSV_SOURCE_STREAM_H
#define KSV_SOURCE_STREAM_H

#include "cli/mail_module/mail_module.h"

/* As the library declares it, whose headers are not everywhere. */
typedef struct _GMimeStream GMimeStream;

/* To be called once before any stream is made. */
void ksv_source_stream_prepare(void);

/* source stays the caller's. To be unreferenced. */
GMimeStream* ksv_source_stream_new(const ksv_mail_source* source);

#endif
