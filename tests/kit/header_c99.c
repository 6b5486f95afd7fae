/* ksv.h as programs in C of 1999 see it, and the layout that they are compiled for. */
#include "ksv.h"

#define HOLDS(name, condition) typedef char name[(condition) ? 1 : -1]

HOLDS(size_of_error, sizeof(ksv_error) == 312);
HOLDS(place_of_message, offsetof(ksv_error, message) == 52);
HOLDS(size_of_options, sizeof(ksv_options) == 80);
HOLDS(place_of_invalid_text, offsetof(ksv_options, invalid_text) == 32);
HOLDS(size_of_problem, sizeof(ksv_problem) == 32);
HOLDS(size_of_counts, sizeof(ksv_counts) == 16);
HOLDS(size_of_hints, sizeof(ksv_hints) == 40);
HOLDS(size_of_guess, sizeof(ksv_guess) == 56);
HOLDS(place_of_line_end, offsetof(ksv_guess, line_end) == 48);
HOLDS(size_of_text_facts, sizeof(ksv_text_facts) == 24);
HOLDS(size_of_segment, sizeof(ksv_segment) == 40);
HOLDS(size_of_repair_counts, sizeof(ksv_repair_counts) == 48);
HOLDS(size_of_document_facts, sizeof(ksv_document_facts) == 32);
HOLDS(size_of_entry, sizeof(ksv_entry) == 80);
HOLDS(place_of_class_id, offsetof(ksv_entry, class_id) == 56);
HOLDS(size_of_damage, sizeof(ksv_damage) == 24);
HOLDS(size_of_document_kind, sizeof(ksv_document_kind) == 40);
HOLDS(size_of_property_section, sizeof(ksv_property_section) == 48);
HOLDS(size_of_property_value, sizeof(ksv_property_value) == 72);
HOLDS(size_of_property, sizeof(ksv_property) == 112);
HOLDS(place_of_property_value, offsetof(ksv_property, value) == 40);
HOLDS(size_of_property_damage, sizeof(ksv_property_damage) == 40);

int ksv_header_is_c99(void);
int ksv_header_is_c99(void) {
  ksv_options options = KSV_OPTIONS_INIT;
  return options.size == sizeof options && KSV_OK == 0;
}
