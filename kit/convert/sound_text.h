// Whether a text that the engine converts as a whole is well-formed. Most of it is read by runs
// that read nothing else, and tell so; the rest is looked at here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cconv/engine/run_watch.h"
#include "kit/charsets/charset_names.h"
#include "kit/text/iso_2022_check.h"

namespace ksv_kit {

class SoundText : public ksv::RunWatch {
 public:
  // The text has to stay.
  SoundText(const CharsetChoice& source, bool bigEndian, const uint8_t* text, size_t length);

  // Whether runs tell anything of such texts.
  bool canBeWatched() const;

  // Looks at what nobody has read. To be asked once.
  bool isSound();

 private:
  void pass(const ksv::ReadPart& part);
  bool look(const uint8_t* end);

  const CharsetChoice& source_;
  const bool bigEndian_;
  const uint8_t* const end_;
  const uint8_t* known_;  // all in front of it has been looked at
  bool isSound_ = true;
  Iso2022Scanner iso2022_;  // as far as that
};

}  // namespace ksv_kit
