#include "kit/convert/plan.h"

#include <cstddef>
#include <cstring>
#include <limits>

#include "kit/convert/plan_options.h"
#include "kit/engine.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit {
namespace {

constexpr size_t kMostAtOnce = size_t{1} << 30;
constexpr int kEscape = 0x1B;

// A record for one text: what the engine reads and writes of it, without the languages, which are
// the greater part and stay empty.
void begin(const ConverterRecord& prepared, ConverterRecord& record) {
  std::memcpy(&record, &prepared, offsetof(ConverterRecord, defaultLanguage));
  record.defaultLanguage[0] = record.emittedLanguage[0] = record.currentLanguage[0] = '\0';
  record.options.defaultLanguage[0] = '\0';
  record.inputBigEndian = prepared.inputBigEndian;
  record.detectByteOrderMark = 0;
  record.skipInvalid = 0;
  const ConvertOptions& options = prepared.options;
  record.options.outputBigEndian = options.outputBigEndian;
  record.options.writeByteOrderMark = options.writeByteOrderMark;
  record.options.replaceUnmappable = 0;
  record.options.convertNewlines = options.convertNewlines;
  record.options.newlineForm = options.newlineForm;
  record.options.supplementaryMode = options.supplementaryMode;
}

}  // namespace

Plan::Plan(const char* from, const char* to, const ksv_options* options) {
  Engine::refusingFaults([&](const Engine& engine) {
    task_ = taskOf(engine.names(), from, to, options);
    setUpSoundTexts();
    const Pipeline trial(task_);
    checkReplacements(task_);
  });
}

void Plan::setUpSoundTexts() {
  convertsSoundTexts_ = isDirect(task_) && task_.language.empty();
  if (!convertsSoundTexts_) return;
  std::memset(&prepared_, 0, sizeof prepared_);
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&prepared_, &task_.options, task_.target.name.c_str()) != KSV_STATUS_DONE ||
      cconvChgCharset(&prepared_, parameters, task_.source.name.c_str()) != KSV_STATUS_DONE)
    convertsSoundTexts_ = false;
  refusesEscape_ = refusesEscape(task_.source, task_.target);
}

// Behind the mark, if there is one that is no text.
size_t Plan::soundBegin(const uint8_t* text, size_t length, bool& bigEndian) const {
  const CharsetChoice& source = task_.source;
  bigEndian = source.order == ByteOrder::kBig;
  const size_t mark =
      byteOrderMark(source.form, source.order != ByteOrder::kOpen, text, length, bigEndian);
  return task_.keepsMark ? 0 : mark;
}

// In a text that is shorter than this the runs read too little.
constexpr size_t kWorthWatching = 4096;

template <typename Function>
bool Plan::convertWatching(SoundText& sound, size_t length, Function convert) const {
  if (length >= kWorthWatching && sound.canBeWatched()) {
    Engine::instance().watching(sound, convert);
    return sound.isSound();
  }
  if (!sound.isSound()) return false;
  convert();
  return true;
}

bool Plan::convertSound(const uint8_t* text, size_t length, uint8_t* buffer, size_t capacity,
                        Fit& fit) const {
  if (!convertsSoundTexts_ || length == 0 || length > kMostAtOnce) return false;
  bool bigEndian = false;
  const size_t from = soundBegin(text, length, bigEndian);
  if (refusesEscape_ && std::memchr(text + from, kEscape, length - from) != nullptr) return false;
  ConverterRecord record;
  begin(prepared_, record);
  if (task_.source.hasByteOrder()) record.inputBigEndian = bigEndian;
  record.input = text;
  record.inputPosition = static_cast<int32_t>(from);
  record.inputLength = static_cast<int32_t>(length);
  record.output = buffer;
  record.outputCapacity =
      static_cast<int32_t>(std::min<size_t>(capacity, std::numeric_limits<int32_t>::max()));
  uint32_t status = KSV_STATUS_DONE;
  SoundText sound(task_.source, bigEndian, text + from, length - from);
  if (!convertWatching(sound, length, [&] { status = cconvConvert(&record); })) return false;
  if (status == KSV_STATUS_DONE && record.inputPosition != record.inputLength) return false;
  if (status == KSV_STATUS_DONE) status = cconvTermConvert(&record);
  fit = {status == KSV_STATUS_DONE, static_cast<size_t>(record.outputPosition)};
  return status == KSV_STATUS_DONE || status == KSV_STATUS_FULL;
}

}  // namespace ksv_kit
