#include "kit/profiles/profile.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace ksv_kit {
namespace {

// The files of this folder, each a text.
constexpr std::string_view kBuiltIn[] = {
#include "built_in_profiles.inc"
};

// The build has read them (a test does), so none can fail.
std::vector<Profile> readBuiltIn() {
  std::vector<Profile> profiles;
  for (const std::string_view text : kBuiltIn) {
    ProfileError error;
    std::optional<Profile> profile = Profile::fromText(text, error);
    if (!profile) std::abort();
    profiles.push_back(std::move(*profile));
  }
  return profiles;
}

const std::vector<Profile>& builtIn() {
  static const std::vector<Profile> kProfiles = readBuiltIn();
  return kProfiles;
}

}  // namespace

void RefusedCharacters::add(char32_t first, char32_t last) {
  // Those that meet the new one become part of it.
  auto range = lastOfFirst_.upper_bound(last);
  while (range != lastOfFirst_.begin() && (--range)->second >= first) {
    first = std::min(first, range->first);
    last = std::max(last, range->second);
    range = lastOfFirst_.erase(range);
  }
  lastOfFirst_.emplace(first, last);
}

bool RefusedCharacters::refuses(uint32_t character) const {
  const auto behind = lastOfFirst_.upper_bound(character);
  return behind != lastOfFirst_.begin() && character <= std::prev(behind)->second;
}

const Profile* Profile::named(std::string_view name) {
  const std::vector<Profile>& all = builtIn();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [name](const Profile& profile) { return profile.name_ == name; });
  return found == all.end() ? nullptr : &*found;
}

std::vector<std::string_view> Profile::names() {
  std::vector<std::string_view> names;
  for (const Profile& profile : builtIn()) names.push_back(profile.name_);
  return names;
}

std::vector<std::string_view> Profile::charsets() const {
  std::vector<std::string_view> names;
  for (const auto& [name, charset] : charsets_) names.push_back(name);
  return names;
}

std::string_view Profile::charsetToRead(std::string_view charset) const {
  const CharsetProfile* found = find(charset);
  return found == nullptr || found->readAs.empty() ? charset : found->readAs;
}

std::string_view Profile::charsetToWrite(std::string_view charset) const {
  const CharsetProfile* found = find(charset);
  return found == nullptr || found->writtenAs.empty() ? charset : found->writtenAs;
}

const CharsetProfile* Profile::find(std::string_view charset) const {
  const auto found = charsets_.find(charset);
  return found == charsets_.end() ? nullptr : &found->second;
}

}  // namespace ksv_kit
