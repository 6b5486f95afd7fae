// The named profiles against the programs whose conventions they are.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>
#include <vector>

#include "tests/kit/profiles/icu_reference.h"
#include "tests/kit/profiles/profiled_charset.h"
#include "tests/repertoire/difference_list.h"
#include "tests/repertoire/iconv_reference.h"

namespace ksv_kit {
namespace {

namespace fs = std::filesystem;

struct ProfileReference {
  std::string profile;
  std::string charset;
  std::string shape;
  std::string kind;
  std::string name;

  std::string all() const { return profile + '.' + charset + '.' + kind + '_' + name; }
};

void PrintTo(const ProfileReference& reference, std::ostream* out) { *out << reference.all(); }

std::vector<ProfileReference> references() {
  std::vector<ProfileReference> all;
  std::ifstream file(fs::path(REPERTOIRE_SOURCE_DIRECTORY) / "references.txt");
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    ProfileReference reference;
    words >> reference.profile >> reference.charset >> reference.shape >> reference.kind >>
        reference.name;
    all.push_back(reference);
  }
  return all;
}

Shape shapeOf(const ProfileReference& reference) {
  static const std::map<std::string, Shape> kShapes = {{"pairs", Shape::kPairs},
                                                       {"euc", Shape::kEuc},
                                                       {"fixed", Shape::kFixed},
                                                       {"escapes", Shape::kEscapes}};
  return kShapes.at(reference.shape);
}

// Nothing where the party is not there.
std::optional<Repertoire> repertoireOf(const ProfileReference& reference) {
  const Shape shape = shapeOf(reference);
  if (reference.kind == "python" || reference.kind == "web") {
    const fs::path folder = reference.kind == "web" ? KSV_WEB_ANSWERS : REPERTOIRE_BINARY_DIRECTORY;
    return repertoire::readRepertoire(folder / (reference.kind + '_' + reference.name + ".txt"),
                                      shape);
  }
  const auto codec =
      reference.kind == "iconv" ? repertoire::iconvCodec(reference.name) : icuCodec(reference.name);
  if (codec == nullptr) return std::nullopt;
  return repertoire::explore(*codec, shape);
}

class ProfileAgrees : public testing::TestWithParam<ProfileReference> {};

TEST_P(ProfileAgrees, but_for_what_is_listed) {
  const ProfileReference& reference = GetParam();
  const std::optional<Repertoire> theirs = repertoireOf(reference);
  if (!theirs) GTEST_SKIP() << "there is no " << reference.kind;
  const Profile* profile = Profile::named(reference.profile);
  ASSERT_NE(profile, nullptr);
  ASSERT_NE(profile->find(reference.charset), nullptr);
  const Repertoire ours = profiledRepertoire(*profile, reference.charset, shapeOf(reference));
  const repertoire::Differences differences = repertoire::compare(ours, *theirs);
  std::printf("%s: %zu and %zu codes are read, %zu and %zu characters written, %zu differ\n",
              reference.all().c_str(), ours.decoded.size(), theirs->decoded.size(),
              ours.encoded.size(), theirs->encoded.size(), differences.size());
  EXPECT_TRUE(
      repertoire::isListed(differences, fs::path("differences") / (reference.all() + ".txt")));
}

std::string testName(const testing::TestParamInfo<ProfileReference>& info) {
  std::string name = info.param.all();
  for (char& character : name) {
    if (character == '-' || character == '.') character = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(OutsideParties, ProfileAgrees, testing::ValuesIn(references()), testName);

}  // namespace
}  // namespace ksv_kit
