/* Counts what does not belong into a transfer encoding. Decoders pass over it. */
#ifndef KSV_TRANSFER_ERRORS_H
#define KSV_TRANSFER_ERRORS_H

#include <stddef.h>
#include <stdint.h>

typedef enum TransferEncoding {
  TRANSFER_IDENTITY,
  TRANSFER_BASE64,
  TRANSFER_QUOTED_PRINTABLE
} TransferEncoding;

/* All zero but for the encoding in the beginning. */
typedef struct TransferErrors {
  TransferEncoding encoding;
  uint64_t count;
  uint64_t digits;   /* of base64 */
  int behind_equals; /* of quoted-printable: 1 behind a '=', 2 behind its first digit */
} TransferErrors;

void ksv_transfer_errors_take(TransferErrors* errors, const char* bytes, size_t size);
/* Behind the last byte. */
uint64_t ksv_transfer_errors_end(TransferErrors* errors);

#endif
