// What is the same for every text of a conversion. Immutable, and shared by threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "kit/convert/pipeline.h"
#include "kit/convert/sound_text.h"
#include "ksv.h"
#include "ksv_cconv.h"

namespace ksv_kit {

class UnknownCharset : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class BadArgument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Plan {
 public:
  // options may be null. Throws UnknownCharset, BadArgument, UnusableEngine, ImpossibleConversion.
  Plan(const char* from, const char* to, const ksv_options* options);
  Plan(const Plan&) = delete;
  Plan& operator=(const Plan&) = delete;

  const ConversionTask& task() const { return task_; }

  // Converts a whole text without its problems: false when it has any, or takes more than one
  // step; nothing of the output counts then. Otherwise done says whether it fitted.
  struct Fit {
    bool done;
    size_t written;
  };
  bool convertSound(const uint8_t* text, size_t length, uint8_t* buffer, size_t capacity,
                    Fit& fit) const;

 private:
  void setUpSoundTexts();
  size_t soundBegin(const uint8_t* text, size_t length, bool& bigEndian) const;
  // Calls the function; whether the text is well-formed, of which nothing else may be said before.
  template <typename Function>
  bool convertWatching(SoundText& sound, size_t length, Function convert) const;

  ConversionTask task_;
  bool convertsSoundTexts_ = false;
  bool refusesEscape_ = false;
  ConverterRecord prepared_;
};

}  // namespace ksv_kit
