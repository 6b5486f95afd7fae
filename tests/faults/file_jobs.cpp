// Streams on paths, streams with a byte order, the log, and the tracker of memory.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_memory.h"
#include "ksv_path.h"
#include "tests/faults/job.h"

namespace ksv::test {
namespace {

constexpr char kInput[] = "input.txt";
constexpr char kOutput[] = "own_output_with_a_long_name.bin";
constexpr char kLongPath[] = "./././././././././input.txt";

void installInput() { writeInput(kInput, "first line\nsecond line\n"); }

// Two buffers of a stream, so that the second has to be asked for.
void installLargeInput() {
  std::string bytes;
  for (int i = 0; i < 1500; ++i) bytes += std::to_string(i) + "\n";
  writeInput(kInput, bytes);
}

int printed(FILE* stream, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = KSV_VfPrintf(stream, format, arguments);
  va_end(arguments);
  return result;
}

bool closes(Answer& answer, FILE* stream) {
  return answer.needs(KSV_FileClose(stream) == 0, "KSV_FileClose");
}

void readsWhole(Answer& answer) {
  FILE* stream = KSV_FileOpen(kInput, "rb");
  if (!answer.needs(stream != nullptr, "KSV_FileOpen")) return;
  answer.expects("KSV_FileTellSize", KSV_FileTellSize(stream), -1);
  static char buffer[16384];
  const int32_t count = KSV_FileRead(buffer, 1, sizeof buffer, stream);
  // A count that is too small is an error when the stream says so.
  if (answer.needs(std::ferror(stream) == 0, "KSV_FileRead"))
    answer.add("KSV_FileRead", std::string_view(buffer, static_cast<size_t>(count)));
  answer.expects("KSV_FileTell", KSV_FileTell(stream), -1);
  closes(answer, stream);
}

void readsPieces(Answer& answer) {
  FILE* stream = KSV_FileOpen(kInput, "rb");
  if (!answer.needs(stream != nullptr, "KSV_FileOpen")) return;
  char line[64];
  if (answer.needs(KSV_FileReadLine(line, sizeof line, stream) != nullptr, "KSV_FileReadLine"))
    answer.add("line", line);
  uint8_t byte = 0;
  uint16_t word = 0;
  uint32_t dword = 0;
  if (answer.expects("KSV_FileGetByte", KSV_FileGetByte(stream, &byte), 0)) answer.add("is", byte);
  if (answer.expects("KSV_FileGetWord", KSV_FileGetWord(stream, &word), 0)) answer.add("is", word);
  if (answer.expects("KSV_FileGetDWord", KSV_FileGetDWord(stream, &dword), 0))
    answer.add("is", dword);
  if (answer.needs(KSV_FileSeek(stream, 3, SEEK_SET) == 0, "KSV_FileSeek"))
    answer.expects("KSV_FileTell", KSV_FileTell(stream), -1);
  if (answer.needs(KSV_FileReadLine(line, sizeof line, stream) != nullptr, "KSV_FileReadLine"))
    answer.add("line", line);
  closes(answer, stream);
}

void writes(Answer& answer) {
  FILE* stream = KSV_FileOpen(kOutput, "wb+");
  if (!answer.needs(stream != nullptr, "KSV_FileOpen")) return;
  static char block[10000];
  std::memset(block, 'x', sizeof block);
  answer.expects("KSV_FileWrite", KSV_FileWrite(block, 100, 100, stream) == 100, 0);
  answer.expects("KSV_FilePutByte", KSV_FilePutByte(stream, 1), 0);
  answer.expects("KSV_FilePutWord", KSV_FilePutWord(stream, 2), 0);
  answer.expects("KSV_FilePutDWord", KSV_FilePutDWord(stream, 3), 0);
  answer.needs(printed(stream, "%d", 45) == 2, "KSV_VfPrintf");
  const bool isClosed = closes(answer, stream);
  // What all calls said to be there is there.
  const int64_t size = KSV_GetFileSizeByPath(kOutput);
  if (isClosed && answer.failedCall() == nullptr) answer.expects("size", size, -1);
  std::remove(kOutput);
}

void removes(Answer& answer) {
  FILE* stream = KSV_FileOpenA(kOutput, "wb");
  if (!answer.needs(stream != nullptr, "KSV_FileOpenA")) return;
  if (!closes(answer, stream)) return static_cast<void>(std::remove(kOutput));
  answer.expects("KSV_IsFileA", KSV_IsFileA(kOutput), 0);
  answer.expects("KSV_FileRemoveIfSizeIsZero", KSV_FileRemoveIfSizeIsZero(kOutput), -1);
  stream = KSV_FileOpenA(kOutput, "wb");
  if (!answer.needs(stream != nullptr && KSV_FileClose(stream) == 0, "KSV_FileOpenA")) {
    std::remove(kOutput);
    return;
  }
  answer.expects("KSV_FileRemoveA", KSV_FileRemoveA(kOutput), -1);
  stream = KSV_FileOpen(kOutput, "wb");
  if (!answer.needs(stream != nullptr && KSV_FileClose(stream) == 0, "KSV_FileOpen")) {
    std::remove(kOutput);
    return;
  }
  answer.expects("KSV_FileRemove", KSV_FileRemove(kOutput), -1);
  std::remove(kOutput);
}

KsvByteOrderStream* openOrdered(const char* path, const char* mode) {
  auto* stream = static_cast<KsvByteOrderStream*>(KSV_malloc(sizeof(KsvByteOrderStream)));
  if (stream == nullptr) return nullptr;
  *stream = {KSV_FileOpen(path, mode), 0};
  if (stream->stream != nullptr) return stream;
  KSV_free(stream);
  return nullptr;
}

void writesOrdered(Answer& answer) {
  KsvByteOrderStream* stream = openOrdered(kOutput, "wb");
  if (!answer.needs(stream != nullptr, "KSV_FileOpen")) return;
  answer.expects("KSV_X_FilePutByte", KSV_X_FilePutByte(stream, 0x31), 0);
  answer.expects("KSV_X_FilePutWord", KSV_X_FilePutWord(stream, 0x3233), 0);
  answer.expects("KSV_X_FilePutDWord", KSV_X_FilePutDWord(stream, 0x34353637), 0);
  answer.expects("KSV_X_FileWrite", KSV_X_FileWrite("89\nline\n", 1, 8, stream) == 8, 0);
  answer.needs(KSV_X_FileClose(stream) == 0, "KSV_X_FileClose");
}

void readsOrdered(Answer& answer) {
  KsvByteOrderStream* stream = openOrdered(kOutput, "rb");
  if (!answer.needs(stream != nullptr, "KSV_FileOpen")) return;
  uint8_t byte = 0;
  uint16_t word = 0;
  uint32_t dword = 0;
  char rest[3] = {};
  char line[16] = {};
  if (answer.expects("KSV_X_FileGetByte", KSV_X_FileGetByte(stream, &byte), 0))
    answer.add("is", byte);
  if (answer.expects("KSV_X_FileGetWord", KSV_X_FileGetWord(stream, &word), 0))
    answer.add("is", word);
  if (answer.expects("KSV_X_FileGetDWord", KSV_X_FileGetDWord(stream, &dword), 0))
    answer.add("is", dword);
  if (answer.needs(KSV_X_FileRead(rest, 1, 3, stream) == 3, "KSV_X_FileRead"))
    answer.add("is", std::string_view(rest, 3));
  if (answer.needs(KSV_X_FileReadLine(line, sizeof line, stream) != nullptr, "KSV_X_FileReadLine"))
    answer.add("is", line);
  answer.needs(KSV_X_FileSeek(stream, 0, SEEK_SET) == 0, "KSV_X_FileSeek");
  answer.needs(KSV_X_FileClose(stream) == 0, "KSV_X_FileClose");
}

void ordersStreams(Answer& answer) {
  writesOrdered(answer);
  if (answer.failedCall() == nullptr) readsOrdered(answer);
  std::remove(kOutput);
}

// Lines are written without a word; that some are missing is said when the log is closed.
void logs(Answer& answer) {
  char path[KSV_LOG_PATH_SIZE];
  if (!answer.needs(GetLogFileName(kLongPath, "_own_suffix_of_some_length", path) == 0,
                    "GetLogFileName")) {
    return;
  }
  answer.add("path", path);
  FILE* log = ksv_logfopen(KSV_LOG_ENABLED, path);
  if (!answer.needs(log != nullptr, "ksv_logfopen")) return;
  for (int32_t line = 0; line < 400; ++line)
    ksv_logfprintf(KSV_LOG_ENABLED, log, "line %d of the log\n", line);
  ksv_logfprint_path(KSV_LOG_ENABLED, log, kInput);
  const bool isWhole = answer.needs(ksv_logfclose(KSV_LOG_ENABLED, log) == 0, "ksv_logfclose");
  const int64_t size = KSV_GetFileSizeByPath(path);
  if (isWhole) answer.expects("size", size, -1);
  std::remove(path);
}

void allocates(Answer& answer) {
  char* block = static_cast<char*>(KSV_malloc(10));
  if (!answer.needs(block != nullptr, "KSV_malloc")) return;
  std::memcpy(block, "0123456789", 10);
  char* moved = static_cast<char*>(KSV_realloc(block, 5000));
  if (!answer.needs(moved != nullptr, "KSV_realloc")) return KSV_free(block);
  answer.add("moved", std::string_view(moved, 10));
  void* zeroed = KSV_calloc(10, 10);
  answer.needs(zeroed != nullptr, "KSV_calloc");
  KSV_free(zeroed);
  KSV_free(moved);
  KSV_memend(nullptr);
}

// What the tracker writes is a diagnosis, and the blocks go on without it.
void tracksBlocks(Answer& answer) {
  KSV_start_mem_dbg("a title");
  void* first = KSV_malloc_dbg(3, "a label that is longer than a short string", 1);
  void* second = KSV_calloc_dbg(3, 4, "another label that is longer than a short string", 2);
  void* moved = KSV_realloc_dbg(first, 300, "a third label that is longer than a short one", 3);
  answer.needs(first != nullptr && second != nullptr && moved != nullptr, "KSV_malloc_dbg");
  KSV_free_dbg(moved != nullptr ? moved : first);
  KSV_free_dbg(second);
  KSV_end_mem_dbg();
}

}  // namespace

void addFileJobs(Jobs& jobs) {
  const auto add = [&](const char* name, SimpleJob::Act act, SimpleJob::Install install = nullptr) {
    jobs.push_back(std::make_unique<SimpleJob>(name, act, install));
  };
  add("files_read_whole", readsWhole, installLargeInput);
  add("files_read_in_pieces", readsPieces, installInput);
  add("files_written", writes);
  add("files_removed", removes);
  add("files_with_a_byte_order", ordersStreams);
  add("log", logs, installInput);
  add("memory", allocates);
  add("memory_tracker", tracksBlocks);
}

}  // namespace ksv::test
