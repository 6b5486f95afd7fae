// ISO-2022-JP-2004 as others write and read it, on both sides of the converter.
//
// An escape sequence holds until the next one. The converter, however, reads only one
// character of plane 2 behind it, and writes other characters behind one of JIS X 0213
// without going back to their set.
#pragma once

#include <cstdint>
#include <string>

#include "kit/convert/rewriting_stage.h"

namespace ksv_kit {

// Gives every character of plane 2 an escape sequence of its own.
class PlaneReadingStage : public RewritingStage {
 private:
  void takeByte(uint8_t byte) override;
  void forget() override;
  bool takeEscape(uint8_t byte);

  std::string escape_;  // the beginning of an escape sequence
  bool inPlane2_ = false;
  bool isDesignated_ = false;  // right in front of the next character
  bool isFirstByte_ = false;
};

// Designates the set anew that a character behind one of JIS X 0213 is in.
class PlaneWritingStage : public RewritingStage {
 private:
  void takeByte(uint8_t byte) override;
  void close() override;
  void forget() override;
  void emit(uint8_t byte);
  void release();

  std::string escape_;    // the beginning of an escape sequence
  std::string otherSet_;  // what designates the set that is no plane
  bool inPlane_ = false;
  int pairBytesLeft_ = 0;
};

}  // namespace ksv_kit
