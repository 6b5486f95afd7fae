#include "column.h"

#include <stdlib.h>
#include <string.h>

enum { kGuessOfLongestGrowth = 2, kSmallestRoom = 4096 };

static int64_t offsetAt(const ksv_column* column, int64_t row) {
  if (column->offset_width == 4) return ((const int32_t*)column->offsets)[row];
  return ((const int64_t*)column->offsets)[row];
}

static int hasValue(const ksv_column* column, int64_t row) {
  const int64_t bit = column->first_bit + row;
  return column->validity == NULL || (column->validity[bit / 8] >> (bit % 8) & 1) != 0;
}

/* False where an offset cannot tell the place. */
static int writeOffset(const ksv_column* column, ksv_converted_column* converted, int64_t row) {
  if (column->offset_width == 8) {
    ((int64_t*)converted->offsets)[row] = converted->length;
    return 1;
  }
  if (converted->length > INT32_MAX) return 0;
  ((int32_t*)converted->offsets)[row] = (int32_t)converted->length;
  return 1;
}

static int makeRoom(ksv_converted_column* converted, size_t* capacity, size_t needed) {
  uint8_t* larger;
  size_t room = *capacity + *capacity / 2;
  if (room < (size_t)converted->length + needed) room = (size_t)converted->length + needed;
  larger = realloc(converted->data, room);
  if (larger == NULL) return 0;
  converted->data = larger;
  *capacity = room;
  return 1;
}

static int begin(const ksv_column* column, ksv_converted_column* converted, size_t* capacity) {
  const size_t length = (size_t)(offsetAt(column, column->rows) - offsetAt(column, 0));
  memset(converted, 0, sizeof *converted);
  converted->failed_row = -1;
  *capacity = length * kGuessOfLongestGrowth + kSmallestRoom;
  converted->data = malloc(*capacity);
  converted->offsets = malloc((size_t)(column->rows + 1) * (size_t)column->offset_width);
  converted->validity = calloc((size_t)column->rows / 8 + 1, 1);
  return converted->data != NULL && converted->offsets != NULL && converted->validity != NULL;
}

/* The text of one row goes behind those before it. */
static ksv_result convertRow(const ksv_plan* plan, const ksv_column* column, int64_t row,
                             ksv_converted_column* converted, size_t* capacity, ksv_error* error) {
  const int64_t first = offsetAt(column, row);
  const size_t length = (size_t)(offsetAt(column, row + 1) - first);
  for (;;) {
    size_t written = 0;
    const ksv_result result = ksv_plan_convert_into(
        plan, column->data + first, length, converted->data + converted->length,
        *capacity - (size_t)converted->length, &written, error);
    if (result == KSV_OK) converted->length += (int64_t)written;
    if (result != KSV_NO_ROOM) return result;
    if (!makeRoom(converted, capacity, written)) return KSV_NO_MEMORY;
  }
}

/* Of a value, and not of what the system lacks, which the next value would lack as well. */
static int isAboutText(ksv_result result) {
  return result == KSV_INVALID || result == KSV_TRUNCATED || result == KSV_UNMAPPABLE ||
         result == KSV_TOO_LONG;
}

static void noteFailure(ksv_converted_column* converted, int64_t row, const ksv_error* error) {
  if (converted->failed_row >= 0) return;
  converted->failed_row = row;
  converted->error = *error;
}

ksv_result ksv_column_convert(const ksv_plan* plan, const ksv_column* column,
                              ksv_converted_column* converted) {
  size_t capacity = 0;
  int64_t row;
  if (!begin(column, converted, &capacity)) return KSV_NO_MEMORY;
  if (!writeOffset(column, converted, 0)) return KSV_TOO_LONG;
  for (row = 0; row < column->rows; ++row) {
    ksv_error error;
    ksv_result result = KSV_OK;
    const int isGiven = hasValue(column, row);
    if (isGiven) result = convertRow(plan, column, row, converted, &capacity, &error);
    if (result != KSV_OK) {
      if (!isAboutText(result)) return result;
      noteFailure(converted, row, &error);
      if (column->stops) return result;
    }
    if (isGiven && result == KSV_OK)
      converted->validity[row / 8] |= (uint8_t)(1U << (row % 8));
    else
      ++converted->nulls;
    if (!writeOffset(column, converted, row + 1)) return KSV_TOO_LONG;
  }
  return KSV_OK;
}

void ksv_column_free(ksv_converted_column* converted) {
  free(converted->data);
  free(converted->offsets);
  free(converted->validity);
  memset(converted, 0, sizeof *converted);
}
