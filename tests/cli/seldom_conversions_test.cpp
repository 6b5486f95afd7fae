// What seldom befalls a conversion: a text whose reading fails, escapes among characters, questions
// about bytes that were never written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/streams.h"
#include "kit/text/buffer_offsets.h"
#include "kit/convert/conversion_journal.h"
#include "kit/convert/iso_2022_planes.h"
#include "cli/text/text_conversion.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

// Fails behind its text.
class FailingSource : public ksv_cli::ByteSource {
 public:
  explicit FailingSource(const std::string& text) : text_(text) {}

  size_t read(uint8_t* buffer, size_t size) override {
    if (at_ == text_.size()) throw ksv_cli::Failure("Input/output error");
    const size_t count = std::min(size, text_.size() - at_);
    std::memcpy(buffer, text_.data() + at_, count);
    at_ += count;
    return count;
  }

 private:
  const std::string text_;
  size_t at_ = 0;
};

class TextSink : public ksv_cli::ByteSink {
 public:
  void write(const uint8_t* bytes, size_t size) override {
    text.append(reinterpret_cast<const char*>(bytes), size);
  }
  std::string text;
};

struct CutText {
  const char* charset;
  const char* text;
  const char* output;
};

// Half a character at the end is not the text's fault where more of it could not be read.
TEST(FailingText, is_told_by_the_system_even_inside_a_character) {
  const CutText rows[] = {{"Shift_JIS", "abcd\x82", "abcd"},
                          {"UTF-8", "abcd\xE3\x81", "abcd"},
                          {"EUC-JP", "\xA4\xA2\xA4\xA4\xA4", "あい"},
                          {"UTF-8", "ab", "ab"}};
  for (const bool skipsInvalid : {false, true}) {
    for (const CutText& row : rows) {
      FailingSource source(row.text);
      TextSink sink;
      const auto settings = converting().settings(
          row.charset, "UTF-8",
          [&](ksv_cli::ConversionSettings& chosen) { chosen.skipInvalid = skipsInvalid; });
      try {
        ksv_cli::convertText(settings, source, sink);
        ADD_FAILURE() << row.charset << " was converted";
      } catch (const ksv_cli::Failure& failure) {
        EXPECT_STREQ(failure.what(), "Input/output error") << row.charset;
      }
      EXPECT_EQ(sink.text, row.output) << row.charset;
    }
  }
}

// U+001B would begin an escape sequence; what stands for it is written in the charset's own way.
TEST(EscapeAmongCharacters, is_replaced_by_characters_of_one_byte_and_of_two) {
  const auto converted = [](uint16_t replacement) {
    return converting().inPieces("UTF-8", "ISO-2022-JP", "a\x1B(", 16,
                                 [&](ksv_cli::ConversionSettings& chosen) {
                                   chosen.options.replaceUnmappable = 1;
                                   chosen.options.narrowReplacement = replacement;
                                   chosen.options.wideReplacement = replacement;
                                 });
  };
  EXPECT_EQ(converted('x'), (Conversion{"\x1B(Bax(", ""}));
  EXPECT_EQ(converted(0xA7), (Conversion{"\x1B(Ba\x1B$B!x\x1B(B(", ""}));
  EXPECT_EQ(converted(0x3013), (Conversion{"\x1B(Ba\x1B$B\".\x1B(B(", ""}));
  // ก is not in the charset either.
  EXPECT_EQ(converted(0x0E01), (Conversion{"\x1B(Ba?(", ""}));
}

TEST(PlaneText, keeps_escapes_that_are_no_designations) {
  for (const std::string text : {"\x1Bx", "\x1B\x1B(Ba", "a\x1B$", "\x1B$\x1B", "\x1B$(!b"}) {
    ksv_kit::PlaneWritingStage planes;
    ksv_kit::ByteBuffer out;
    planes.take(reinterpret_cast<const uint8_t*>(text.data()), text.size(), ksv_kit::PieceEnd::kEnd,
                out);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(out.data()), out.size()), text);
  }
}

// One call for each piece of Shift_JIS: あ, then いb.
TEST(Journal, knows_the_call_that_wrote_a_byte) {
  ksv_kit::ConversionJournal journal;
  EXPECT_EQ(journal.inputOffset(5), 0u);
  ASSERT_EQ(encoded("UTF-8", "a"), "a");  // the charsets are there
  ConverterRecord record{};
  uint32_t parameters[3] = {1, 0, 0};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), KSV_STATUS_DONE);
  ASSERT_EQ(cconvChgCharset(&record, parameters, "Shift_JIS"), KSV_STATUS_DONE);
  ksv_kit::BufferOffsets offsets;
  for (const std::string piece : {"\x82\xA0",
                                  "\x82\xA2"
                                  "b"}) {
    uint8_t output[16];
    record.input = reinterpret_cast<const uint8_t*>(piece.data());
    record.inputPosition = 0;
    record.inputLength = static_cast<int32_t>(piece.size());
    record.output = output;
    record.outputPosition = 0;
    record.outputCapacity = sizeof output;
    const ConverterRecord before = record;
    ASSERT_EQ(cconvConvert(&record), KSV_STATUS_DONE);
    journal.note(before, record, offsets);
    offsets.advance(piece.size());
  }
  EXPECT_EQ(journal.inputOffset(0), 0u);
  EXPECT_EQ(journal.inputOffset(3), 2u);
  EXPECT_EQ(journal.inputOffset(6), 4u);
  EXPECT_EQ(journal.inputOffset(7), 5u);  // behind all that was written
}

TEST(InvalidText, is_told_with_its_first_byte_if_there_is_one_to_show) {
  using ksv_kit::ProblemKind;
  EXPECT_EQ(ksv_kit::messageOf(ProblemKind::kInvalid, "UTF-8", ""), "invalid UTF-8");
  EXPECT_EQ(ksv_kit::messageOf(ProblemKind::kInvalid, "UTF-8", "\xFF\x41"), "invalid UTF-8 (0xFF)");
}

TEST(FileFacts, tell_files_and_their_texts_apart) {
  using ksv_cli::platform::FileFacts;
  using ksv_cli::platform::FileKind;
  FileFacts file;
  EXPECT_FALSE(file.isSameFileAs(file)) << "there is none";
  file.kind = FileKind::kRegular;
  file.size = 3;
  EXPECT_TRUE(file.isSameTextAs(file));
  const auto changed = [&](auto change) {
    FileFacts other = file;
    change(other);
    return other;
  };
  for (const FileFacts& other :
       {changed([](FileFacts& facts) { facts.kind = FileKind::kDirectory; }),
        changed([](FileFacts& facts) { facts.device = 1; }),
        changed([](FileFacts& facts) { facts.number = 1; })}) {
    EXPECT_FALSE(file.isSameFileAs(other));
    EXPECT_FALSE(file.isSameTextAs(other));
  }
  for (const FileFacts& other : {changed([](FileFacts& facts) { facts.size = 4; }),
                                 changed([](FileFacts& facts) { facts.writeTime = 1; })}) {
    EXPECT_TRUE(file.isSameFileAs(other));
    EXPECT_FALSE(file.isSameTextAs(other));
  }
}

}  // namespace
}  // namespace ksv_cli_tests
