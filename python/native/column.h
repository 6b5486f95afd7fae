/*
 * column.h : conversion of a column of Arrow in one call: what lies in its buffers goes to buffers
 * of the same form, and no value becomes an object of Python.
 */
#ifndef KSV_PYTHON_COLUMN_H
#define KSV_PYTHON_COLUMN_H

#include <stdint.h>

#include "ksv.h"

/* The buffers of a binary column. */
typedef struct ksv_column {
  const uint8_t* data;
  const void* offsets;  /* rows + 1 of them, of the first row on */
  int32_t offset_width; /* bytes of an offset: 4 or 8 */
  int32_t stops; /* 1: the first value that cannot be converted ends it; 0: it becomes null */
  const uint8_t* validity; /* a bit a row, the lowest first; null: all rows have a value */
  int64_t first_bit;       /* of the first row in it */
  int64_t rows;
} ksv_column;

/* The buffers of the text column. Offsets have the width that they had. */
typedef struct ksv_converted_column {
  uint8_t* data;
  int64_t length; /* of the data, in bytes */
  void* offsets;
  uint8_t* validity;
  int64_t nulls;
  int64_t failed_row; /* the first whose value cannot be converted; -1: none */
  ksv_error error;    /* about that value */
} ksv_converted_column;

/* KSV_TOO_LONG: the texts are longer than offsets of 4 bytes can tell. Whatever it answers,
 * ksv_column_free wants the result. */
ksv_result ksv_column_convert(const ksv_plan* plan, const ksv_column* column,
                              ksv_converted_column* converted);

void ksv_column_free(ksv_converted_column* converted);

#endif
