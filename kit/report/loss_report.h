// What a conversion would lose, told before anything is lost.
//
// The text goes two ways at once. One decodes it and does nothing else: what is invalid, and which
// characters there are. The other is the conversion itself, whose output nobody keeps: what cannot
// be written. Behind the end of the text each character that can be written is written and read
// back, to see what returns as another one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kit/convert/pipeline.h"
#include "kit/convert/plan.h"
#include "kit/convert/text_places.h"

namespace ksv_kit {

enum class LossKind {
  kInvalid,     // bytes that are no text
  kTruncated,   // the text ends inside a character
  kUnmappable,  // a character that the target lacks
  kReturnsAsOther
};

// One thing that is lost, however often.
struct Loss {
  LossKind kind = LossKind::kInvalid;
  uint32_t codePoint = Problem::kNoCodePoint;
  std::string bytes;      // of the source, where it is first
  std::string returnsAs;  // UTF-8, of kReturnsAsOther
  uint64_t count = 0;
  uint64_t firstOffset = 0;
  TextPlace firstPlace{};
};

struct LossTotals {
  uint64_t bytes = 0;
  uint64_t characters = 0;  // that were decoded
  uint64_t invalid = 0;     // places
  uint64_t unmappable = 0;
  uint64_t returnAsOther = 0;
  uint64_t untold = 0;  // losses for which there was no entry left
};

class LossReport {
 public:
  // options may be null. Throws what Plan throws.
  LossReport(const char* from, const char* to, const ksv_options* options);
  // Between charsets that are known already.
  LossReport(const CharsetChoice& from, const CharsetChoice& to, const ksv_options& options);

  void take(const uint8_t* bytes, size_t size);
  void finish();

  // In the order of their first places.
  const std::vector<Loss>& losses() const { return losses_; }
  const LossTotals& totals() const { return totals_; }
  const ConversionTask& task() const { return converting_; }

  // What would stand in the place of the loss under a policy of the interface; false where the
  // policy has no say.
  bool outcome(const Loss& loss, PolicyKind policy, std::string& text) const;

 private:
  struct Seen {
    uint64_t count = 0;
    uint64_t firstOffset = 0;
    TextPlace firstPlace{};
  };

  bool outcomeOfBytes(const Loss& loss, PolicyKind policy, std::string& text) const;
  void convert(const uint8_t* bytes, size_t size, PieceEnd end);
  Answer noteInvalid(const Problem& problem);
  Answer noteUnmappable(const Problem& problem);
  void note(LossKind kind, uint32_t codePoint, const std::string& bytes, uint64_t offset);
  void noteCharacters(const uint8_t* utf8, size_t size);
  void findThoseThatReturnAsOther();
  void compareReturned(const std::vector<uint32_t>& characters);

  ConversionTask reading_;     // from the source to UTF-8, by its profile
  ConversionTask converting_;  // from the source to the target
  ConversionTask writing_;     // from UTF-8 to the target
  ConvertOptions builtIn_;     // for writing with the engine's own replacement
  ConversionTask returning_;   // from the target to UTF-8, by its profile
  std::unique_ptr<Pipeline> decoder_;
  std::unique_ptr<Pipeline> converter_;
  TextPlaces places_;
  ByteBuffer decoded_;
  ByteBuffer converted_;
  uint64_t decodedBytes_ = 0;  // in front of what is in decoded_

  std::map<std::pair<uint32_t, std::string>, size_t> indexOf_;  // of the losses
  std::map<uint32_t, Seen> seen_;
  std::vector<Loss> losses_;
  LossTotals totals_;
};

}  // namespace ksv_kit
