// The exported converter functions: check, look up, hand over to the driver.
#include <atomic>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "cconv/codecs/codec_table.h"
#include "cconv/convert/driver.h"
#include "cconv/convert/pre_conversion.h"
#include "cconv/convert/waiting_tables.h"
#include "cconv/engine/converter.h"
#include "cconv/engine/language_tag.h"
#include "cconv/engine/replacement.h"
#include "cconv/rules/names.h"
#include "cconv/rules/rule_base.h"
#include "cconv/rules/table_loader.h"
#include "common/guard.h"
#include "ksv_cconv.h"

namespace {

using ksv::CharsetDef;
using ksv::GroupDef;

constexpr char kUtf7Name[] = "UTF-7";
constexpr char kHzName[] = "HZ-GB-2312";

void clearState(ConverterRecord& record) {
  constexpr size_t kFirst = offsetof(ConverterRecord, status);
  constexpr size_t kBehind = offsetof(ConverterRecord, inputBigEndian);
  std::memset(reinterpret_cast<char*>(&record) + kFirst, 0, kBehind - kFirst);
  std::memset(record.narrowReplacement, 0, sizeof record.narrowReplacement);
  std::memset(record.wideReplacement, 0, sizeof record.wideReplacement);
}

// Copies in halves, for each of which compilers put a few wide moves; for the whole they
// put a string instruction, which takes longer to get going.
void setOptions(ConvertOptions& own, const ConvertOptions* given) {
  if (given == nullptr) {
    std::memset(&own, 0, sizeof own);
  } else if (given != &own) {
    constexpr size_t kHalf = sizeof own / 2;
    char* const to = reinterpret_cast<char*>(&own);
    const char* const from = reinterpret_cast<const char*>(given);
    std::memcpy(to, from, kHalf);
    std::memcpy(to + kHalf, from + kHalf, sizeof own - kHalf);
  }
}

// Loads what the groups of the charset convert by, and remembers when there is nothing
// left to load. A table that turns out empty asks for a second attempt, and one that could
// not be read for as many as it takes.
void makeTablesReady(const CharsetDef& charset, ksv::CodeTable GroupDef::*table,
                     std::atomic<bool>& areReady) {
  if (areReady.load(std::memory_order_acquire)) return;
  bool all = true;
  for (GroupDef* group : charset.groups) {
    ksv::CodeTable& own = group->*table;
    if (group->isUser() || own.fileName.empty()) continue;
    ksv::ensureTableLoaded(&own);
    all = all && own.isWhole();
  }
  if (!all) return;
  ksv::pauseForTests(ksv::PublicationStep::kMade);
  areReady.store(true, std::memory_order_release);
}

// The languages are empty before.
void setLanguages(ConverterRecord& record) {
  ksv::copyLanguage(record.defaultLanguage, record.options.defaultLanguage);
  ksv::copyLanguage(record.emittedLanguage, record.defaultLanguage);
  ksv::copyLanguage(record.currentLanguage, record.defaultLanguage);
}

uint32_t finish(ConverterRecord& record, uint32_t status) {
  record.status = status;
  return status;
}

// What a step leaves as the status; where it finds no memory, failure.
template <typename Step>
uint32_t orFailure(ConverterRecord& record, Step step) {
  const bool isDone = ksv::guarded(false, [&] {
    step(record);
    return true;
  });
  return isDone ? record.status : finish(record, KSV_STATUS_FAILURE);
}

void closeText(ConverterRecord& record) {
  const ksv::CodecEntry* encoder = ksv::targetEncoder(record);
  if (encoder == nullptr) {
    record.status = KSV_STATUS_DONE;
  } else if (!ksv::buffersAreUsable(record)) {
    record.status = KSV_STATUS_FAILURE;
  } else {
    record.status = KSV_STATUS_FLUSH;
    encoder->function(record);
  }
}

struct PreConvertedName {
  ksv::PreConversion preConversion;
  const char* charset;
};

// Ends at the first byte that differs, for most names the first of all.
template <size_t kSize>
bool isExactly(const char* name, const char (&expected)[kSize]) {
  for (size_t i = 0; i < kSize; ++i) {
    if (name[i] != expected[i]) return false;
  }
  return true;
}

// The names are compared exactly; in any other case they are ordinary charset
// names.
PreConvertedName preConvertedName(const char* name) {
  if (name != nullptr && isExactly(name, kUtf7Name)) return {ksv::kUtf7, "ISO-10646-UCS-4"};
  if (name != nullptr && isExactly(name, kHzName)) return {ksv::kHz, "ChineseGBK"};
  return {ksv::kNoPreConversion, name};
}

}  // namespace

uint32_t cconvInitConvert(ConverterRecord* record, const ConvertOptions* options,
                          const char* targetCharset) {
  if (record == nullptr) return KSV_STATUS_FAILURE;
  ksv::LoadedCharset* charset = ksv::findCharsetByName(targetCharset);
  // Options first: what is read behind the stores of the clearing may have to wait for them.
  if (charset != nullptr) setOptions(record->options, options);
  clearState(*record);
  if (charset == nullptr) return finish(*record, KSV_STATUS_FAILURE);
  if (ksv::anyTableWaits()) ksv::mendEncodingTables(*charset);
  makeTablesReady(*charset, &GroupDef::fromUcs, charset->findings.encodingTablesAreReady);
  record->targetCharset = charset;
  record->targetCharsetId = charset->id;
  record->targetEncoder = ksv::encoderOf(*charset);
  if (record->options.replaceUnmappable != 0) ksv::prepareReplacements(*record);
  if (record->options.defaultLanguage[0] != '\0') setLanguages(*record);
  return finish(*record, KSV_STATUS_DONE);
}

uint32_t cconvChgCharset(ConverterRecord* record, uint32_t sourceParameters[3],
                         const char* sourceCharset) {
  if (record == nullptr) return KSV_STATUS_FAILURE;
  const PreConvertedName name = preConvertedName(sourceCharset);
  record->preConversion = name.preConversion;
  if (name.preConversion == ksv::kUtf7 && sourceParameters != nullptr) sourceParameters[0] = 0;
  ksv::LoadedCharset* charset = ksv::findCharsetByName(name.charset);
  if (charset == nullptr) return finish(*record, KSV_STATUS_FAILURE);
  if (ksv::anyTableWaits()) ksv::mendDecodingTables(*charset);
  makeTablesReady(*charset, &GroupDef::toUcs, charset->findings.decodingTablesAreReady);
  record->sourceCharset = charset;
  record->sourceCharsetId = charset->id;
  record->sourceDecoder = ksv::decoderOf(*charset);
  record->decodedGroup = 0;
  record->decodedGroupType = 0;
  record->decoderState = ksv::charset_id::kIso646Irv;
  record->unicodeCode = 0;
  record->rawCode = 0;
  record->inputBigEndian = sourceParameters != nullptr ? sourceParameters[0] : 0;
  record->detectByteOrderMark = sourceParameters != nullptr ? sourceParameters[1] : 0;
  record->skipInvalid = sourceParameters != nullptr ? sourceParameters[2] : 0;
  return finish(*record, KSV_STATUS_DONE);
}

uint32_t cconvChgLang(ConverterRecord* record, const char* language) {
  if (record == nullptr) return KSV_STATUS_FAILURE;
  ksv::copyLanguage(record->currentLanguage, language != nullptr ? language : "");
  return finish(*record, KSV_STATUS_DONE);
}

uint32_t cconvConvert(ConverterRecord* record) {
  if (record == nullptr) return KSV_STATUS_FAILURE;
  return orFailure(*record, ksv::convert);
}

uint32_t cconvTermConvert(ConverterRecord* record) {
  if (record == nullptr) return KSV_STATUS_FAILURE;
  return orFailure(*record, closeText);
}

uint32_t cconvEnumGroup(int32_t index, char* nameOut) {
  const ksv::RuleLists* lists = ksv::ruleBase.lists;
  if (index < 0 || nameOut == nullptr || lists == nullptr) return 0;
  const auto place = static_cast<size_t>(index);
  if (place >= lists->charsetCount()) return 0;
  const std::string_view name = lists->charsetName(place);
  nameOut[name.copy(nameOut, name.size())] = '\0';
  ksv::lowerAscii(nameOut);
  return 1;
}

uint32_t cconvIsEndianAware(const char* charsetName) {
  if (charsetName == nullptr) return 0;
  for (const char* name : {"UTF-16", "ISO-10646-UCS-2", "ISO-10646-UCS-4"}) {
    if (std::strcmp(charsetName, name) == 0) return 1;
  }
  return 0;
}
