#include "cli/mail_module/transfer_errors.h"

#include <glib.h>

static int is_blank(char c) { return c == ' ' || c == '\t'; }

static void take_base64(TransferErrors* errors, char c) {
  if (g_ascii_isalnum(c) || c == '+' || c == '/')
    ++errors->digits;
  else if (c != '=' && c != '\r' && c != '\n' && !is_blank(c))
    ++errors->count;
}

/* Behind a '=' stand two hexadecimal digits, or a line end. */
static void take_quoted(TransferErrors* errors, char c) {
  const int is_digit = g_ascii_isxdigit(c);
  switch (errors->behind_equals) {
    case 0:
      errors->behind_equals = c == '=';
      return;
    case 1:
      errors->behind_equals = is_digit ? 2 : 0;
      errors->count += !is_digit && c != '\r' && c != '\n';
      return;
    default:
      errors->behind_equals = 0;
      errors->count += !is_digit;
  }
}

void ksv_transfer_errors_take(TransferErrors* errors, const char* bytes, size_t size) {
  if (errors->encoding == TRANSFER_IDENTITY) return;
  void (*take)(TransferErrors*, char) =
      errors->encoding == TRANSFER_BASE64 ? take_base64 : take_quoted;
  for (size_t i = 0; i < size; ++i) take(errors, bytes[i]);
}

uint64_t ksv_transfer_errors_end(TransferErrors* errors) {
  /* A digit alone, which is no byte; a '=' that waits for more than the end. */
  if (errors->encoding == TRANSFER_BASE64 && errors->digits % 4 == 1) ++errors->count;
  if (errors->behind_equals == 2) ++errors->count;
  return errors->count;
}
