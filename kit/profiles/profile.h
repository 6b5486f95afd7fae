// A convention of which character a code of a charset stands for, where the world's programs
// differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/unicode/character_replacement.h"

namespace ksv_kit {

// Where a profile's text cannot be understood; lines are counted from 1.
struct ProfileError {
  size_t line;
  std::string message;
};

// Characters that a convention does not have.
class RefusedCharacters {
 public:
  bool isEmpty() const { return lastOfFirst_.empty(); }
  bool refuses(uint32_t character) const;

  void add(char32_t first, char32_t last);

 private:
  std::map<char32_t, char32_t> lastOfFirst_;  // ranges apart from each other
};

// What a profile says of a charset.
struct CharsetProfile {
  // The charsets of the directory to read and to write it with, where those are others.
  std::string readAs;
  std::string writtenAs;
  std::vector<Replacement> afterDecoding;
  std::vector<Replacement> beforeEncoding;
  RefusedCharacters refusedAfterDecoding;
  RefusedCharacters refusedBeforeEncoding;
};

// The longest text of a profile that is read, in bytes.
constexpr size_t kLongestProfile = 1 << 20;

class Profile {
 public:
  // Of those that are built in; null when none has the name.
  static const Profile* named(std::string_view name);
  static std::vector<std::string_view> names();

  // docs/profiles.md tells the form of the text. Nothing, and the error, when it has another one.
  static std::optional<Profile> fromText(std::string_view text, ProfileError& error);

  const std::string& name() const { return name_; }

  // Names of charsets are those of the charset directory, in small letters.
  std::vector<std::string_view> charsets() const;

  // The charsets of the directory to be taken in place of this one; most often it is the same.
  std::string_view charsetToRead(std::string_view charset) const;
  std::string_view charsetToWrite(std::string_view charset) const;

  // Null for a charset about which the profile says nothing: it stays as the directory has it.
  const CharsetProfile* find(std::string_view charset) const;

 private:
  friend class ProfileReader;

  std::string name_;
  std::map<std::string, CharsetProfile, std::less<>> charsets_;
};

}  // namespace ksv_kit
