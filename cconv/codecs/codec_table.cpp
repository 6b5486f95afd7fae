#include "cconv/codecs/codec_table.h"

#include <cstring>
#include <string>

#include "cconv/codecs/euc_jp.h"
#include "cconv/codecs/iso_2022_jp.h"
#include "cconv/codecs/oasys.h"
#include "cconv/codecs/same.h"
#include "cconv/codecs/shift_jis.h"
#include "cconv/codecs/ucs2.h"
#include "cconv/codecs/unicode_forms.h"

namespace ksv {
namespace {

constexpr CodecEntry kCodecTable[] = {
    {.name = "destSAME", .function = codecs::decodeSame, .sourceForm = SourceForm::kByRules},
    {.name = "constSAME", .function = codecs::encodeSame},
    {.name = "destShift_JIS",
     .function = codecs::decodeShiftJis,
     .sourceForm = SourceForm::kByteCodes},
    {.name = "constShift_JIS", .function = codecs::encodeShiftJis},
    // One decoder for both: it looks at the number of the source charset.
    {.name = "destShift_JIS-2004",
     .function = codecs::decodeShiftJis,
     .sourceForm = SourceForm::kByteCodes},
    {.name = "constShift_JIS-2004", .function = codecs::encodeShiftJis2004},
    {.name = "destWINDOWS31J",
     .function = codecs::decodeWindows31J,
     .sourceForm = SourceForm::kByteCodes},
    {.name = "constWINDOWS31J", .function = codecs::encodeWindows31J},
    {.name = "destISO-10646-UCS-2",
     .function = codecs::decodeUcs2,
     .sourceForm = SourceForm::kUcs2},
    {.name = "constISO-10646-UCS-2", .function = codecs::encodeUcs2, .writesMark = true},
    {.name = "destISO-10646-UCS-4",
     .function = codecs::decodeUcs4,
     .sourceForm = SourceForm::kUcs4},
    {.name = "constISO-10646-UCS-4", .function = codecs::encodeUcs4, .writesMark = true},
    {.name = "destUTF-16", .function = codecs::decodeUtf16, .sourceForm = SourceForm::kUtf16},
    {.name = "constUTF-16", .function = codecs::encodeUtf16, .writesMark = true},
    {.name = "destUTF-8", .function = codecs::decodeUtf8, .sourceForm = SourceForm::kUtf8},
    {.name = "constUTF-8", .function = codecs::encodeUtf8, .writesMark = true},
    {.name = "destEUC-JP", .function = codecs::decodeEucJp, .sourceForm = SourceForm::kByteCodes},
    {.name = "constEUC-JP", .function = codecs::encodeEucJp},
    {.name = "destEUC-JP-FIX",
     .function = codecs::decodeEucJpFix,
     .sourceForm = SourceForm::kTwoByteCodes},
    {.name = "constEUC-JP-FIX", .function = codecs::encodeEucJpFix},
    {.name = "destEUC-JIS-2004",
     .function = codecs::decodeEucJis2004,
     .sourceForm = SourceForm::kByteCodes},
    {.name = "constEUC-JIS-2004", .function = codecs::encodeEucJp},
    {.name = "destISO-2022-JP",
     .function = codecs::decodeIso2022Jp,
     .sourceForm = SourceForm::kIso2022Jp},
    {.name = "constISO-2022-JP", .function = codecs::encodeIso2022Jp, .keepsState = true},
    {.name = "destISO-2022-JP-2004",
     .function = codecs::decodeIso2022Jp,
     .sourceForm = SourceForm::kIso2022Jp},
    {.name = "constISO-2022-JP-2004", .function = codecs::encodeIso2022Jp, .keepsState = true},
    {.name = "destCP50220",
     .function = codecs::decodeCp50220,
     .sourceForm = SourceForm::kIso2022Jp},
    {.name = "constCP50220", .function = codecs::encodeCp50220, .keepsState = true},
    {.name = "destOASYS_WIN",
     .function = codecs::decodeOasysWin,
     .sourceForm = SourceForm::kByRules},
    {.name = "constOASYS_WIN", .function = codecs::encodeWindows31J},
    {.name = "destOASYS_ONLINE",
     .function = codecs::decodeOasysOnline,
     .sourceForm = SourceForm::kTwoByteCodes},
    {.name = "constOASYS_ONLINE", .function = codecs::encodeSame},
};

const CodecEntry* remembered(std::atomic<const CodecEntry*>& place, const std::string& name) {
  const CodecEntry* entry = place.load(std::memory_order_relaxed);
  if (entry == nullptr) {
    entry = findRuleRecordByName(name.c_str());
    place.store(entry, std::memory_order_relaxed);
  }
  return entry;
}

}  // namespace

const CodecEntry* encoderOf(const LoadedCharset& charset) {
  return remembered(charset.findings.encoder, charset.construle);
}

const CodecEntry* decoderOf(const LoadedCharset& charset) {
  return remembered(charset.findings.decoder, charset.destrule);
}

const CodecEntry* findRuleRecordByName(const char* name) {
  if (name == nullptr || *name == '\0') return nullptr;
  for (const CodecEntry& entry : kCodecTable) {
    if (std::strcmp(entry.name, name) == 0) return &entry;
  }
  return nullptr;
}

}  // namespace ksv
