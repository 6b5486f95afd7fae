#include "kit/documents/properties/code_page_converters.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "kit/convert/plan.h"
#include "kit/convert/whole_text.h"
#include "kit/engine.h"

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

// There are as many as the directory has charsets, three times over.
std::shared_ptr<const Plan> planFor(const std::string& from, const std::string& to,
                                    ksv_policy invalid) {
  using Key = std::pair<std::pair<std::string, std::string>, ksv_policy>;
  static std::mutex* const mutex = new std::mutex;
  static auto* const plans = new std::map<Key, std::shared_ptr<const Plan>>;
  const std::lock_guard<std::mutex> lock(*mutex);
  const Key key = {{from, to}, invalid};
  if (const auto found = plans->find(key); found != plans->end()) return found->second;
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = invalid;
  auto plan = std::make_shared<const Plan>(from.c_str(), to.c_str(), &options);
  plans->emplace(key, plan);
  return plan;
}

bool convert(const std::string& from, const std::string& to, ksv_policy invalid,
             std::string_view bytes, std::string& converted) {
  bool isWhole = false;
  Engine::refusingFaults([&](const Engine&) {
    StringTarget target(converted);
    isWhole = !convertWhole(*planFor(from, to, invalid),
                            reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), target);
  });
  return isWhole;
}

}  // namespace

DecodedText decodedText(const std::string& charset, std::string_view bytes) {
  DecodedText decoded;
  if (convert(charset, "UTF-8", KSV_FAIL, bytes, decoded.text)) return decoded;
  decoded.isSound = false;
  convert(charset, "UTF-8", KSV_REPLACE, bytes, decoded.text);
  return decoded;
}

std::optional<std::string> encodedIn(const std::string& charset, std::string_view utf8) {
  std::string encoded;
  try {
    if (!convert("UTF-8", charset, KSV_FAIL, utf8, encoded)) return std::nullopt;
  } catch (const UnknownCharset&) {
    return std::nullopt;
  }
  return encoded;
}

}  // namespace ksv_kit::properties
