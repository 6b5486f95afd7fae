/* Reads the title of a compound document, and the first bytes of one of its streams. The
 * document's path is the first argument. */
#include <stdio.h>
#include <string.h>

#include "ksv_cconv.h"
#include "ksv_ole.h"

static int showTitle(const char* path) {
  static char record[KSV_SUMMARY_RECORD_SIZE];
  const uint16_t parameters[3] = {9003, 0, 932};
  KsvSummarySettings settings = {0};
  strcpy(settings.targetCharset, "UTF-8");
  strcpy(settings.language, "Japanese");
  settings.outputBigEndian = 1;
  if (SummaryInfo(path, &settings, record, parameters) != KSV_SUMMARY_DONE) return 0;
  printf("%s\n", record + KSV_SUMMARY_TITLE);
  return 1;
}

static int showStream(const char* path, const char* name) {
  uint8_t bytes[8];
  uint32_t count = 0;
  uint32_t i;
  Ksv2OleStream* stream;
  Ksv2Ole* file = KSV_2OLEopen(path);
  if (file == NULL) return 0;
  stream = KSV_2OLEopenStream(file, name);
  if (stream != NULL) {
    count = KSV_2OLEreadStream(stream, bytes, (uint32_t)sizeof bytes);
    KSV_2OLEcloseStream(stream);
  }
  KSV_2OLEclose(file);
  printf("%s:", name);
  for (i = 0; i < count; ++i) printf(" %02X", (unsigned)bytes[i]);
  printf("\n");
  return count > 0;
}

int main(int argc, char** argv) {
  int shown;
  if (argc < 2) return 1;
  startProcess();
  shown = cconvLoadRule() == 1 && showTitle(argv[1]) && showStream(argv[1], "WordDocument");
  endProcess();
  return shown ? 0 : 1;
}
