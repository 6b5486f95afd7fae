// Conversion in one call.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

#include "kit/convert/whole_text.h"
#include "kit/engine.h"
#include "kit/interface/errors.h"
#include "kit/interface/handles.h"
#include "kit/interface/plan_cache.h"
#include "ksv.h"

namespace ksv_kit {
namespace {

// A buffer of the caller's. What does not fit is counted.
class GivenBuffer : public TextTarget {
 public:
  GivenBuffer(void* buffer, size_t capacity)
      : bytes_(static_cast<uint8_t*>(buffer)), capacity_(capacity) {}

  uint8_t* begin(size_t, size_t& capacity) override {
    capacity = capacity_;
    return bytes_;
  }
  void settle(size_t size) override { size_ = size; }
  void append(const uint8_t* bytes, size_t size) override {
    if (size_ <= capacity_ && size <= capacity_ - size_ && size != 0)
      std::memcpy(bytes_ + size_, bytes, size);
    size_ += size;
  }
  void clear() override { size_ = 0; }

  size_t size() const { return size_; }
  bool fits() const { return size_ <= capacity_; }

 private:
  uint8_t* bytes_;
  size_t capacity_;
  size_t size_ = 0;
};

// Memory that goes to the caller, with a zero byte behind the text.
class NewBuffer : public TextTarget {
 public:
  uint8_t* begin(size_t wanted, size_t& capacity) override {
    grow(wanted);
    capacity = wanted;
    return bytes_.get();
  }
  void settle(size_t size) override { size_ = size; }
  void append(const uint8_t* bytes, size_t size) override {
    if (capacity_ - size_ < size) grow(std::max(size_ + size, 2 * capacity_));
    if (size != 0) std::memcpy(bytes_.get() + size_, bytes, size);
    size_ += size;
  }
  void clear() override { size_ = 0; }

  size_t size() const { return size_; }
  char* release() {
    if (bytes_ == nullptr) grow(0);
    bytes_.get()[size_] = 0;
    return reinterpret_cast<char*>(bytes_.release());
  }

 private:
  struct Free {
    void operator()(uint8_t* block) const { std::free(block); }
  };

  void grow(size_t capacity) {
    if (bytes_ != nullptr && capacity <= capacity_) return;
    void* larger = std::realloc(bytes_.get(), capacity + 1);
    if (larger == nullptr) throw std::bad_alloc();
    static_cast<void>(bytes_.release());
    bytes_.reset(static_cast<uint8_t*>(larger));
    capacity_ = capacity;
  }

  std::unique_ptr<uint8_t, Free> bytes_;
  size_t capacity_ = 0;
  size_t size_ = 0;
};

// The text is done, or its problem is told.
ksv_result convert(const Plan& plan, const void* input, size_t length, TextTarget& target,
                   ksv_error* error) {
  if (input == nullptr && length != 0)
    return refuse(error, KSV_BAD_ARGUMENT, "there is no text, and it has a length");
  const auto* text = static_cast<const uint8_t*>(input);
  std::optional<Problem> problem;
  Engine::refusingFaults(
      [&](const Engine&) { problem = convertWhole(plan, text, length, target); });
  if (!problem) return succeed(error);
  if (error == nullptr) return tell(error, *problem, {});
  return tell(error, *problem, placeIn(plan.task().source, text, length, problem->offset));
}

ksv_result convertToNew(const Plan& plan, const void* input, size_t length, char** output,
                        size_t* outputLength, ksv_error* error) {
  NewBuffer buffer;
  const ksv_result result = convert(plan, input, length, buffer, error);
  if (result != KSV_OK) return result;
  *outputLength = buffer.size();
  *output = buffer.release();
  return KSV_OK;
}

ksv_result convertInto(const Plan& plan, const void* input, size_t length, void* buffer,
                       size_t capacity, size_t* outputLength, ksv_error* error) {
  GivenBuffer target(buffer, buffer == nullptr ? 0 : capacity);
  const ksv_result result = convert(plan, input, length, target, error);
  if (result != KSV_OK) return result;
  *outputLength = target.size();
  if (target.fits()) return KSV_OK;
  return refuse(error, KSV_NO_ROOM, "the output buffer is too small");
}

bool areThere(char** output, size_t* outputLength) {
  if (output != nullptr) *output = nullptr;
  if (outputLength != nullptr) *outputLength = 0;
  return output != nullptr && outputLength != nullptr;
}

ksv_result refuseNull(ksv_error* error) {
  return refuse(error, KSV_BAD_ARGUMENT, "an argument is null");
}

}  // namespace
}  // namespace ksv_kit

using ksv_kit::guarded;

ksv_result ksv_plan_new(const char* from, const char* to, const ksv_options* options,
                        ksv_plan** plan, ksv_error* error) {
  if (plan == nullptr) return ksv_kit::refuseNull(error);
  *plan = nullptr;
  return guarded(error, [&] {
    auto made = std::make_unique<ksv_plan>();
    made->plan = std::make_shared<const ksv_kit::Plan>(from, to, options);
    *plan = made.release();
    return ksv_kit::succeed(error);
  });
}

void ksv_plan_free(ksv_plan* plan) { delete plan; }

ksv_result ksv_plan_convert(const ksv_plan* plan, const void* input, size_t length, char** output,
                            size_t* output_length, ksv_error* error) {
  if (!ksv_kit::areThere(output, output_length) || plan == nullptr)
    return ksv_kit::refuseNull(error);
  return guarded(error, [&] {
    return ksv_kit::convertToNew(*plan->plan, input, length, output, output_length, error);
  });
}

ksv_result ksv_plan_convert_into(const ksv_plan* plan, const void* input, size_t length,
                                 void* buffer, size_t capacity, size_t* output_length,
                                 ksv_error* error) {
  if (output_length == nullptr || plan == nullptr) return ksv_kit::refuseNull(error);
  *output_length = 0;
  return guarded(error, [&] {
    return ksv_kit::convertInto(*plan->plan, input, length, buffer, capacity, output_length, error);
  });
}

ksv_result ksv_convert(const char* from, const char* to, const ksv_options* options,
                       const void* input, size_t length, char** output, size_t* output_length,
                       ksv_error* error) {
  if (!ksv_kit::areThere(output, output_length)) return ksv_kit::refuseNull(error);
  return guarded(error, [&] {
    const ksv_kit::PlanInUse plan(from, to, options);
    return ksv_kit::convertToNew(*plan, input, length, output, output_length, error);
  });
}

ksv_result ksv_convert_into(const char* from, const char* to, const ksv_options* options,
                            const void* input, size_t length, void* buffer, size_t capacity,
                            size_t* output_length, ksv_error* error) {
  if (output_length == nullptr) return ksv_kit::refuseNull(error);
  *output_length = 0;
  return guarded(error, [&] {
    const ksv_kit::PlanInUse plan(from, to, options);
    return ksv_kit::convertInto(*plan, input, length, buffer, capacity, output_length, error);
  });
}
