// Reviewed lists of what may differ: what is found must be exactly what is listed.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "tests/repertoire/repertoire.h"

namespace repertoire {

// A line of a list is "direction code ours theirs reason", the key being direction and
// code, the value ours and theirs. Empty lines and lines that begin with # say nothing.
// "roundtrip 1B2440* 1B2442* * reason" is a line for all codes of a class: a star stands for
// any end, the same one in all words that have something before it.
using Differences = std::map<std::string, std::string>;

// Where two repertoires of one charset differ: "decode 815C", "U+2015 U+2014".
Differences compare(const Repertoire& ours, const Repertoire& theirs);

// What does not come back as it was: "roundtrip 879A", "81E6 U+2235" for a code that
// is written as another one, "oneway U+00A5", "5C U+005C" for a character that comes
// back as another one.
Differences findOneWay(const Repertoire& ours);

// Holds what was found against the list at this place under the source directory. A list
// that does not exist is empty. What was found is left under the build directory at the
// same place, for review, when it is not what is listed.
testing::AssertionResult isListed(const Differences& found, const std::filesystem::path& list);

}  // namespace repertoire
