#include "room.h"

int64_t ksv_room_convert(const ksv_plan* plan, const void* input, size_t length, ksv_room* room) {
  size_t written = 0;
  const ksv_result result = ksv_plan_convert_into(plan, input, length, room->data, room->capacity,
                                                  &written, &room->error);
  if (result == KSV_OK) return (int64_t)written;
  room->result = (int32_t)result;
  return -1;
}
