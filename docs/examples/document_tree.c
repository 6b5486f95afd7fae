/* Tells what is in a compound document, and the first bytes of one of its streams. The document's
 * path is the first argument. */
#include <inttypes.h>
#include <stdio.h>

#include "ksv.h"

static int depthOf(const ksv_document* document, const ksv_entry* entry) {
  int depth = 0;
  while (entry->parent != KSV_NO_ENTRY) {
    entry = ksv_document_entry(document, entry->parent);
    ++depth;
  }
  return depth;
}

static void showTree(const ksv_document* document) {
  const ksv_entry* entry;
  size_t i;
  for (i = 1; (entry = ksv_document_entry(document, i)) != NULL; ++i)
    printf("%*s%s  %" PRIu64 "\n", 2 * depthOf(document, entry), "", entry->name, entry->size);
}

static void showBytes(ksv_document* document, const char* path) {
  unsigned char bytes[8];
  size_t length;
  size_t i;
  uint32_t index;
  ksv_error error;
  if (ksv_document_find(document, path, &index, &error) != KSV_OK || index == KSV_NO_ENTRY) return;
  if (ksv_document_read(document, index, 0, bytes, sizeof bytes, &length, &error) != KSV_OK)
    printf("%s (byte %" PRIu64 ")\n", error.message, error.offset);
  printf("%s:", path);
  for (i = 0; i < length; ++i) printf(" %02X", (unsigned)bytes[i]);
  printf("\n");
}

static void showDamages(ksv_document* document) {
  ksv_damage damage;
  size_t i;
  if (ksv_document_check(document, NULL) != KSV_OK) return;
  for (i = 0; ksv_document_damage(document, i, &damage); ++i)
    printf("it %s (byte %" PRIu64 ")\n", damage.message, damage.offset);
  printf("%" PRIu64 " damages\n", (uint64_t)ksv_document_damage_count(document));
}

int main(int argc, char** argv) {
  ksv_document* document;
  ksv_error error;
  if (argc < 2) return 1;
  if (ksv_document_open(argv[1], &document, &error) != KSV_OK) {
    fprintf(stderr, "%s\n", error.message);
    return 1;
  }
  showTree(document);
  showBytes(document, "worddocument");
  showDamages(document);
  ksv_document_close(document);
  return 0;
}
