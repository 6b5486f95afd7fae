#include "cconv/bulk/registry.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>

#include "cconv/bulk/byte_codes.h"
#include "cconv/bulk/form_converter.h"
#include "cconv/bulk/iso_2022_form.h"
#include "cconv/bulk/unicode_sources.h"
#include "cconv/engine/converter.h"
#include "cconv/limits.h"
#include "cconv/rules/table_loader.h"
#include "common/guard.h"

namespace ksv {
namespace {

constinit std::atomic<BulkPath> chosenPath = BulkPath::kWhereItPays;

// Fewer bytes of input than this are not worth handing over.
constexpr int32_t kLeastText = 4;
// Fewer are not worth a table, unless that many have come in short inputs before.
constexpr int64_t kLeastInput = 1024;
constexpr int64_t kLeastInputs = 4096;

// What the output of a character depends on besides its own bytes.
struct TableKey {
  const LoadedCharset* source;
  const LoadedCharset* target;
  // The newline form, 0 where line ends are not converted, above three flags.
  uint64_t settings;

  static constexpr uint64_t kInputBigEndian = 1;
  static constexpr uint64_t kOutputBigEndian = 2;
  static constexpr uint64_t kConvertNewlines = 4;

  bool inputIsBigEndian() const { return (settings & kInputBigEndian) != 0; }
  bool operator==(const TableKey&) const = default;
};

TableKey keyOf(const ConverterRecord& record) {
  uint64_t settings = 0;
  if (record.inputBigEndian != 0) settings |= TableKey::kInputBigEndian;
  if (record.options.outputBigEndian != 0) settings |= TableKey::kOutputBigEndian;
  if (record.options.convertNewlines != 0)
    settings |= TableKey::kConvertNewlines | uint64_t{record.options.newlineForm} << 3;
  return {sourceCharset(record), targetCharset(record), settings};
}

// What the codecs of a key say about its texts.
struct TextKind {
  SourceForm form;
  bool designates;  // the output has escape sequences
};

bool allGroupsHaveWidth(const CharsetDef& charset, uint16_t width) {
  for (const GroupDef* group : charset.groups) {
    if (group->bytesPerCode != width) return false;
  }
  return true;
}

// Whether what the rule-driven decoder finds in the first bytes is the same whatever
// follows them: it tries the groups in order.
bool widthsAscend(const CharsetDef& charset) {
  uint16_t width = 1;
  for (const GroupDef* group : charset.groups) {
    if (group->bytesPerCode < width) return false;
    width = group->bytesPerCode;
  }
  return true;
}

template <typename Form>
std::unique_ptr<BulkConverter> makeConverterFor(const TextKind& kind) {
  return std::make_unique<FormConverter<Form>>(kind.designates);
}

std::unique_ptr<BulkConverter> makeConverter(const TableKey& key, const TextKind& kind) {
  const bool bigEndian = key.inputIsBigEndian();
  switch (kind.form) {
    case SourceForm::kByRules:
      if (!widthsAscend(*key.source)) return nullptr;
      return makeConverterFor<source_forms::ByteCodes>(kind);
    case SourceForm::kByteCodes:
      return makeConverterFor<source_forms::ByteCodes>(kind);
    case SourceForm::kTwoByteCodes:
      return makeConverterFor<source_forms::FixedUnits<2, true>>(kind);
    case SourceForm::kUtf8:
      return makeConverterFor<source_forms::Utf8>(kind);
    case SourceForm::kUtf16:
      return bigEndian ? makeConverterFor<source_forms::Utf16<true>>(kind)
                       : makeConverterFor<source_forms::Utf16<false>>(kind);
    case SourceForm::kUcs2:
      // The decoder reads as many bytes as its groups are wide.
      if (!allGroupsHaveWidth(*key.source, 2)) return nullptr;
      return bigEndian ? makeConverterFor<source_forms::FixedUnits<2, true>>(kind)
                       : makeConverterFor<source_forms::FixedUnits<2, false>>(kind);
    case SourceForm::kUcs4:
      return bigEndian ? makeConverterFor<source_forms::FixedUnits<4, true>>(kind)
                       : makeConverterFor<source_forms::FixedUnits<4, false>>(kind);
    case SourceForm::kIso2022Jp:
      return makeConverterFor<source_forms::Iso2022Jp>(kind);
    case SourceForm::kOther:
      return nullptr;
  }
  return nullptr;
}

// Tables are made of answers to questions that no text has asked. That must not show: each
// question may be one of the attempts after which a table of the target answers.
bool answersAreFinal(const CharsetDef& target) {
  bool all = true;
  for (const auto& tables : target.destTables) {
    for (const auto& table : *tables) all = ksv::answersAreFinal(*table) && all;
  }
  return all;
}

// Every bulk converter that has been asked for, those that do not exist included.
// They are found without a lock; only making one takes it.
class BulkConverters : public DerivedTables {
 public:
  ~BulkConverters() override {
    for (auto& place : places_) delete place.load(std::memory_order_relaxed);
  }

  // Null when there is none for the key, or too few bytes have been converted with it
  // for making tables to pay.
  BulkConverter* find(const TableKey& key, const TextKind& kind, int64_t bytes) {
    Known* known = knownFor(key);
    if (known == nullptr) return nullptr;
    if (bytes < kLeastInput && known->bytes.load(std::memory_order_relaxed) < kLeastInputs) {
      known->bytes.fetch_add(bytes, std::memory_order_relaxed);
      return nullptr;
    }
    if (!known->isMade.load(std::memory_order_acquire)) {
      make(*known, kind);
      if (!known->isMade.load(std::memory_order_acquire)) return nullptr;
    }
    return known->converter.get();
  }

 private:
  static constexpr size_t kPlaces = limits::kPlacesOfConverters;

  struct Known {
    explicit Known(const TableKey& knownKey) : key(knownKey) {}
    const TableKey key;
    std::atomic<int64_t> bytes = 0;  // of short inputs so far
    std::unique_ptr<BulkConverter> converter;
    std::atomic<bool> isMade = false;  // the converter, or that there is none
  };

  // Does nothing while questions to the engine would change later answers.
  [[gnu::cold]] void make(Known& known, const TextKind& kind) {
    if (!answersAreFinal(*known.key.target)) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    if (known.isMade.load(std::memory_order_relaxed)) return;
    known.converter = makeConverter(known.key, kind);
    pauseForTests(PublicationStep::kMade);
    known.isMade.store(true, std::memory_order_release);
  }

  Known* knownFor(const TableKey& key) {
    for (size_t place = hashOf(key);; ++place) {
      Known* known = places_[place % kPlaces].load(std::memory_order_acquire);
      if (known == nullptr) return addKnown(key);
      if (known->key == key) return known;
    }
  }

  [[gnu::cold]] Known* addKnown(const TableKey& key) {
    const std::lock_guard<std::mutex> guard(mutex_);
    for (size_t place = hashOf(key);; ++place) {
      std::atomic<Known*>& slot = places_[place % kPlaces];
      Known* known = slot.load(std::memory_order_relaxed);
      if (known != nullptr && known->key == key) return known;
      if (known != nullptr) continue;
      if (count_ >= limits::kMostConverters) return nullptr;
      known = new Known(key);
      ++count_;
      pauseForTests(PublicationStep::kMade);
      slot.store(known, std::memory_order_release);
      return known;
    }
  }

  static size_t hashOf(const TableKey& key) {
    const auto mixed = (reinterpret_cast<uintptr_t>(key.source) >> 4) * 0x9E3779B97F4A7C15 +
                       (reinterpret_cast<uintptr_t>(key.target) >> 4) * 0xC2B2AE3D27D4EB4F +
                       key.settings;
    return static_cast<size_t>(mixed >> 40 ^ mixed) % kPlaces;
  }

  std::mutex mutex_;
  size_t count_ = 0;
  std::array<std::atomic<Known*>, kPlaces> places_ = {};
};

BulkConverters& convertersOfProcess() {
  DerivedPlace& derived = ruleBase.lists->derived;
  DerivedTables* tables = derived.get();
  if (tables == nullptr) tables = derived.fill(std::make_unique<BulkConverters>());
  return static_cast<BulkConverters&>(*tables);
}

}  // namespace

BulkConverter* findBulkConverter(const ConverterRecord& record) {
  const BulkPath path = bulkPath();
  const bool always = path == BulkPath::kAlways || path == BulkPath::kAlwaysWithoutVectors;
  const int64_t bytes = always ? kLeastInput : bytesLeft(record);
  if (bytes < kLeastText || path == BulkPath::kNever) return nullptr;
  const TextKind kind = {sourceDecoder(record)->sourceForm, targetEncoder(record)->keepsState};
  // With a supplementary mode a character's output depends on the replacements too.
  if (kind.form == SourceForm::kOther || record.options.supplementaryMode != 0) return nullptr;
  if (ruleBase.lists == nullptr) return nullptr;
  return guarded<BulkConverter*>(
      nullptr, [&] { return convertersOfProcess().find(keyOf(record), kind, bytes); });
}

BulkPath bulkPath() { return chosenPath.load(std::memory_order_relaxed); }

void setBulkPathForTests(BulkPath path) { chosenPath.store(path, std::memory_order_relaxed); }

}  // namespace ksv
