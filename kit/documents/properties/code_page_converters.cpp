#include "kit/documents/properties/code_page_converters.h"

#include <map>
#include <memory>
#include <mutex>

#include "kit/convert/plan.h"
#include "kit/convert/whole_text.h"
#include "kit/engine.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit::properties {
namespace {

class StringTarget : public TextTarget {
 public:
  explicit StringTarget(std::string& text) : text_(text) {}

  uint8_t* begin(size_t wanted, size_t& capacity) override {
    text_.resize(wanted);
    capacity = wanted;
    return reinterpret_cast<uint8_t*>(text_.data());
  }
  void settle(size_t size) override { text_.resize(size); }
  void append(const uint8_t* bytes, size_t size) override {
    text_.append(reinterpret_cast<const char*>(bytes), size);
  }
  void clear() override { text_.clear(); }

 private:
  std::string& text_;
};

// The ways between a charset and UTF-8, each made when it is first asked for.
struct Ways {
  std::shared_ptr<const Plan> decoding;
  std::shared_ptr<const Plan> repairing;  // with U+FFFD for what is no text
  std::shared_ptr<const Plan> encoding;
};
using Way = std::shared_ptr<const Plan> Ways::*;

std::shared_ptr<const Plan> newPlan(const char* from, const char* to, ksv_policy invalid) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = invalid;
  return std::make_shared<const Plan>(from, to, &options);
}

std::shared_ptr<const Plan> planFor(const std::string& charset, Way way) {
  static std::mutex* const mutex = new std::mutex;
  static auto* const plans = new std::map<std::string, Ways>;
  const std::lock_guard<std::mutex> lock(*mutex);
  std::shared_ptr<const Plan>& plan = (*plans)[charset].*way;
  if (plan == nullptr) {
    const bool decodes = way != &Ways::encoding;
    plan = newPlan(decodes ? charset.c_str() : "UTF-8", decodes ? "UTF-8" : charset.c_str(),
                   way == &Ways::repairing ? KSV_REPLACE : KSV_FAIL);
  }
  return plan;
}

// False: a problem ended it.
bool convert(const std::string& charset, Way way, std::string_view bytes, std::string& converted) {
  bool isWhole = false;
  Engine::refusingFaults([&](const Engine&) {
    StringTarget target(converted);
    isWhole = !convertWhole(*planFor(charset, way), reinterpret_cast<const uint8_t*>(bytes.data()),
                            bytes.size(), target);
  });
  return isWhole;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  return scanUnicode(UnicodeForm::kUtf8, false, reinterpret_cast<const uint8_t*>(bytes.data()),
                     bytes.size())
             .end == ScanEnd::kAll;
}

DecodedText decodedText(const std::string& charset, std::string_view bytes) {
  DecodedText decoded;
  if (charset == "UTF-8" && isUtf8(bytes)) {
    decoded.text = bytes;
    return decoded;
  }
  if (convert(charset, &Ways::decoding, bytes, decoded.text)) return decoded;
  decoded.isSound = false;
  convert(charset, &Ways::repairing, bytes, decoded.text);
  return decoded;
}

std::optional<std::string> encodedIn(const std::string& charset, std::string_view utf8) {
  std::string encoded;
  try {
    if (!convert(charset, &Ways::encoding, utf8, encoded)) return std::nullopt;
  } catch (const UnknownCharset&) {
    return std::nullopt;
  }
  return encoded;
}

}  // namespace ksv_kit::properties
