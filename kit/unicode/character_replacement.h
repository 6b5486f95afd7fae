// Characters, and pairs of characters, that others stand for.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kit/unicode/change_output.h"
#include "kit/unicode/text_change.h"

namespace ksv_kit {

struct Replacement {
  std::u32string from;  // one character or two
  std::u32string to;
};

// A pair goes before its first character alone. What replaces is not looked at again.
class CharacterReplacement : public TextChange {
 public:
  // No two of the same characters.
  explicit CharacterReplacement(const std::vector<Replacement>& replacements);

  void change(std::string_view text, bool isEnd, std::string& out) override;
  void restart() override;
  uint64_t originOf(uint64_t made) const override { return output_.originOf(made); }

 private:
  // In the place of a second character; in no pair is U+0000 one.
  static constexpr char32_t kAlone = 0;

  struct Entry {
    char32_t first;
    char32_t second;
    std::string to;
  };

  const Entry* find(char32_t first, char32_t second) const;
  bool beginsPair(char32_t character) const;
  void addAffected(char32_t character);
  size_t unaffectedBytes(std::string_view text) const;
  bool mayBeAffected(std::string_view text) const;
  bool isUnaffectedBlock(const char* at) const;
  void takeWaiting(std::string_view& text, std::string& out);
  void takeAffected(std::string_view& text, bool isEnd, std::string& out);
  void replaceSingle(std::string_view character, std::string& out);

  std::vector<Entry> entries_;  // in order
  // Which characters may be in an entry: for ASCII each, for others by their first two bytes.
  std::bitset<0x80> ascii_;
  std::bitset<0x10000> prefixes_;
  // For the look over blocks of ASCII: the few characters that are affected.
  std::vector<uint8_t> affectedAscii_;
  ChangeOutput output_;
  std::string waiting_;  // a character that may begin a pair with the next one
};

}  // namespace ksv_kit
