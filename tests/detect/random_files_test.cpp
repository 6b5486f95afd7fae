// dtctText and cconvChkEncode against slow ones, on files and buffers of every kind.
#include <gtest/gtest.h>

#include <cstring>

#include "ksv_cconv.h"
#include "ksv_detect.h"
#include "tests/detect/slow_check.h"
#include "tests/detect/slow_detection.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

struct Language {
  const char* given;
  const char* lowered;
};
constexpr Language kLanguages[] = {{"Japanese", "japanese"},
                                   {"SIMPLIFIED chinese", "simplified chinese"},
                                   {"Traditional Chinese", "traditional chinese"},
                                   {"korean", "korean"},
                                   {"English", "english"}};

const std::string kMarks[] = {"",
                              "\xEF\xBB\xBF",
                              "\xFF\xFE",
                              "\xFE\xFF",
                              std::string("\xFF\xFE\0\0", 4),
                              std::string("\0\0\xFE\xFF", 4)};

class RandomFiles : public testing::Test {
 protected:
  void compare(const std::string& text) const {
    file_.write(text);
    for (const Language& language : kLanguages)
      ASSERT_EQ(dtctText(file_.path().c_str(), language.given),
                slowDetect(bytesOf(text), language.lowered))
          << language.given << ", " << text.size() << " bytes, KSV_TEST_SEED=" << testSeed();
  }

  TextFile file_;
};

std::string markedText(std::mt19937& random, const Alphabet& characters, size_t length) {
  const uint32_t noises[] = {0, 0, 2, 10, 60, 300};
  std::string text;
  for (size_t marks = random() % 3 == 0 ? 1 + random() % 3 : 0; marks > 0; --marks)
    text += kMarks[random() % 6];
  text += randomText(random, characters, length, noises[random() % 6]);
  text.resize(length);
  return text;
}

TEST_F(RandomFiles, of_every_alphabet_are_detected_as_slowly) {
  std::mt19937 random(testSeed());
  for (const NamedAlphabet& named : alphabets()) {
    for (const size_t length : {1, 2, 3, 4, 5, 7, 8, 2045, 2046, 2047, 2048, 2049, 2050, 2051, 4094,
                                4095, 4096, 4097, 4098}) {
      compare(markedText(random, named.characters, length));
      if (HasFatalFailure()) FAIL() << named.name;
    }
    for (int round = 0; round < 60; ++round) {
      compare(markedText(random, named.characters, 1 + random() % 300));
      if (HasFatalFailure()) FAIL() << named.name;
    }
  }
}

TEST_F(RandomFiles, of_several_alphabets_are_detected_as_slowly) {
  std::mt19937 random(testSeed() + 1);
  for (int round = 0; round < 150; ++round) {
    std::string text;
    const size_t pieces = 1 + random() % 6;
    for (size_t i = 0; i < pieces; ++i)
      text += markedText(random, alphabets()[random() % alphabets().size()].characters,
                         1 + random() % 3000);
    compare(text);
    if (HasFatalFailure()) FAIL();
  }
}

TEST_F(RandomFiles, with_bytes_changed_taken_out_and_put_in_are_detected_as_slowly) {
  std::mt19937 random(testSeed() + 2);
  for (const NamedAlphabet& named : alphabets()) {
    for (int round = 0; round < 12; ++round) {
      std::string text = randomText(random, named.characters, 2040 + random() % 4200, 0);
      for (uint32_t changes = random() % 4; changes > 0; --changes) {
        const size_t at = random() % 5 == 0 ? 2040 + random() % 10 : random() % text.size();
        const size_t place = std::min(at, text.size() - 1);
        if (random() % 3 == 0) text.erase(place, 1 + random() % 3);
        if (random() % 3 == 0) text.insert(place, 1, static_cast<char>(random() % 256));
        text[std::min(place, text.size() - 1)] = static_cast<char>(random() % 256);
      }
      compare(text);
      if (HasFatalFailure()) FAIL() << named.name;
    }
  }
}

// ---- The encoding check

SlowCheck answerOf(const EncodingCheckRecord& record, uint32_t result) {
  return {result,           record.name,    record.declared,   record.mark,
          record.bigEndian, record.lineEnd, record.resultClass};
}

void compareCheck(const std::string& text, size_t position) {
  // Exactly as large as it is, so that a read behind it is noticed.
  const Bytes bytes = bytesOf(text);
  EncodingCheckRecord record;
  std::memset(&record, 0xAA, sizeof record);
  record.input = bytes.data();
  record.position = static_cast<uint32_t>(position);
  record.end = static_cast<uint32_t>(bytes.size());
  const uint32_t result = cconvChkEncode(&record);
  const SlowCheck slow = slowCheck(bytes, position, bytes.size());
  const SlowCheck fast = answerOf(record, result);
  const auto fields = [](const SlowCheck& check) {
    return std::make_tuple(check.result, check.name, check.declared, check.mark, check.bigEndian,
                           check.lineEnd, check.resultClass);
  };
  ASSERT_EQ(fields(fast), fields(slow))
      << testing::PrintToString(text) << " from " << position << ", KSV_TEST_SEED=" << testSeed();
  ASSERT_EQ(record.position, position);
  ASSERT_EQ(record.end, bytes.size());
}

TEST(RandomBuffers, of_every_alphabet_are_checked_as_slowly) {
  std::mt19937 random(testSeed());
  for (const NamedAlphabet& named : alphabets()) {
    for (int round = 0; round < 400; ++round) {
      const size_t length = round < 20 ? static_cast<size_t>(round) : random() % 200;
      compareCheck(markedText(random, named.characters, length),
                   random() % 6 == 0 ? random() % 5 : 0);
      if (testing::Test::HasFatalFailure()) FAIL() << named.name;
    }
    for (const size_t length : {2045, 2046, 2047, 2048, 2049, 2050, 2052, 5000})
      compareCheck(markedText(random, named.characters, length), random() % 3);
    if (testing::Test::HasFatalFailure()) FAIL() << named.name;
  }
}

TEST(RandomBuffers, with_declarations_are_checked_as_slowly) {
  std::mt19937 random(testSeed() + 3);
  const Alphabet pieces = {"<?xml",
                           "<?XML",
                           " version=\"1.0\"",
                           " encoding=",
                           "ENCODING",
                           "encoding",
                           "\"",
                           "'",
                           "Shift_JIS",
                           "UTF-16",
                           "UTF-8",
                           "?>",
                           "\n",
                           "\r\n",
                           "\r",
                           "=",
                           " ",
                           "EUC-JP-FIX",
                           "ISO-2022-JP",
                           "ISO-10646-UCS-4",
                           std::string(255, 'x')};
  for (int round = 0; round < 20000; ++round) {
    std::string text = random() % 8 == 0 ? "" : "<?xml";
    for (size_t count = random() % 9; count > 0; --count) text += pieces[random() % pieces.size()];
    if (random() % 3 == 0) text = "<?xml encoding=\"" + text;
    const size_t widths[] = {1, 1, 2, 4};
    text = widened(text, widths[random() % 4], random() % 2 == 0);
    if (random() % 3 == 0) text = kMarks[random() % 6] + text;
    if (random() % 4 == 0) text.resize(random() % (text.size() + 1));
    if (random() % 6 == 0 && !text.empty())
      text[random() % text.size()] = static_cast<char>(random() % 256);
    compareCheck(text, random() % 10 == 0 ? random() % 6 : 0);
    if (testing::Test::HasFatalFailure()) FAIL();
  }
}

TEST(RandomBuffers, cut_anywhere_are_checked_as_slowly) {
  const std::string declaration = "<?xml version='1.0' encoding='EUC-JP'?>\r\nabc\n";
  for (const size_t width : {1, 2, 4}) {
    for (const bool bigEndian : {false, true}) {
      for (const std::string& mark : kMarks) {
        const std::string text = mark + widened(declaration, width, bigEndian);
        for (size_t length = 0; length <= text.size(); ++length) {
          compareCheck(text.substr(0, length), 0);
          if (testing::Test::HasFatalFailure()) FAIL();
        }
      }
    }
  }
}

}  // namespace
}  // namespace ksv_detect_tests
