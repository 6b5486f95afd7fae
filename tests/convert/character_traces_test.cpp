// Traces of characters, and the short texts whose records are completed from them.
#include "cconv/bulk/character_traces.h"

#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "tests/convert/bulk_comparison.h"
#include "tests/convert/own_directory.h"

namespace ksv_test {
namespace {

using ksv::CharacterTrace;
using ksv::CharacterTraces;

// A record whose fields all differ, and differ for each number.
ConverterRecord recordOf(uint32_t number) {
  ConverterRecord record = {};
  uint32_t next = number * 16;
  for (uint32_t* field : {&record.decodedGroup, &record.decodedGroupType, &record.targetGroup,
                          &record.targetGroupType, &record.rawCode, &record.groupCode,
                          &record.unicodeCode, &record.outputCode, &record.secondCode}) {
    *field = ++next;
  }
  record.outputWidth = static_cast<uint16_t>(++next);
  record.sequenceLength = static_cast<uint16_t>(++next);
  return record;
}

bool isTraceOf(const CharacterTrace* trace, uint32_t number) {
  if (trace == nullptr) return false;
  ConverterRecord record = {};
  trace->leaveIn(record);
  const ConverterRecord expected = recordOf(number);
  return bytesOf(record) == bytesOf(expected);
}

const CharacterTrace* find(const CharacterTraces& traces, const Bytes& character) {
  return traces.find(reinterpret_cast<const uint8_t*>(character.data()),
                     static_cast<ptrdiff_t>(character.size()));
}

void remember(CharacterTraces& traces, const Bytes& character, uint32_t number) {
  traces.remember(reinterpret_cast<const uint8_t*>(character.data()),
                  static_cast<ptrdiff_t>(character.size()), recordOf(number));
}

Bytes characterOf(uint32_t number) {
  Bytes character;
  for (uint32_t rest = number; rest > 0; rest >>= 8) character += static_cast<char>(rest);
  return character;
}

TEST(CharacterTracesOf, an_empty_table_are_none) {
  const CharacterTraces traces;
  EXPECT_EQ(find(traces, "A"), nullptr);
}

TEST(CharacterTracesOf, the_same_bytes_in_another_length_are_others) {
  CharacterTraces traces;
  remember(traces, bytes("41"), 1);
  remember(traces, bytes("00 41"), 2);
  remember(traces, bytes("00 00 41"), 3);
  remember(traces, bytes("00 00 00 41"), 4);
  EXPECT_TRUE(isTraceOf(find(traces, bytes("41")), 1));
  EXPECT_TRUE(isTraceOf(find(traces, bytes("00 41")), 2));
  EXPECT_TRUE(isTraceOf(find(traces, bytes("00 00 41")), 3));
  EXPECT_TRUE(isTraceOf(find(traces, bytes("00 00 00 41")), 4));
  EXPECT_EQ(find(traces, bytes("41 00")), nullptr);
  EXPECT_EQ(find(traces, bytes("00")), nullptr);
  EXPECT_EQ(find(traces, bytes("FF FF FF FF")), nullptr);
}

TEST(CharacterTracesOf, a_character_are_the_first_that_were_left) {
  CharacterTraces traces;
  remember(traces, "A", 1);
  remember(traces, "A", 2);
  EXPECT_TRUE(isTraceOf(find(traces, "A"), 1));
}

TEST(CharacterTracesOf, many_characters_are_their_own_or_none) {
  CharacterTraces traces;
  constexpr uint32_t kCharacters = 20000;
  for (uint32_t number = 1; number <= kCharacters; ++number)
    remember(traces, characterOf(number), number);
  uint32_t found = 0;
  for (uint32_t number = 1; number <= kCharacters; ++number) {
    const CharacterTrace* const trace = find(traces, characterOf(number));
    if (trace == nullptr) continue;
    ++found;
    ASSERT_TRUE(isTraceOf(trace, number)) << number;
  }
  EXPECT_GT(found, 1000u);
  EXPECT_LE(found, 2048u);
}

TEST(CharacterTracesOf, many_threads_are_never_half_there) {
  CharacterTraces traces;
  constexpr uint32_t kCharacters = 3000;
  std::atomic<int> ready = 0;
  std::atomic<uint32_t> wrong = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&, thread] {
      ++ready;
      while (ready < 8) std::this_thread::yield();
      for (uint32_t step = 0; step < kCharacters; ++step) {
        const uint32_t number = 1 + (step * 7 + static_cast<uint32_t>(thread)) % kCharacters;
        const CharacterTrace* const trace = find(traces, characterOf(number));
        if (trace != nullptr && !isTraceOf(trace, number)) ++wrong;
        remember(traces, characterOf(number), number);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0u);
}

// The record behind a text, and its output, of a record in whose fields something stands.
struct Behind {
  ConverterRecord record;
  Bytes output;
};

Behind behind(const Conversion& setup, const Bytes& text, uint32_t seed) {
  Converter converter(setup);
  converter.give(text, 400);
  ConverterRecord& record = converter.record;
  std::mt19937 random(seed);
  for (uint32_t* field :
       {&record.decodedGroup, &record.targetGroup, &record.rawCode, &record.groupCode,
        &record.unicodeCode, &record.outputCode, &record.previousRawCode, &record.secondCode}) {
    *field = seed == 0 ? 0 : static_cast<uint32_t>(random() % 40);
  }
  converter.convert();
  Behind result = {record, converter.written()};
  result.record.input = result.record.output = nullptr;
  return result;
}

void expectSameBehind(const Conversion& setup, const Bytes& text, uint32_t seed) {
  const Behind fast = behind(setup, text, seed);
  const EngineOnly engineOnly;
  const Behind steps = behind(setup, text, seed);
  ASSERT_EQ(hex(fast.output), hex(steps.output))
      << setup.source << " to " << setup.target << ": " << hex(text);
  ASSERT_EQ(bytesOf(fast.record), bytesOf(steps.record))
      << setup.source << " to " << setup.target << ": " << hex(text) << ", position "
      << fast.record.inputPosition << " and " << steps.record.inputPosition << ", previous "
      << fast.record.previousRawCode << " and " << steps.record.previousRawCode;
}

class ShortTexts : public BulkTest {
 protected:
  // Twenty-odd characters in the charset: so few that each soon has been at an end.
  static std::vector<Bytes> alphabet(const char* charset) {
    const EngineOnly engineOnly;
    std::vector<Bytes> characters;
    for (const uint32_t value :
         {0x41u,   0x7Eu,   0x5Cu,    0x0Au,   0x0Du,   0x00u,   0x7Fu,   0x1Bu,   0xE9u,
          0xE6u,   0x300u,  0x3042u,  0x304Bu, 0x309Au, 0xFF71u, 0x4E00u, 0x2460u, 0x9ED1u,
          0xE000u, 0x2028u, 0x20089u, 0x80u,   0xAC00u, 0x301Cu, 0xFF5Eu, 0xFEFFu}) {
      const Bytes ucs4 = {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                          static_cast<char>(value >> 8), static_cast<char>(value)};
      const Result result = convertWhole({"ISO-10646-UCS-4", charset}, ucs4);
      if (result.status == 0 && !result.output.empty()) characters.push_back(result.output);
    }
    return characters;
  }

  static Bytes randomText(std::mt19937& random, const std::vector<Bytes>& alphabet) {
    Bytes text;
    for (size_t length = random() % 30; length > 0; --length)
      text += alphabet[random() % alphabet.size()];
    return text;
  }
};

TEST_F(ShortTexts, leave_the_record_of_the_engine_whatever_they_end_with) {
  std::mt19937 random(20261121);
  for (const char* source : kCharsets) {
    const std::vector<Bytes> characters = alphabet(source);
    ASSERT_GT(characters.size(), 2u) << source;
    for (const char* target : kCharsets) {
      Conversion setup{source, target};
      for (uint32_t round = 0; round < 60; ++round) {
        setup.options.replaceUnmappable = round % 3 == 0;
        setup.options.convertNewlines = round % 16 < 4;
        setup.options.newlineForm = round % 6;
        setup.parameters[2] = round % 5 == 0;
        std::strcpy(setup.options.defaultLanguage, round % 7 == 0 ? "ja" : "");
        expectSameBehind(setup, randomText(random, characters), round % 2 * round);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(ShortTexts, end_with_every_pair_of_characters) {
  for (const auto& [source, target] : {std::pair{"Shift_JIS", "UTF-8"},
                                       {"UTF-8", "WINDOWS31J"},
                                       {"EUC-JP", "UTF-16"},
                                       {"UTF-16", "EUC-JIS-2004"},
                                       {"UTF-8", "Shift_JIS-2004"},
                                       {"GB18030", "ISO-10646-UCS-4"},
                                       {"windows-1252", "UTF-8"},
                                       {"ISO-10646-UCS-4", "UTF-8"}}) {
    const std::vector<Bytes> characters = alphabet(source);
    for (int round = 0; round < 2; ++round) {
      for (const Bytes& before : characters) {
        for (const Bytes& last : characters) {
          Bytes text;
          for (int i = 0; i < 16; ++i) text += characters[0];
          expectSameBehind({source, target}, text + before + last, 0);
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST_F(ShortTexts, may_begin_anywhere_behind_their_end_too) {
  for (int32_t position = 0; position < 60; ++position) {
    for (const int32_t outputPosition : {0, 5, 399, 400, 401}) {
      const auto recordBehind = [&] {
        Converter converter({"UTF-8", "EUC-JP"});
        converter.give("thirty bytes of the best ASCII", 400);
        converter.record.inputPosition = position;
        converter.record.outputPosition = outputPosition;
        converter.convert();
        ConverterRecord record = converter.record;
        record.input = record.output = nullptr;
        return record;
      };
      const ConverterRecord fast = recordBehind();
      const EngineOnly engineOnly;
      const ConverterRecord steps = recordBehind();
      ASSERT_EQ(bytesOf(fast), bytesOf(steps)) << position << ", " << outputPosition;
    }
  }
}

TEST_F(ShortTexts, are_the_same_in_every_thread) {
  const std::vector<Bytes> characters = alphabet("UTF-8");
  std::mt19937 random(3);
  std::vector<Bytes> texts;
  std::vector<Behind> expected;
  const Conversion setup{"UTF-8", "EUC-JP"};
  for (int i = 0; i < 200; ++i) {
    const EngineOnly engineOnly;
    texts.push_back(randomText(random, characters));
    expected.push_back(behind(setup, texts.back(), 0));
  }
  endProcess();  // so that nothing is remembered
  startProcess();
  ASSERT_EQ(cconvLoadRule(), 1);
  for (size_t i = 0; i < texts.size(); ++i) {
    // The charsets stand elsewhere now.
    Converter converter(setup);
    expected[i].record.sourceCharset = converter.record.sourceCharset;
    expected[i].record.targetCharset = converter.record.targetCharset;
  }
  std::atomic<int> ready = 0;
  std::atomic<uint32_t> wrong = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&] {
      ++ready;
      while (ready < 8) std::this_thread::yield();
      for (int round = 0; round < 5; ++round) {
        for (size_t i = 0; i < texts.size(); ++i) {
          const Behind result = behind(setup, texts[i], 0);
          if (result.output != expected[i].output ||
              bytesOf(result.record) != bytesOf(expected[i].record)) {
            ++wrong;
          }
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0u);
}

// The charset "letters" maps A to Z onto themselves, moved up by so many.
Charset letters(uint32_t movedBy) {
  std::string table;
  for (uint32_t letter = 'A'; letter <= 'Z'; ++letter) {
    char line[32];
    std::snprintf(line, sizeof line, "%X %X\r\n", letter, letter + movedBy);
    table += line;
  }
  return {"letters", "SAME", {{"letter-set", 1, table.substr(0, table.size() - 2)}}};
}

const Charset kAnyUtf8 = {"utf-8", "UTF-8", {{"any-unicode", 4, ""}}};

Bytes movedLetters(uint32_t movedBy) {
  Bytes text;
  for (int i = 0; i < 24; ++i) text += static_cast<char>('A' + i + static_cast<int>(movedBy));
  return text;
}

Bytes convertLetters() {
  Result result = {};
  for (int i = 0; i < 3; ++i) result = convertWhole({"letters", "UTF-8"}, movedLetters(0));
  EXPECT_EQ(result.status, 0u);
  return result.output;
}

TEST(RememberedCharacters, end_with_their_rule_base) {
  const BulkAlways bulkAlways;
  for (const uint32_t movedBy : {0u, 0x20u, 1u, 0x20u}) {
    class Directory : public OwnDirectory {
     public:
      explicit Directory(uint32_t by) { load({letters(by), kAnyUtf8}); }
      void TestBody() override {}
    };
    const Directory directory(movedBy);
    EXPECT_EQ(convertLetters(), movedLetters(movedBy));
    Converter converter({"letters", "UTF-8"});
    converter.give(movedLetters(0), 100);
    EXPECT_EQ(converter.convert(), 0u);
    EXPECT_EQ(converter.record.rawCode, 'X');
    EXPECT_EQ(converter.record.previousRawCode, 'W');
    EXPECT_EQ(converter.record.unicodeCode, 'X' + movedBy);
    EXPECT_EQ(converter.record.outputCode, 'X' + movedBy);
  }
}

using LaterRules = OwnDirectory;

TEST_F(LaterRules, are_found_beside_those_that_are_there) {
  const BulkAlways bulkAlways;
  load({letters(0x20), kAnyUtf8});
  EXPECT_EQ(convertLetters(), movedLetters(0x20));
  ConverterRecord record = {};
  EXPECT_EQ(cconvInitConvert(&record, nullptr, "later"), 1u);
  Charset later = letters(1);
  later.name = "later";
  load({later});  // its group is there already, with its table
  EXPECT_EQ(cconvInitConvert(&record, nullptr, "Later"), 0u);
  EXPECT_EQ(convertLetters(), movedLetters(0x20));
  EXPECT_EQ(convertWhole({"later", "UTF-8"}, movedLetters(0)).output, movedLetters(0x20));
}

using EmptyTables = OwnDirectory;

TEST_F(EmptyTables, pass_every_code_until_the_second_attempt) {
  // A table whose only key is 0 counts as empty.
  load({{"nothing", "SAME", {{"nothing-set", 1, "0 0"}}}, kAnyUtf8});
  ConverterRecord record = {};
  const auto statusOfLetters = [&] {
    uint8_t output[8];
    record.input = reinterpret_cast<const uint8_t*>("AB");
    record.inputPosition = 0;
    record.inputLength = 2;
    record.output = output;
    record.outputPosition = 0;
    record.outputCapacity = sizeof output;
    return cconvConvert(&record);
  };
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "nothing"), 0u);
  ASSERT_EQ(cconvChgCharset(&record, nullptr, "UTF-8"), 0u);
  EXPECT_EQ(statusOfLetters(), 0u);
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "nothing"), 0u);
  ASSERT_EQ(cconvChgCharset(&record, nullptr, "UTF-8"), 0u);
  EXPECT_EQ(statusOfLetters(), 23u);
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "nothing"), 0u);
  ASSERT_EQ(cconvChgCharset(&record, nullptr, "UTF-8"), 0u);
  EXPECT_EQ(statusOfLetters(), 23u);
}

}  // namespace
}  // namespace ksv_test
