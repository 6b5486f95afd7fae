#include <cstring>

#include "reference/converter.h"
#include "reference/parts.h"

namespace ksv_reference {
namespace {

struct CodecName {
  const char* name;
  Codec codec;
};

const CodecName kCodecs[] = {
    {"SAME", Codec::kSame},
    {"Shift_JIS", Codec::kShiftJis},
    {"Shift_JIS-2004", Codec::kShiftJis2004},
    {"WINDOWS31J", Codec::kWindows31j},
    {"ISO-10646-UCS-2", Codec::kUcs2},
    {"ISO-10646-UCS-4", Codec::kUcs4},
    {"UTF-16", Codec::kUtf16},
    {"UTF-8", Codec::kUtf8},
    {"EUC-JP", Codec::kEucJp},
    {"EUC-JP-FIX", Codec::kEucJpFix},
    {"EUC-JIS-2004", Codec::kEucJis2004},
    {"ISO-2022-JP", Codec::kIso2022Jp},
    {"ISO-2022-JP-2004", Codec::kIso2022Jp},
    {"CP50220", Codec::kCp50220},
    {"OASYS_WIN", Codec::kOasysWin},
    {"OASYS_ONLINE", Codec::kOasysOnline},
};

Charset* findCharset(Converter& c, const char* name) {
  if (name == nullptr || std::strlen(name) >= KSV_NAME_SIZE) return nullptr;
  return c.rules->findCharset(nameToId(name));
}

void clearState(Converter& c) {
  Converter cleared;
  cleared.rules = c.rules;
  cleared.input = c.input;
  cleared.inputPosition = c.inputPosition;
  cleared.inputLength = c.inputLength;
  cleared.charactersRead = c.charactersRead;
  cleared.output = c.output;
  cleared.outputPosition = c.outputPosition;
  cleared.outputCapacity = c.outputCapacity;
  cleared.unitsWritten = c.unitsWritten;
  cleared.inputBigEndian = c.inputBigEndian;
  cleared.detectByteOrderMark = c.detectByteOrderMark;
  cleared.skipInvalid = c.skipInvalid;
  cleared.options = c.options;
  c = cleared;
}

bool findNarrowReplacement(Converter& c) {
  const uint32_t unicode = c.options.narrowReplacement;
  for (const Subset* group : c.targetCharset->members) {
    if (group->kind == 3) continue;
    uint32_t code = 0;
    if (!group->fromUcs.hasTable()) {
      code = unicode;
    } else if (!group->fromUcs.entry(unicode, code)) {
      continue;
    }
    if (code == 0) continue;
    c.narrowReplacement = {group->id, group->kind, code, group->bytesPerCode};
    return true;
  }
  return false;
}

bool findWideReplacement(Converter& c) {
  for (const Subset* group : c.targetCharset->members) {
    if (group->kind == 3) continue;
    uint32_t code = 0;
    if (!group->fromUcs.lookup(c.options.wideReplacement, code) || code == 0) continue;
    c.wideReplacement = {group->id, group->kind, code, group->bytesPerCode};
    return true;
  }
  return false;
}

bool findPair(Converter& c) {
  const bool narrow = findNarrowReplacement(c);
  const bool wide = findWideReplacement(c);
  return narrow && wide;
}

void storePair(Converter& c, uint16_t wide, uint16_t narrow) {
  c.options.wideReplacement = wide;
  c.options.narrowReplacement = narrow;
}

}  // namespace

Codec findCodec(const std::string& entryName, const std::string& prefix) {
  for (const CodecName& row : kCodecs) {
    if (entryName == prefix + row.name) return row.codec;
  }
  return Codec::kNone;
}

void findReplacements(Converter& c) {
  if (findPair(c)) return;
  storePair(c, 0x3013, 0x003F);
  if (findPair(c)) return;
  storePair(c, 0xFF1D, 0x003F);
  if (findPair(c)) return;
  storePair(c, 0x003F, 0x003F);
}

uint32_t initConvert(Converter& c, const ConvertOptions* options, const char* charset) {
  Charset* target = findCharset(c, charset);
  clearState(c);
  if (target == nullptr) return c.status = KSV_STATUS_FAILURE;
  for (Subset* group : target->members) {
    if (group->kind != 3) group->fromUcs.ensureLoaded(*c.rules);
  }
  c.targetCharset = target;
  c.targetCharsetId = target->id;
  c.targetEncoder = findCodec(target->construle, "const");
  if (options != nullptr) {
    c.options = *options;
  } else {
    c.options = ConvertOptions{};
  }
  if (c.options.replaceUnmappable != 0) findReplacements(c);
  c.defaultLanguage = c.emittedLanguage = c.currentLanguage = c.options.defaultLanguage;
  return c.status = KSV_STATUS_DONE;
}

uint32_t chgCharset(Converter& c, uint32_t* sourceParameters, const char* charset) {
  c.preConversion = 0;
  if (charset != nullptr && std::strcmp(charset, "UTF-7") == 0) {
    c.preConversion = 1;
    if (sourceParameters != nullptr) sourceParameters[0] = 0;
    charset = "ISO-10646-UCS-4";
  } else if (charset != nullptr && std::strcmp(charset, "HZ-GB-2312") == 0) {
    c.preConversion = 2;
    charset = "ChineseGBK";
  }
  Charset* source = findCharset(c, charset);
  if (source == nullptr) return c.status = KSV_STATUS_FAILURE;
  for (Subset* group : source->members) {
    if (group->kind != 3) group->toUcs.ensureLoaded(*c.rules);
  }
  c.sourceCharset = source;
  c.sourceCharsetId = source->id;
  c.sourceDecoder = findCodec(source->destrule, "dest");
  c.decodedGroup = 0;
  c.decodedGroupType = 0;
  c.decoderState = 2001;
  c.unicodeCode = 0;
  c.rawCode = 0;
  c.inputBigEndian = sourceParameters != nullptr ? sourceParameters[0] : 0;
  c.detectByteOrderMark = sourceParameters != nullptr ? sourceParameters[1] : 0;
  c.skipInvalid = sourceParameters != nullptr ? sourceParameters[2] : 0;
  return c.status = KSV_STATUS_DONE;
}

uint32_t chgLang(Converter& c, const char* language) {
  c.currentLanguage = language;
  return c.status = KSV_STATUS_DONE;
}

uint32_t termConvert(Converter& c) {
  if (c.targetEncoder == Codec::kNone) return c.status = KSV_STATUS_DONE;
  c.status = KSV_STATUS_FLUSH;
  encode(c);
  return c.status;
}

}  // namespace ksv_reference
