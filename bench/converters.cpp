#include "bench/converters.h"

#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cconv/bulk/registry.h"
#include "ksv_cconv.h"

namespace ksv_bench {

void fail(const std::string& message) {
  std::fprintf(stderr, "ksv_bench: %s\n", message.c_str());
  std::exit(1);
}

LibrarySession::LibrarySession() {
  if (startProcess() != 1 || cconvLoadRule() != 1) fail("the charset directory cannot be loaded");
}

LibrarySession::~LibrarySession() { endProcess(); }

namespace {

// --- The library. ---

bool setUp(ConverterRecord& record, const Pair& pair) {
  std::memset(&record, 0, sizeof record);
  ConvertOptions options = {};
  options.outputBigEndian = pair.target->littleEndian ? 0 : 1;
  uint32_t source[3] = {pair.source->littleEndian ? 0u : 1u, 0, 0};
  return cconvInitConvert(&record, &options, pair.target->library) == KSV_STATUS_DONE &&
         cconvChgCharset(&record, source, pair.source->library) == KSV_STATUS_DONE;
}

void giveBuffers(ConverterRecord& record, std::string_view input, char* output, size_t capacity) {
  record.input = reinterpret_cast<const uint8_t*>(input.data());
  record.inputPosition = 0;
  record.inputLength = static_cast<int32_t>(input.size());
  record.output = reinterpret_cast<uint8_t*>(output);
  record.outputPosition = 0;
  record.outputCapacity = static_cast<int32_t>(capacity);
  record.designatedGroup = 0;  // a text of its own, which designates its sets anew
}

size_t convertAndTerminate(ConverterRecord& record, std::string_view input, char* output,
                           size_t capacity) {
  giveBuffers(record, input, output, capacity);
  if (cconvConvert(&record) != KSV_STATUS_DONE) return Converter::kFailed;
  if (cconvTermConvert(&record) != KSV_STATUS_DONE) return Converter::kFailed;
  return static_cast<size_t>(record.outputPosition);
}

class LibraryConverter : public Converter {
 public:
  LibraryConverter(const Pair& pair, bool bulkPath) : bulkPath_(bulkPath) {
    if (!setUp(record_, pair)) fail("the library lacks " + pair.name());
  }

  size_t convert(std::string_view input, char* output, size_t capacity) override {
    ksv::setBulkPathForTests(bulkPath_ ? ksv::BulkPath::kWhereItPays : ksv::BulkPath::kNever);
    const size_t written = convertAndTerminate(record_, input, output, capacity);
    ksv::setBulkPathForTests(ksv::BulkPath::kWhereItPays);
    return written;
  }

 private:
  const LibrarySession session_;
  const bool bulkPath_;
  ConverterRecord record_;
};

// Neither init nor terminate from text to text.
template <bool kCharsetAgain>
class RecordUsedAgain : public Converter {
 public:
  explicit RecordUsedAgain(const Pair& pair) : pair_(pair) {
    if (!setUp(record_, pair)) fail("the library lacks " + pair.name());
  }

  size_t convert(std::string_view input, char* output, size_t capacity) override {
    uint32_t source[3] = {pair_.source->littleEndian ? 0u : 1u, 0, 0};
    if (kCharsetAgain &&
        cconvChgCharset(&record_, source, pair_.source->library) != KSV_STATUS_DONE) {
      return kFailed;
    }
    giveBuffers(record_, input, output, capacity);
    if (cconvConvert(&record_) != KSV_STATUS_DONE) return kFailed;
    return static_cast<size_t>(record_.outputPosition);
  }

 private:
  const LibrarySession session_;
  const Pair pair_;
  ConverterRecord record_;
};

std::unique_ptr<Converter> openLibrary(const Pair& pair) {
  return std::make_unique<LibraryConverter>(pair, true);
}

std::unique_ptr<Converter> openEngine(const Pair& pair) {
  return std::make_unique<LibraryConverter>(pair, false);
}

// --- iconv(3). ---

size_t runIconv(iconv_t handle, std::string_view input, char* output, size_t capacity) {
  char* from = const_cast<char*>(input.data());
  size_t fromLeft = input.size();
  char* to = output;
  size_t toLeft = capacity;
  // The last call writes what is held back, and resets the handle.
  if (iconv(handle, &from, &fromLeft, &to, &toLeft) != 0 ||
      iconv(handle, nullptr, nullptr, &to, &toLeft) != 0) {
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    return Converter::kFailed;
  }
  return capacity - toLeft;
}

class IconvConverter : public Converter {
 public:
  explicit IconvConverter(iconv_t handle) : handle_(handle) {}
  ~IconvConverter() override { iconv_close(handle_); }
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;

  size_t convert(std::string_view input, char* output, size_t capacity) override {
    return runIconv(handle_, input, output, capacity);
  }

 private:
  iconv_t handle_;
};

const iconv_t kNoHandle = reinterpret_cast<iconv_t>(-1);

std::unique_ptr<Converter> openIconv(const Pair& pair) {
  const iconv_t handle = iconv_open(pair.target->iconv, pair.source->iconv);
  if (handle == kNoHandle) return nullptr;
  return std::make_unique<IconvConverter>(handle);
}

// --- ICU. ---

// Its strings are UTF-16: a pair with UTF-16 on one side needs one converter only,
// and UTF-8 has functions of its own.
enum class IcuWay { kFromUtf8, kToUtf8, kToUnicode, kFromUnicode, kBoth };

IcuWay wayOf(const Pair& pair) {
  if (pair.target == &kUtf16) return pair.source == &kUtf8 ? IcuWay::kFromUtf8 : IcuWay::kToUnicode;
  if (pair.source == &kUtf16) return pair.target == &kUtf8 ? IcuWay::kToUtf8 : IcuWay::kFromUnicode;
  return IcuWay::kBoth;
}

class IcuConverter : public Converter {
 public:
  explicit IcuConverter(const Pair& pair) : way_(wayOf(pair)) {
    if (way_ == IcuWay::kToUnicode || way_ == IcuWay::kBoth) source_ = openStrict(*pair.source);
    if (way_ == IcuWay::kFromUnicode || way_ == IcuWay::kBoth) target_ = openStrict(*pair.target);
  }
  ~IcuConverter() override {
    if (source_ != nullptr) ucnv_close(source_);
    if (target_ != nullptr) ucnv_close(target_);
  }
  IcuConverter(const IcuConverter&) = delete;
  IcuConverter& operator=(const IcuConverter&) = delete;

  bool isOpen() const { return U_SUCCESS(error_); }

  size_t convert(std::string_view input, char* output, size_t capacity) override {
    UErrorCode error = U_ZERO_ERROR;
    const auto bytes = static_cast<int32_t>(input.size());
    const auto room = static_cast<int32_t>(capacity);
    UChar* const unitsOut = reinterpret_cast<UChar*>(output);
    const UChar* const unitsIn = reinterpret_cast<const UChar*>(input.data());
    int32_t length = 0;
    switch (way_) {
      case IcuWay::kFromUtf8:
        u_strFromUTF8(unitsOut, room / 2, &length, input.data(), bytes, &error);
        length *= 2;
        break;
      case IcuWay::kToUtf8:
        u_strToUTF8(output, room, &length, unitsIn, bytes / 2, &error);
        break;
      case IcuWay::kToUnicode:
        length = 2 * ucnv_toUChars(source_, unitsOut, room / 2, input.data(), bytes, &error);
        break;
      case IcuWay::kFromUnicode:
        length = ucnv_fromUChars(target_, output, room, unitsIn, bytes / 2, &error);
        break;
      case IcuWay::kBoth:
        length = convertBoth(input, output, capacity, error);
        break;
    }
    return U_SUCCESS(error) ? static_cast<size_t>(length) : kFailed;
  }

 private:
  int32_t convertBoth(std::string_view input, char* output, size_t capacity, UErrorCode& error) {
    UChar pivot[1024];
    UChar* pivotSource = pivot;
    UChar* pivotTarget = pivot;
    const char* from = input.data();
    char* to = output;
    ucnv_convertEx(target_, source_, &to, output + capacity, &from, from + input.size(), pivot,
                   &pivotSource, &pivotTarget, pivot + std::size(pivot), true, true, &error);
    return static_cast<int32_t>(to - output);
  }

  // What cannot be converted ends the text, as it does for the others.
  UConverter* openStrict(const Charset& charset) {
    UConverter* converter = ucnv_open(charset.icu, &error_);
    if (converter == nullptr) return nullptr;
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error_);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error_);
    return converter;
  }

  const IcuWay way_;
  UErrorCode error_ = U_ZERO_ERROR;
  UConverter* source_ = nullptr;
  UConverter* target_ = nullptr;
};

std::unique_ptr<Converter> openIcu(const Pair& pair) {
  if (pair.source->icu == nullptr || pair.target->icu == nullptr) return nullptr;
  auto converter = std::make_unique<IcuConverter>(pair);
  if (!converter->isOpen()) return nullptr;
  return converter;
}

}  // namespace

const std::vector<Contestant>& contestants() {
  static const std::vector<Contestant> all = {{"library", true, openLibrary},
                                              {"engine", true, openEngine},
                                              {"iconv", false, openIconv},
                                              {"icu", false, openIcu}};
  return all;
}

const Contestant& libraryWithCharsetAgain() {
  static const Contestant contestant = {"charset_again", true,
                                        [](const Pair& pair) -> std::unique_ptr<Converter> {
                                          return std::make_unique<RecordUsedAgain<true>>(pair);
                                        }};
  return contestant;
}

const Contestant& libraryWithBuffersOnly() {
  static const Contestant contestant = {"buffers_only", true,
                                        [](const Pair& pair) -> std::unique_ptr<Converter> {
                                          return std::make_unique<RecordUsedAgain<false>>(pair);
                                        }};
  return contestant;
}

size_t convertOnceWithLibrary(const Pair& pair, std::string_view input, char* output,
                              size_t capacity) {
  ConverterRecord record;
  if (!setUp(record, pair)) return Converter::kFailed;
  return convertAndTerminate(record, input, output, capacity);
}

size_t convertOnceWithIconv(const Pair& pair, std::string_view input, char* output,
                            size_t capacity) {
  const iconv_t handle = iconv_open(pair.target->iconv, pair.source->iconv);
  if (handle == kNoHandle) return Converter::kFailed;
  const size_t written = runIconv(handle, input, output, capacity);
  iconv_close(handle);
  return written;
}

size_t convertOnceWithIcu(const Pair& pair, std::string_view input, char* output, size_t capacity) {
  IcuConverter converter(pair);
  return converter.isOpen() ? converter.convert(input, output, capacity) : Converter::kFailed;
}

}  // namespace ksv_bench
