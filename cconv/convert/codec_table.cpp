#include "cconv/convert/codec_table.h"

#include <cstring>
#include <string>

#include "cconv/convert/codecs/euc_jp.h"
#include "cconv/convert/codecs/iso_2022_jp.h"
#include "cconv/convert/codecs/oasys.h"
#include "cconv/convert/codecs/same.h"
#include "cconv/convert/codecs/shift_jis.h"
#include "cconv/convert/codecs/ucs2.h"
#include "cconv/convert/codecs/unicode_forms.h"

namespace ksv {
namespace {

constexpr CodecEntry kCodecTable[] = {
    {"destSAME", codecs::decodeSame, SourceForm::kByRules},
    {"constSAME", codecs::encodeSame},
    {"destShift_JIS", codecs::decodeShiftJis, SourceForm::kByteCodes},
    {"constShift_JIS", codecs::encodeShiftJis},
    // One decoder for both: it looks at the number of the source charset.
    {"destShift_JIS-2004", codecs::decodeShiftJis, SourceForm::kByteCodes},
    {"constShift_JIS-2004", codecs::encodeShiftJis2004},
    {"destWINDOWS31J", codecs::decodeWindows31J, SourceForm::kByteCodes},
    {"constWINDOWS31J", codecs::encodeWindows31J},
    {"destISO-10646-UCS-2", codecs::decodeUcs2, SourceForm::kUcs2},
    {"constISO-10646-UCS-2", codecs::encodeUcs2, SourceForm::kOther, true},
    {"destISO-10646-UCS-4", codecs::decodeUcs4, SourceForm::kUcs4},
    {"constISO-10646-UCS-4", codecs::encodeUcs4, SourceForm::kOther, true},
    {"destUTF-16", codecs::decodeUtf16, SourceForm::kUtf16},
    {"constUTF-16", codecs::encodeUtf16, SourceForm::kOther, true},
    {"destUTF-8", codecs::decodeUtf8, SourceForm::kUtf8},
    {"constUTF-8", codecs::encodeUtf8, SourceForm::kOther, true},
    {"destEUC-JP", codecs::decodeEucJp, SourceForm::kByteCodes},
    {"constEUC-JP", codecs::encodeEucJp},
    {"destEUC-JP-FIX", codecs::decodeEucJpFix, SourceForm::kTwoByteCodes},
    {"constEUC-JP-FIX", codecs::encodeEucJpFix},
    {"destEUC-JIS-2004", codecs::decodeEucJis2004, SourceForm::kByteCodes},
    {"constEUC-JIS-2004", codecs::encodeEucJp},
    {"destISO-2022-JP", codecs::decodeIso2022Jp, SourceForm::kIso2022Jp},
    {"constISO-2022-JP", codecs::encodeIso2022Jp, SourceForm::kOther, false, true},
    {"destISO-2022-JP-2004", codecs::decodeIso2022Jp, SourceForm::kIso2022Jp},
    {"constISO-2022-JP-2004", codecs::encodeIso2022Jp, SourceForm::kOther, false, true},
    {"destCP50220", codecs::decodeCp50220, SourceForm::kIso2022Jp},
    {"constCP50220", codecs::encodeCp50220, SourceForm::kOther, false, true},
    {"destOASYS_WIN", codecs::decodeOasysWin, SourceForm::kByRules},
    {"constOASYS_WIN", codecs::encodeWindows31J},
    {"destOASYS_ONLINE", codecs::decodeOasysOnline, SourceForm::kTwoByteCodes},
    {"constOASYS_ONLINE", codecs::encodeSame},
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
