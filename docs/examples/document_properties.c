/* Shows what kind of document a file is, and its properties by the names that people know. The
 * document's path is the first argument. */
#include <stdio.h>

#include "ksv.h"

static void show(const ksv_property* property) {
  const ksv_property_value* value = &property->value;
  if (property->key == NULL) return;
  if (value->form == KSV_VALUE_TEXT) printf("%s: %s\n", property->key, value->text);
  if (value->form == KSV_VALUE_INTEGER)
    printf("%s: %lld\n", property->key, (long long)value->integer);
}

int main(int argc, char** argv) {
  ksv_document* document;
  ksv_document_kind kind;
  ksv_properties* properties;
  ksv_error error;
  size_t section, index;
  if (argc < 2 || ksv_document_open(argv[1], &document, &error) != KSV_OK) return 1;
  if (ksv_document_get_kind(document, &kind, &error) == KSV_OK && kind.description != NULL)
    printf("%s\n", kind.description);
  if (ksv_document_properties(document, KSV_PROPERTIES_KNOWN, &properties, &error) == KSV_OK) {
    for (section = 0; section < ksv_properties_section_count(properties); ++section)
      for (index = 0; ksv_properties_at(properties, section, index) != NULL; ++index)
        show(ksv_properties_at(properties, section, index));
    ksv_properties_free(properties);
  }
  ksv_document_close(document);
  return 0;
}
