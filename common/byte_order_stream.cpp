#include <cstddef>
#include <cstdio>

#include "common/byte_order.h"
#include "ksv_file.h"
#include "ksv_memory.h"

static_assert(sizeof(KsvByteOrderStream) == 16);
static_assert(offsetof(KsvByteOrderStream, stream) == 0);
static_assert(offsetof(KsvByteOrderStream, nativeOrder) == 8);

namespace {

std::FILE* streamOf(const KsvByteOrderStream* s) { return s == nullptr ? nullptr : s->stream; }

// Turns a value round between the host's order and the stream's. What a read that
// came short left behind is turned round as well.
template <class Value>
Value inOrderOf(const KsvByteOrderStream* s, Value value) {
  return s == nullptr || s->nativeOrder != 0 ? value : ksv::reversed(value);
}

}  // namespace

int KSV_X_FileClose(KsvByteOrderStream* s) {
  const int result = KSV_FileClose(streamOf(s));
  KSV_free(s);
  return result;
}

int32_t KSV_X_FileRead(void* buffer, int32_t size, int32_t count, KsvByteOrderStream* s) {
  return KSV_FileRead(buffer, size, count, streamOf(s));
}

int32_t KSV_X_FileWrite(const void* buffer, int32_t size, int32_t count, KsvByteOrderStream* s) {
  return KSV_FileWrite(buffer, size, count, streamOf(s));
}

char* KSV_X_FileReadLine(char* buffer, int32_t capacity, KsvByteOrderStream* s) {
  return KSV_FileReadLine(buffer, capacity, streamOf(s));
}

int KSV_X_FileSeek(KsvByteOrderStream* s, int32_t offset, int origin) {
  return KSV_FileSeek(streamOf(s), offset, origin);
}

int KSV_X_FileGetByte(KsvByteOrderStream* s, uint8_t* value) {
  return KSV_FileGetByte(streamOf(s), value);
}

int KSV_X_FileGetWord(KsvByteOrderStream* s, uint16_t* value) {
  const int result = KSV_FileGetWord(streamOf(s), value);
  if (value != nullptr) *value = inOrderOf(s, *value);
  return result;
}

int KSV_X_FileGetDWord(KsvByteOrderStream* s, uint32_t* value) {
  const int result = KSV_FileGetDWord(streamOf(s), value);
  if (value != nullptr) *value = inOrderOf(s, *value);
  return result;
}

int KSV_X_FilePutByte(KsvByteOrderStream* s, uint8_t value) {
  return KSV_FilePutByte(streamOf(s), value);
}

int KSV_X_FilePutWord(KsvByteOrderStream* s, uint16_t value) {
  return KSV_FilePutWord(streamOf(s), inOrderOf(s, value));
}

int KSV_X_FilePutDWord(KsvByteOrderStream* s, uint32_t value) {
  return KSV_FilePutDWord(streamOf(s), inOrderOf(s, value));
}
