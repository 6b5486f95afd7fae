#include <cstdio>
#include <string>

#include "reference/parts.h"

namespace ksv_reference {
namespace {

bool writeBytes(Converter& c, const std::string& bytes) {
  if (c.outputPosition + static_cast<int32_t>(bytes.size()) > c.outputCapacity) {
    c.status = KSV_STATUS_FULL;
    return false;
  }
  for (char byte : bytes) c.output[c.outputPosition++] = static_cast<uint8_t>(byte);
  ++c.unitsWritten;
  return true;
}

bool writeMark(Converter& c) {
  if (c.options.writeByteOrderMark == 0) return true;
  bool written = false;
  if (c.targetEncoder == Codec::kUtf8) {
    c.options.outputBigEndian = 1;
    written = writeBytes(c, "\xEF\xBB\xBF");
  } else {
    written = writePlainUnit(c, 0xFEFF, c.targetEncoder == Codec::kUcs4 ? 4 : 2);
  }
  if (written) c.options.writeByteOrderMark = 0;
  return written;
}

bool writeUnit(Converter& c, uint32_t unit) {
  if (c.targetEncoder == Codec::kUcs4) return writeUcs4Unit(c, unit);
  if (c.targetEncoder == Codec::kUtf16) return writeUtf16Unit(c, unit);
  return writeUtf8Unit(c, unit);
}

bool writeTagUnits(Converter& c) {
  if (!writeUnit(c, 0xE0001)) return false;
  if (c.currentLanguage == c.defaultLanguage) return writeUnit(c, 0xE007F);
  for (char letter : c.currentLanguage) {
    if (!writeUnit(c, 0xE0000U + static_cast<unsigned char>(letter))) return false;
  }
  return true;
}

bool writeLanguageTag(Converter& c) {
  if (c.defaultLanguage.empty()) return true;
  if (c.currentLanguage.empty()) c.currentLanguage = c.defaultLanguage;
  if (c.currentLanguage == c.emittedLanguage) return true;
  const int32_t position = c.outputPosition;
  const int32_t units = c.unitsWritten;
  if (!writeTagUnits(c)) {
    c.outputPosition = position;
    c.unitsWritten = units;
    return false;
  }
  c.emittedLanguage = c.currentLanguage;
  return true;
}

std::string referenceText(const Converter& c, uint32_t code) {
  char text[24];
  std::snprintf(text, sizeof text, c.options.supplementaryMode == 1 ? "&#x%X;" : "&#%u;",
                static_cast<unsigned>(code));
  return text;
}

bool writeReference(Converter& c, uint32_t code) {
  const std::string text = referenceText(c, code);
  if (c.outputPosition + 2 * static_cast<int32_t>(text.size()) >= c.outputCapacity) {
    c.status = KSV_STATUS_FULL;
    return false;
  }
  for (char letter : text) writePlainUnit(c, static_cast<unsigned char>(letter), 2);
  return true;
}

bool isInWindows31jRepertoire(Converter& c, uint32_t code) {
  for (uint32_t group : {2002U, 2003U, 2006U, 2008U, 2009U, 2012U}) {
    if (c.decodedGroup == group) return true;
  }
  if (code >= 0xE000 && code <= 0xF8FF) return code < 0xE759;
  if (code >= 0xFF00 && code <= 0xFFFE) {
    return (code >= 0xFF01 && code <= 0xFF5E) || (code >= 0xFF61 && code <= 0xFF9F) ||
           (code >= 0xFFE0 && code <= 0xFFE2) || code == 0xFFE5;
  }
  if (code == c.narrowReplacement.code || code == c.wideReplacement.code) return true;
  Charset* windows = c.rules->findCharset(1002);
  if (windows == nullptr) return false;
  for (Subset* group : windows->members) {
    if (group->kind != 3) group->fromUcs.ensureLoaded(*c.rules);
  }
  for (const Subset* group : windows->members) {
    uint32_t found = 0;
    if (group->kind != 3 && group->fromUcs.lookup(c.unicodeCode, found)) return true;
  }
  return false;
}

void encodeUcs2(Converter& c) {
  const bool prepared = c.status == KSV_STATUS_FULL;
  if (mapCharacter(c)) {
    if (c.unicodeCode >= 0x10000 && !prepared) {
      c.status = KSV_STATUS_UNMAPPABLE;
    } else {
      writeCharacter(c);
    }
    return;
  }
  if (c.status == KSV_STATUS_UNMAPPABLE && c.options.supplementaryMode != 0 &&
      c.unicodeCode >= 0x10000 && c.unicodeCode <= 0x10FFFF && writeReference(c, c.unicodeCode)) {
    c.status = KSV_STATUS_WRITTEN;
  }
}

}  // namespace

bool writeUcs2Unit(Converter& c, uint32_t unit) {
  if (c.options.supplementaryMode != 0 && !isInWindows31jRepertoire(c, unit)) {
    return writeReference(c, unit);
  }
  return writePlainUnit(c, unit, 2);
}

bool writeUcs4Unit(Converter& c, uint32_t unit) { return writePlainUnit(c, unit, 4); }

bool writeUtf16Unit(Converter& c, uint32_t unit) {
  if (unit <= 0xFFFF) return writePlainUnit(c, unit, 2);
  if (unit > 0x10FFFF) {
    c.status = KSV_STATUS_UNMAPPABLE;
    return false;
  }
  const int32_t position = c.outputPosition;
  const int32_t units = c.unitsWritten;
  if (writePlainUnit(c, 0xD800 + (unit - 0x10000) / 1024, 2) &&
      writePlainUnit(c, 0xDC00 + unit % 1024, 2)) {
    return true;
  }
  c.outputPosition = position;
  c.unitsWritten = units;
  return false;
}

bool writeUtf8Unit(Converter& c, uint32_t unit) {
  if (unit < 0x80) return writeBytes(c, std::string(1, static_cast<char>(unit)));
  const uint32_t limits[] = {0x800, 0x10000, 0x200000, 0x4000000, 0x80000000};
  const uint32_t leads[] = {0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
  for (int following = 1; following <= 5; ++following) {
    if (unit >= limits[following - 1]) continue;
    std::string bytes(1, static_cast<char>(leads[following - 1] | (unit >> (6 * following))));
    for (int i = following - 1; i >= 0; --i) {
      bytes += static_cast<char>(0x80 | ((unit >> (6 * i)) & 0x3F));
    }
    return writeBytes(c, bytes);
  }
  c.status = KSV_STATUS_UNMAPPABLE;
  return false;
}

void encodeUnicode(Converter& c) {
  if (!writeMark(c)) return;
  if (c.targetEncoder == Codec::kUcs2) {
    encodeUcs2(c);
    return;
  }
  if (mapCharacter(c) && writeLanguageTag(c)) writeCharacter(c);
}

}  // namespace ksv_reference
