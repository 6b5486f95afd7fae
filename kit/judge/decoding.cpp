#include "kit/judge/decoding.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "kit/convert/pipeline.h"
#include "kit/convert/plan.h"
#include "kit/convert/whole_text.h"

namespace ksv_kit::judge {
namespace {

// In the order of the machine.
constexpr const char* kUnits = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
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

  static std::unique_ptr<ByteTable> filledTable(const Plan& plan) {
    auto table = std::make_unique<ByteTable>();
    for (size_t byte = 0; byte < table->size(); ++byte) {
      const auto one = static_cast<uint8_t>(byte);
      char16_t units[4];
      Plan::Fit fit{};
      const bool isOne =
          plan.convertSound(&one, 1, reinterpret_cast<uint8_t*>(units), sizeof units, fit) &&
          fit.done && fit.written == sizeof units[0];
      (*table)[byte] = isOne ? units[0] : kNoCharacter;
    }
    return table;
  }

  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<const Plan>> plans_;
  std::map<std::string, std::unique_ptr<ByteTable>> tables_;
};

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

std::optional<Units> decodeBy(const Plan& plan, Bytes text) {
  Collected collected;
  if (convertWhole(plan, text.data(), text.size(), collected)) return std::nullopt;
  const size_t size = collected.bytes().size() / sizeof(char16_t);
  Units units(size);
  if (size != 0) std::memcpy(units.data(), collected.bytes().data(), size * sizeof(char16_t));
  units.shrink(size);
  return units;
}

}  // namespace

std::optional<Units> decodeSound(const char* charset, Bytes text, bool mayEndInside) {
  if (text.empty()) return Units(0);
  const Plan* const plan = Decoders::all().plan(charset);
  if (plan == nullptr) return std::nullopt;
  const size_t capacity = 2 * text.size() + 32;
  Units units(capacity);
  const size_t mostLeft = mayEndInside ? std::min(kMostLeftOver, text.size() - 1) : 0;
  for (size_t left = 0; left <= mostLeft; ++left) {
    Plan::Fit fit{};
    if (!plan->convertSound(text.data(), text.size() - left,
                            reinterpret_cast<uint8_t*>(units.data()), 2 * capacity, fit) ||
        !fit.done)
      continue;
    units.shrink(fit.written / 2);
    return units;
  }
  return std::nullopt;
}

// Piece by piece, each of which ends behind a byte that is a character of its own in all charsets.
bool isSound(const char* charset, Bytes text) {
  constexpr size_t kPiece = 24 * 1024;
  constexpr uint8_t kFirstTrail = 0x30;
  while (!text.empty()) {
    size_t length = std::min(kPiece, text.size());
    while (length < text.size() && text[length - 1] >= kFirstTrail) ++length;
    if (!decodeSound(charset, text.first(length), false)) return false;
    text = text.subspan(length);
  }
  return true;
}

std::optional<Units> decodeInSteps(const char* charset, Bytes text) {
  const Plan* const plan = Decoders::all().plan(charset);
  return plan == nullptr ? std::nullopt : decodeBy(*plan, text);
}

bool looksLikeUtf8(Bytes bytes) {
  constexpr size_t kEnough = 64;
  size_t good = 0;
  size_t bad = 0;
  for (size_t at = 0; at < bytes.size() && good + bad < kEnough;) {
    const uint8_t lead = bytes[at];
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const size_t end = std::min(at + std::max<size_t>(length, 1), bytes.size());
    const bool isWhole =
        length != 0 && std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(at + 1),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(end),
                                   [](uint8_t byte) { return (byte & 0xC0) == 0x80; });
    if (length != 1) ++(isWhole ? good : bad);
    at = isWhole ? end : at + 1;
  }
  return good > bad;
}

std::optional<uint64_t> firstInvalid(const char* charset, Bytes text) {
  const Plan plan(charset, kUnits, nullptr);
  Pipeline pipeline(plan.task());
  pipeline.takeWhole(text.data(), text.size(), [](const ByteBuffer&) {});
  if (!pipeline.problem()) return std::nullopt;
  return pipeline.problem()->offset;
}

std::optional<Units> decodeDamaged(const char* charset, Bytes text) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = KSV_REPLACE;
  options.invalid_text = "\xEF\xBF\xBD";
  try {
    return decodeBy(Plan(charset, kUnits, &options), text);
  } catch (const UnknownCharset&) {
    return std::nullopt;
  }
}

bool isOfSingleBytes(const ByteTable& table) {
  constexpr std::ptrdiff_t kMostUnused = 0x38;
  return std::count(table.begin() + 0x80, table.end(), kNoCharacter) < kMostUnused;
}

const ByteTable* byteTable(const char* charset) { return Decoders::all().table(charset); }

}  // namespace ksv_kit::judge
