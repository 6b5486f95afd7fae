// Bound to POSIX systems, for which the tests are built with ICU.
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/utf16.h>

#include <array>
#include <stdexcept>

#include "tests/kit/profiles/icu_reference.h"

namespace ksv_kit {
namespace {

using repertoire::Bytes;
using repertoire::Text;

class IcuCodec : public repertoire::Codec {
 public:
  explicit IcuCodec(const std::string& charset) {
    UErrorCode error = U_ZERO_ERROR;
    converter_ = ucnv_open(charset.c_str(), &error);
    if (U_FAILURE(error)) throw std::runtime_error("ICU does not know " + charset);
    ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFallback(converter_, false);
  }
  ~IcuCodec() override { ucnv_close(converter_); }

  std::optional<Text> decode(const Bytes& sequence) override {
    std::array<UChar, 64> units;
    UErrorCode error = U_ZERO_ERROR;
    const int32_t count =
        ucnv_toUChars(converter_, units.data(), static_cast<int32_t>(units.size()), sequence.data(),
                      static_cast<int32_t>(sequence.size()), &error);
    if (U_FAILURE(error)) return std::nullopt;
    Text text;
    for (int32_t at = 0; at < count;) {
      UChar32 character;
      U16_NEXT(units.data(), at, count, character);
      text += static_cast<char32_t>(character);
    }
    return text;
  }

  std::optional<Bytes> encode(char32_t character) override {
    std::array<UChar, 2> units;
    int32_t length = 0;
    U16_APPEND_UNSAFE(units.data(), length, static_cast<UChar32>(character));
    std::array<char, 64> bytes;
    UErrorCode error = U_ZERO_ERROR;
    const int32_t count = ucnv_fromUChars(
        converter_, bytes.data(), static_cast<int32_t>(bytes.size()), units.data(), length, &error);
    if (U_FAILURE(error) || count == 0) return std::nullopt;
    return Bytes(bytes.data(), static_cast<size_t>(count));
  }

 private:
  UConverter* converter_;
};

}  // namespace

std::unique_ptr<repertoire::Codec> icuCodec(const std::string& charset) {
  return std::make_unique<IcuCodec>(charset);
}

}  // namespace ksv_kit
