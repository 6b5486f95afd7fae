// Unicode language tags (Unicode, section 23.9): U+E0001, then tag characters
// that mirror ASCII, closed by U+E007F.
#pragma once

#include <cstring>

#include "cconv/engine/unit_writer.h"

namespace ksv {

constexpr uint32_t kLanguageTag = 0xE0001;
constexpr uint32_t kCancelTag = 0xE007F;
constexpr uint32_t kTagCharacterBase = 0xE0000;

// Copies a language name with its terminator, cut to what fits.
void copyLanguage(char (&target)[KSV_NAME_SIZE], const char* language);

// Takes the default language where none was chosen; whether the language has to be announced.
inline bool chooseDueLanguage(ConverterRecord& record) {
  if (record.defaultLanguage[0] == '\0') return false;
  if (record.currentLanguage[0] == '\0') {
    copyLanguage(record.currentLanguage, record.defaultLanguage);
  }
  return std::strncmp(record.currentLanguage, record.emittedLanguage, KSV_NAME_SIZE) != 0;
}

template <typename WriteUnit>
bool writeLanguageTag(ConverterRecord& record, WriteUnit writeUnit) {
  constexpr uint32_t kWidth = 4;
  if (!writeUnit(record, kLanguageTag, kWidth)) return false;
  if (std::strncmp(record.currentLanguage, record.defaultLanguage, KSV_NAME_SIZE) == 0) {
    return writeUnit(record, kCancelTag, kWidth);
  }
  for (size_t i = 0; i < KSV_NAME_SIZE && record.currentLanguage[i] != '\0'; ++i) {
    const uint8_t c = static_cast<uint8_t>(record.currentLanguage[i]);
    if (!writeUnit(record, kTagCharacterBase + c, kWidth)) return false;
  }
  return true;
}

// Writes the tag when one is due, whole or not at all. False when it does not fit.
template <typename WriteUnit>
bool announceLanguage(ConverterRecord& record, WriteUnit writeUnit) {
  if (!chooseDueLanguage(record)) return true;
  const OutputMark start(record);
  const uint32_t entryStatus = record.status;
  if (!writeLanguageTag(record, writeUnit)) {
    start.goBack(record);
    return false;
  }
  record.status = entryStatus;
  copyLanguage(record.emittedLanguage, record.currentLanguage);
  return true;
}

}  // namespace ksv
