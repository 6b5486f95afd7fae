// Normalization against Unicode's own test and tables, of the version that is known here.
#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <vector>

#include "kit/unicode/normalization.h"
#include "kit/unicode/normalization_system.h"
#include "kit/unicode/utf8_text.h"
#include "tests/kit/unicode/pieces.h"
#include "tests/kit/unicode/unicode_data_posix.h"

namespace ksv_kit {
namespace {

using Form = NormalizationForm;

std::string dataFile(const std::string& name) { return KSV_UNICODE_DATA "/" + name; }

std::string firstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

// The five columns: the source, and its NFC, NFD, NFKC and NFKD.
using Columns = std::array<std::string, 5>;

struct TestLine {
  Columns columns;
  bool isOfSingleCharacters;
};

std::string textOf(const std::string& field) {
  std::istringstream codes(field);
  std::string text;
  for (std::string code; codes >> code;) appendUtf8(codeRange(code).first, text);
  return text;
}

std::vector<TestLine> testLines() {
  std::vector<TestLine> lines;
  bool isOfSingleCharacters = false;
  eachLine(KSV_NORMALIZATION_TEST, [&](const std::vector<std::string>& fields) {
    if (fields[0][0] == '@') {
      isOfSingleCharacters = fields[0].starts_with("@Part1");
    } else {
      TestLine line{{}, isOfSingleCharacters};
      for (size_t column = 0; column < line.columns.size(); ++column) {
        line.columns[column] = textOf(fields[column]);
      }
      lines.push_back(line);
    }
  });
  return lines;
}

struct FormOfColumns {
  Form form;
  std::array<size_t, 5> expected;  // the column that each becomes
};

constexpr FormOfColumns kForms[] = {
    {Form::kNfc, {1, 1, 1, 3, 3}},
    {Form::kNfd, {2, 2, 2, 4, 4}},
    {Form::kNfkc, {3, 3, 3, 3, 3}},
    {Form::kNfkd, {4, 4, 4, 4, 4}},
};

bool areAssigned(const std::vector<bool>& assigned, const Columns& columns) {
  for (const std::string& column : columns) {
    for (const char32_t character : charactersOf(column)) {
      if (!assigned[character]) return false;
    }
  }
  return true;
}

TEST(NormalizationOfUnicode, passes_each_line_of_its_test_at_every_cut) {
  const std::vector<bool> assigned = charactersUpTo(unicodeVersionOfNormalization());
  const std::vector<TestLine> lines = testLines();
  ASSERT_GT(lines.size(), 19'000U);
  size_t unassigned = 0;
  for (const FormOfColumns& form : kForms) {
    const auto change = normalization(form.form);
    for (const TestLine& line : lines) {
      if (!areAssigned(assigned, line.columns)) {
        ++unassigned;
        continue;
      }
      for (size_t column = 0; column < line.columns.size(); ++column) {
        EXPECT_EQ(changedAtEveryCut(*change, line.columns[column]).text,
                  line.columns[form.expected[column]])
            << line.columns[0] << " in form " << static_cast<int>(form.form);
      }
    }
  }
  std::cout << lines.size() << " lines, " << unassigned / std::size(kForms)
            << " of them with characters that came after Unicode "
            << unicodeVersionOfNormalization() << "; " << firstLine(KSV_NORMALIZATION_TEST) << '\n';
  // Most of the file must count.
  EXPECT_LT(unassigned / std::size(kForms), lines.size() / 50);
}

TEST(NormalizationOfUnicode, leaves_every_other_character_as_it_is) {
  std::vector<bool> isNamed(0x110000);
  for (const TestLine& line : testLines()) {
    if (line.isOfSingleCharacters) isNamed[firstCharacter(line.columns[0])] = true;
  }
  std::string others;
  for (char32_t character = 1; character < 0x110000; ++character) {
    if (isNamed[character] || (character >= 0xD800 && character <= 0xDFFF)) continue;
    appendUtf8(character, others);
    others += '\n';
  }
  for (const FormOfColumns& form : kForms) {
    EXPECT_TRUE(normalized(form.form, others) == others) << static_cast<int>(form.form);
  }
}

TEST(NormalizationOfUnicode, knows_all_starters_that_join_with_what_is_in_front) {
  std::vector<bool> isMaybe(0x110000);
  eachLine(dataFile("DerivedNormalizationProps.txt"), [&](const std::vector<std::string>& fields) {
    if (fields.size() < 3 || fields[1] != "NFC_QC" || fields[2] != "M") return;
    const CodeRange range = codeRange(fields[0]);
    for (char32_t code = range.first; code <= range.last; ++code) isMaybe[code] = true;
  });
  eachLine(dataFile("extracted/DerivedCombiningClass.txt"),
           [&](const std::vector<std::string>& fields) {
             if (fields[1] == "0") return;
             const CodeRange range = codeRange(fields[0]);
             for (char32_t code = range.first; code <= range.last; ++code) isMaybe[code] = false;
           });
  size_t count = 0;
  for (char32_t code = 0; code < 0x110000; ++code) {
    EXPECT_EQ(joinsWithFormer(code), isMaybe[code]) << std::hex << static_cast<uint32_t>(code);
    count += isMaybe[code];
  }
  EXPECT_GT(count, 60U);
}

}  // namespace
}  // namespace ksv_kit
