#include "kit/profiles/profile_change.h"

#include <vector>

#include "kit/unicode/character_replacement.h"

namespace ksv_kit {
namespace {

std::unique_ptr<TextChange> changeOf(const CharsetProfile* charset,
                                     std::vector<Replacement> CharsetProfile::*replacements) {
  if (charset == nullptr || (charset->*replacements).empty()) return nullptr;
  return std::make_unique<CharacterReplacement>(charset->*replacements);
}

RefusedCharacters refusedOf(const CharsetProfile* charset,
                            RefusedCharacters CharsetProfile::*refused) {
  return charset == nullptr ? RefusedCharacters() : charset->*refused;
}

}  // namespace

std::unique_ptr<TextChange> changeAfterDecoding(const Profile& profile,
                                                std::string_view sourceCharset) {
  return changeOf(profile.find(sourceCharset), &CharsetProfile::afterDecoding);
}

std::unique_ptr<TextChange> changeBeforeEncoding(const Profile& profile,
                                                 std::string_view targetCharset) {
  return changeOf(profile.find(targetCharset), &CharsetProfile::beforeEncoding);
}

RefusedCharacters refusedAfterDecoding(const Profile& profile, std::string_view sourceCharset) {
  return refusedOf(profile.find(sourceCharset), &CharsetProfile::refusedAfterDecoding);
}

RefusedCharacters refusedBeforeEncoding(const Profile& profile, std::string_view targetCharset) {
  return refusedOf(profile.find(targetCharset), &CharsetProfile::refusedBeforeEncoding);
}

}  // namespace ksv_kit
