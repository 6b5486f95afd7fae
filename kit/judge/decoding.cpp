#include "kit/judge/decoding.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "kit/convert/plan.h"
#include "kit/convert/whole_text.h"

namespace ksv_kit::judge {
namespace {

constexpr char kUnits[] = "UTF-16LE";
constexpr size_t kMostLeftOver = 3;

// The plans and tables of the charsets that were asked for, kept until the process ends.
class Decoders {
 public:
  static Decoders& all() {
    static Decoders* const decoders = new Decoders;
    return *decoders;
  }

  // Null when there is no such charset.
  const Plan* plan(const std::string& charset) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return planLocked(charset);
  }

  const ByteTable* table(const std::string& charset) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = tables_.find(charset);
    if (found != tables_.end()) return found->second.get();
    const Plan* const plan = planLocked(charset);
    std::unique_ptr<ByteTable> table = plan == nullptr ? nullptr : filledTable(*plan);
    return tables_.emplace(charset, std::move(table)).first->second.get();
  }

 private:
  const Plan* planLocked(const std::string& charset) {
    const auto found = plans_.find(charset);
    if (found != plans_.end()) return found->second.get();
    std::unique_ptr<const Plan> plan;
    try {
      plan = std::make_unique<const Plan>(charset.c_str(), kUnits, nullptr);
    } catch (const UnknownCharset&) {
    }
    return plans_.emplace(charset, std::move(plan)).first->second.get();
  }

  static bool convert(const Plan& plan, const uint8_t* bytes, size_t length, uint8_t* units,
                      size_t capacity, size_t& written) {
    Plan::Fit fit{};
    if (!plan.convertSound(bytes, length, units, capacity, fit) || !fit.done) return false;
    written = fit.written;
    return true;
  }

  static std::unique_ptr<ByteTable> filledTable(const Plan& plan) {
    auto table = std::make_unique<ByteTable>();
    for (size_t byte = 0; byte < table->size(); ++byte) {
      const auto one = static_cast<uint8_t>(byte);
      uint8_t units[8];
      size_t written = 0;
      const bool isOne = convert(plan, &one, 1, units, sizeof units, written) && written == 2;
      (*table)[byte] = isOne ? static_cast<char16_t>(units[0] | units[1] << 8) : kNoCharacter;
    }
    return table;
  }

  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<const Plan>> plans_;
  std::map<std::string, std::unique_ptr<ByteTable>> tables_;
};

std::u16string unitsOf(const std::vector<uint8_t>& bytes, size_t length) {
  std::u16string units(length / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i)
    units[i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
  return units;
}

// Bytes that are put together, for a text that is converted in steps.
class Collected : public TextTarget {
 public:
  uint8_t* begin(size_t, size_t& capacity) override {
    capacity = 0;
    return nullptr;
  }
  void settle(size_t) override {}
  void append(const uint8_t* bytes, size_t size) override {
    bytes_.insert(bytes_.end(), bytes, bytes + size);
  }
  void clear() override { bytes_.clear(); }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

}  // namespace

std::optional<std::u16string> decodeSound(const char* charset, Bytes text, bool mayEndInside) {
  if (text.empty()) return std::u16string();
  const Plan* const plan = Decoders::all().plan(charset);
  if (plan == nullptr) return std::nullopt;
  std::vector<uint8_t> units(4 * text.size() + 64);
  const size_t mostLeft = mayEndInside ? std::min(kMostLeftOver, text.size() - 1) : 0;
  for (size_t left = 0; left <= mostLeft; ++left) {
    Plan::Fit fit{};
    if (plan->convertSound(text.data(), text.size() - left, units.data(), units.size(), fit) &&
        fit.done)
      return unitsOf(units, fit.written);
  }
  return std::nullopt;
}

std::optional<std::u16string> decodeDamaged(const char* charset, Bytes text) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = KSV_REPLACE;
  options.invalid_text = "\xEF\xBF\xBD";
  try {
    const Plan plan(charset, kUnits, &options);
    Collected units;
    if (convertWhole(plan, text.data(), text.size(), units)) return std::nullopt;
    return unitsOf(units.bytes(), units.bytes().size());
  } catch (const UnknownCharset&) {
    return std::nullopt;
  }
}

bool isOfSingleBytes(const ByteTable& table) {
  constexpr std::ptrdiff_t kMostUnused = 0x60;
  return std::count(table.begin() + 0x80, table.end(), kNoCharacter) < kMostUnused;
}

const ByteTable* byteTable(const char* charset) { return Decoders::all().table(charset); }

}  // namespace ksv_kit::judge
