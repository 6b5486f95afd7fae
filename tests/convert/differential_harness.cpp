#include "differential_harness.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <thread>
#include <type_traits>

namespace ksv_differential {
namespace {

constexpr uint8_t kCanary = 0xC5;
constexpr double kSlowCall = 1.0;  // seconds of this thread
constexpr int64_t kHangSeconds = 30;

std::atomic<int64_t> callStart{0};
std::mutex currentMutex;
std::string currentReproduction;

int64_t now() {
  return std::chrono::duration_cast<std::chrono::seconds>(
             std::chrono::steady_clock::now().time_since_epoch())
             .count() +
         1;
}

double threadSeconds() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void watch() {
  for (;;) {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const int64_t start = callStart;
    if (start == 0 || now() - start < kHangSeconds) continue;
    const std::lock_guard<std::mutex> lock(currentMutex);
    std::fprintf(stderr, "a call does not come back:\n%s\n", currentReproduction.c_str());
    std::abort();
  }
}

// Brackets one library call for the watchdog; says afterwards how long it took.
class Timed {
 public:
  explicit Timed(const std::string& reproduction) : begin_(threadSeconds()) {
    const std::lock_guard<std::mutex> lock(currentMutex);
    currentReproduction = reproduction;
    callStart = now();
  }
  ~Timed() { callStart = 0; }
  bool slow() const { return threadSeconds() - begin_ > kSlowCall; }

 private:
  double begin_;
};

std::string number(uint32_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "%u (%X)", static_cast<unsigned>(value),
                static_cast<unsigned>(value));
  return text;
}

std::string shown(const char* name) { return name == nullptr ? "null" : name; }

std::string optionsText(const ConvertOptions* options) {
  if (options == nullptr) return "null";
  char text[512];
  std::snprintf(text, sizeof text,
                "{big %u, mark %u, replace %u, narrow %X, wide %X, language \"%.40s\", newlines "
                "%u, form %u, mode %u}",
                options->outputBigEndian, options->writeByteOrderMark, options->replaceUnmappable,
                options->narrowReplacement, options->wideReplacement, options->defaultLanguage,
                options->convertNewlines, options->newlineForm, options->supplementaryMode);
  return text;
}

template <typename Record>
std::string stateText(const Record& record) {
  char text[512];
  std::snprintf(text, sizeof text,
                "status %u, in %d, out %d, read %d, units %d, from %u/%u, raw %X, code %X, unicode "
                "%X, to %u/%u, out code %X, width %u, sequence %u, previous %X, second %X",
                record.status, record.inputPosition, record.outputPosition, record.charactersRead,
                record.unitsWritten, record.decodedGroup, record.decodedGroupType, record.rawCode,
                record.groupCode, record.unicodeCode, record.targetGroup, record.targetGroupType,
                record.outputCode, record.outputWidth, record.sequenceLength,
                record.previousRawCode, record.secondCode);
  return text;
}

}  // namespace

std::string hexBytes(const std::vector<uint8_t>& bytes) {
  std::string text;
  for (uint8_t byte : bytes) {
    char two[4];
    std::snprintf(two, sizeof two, "%02X", byte);
    text += two;
  }
  return text;
}

void startWatchdog() {
  static std::once_flag once;
  std::call_once(once, [] { std::thread(watch).detach(); });
}

Pair::Pair(ksv_reference::RuleBase& rules, size_t maxOutput)
    : libraryOutput_(maxOutput, 0), modelOutput_(maxOutput, 0) {
  model_.rules = &rules;
}

void Pair::reset() {
  ksv_reference::RuleBase* rules = model_.rules;
  record_ = ConverterRecord{};
  model_ = ksv_reference::Converter{};
  model_.rules = rules;
}

void Pair::scramble(Random& random) {
  const auto fill = [&random](auto& library, auto& model) {
    model = static_cast<std::remove_reference_t<decltype(model)>>(random.below(0xFFFF));
    library = model;
  };
#define KSV_SCRAMBLE(name) fill(record_.name, model_.name)
  KSV_SCRAMBLE(status);
  KSV_SCRAMBLE(decodedGroup);
  KSV_SCRAMBLE(decodedGroupType);
  KSV_SCRAMBLE(decoderState);
  KSV_SCRAMBLE(preConversion);
  KSV_SCRAMBLE(targetGroup);
  KSV_SCRAMBLE(targetGroupType);
  KSV_SCRAMBLE(designatedGroup);
  KSV_SCRAMBLE(designatedPlane);
  KSV_SCRAMBLE(rawCode);
  KSV_SCRAMBLE(groupCode);
  KSV_SCRAMBLE(unicodeCode);
  KSV_SCRAMBLE(outputCode);
  KSV_SCRAMBLE(outputWidth);
  KSV_SCRAMBLE(sequenceLength);
  KSV_SCRAMBLE(previousRawCode);
  KSV_SCRAMBLE(secondCode);
  KSV_SCRAMBLE(inputBigEndian);
  KSV_SCRAMBLE(detectByteOrderMark);
  KSV_SCRAMBLE(skipInvalid);
#undef KSV_SCRAMBLE
}

void Pair::note(const std::string& text) { log_ += "  " + text + "\n"; }

void Pair::setBuffers(const std::vector<uint8_t>& input, int32_t capacity) {
  log_.clear();
  input_ = input;
  std::fill(libraryOutput_.begin(), libraryOutput_.end(), kCanary);
  std::fill(modelOutput_.begin(), modelOutput_.end(), kCanary);
  record_.input = model_.input = input_.data();
  record_.output = libraryOutput_.data();
  model_.output = modelOutput_.data();
  record_.outputPosition = model_.outputPosition = 0;
  record_.inputPosition = model_.inputPosition = 0;
  record_.charactersRead = model_.charactersRead = 0;
  record_.unitsWritten = model_.unitsWritten = 0;
  setInputLength(static_cast<int32_t>(input.size()));
  setCapacity(capacity);
}

void Pair::setInputLength(int32_t length) { record_.inputLength = model_.inputLength = length; }

void Pair::setInputPosition(int32_t position) {
  note("input position := " + std::to_string(position));
  record_.inputPosition = model_.inputPosition = position;
}

void Pair::setCapacity(int32_t capacity) {
  // What a call wrote and took back lies in front of the old capacity, not the new one.
  const size_t kept = std::min(
      libraryOutput_.size(), static_cast<size_t>(std::max({capacity, record_.outputPosition, 0})));
  std::fill(libraryOutput_.begin() + static_cast<ptrdiff_t>(kept), libraryOutput_.end(), kCanary);
  record_.outputCapacity = model_.outputCapacity = capacity;
}

void Pair::emptyOutput() {
  note("output position := 0");
  record_.outputPosition = model_.outputPosition = 0;
  std::fill(libraryOutput_.begin(), libraryOutput_.end(), kCanary);
}

uint32_t Pair::init(const ConvertOptions* options, const char* target) {
  if (!difference_.empty()) return 1;
  note("init " + shown(target) + " " + optionsText(options));
  const Timed timed(reproduction());
  const uint32_t result = cconvInitConvert(&record_, options, target);
  if (timed.slow()) differ("time of init", "slow", "below a second");
  compare("init", result, ksv_reference::initConvert(model_, options, target));
  return result;
}

uint32_t Pair::chgCharset(const uint32_t* parameters, const char* source) {
  if (!difference_.empty()) return 1;
  uint32_t forLibrary[3] = {};
  uint32_t forModel[3] = {};
  if (parameters != nullptr) {
    std::memcpy(forLibrary, parameters, sizeof forLibrary);
    std::memcpy(forModel, parameters, sizeof forModel);
  }
  note("source " + shown(source) + " " +
       (parameters == nullptr
            ? "null"
            : std::to_string(parameters[0]) + " " + std::to_string(parameters[1]) + " " +
                  std::to_string(parameters[2])));
  const Timed timed(reproduction());
  const uint32_t result =
      cconvChgCharset(&record_, parameters == nullptr ? nullptr : forLibrary, source);
  if (timed.slow()) differ("time of source", "slow", "below a second");
  compare("source", result,
          ksv_reference::chgCharset(model_, parameters == nullptr ? nullptr : forModel, source));
  for (int i = 0; i < 3; ++i) compareNumber("source parameter", forLibrary[i], forModel[i]);
  return result;
}

void Pair::chgLang(const std::string& language) {
  if (!difference_.empty()) return;
  note("language \"" + language + "\"");
  compare("language", cconvChgLang(&record_, language.c_str()),
          ksv_reference::chgLang(model_, language.c_str()));
}

uint32_t Pair::convert() {
  if (!difference_.empty()) return 1;
  note("convert position " + std::to_string(record_.inputPosition) + " length " +
       std::to_string(record_.inputLength) + " out " + std::to_string(record_.outputPosition) +
       " of " + std::to_string(record_.outputCapacity));
  const Timed timed(reproduction());
  const uint32_t result = cconvConvert(&record_);
  if (timed.slow()) differ("time of convert", "slow", "below a second");
  compare("convert", result, ksv_reference::convert(model_));
  note("  -> " + std::to_string(result));
  return result;
}

uint32_t Pair::term() {
  if (!difference_.empty()) return 1;
  note("term out " + std::to_string(record_.outputPosition) + " of " +
       std::to_string(record_.outputCapacity));
  const Timed timed(reproduction());
  const uint32_t result = cconvTermConvert(&record_);
  compare("term", result, ksv_reference::termConvert(model_));
  return result;
}

std::string Pair::reproduction() const {
  const std::string shown =
      log_.size() < 6000 ? log_
                         : log_.substr(0, 1500) + "  ...\n" + log_.substr(log_.size() - 3000);
  return "  input " + hexBytes(input_) + "\n" + shown + "  " + difference_ + "\n  expected " +
         stateText(model_) + "\n  got      " + stateText(record_);
}

void Pair::differ(const std::string& name, const std::string& got, const std::string& expected) {
  if (!difference_.empty()) return;
  field_ = name;
  difference_ = name + ": expected " + expected + ", got " + got;
}

void Pair::compareNumber(const std::string& name, uint32_t got, uint32_t expected) {
  if (got != expected) differ(name, number(got), number(expected));
}

void Pair::compareText(const std::string& name, const char* got, const std::string& expected) {
  const std::string text(got, strnlen(got, KSV_NAME_SIZE));
  if (text != expected) differ(name, "\"" + text + "\"", "\"" + expected + "\"");
}

void Pair::compareOutput() {
  const auto end = static_cast<size_t>(model_.outputPosition > 0 ? model_.outputPosition : 0);
  for (size_t i = 0; i < end && i < libraryOutput_.size(); ++i) {
    if (libraryOutput_[i] == modelOutput_[i]) continue;
    const size_t from = i < 4 ? 0 : i - 4;
    const size_t to = std::min(end, i + 12);
    const auto piece = [&](const std::vector<uint8_t>& bytes) {
      return hexBytes({bytes.begin() + static_cast<ptrdiff_t>(from),
                       bytes.begin() + static_cast<ptrdiff_t>(to)});
    };
    differ("output bytes", "at " + std::to_string(from) + ": " + piece(libraryOutput_),
           piece(modelOutput_));
    return;
  }
  const auto capacity =
      static_cast<size_t>(record_.outputCapacity > 0 ? record_.outputCapacity : 0);
  const size_t wall = std::min(libraryOutput_.size(), capacity + 512);
  for (size_t i = std::max(capacity, end); i < wall; ++i) {
    if (libraryOutput_[i] != kCanary) {
      differ("canary", "a write at " + std::to_string(i), "nothing behind the capacity");
    }
  }
}

void Pair::compare(const char* call, uint32_t result, uint32_t expected) {
  ++calls_;
  compareNumber(std::string("result of ") + call, result, expected);
#define KSV_COMPARE(name) \
  compareNumber(#name, static_cast<uint32_t>(record_.name), static_cast<uint32_t>(model_.name))
#define KSV_COMPARE_NULL(name, isNull) \
  compareNumber(#name " not null", record_.name != nullptr ? 1 : 0, (isNull) ? 0 : 1)
  KSV_COMPARE(status);
  KSV_COMPARE(inputPosition);
  KSV_COMPARE(outputPosition);
  KSV_COMPARE(inputLength);
  KSV_COMPARE(outputCapacity);
  compareOutput();
  KSV_COMPARE(charactersRead);
  KSV_COMPARE(unitsWritten);
  KSV_COMPARE(sourceCharsetId);
  KSV_COMPARE_NULL(sourceCharset, model_.sourceCharset == nullptr);
  KSV_COMPARE_NULL(sourceDecoder, model_.sourceDecoder == ksv_reference::Codec::kNone);
  KSV_COMPARE(decodedGroup);
  KSV_COMPARE(decodedGroupType);
  KSV_COMPARE(decoderState);
  KSV_COMPARE(preConversion);
  KSV_COMPARE(targetCharsetId);
  KSV_COMPARE_NULL(targetCharset, model_.targetCharset == nullptr);
  KSV_COMPARE_NULL(targetEncoder, model_.targetEncoder == ksv_reference::Codec::kNone);
  KSV_COMPARE(targetGroup);
  KSV_COMPARE(targetGroupType);
  KSV_COMPARE(designatedGroup);
  KSV_COMPARE(designatedPlane);
  KSV_COMPARE(rawCode);
  KSV_COMPARE(groupCode);
  KSV_COMPARE(unicodeCode);
  KSV_COMPARE(outputCode);
  KSV_COMPARE(outputWidth);
  KSV_COMPARE(sequenceLength);
  KSV_COMPARE(previousRawCode);
  KSV_COMPARE(secondCode);
  compareText("defaultLanguage", record_.defaultLanguage, model_.defaultLanguage);
  compareText("emittedLanguage", record_.emittedLanguage, model_.emittedLanguage);
  compareText("currentLanguage", record_.currentLanguage, model_.currentLanguage);
  KSV_COMPARE(inputBigEndian);
  KSV_COMPARE(detectByteOrderMark);
  KSV_COMPARE(skipInvalid);
  KSV_COMPARE(options.outputBigEndian);
  KSV_COMPARE(options.writeByteOrderMark);
  KSV_COMPARE(options.replaceUnmappable);
  KSV_COMPARE(options.narrowReplacement);
  KSV_COMPARE(options.wideReplacement);
  KSV_COMPARE(options.supplementaryMode);
  if (std::memcmp(&record_.options, &model_.options, sizeof record_.options) != 0) {
    differ("options", "other bytes", "the caller's");
  }
  const ksv_reference::Replacement* halves[2] = {&model_.narrowReplacement,
                                                 &model_.wideReplacement};
  const uint32_t* records[2] = {record_.narrowReplacement, record_.wideReplacement};
  const char* names[2] = {"narrowReplacement", "wideReplacement"};
  for (int i = 0; i < 2; ++i) {
    compareNumber(std::string(names[i]) + " group", records[i][0], halves[i]->group);
    compareNumber(std::string(names[i]) + " type", records[i][1], halves[i]->type);
    compareNumber(std::string(names[i]) + " code", records[i][2], halves[i]->code);
    compareNumber(std::string(names[i]) + " width", records[i][3], halves[i]->width);
  }
  if (record_.input != model_.input) differ("input pointer", "another", "the caller's");
  if (record_.output != libraryOutput_.data()) differ("output pointer", "another", "the caller's");
#undef KSV_COMPARE
#undef KSV_COMPARE_NULL
}

}  // namespace ksv_differential
