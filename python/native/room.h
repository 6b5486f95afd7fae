/*
 * room.h : conversion into a room that is used again and again. A short text waits for nothing else
 * than this call, so it takes and gives as little as it can.
 */
#ifndef KSV_PYTHON_ROOM_H
#define KSV_PYTHON_ROOM_H

#include "ksv.h"

typedef struct ksv_room {
  char* data;
  size_t capacity;
  int32_t result;  /* a ksv_result, where the call has failed */
  ksv_error error; /* about it */
} ksv_room;

/* How many bytes of the room the text has taken; -1: it could not be converted, or is longer. */
int64_t ksv_room_convert(const ksv_plan* plan, const void* input, size_t length, ksv_room* room);

#endif
