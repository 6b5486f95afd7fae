// Conversion of texts that come in pieces.
#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "kit/convert/pipeline.h"
#include "kit/convert/plan.h"
#include "kit/convert/text_places.h"
#include "kit/engine.h"
#include "kit/interface/errors.h"
#include "kit/interface/handles.h"
#include "ksv.h"

// What is taken of a piece at a time: what it becomes waits in the converter for room.
static constexpr size_t kMostTaken = 64 * 1024;
// Problems lie behind what was taken so long ago.
static constexpr uint64_t kLooksBack = 1024 * 1024;

struct ksv_converter {
  explicit ksv_converter(std::shared_ptr<const ksv_kit::Plan> shared)
      : plan(std::move(shared)), pipeline(plan->task()), places(plan->task().source) {}

  void reset() {
    pipeline.restart();
    places.restart();
    made.clear();
    given = 0;
    taken = 0;
    failure.reset();
    isFinished = false;
  }

  // Takes bytes, or with none of them the end.
  void take(const uint8_t* bytes, size_t size, ksv_kit::PieceEnd end) {
    places.add(bytes, size);
    made.clear();
    given = 0;
    bool goesOn = false;
    ksv_kit::Engine::refusingFaults(
        [&](const ksv_kit::Engine&) { goesOn = pipeline.take(bytes, size, end, made); });
    taken += size;
    if (goesOn)
      places.settle(taken - std::min(taken, kLooksBack));
    else
      failure = *pipeline.problem();
  }

  // Puts what was made into the buffer; false when some of it has no room.
  bool give(uint8_t* buffer, size_t capacity, size_t& written) {
    const size_t count = std::min(capacity - written, made.size() - given);
    if (count != 0) std::memcpy(buffer + written, made.data() + given, count);
    written += count;
    given += count;
    return given == made.size();
  }

  ksv_result tellFailure(ksv_error* error) const {
    return ksv_kit::tell(error, *failure, places.placeOf(failure->offset));
  }

  std::shared_ptr<const ksv_kit::Plan> plan;
  ksv_kit::Pipeline pipeline;
  ksv_kit::TextPlaces places;
  ksv_kit::ByteBuffer made;
  size_t given = 0;  // of these, to the caller
  uint64_t taken = 0;
  std::optional<ksv_kit::Problem> failure;
  bool isFinished = false;
};

namespace ksv_kit {
namespace {

ksv_result refuseRoom(ksv_error* error) {
  return refuse(error, KSV_NO_ROOM, "the output buffer is full");
}

ksv_result feed(ksv_converter& converter, const uint8_t* text, size_t length, size_t& used,
                uint8_t* buffer, size_t capacity, size_t& written, ksv_error* error) {
  for (;;) {
    if (!converter.give(buffer, capacity, written)) return refuseRoom(error);
    if (converter.failure) return converter.tellFailure(error);
    if (used == length) return succeed(error);
    const size_t count = std::min(kMostTaken, length - used);
    converter.take(text + used, count, PieceEnd::kMore);
    used += count;
  }
}

ksv_result finish(ksv_converter& converter, uint8_t* buffer, size_t capacity, size_t& written,
                  ksv_error* error) {
  if (!converter.give(buffer, capacity, written)) return refuseRoom(error);
  if (!converter.failure && !converter.isFinished) {
    converter.isFinished = true;
    converter.take(nullptr, 0, PieceEnd::kEnd);
    if (!converter.give(buffer, capacity, written)) return refuseRoom(error);
  }
  return converter.failure ? converter.tellFailure(error) : succeed(error);
}

ksv_result refuseArgument(ksv_error* error, const char* why) {
  return refuse(error, KSV_BAD_ARGUMENT, why);
}

}  // namespace
}  // namespace ksv_kit

ksv_result ksv_converter_new(const ksv_plan* plan, ksv_converter** converter, ksv_error* error) {
  if (converter == nullptr) return ksv_kit::refuseArgument(error, "an argument is null");
  *converter = nullptr;
  if (plan == nullptr) return ksv_kit::refuseArgument(error, "an argument is null");
  return ksv_kit::guarded(error, [&] {
    *converter = std::make_unique<ksv_converter>(plan->plan).release();
    return ksv_kit::succeed(error);
  });
}

void ksv_converter_free(ksv_converter* converter) { delete converter; }

void ksv_converter_reset(ksv_converter* converter) {
  if (converter != nullptr) converter->reset();
}

ksv_result ksv_converter_feed(ksv_converter* converter, const void* input, size_t length,
                              size_t* used, void* buffer, size_t capacity, size_t* written,
                              ksv_error* error) {
  if (converter == nullptr || used == nullptr || written == nullptr)
    return ksv_kit::refuseArgument(error, "an argument is null");
  *used = *written = 0;
  if ((input == nullptr && length != 0) || (buffer == nullptr && capacity != 0))
    return ksv_kit::refuseArgument(error, "a buffer is null, and it has a length");
  if (converter->isFinished)
    return ksv_kit::refuseArgument(error, "the text is finished: reset the converter first");
  return ksv_kit::guarded(error, [&] {
    return ksv_kit::feed(*converter, static_cast<const uint8_t*>(input), length, *used,
                         static_cast<uint8_t*>(buffer), capacity, *written, error);
  });
}

ksv_result ksv_converter_finish(ksv_converter* converter, void* buffer, size_t capacity,
                                size_t* written, ksv_error* error) {
  if (converter == nullptr || written == nullptr)
    return ksv_kit::refuseArgument(error, "an argument is null");
  *written = 0;
  if (buffer == nullptr && capacity != 0)
    return ksv_kit::refuseArgument(error, "a buffer is null, and it has a length");
  return ksv_kit::guarded(error, [&] {
    return ksv_kit::finish(*converter, static_cast<uint8_t*>(buffer), capacity, *written, error);
  });
}

void ksv_converter_counts(const ksv_converter* converter, ksv_counts* counts) {
  if (counts == nullptr) return;
  *counts = {0, 0};
  if (converter == nullptr) return;
  const ksv_kit::ProblemCounts found = converter->pipeline.counts();
  *counts = {found.invalidBytes, found.unmappable};
}
