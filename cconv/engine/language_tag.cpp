#include "cconv/engine/language_tag.h"

namespace ksv {

void copyLanguage(char (&target)[KSV_NAME_SIZE], const char* language) {
  const size_t length = strnlen(language, KSV_NAME_SIZE - 1);
  std::memcpy(target, language, length);
  target[length] = '\0';
}

}  // namespace ksv
