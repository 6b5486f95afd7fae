// The way of one text from its source charset to its target charset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/charsets/charset_names.h"
#include "kit/convert/engine_stage.h"
#include "kit/convert/stage.h"
#include "ksv_cconv.h"

namespace ksv_kit {

// What is to be done, whatever the text.
struct ConversionTask {
  CharsetChoice source;
  CharsetChoice target;
  ConvertOptions options{};
  Policy invalid;
  Policy unmappable;
  std::vector<std::string> (*lookAlikes)(uint32_t) = nullptr;
  std::string language;  // announced in front of the text; empty: none
  bool keepsMark = false;
  bool tellsOrigins = false;  // somebody will ask where what was made comes from
  // What happens to the bytes of the text in front of everything else, if anything does.
  std::function<std::unique_ptr<Stage>(const ConversionTask&)> sourceChange;
  // What happens to the characters on the way, as UTF-8, in this order. The task that they are
  // given is this one.
  std::vector<std::function<std::unique_ptr<Stage>(const ConversionTask&)>> changes;
};

class Pipeline {
 public:
  // The task outlives the pipeline. Throws ImpossibleConversion when it cannot be set up.
  explicit Pipeline(const ConversionTask& task);

  // Takes all bytes of a piece and appends what becomes of them. False: the text ends with
  // problem(), and everything in front of that was appended.
  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out);
  // The same with a whole text, block by block: give() gets what becomes of each.
  bool takeWhole(const uint8_t* text, size_t length,
                 const std::function<void(const ByteBuffer&)>& give);
  void restart();

  // The place in the text that a byte of what was made comes from, both counted from the
  // beginning. For a task that tells origins; asked for what the latest piece made.
  uint64_t originOf(uint64_t made) const { return stages_.back()->placeOfMade(made); }

  const std::optional<Problem>& problem() const { return problem_; }
  ProblemCounts counts() const;

 private:
  EngineTask& newEngineTask();
  void addReadingFilter();
  void addRefusalOfShifts();
  void addWritingFilter();
  void addReadingEngine();
  void addLineEndEngine();
  void addWritingEngine(bool readsUtf8);
  void add(std::unique_ptr<Stage> stage);

  const ConversionTask& task_;
  const bool hasOwnLineEnds_;  // of the target: the engine knows none but those of ASCII
  std::vector<std::unique_ptr<EngineTask>> engineTasks_;
  std::vector<std::unique_ptr<Stage>> stages_;
  std::vector<ByteBuffer> between_;
  std::optional<Problem> problem_;
};

// Whether one engine stage does it all.
bool isDirect(const ConversionTask& task);

}  // namespace ksv_kit
