// Every vector once as a whole, and then cut at every place of its input and with
// every size of output: the result must be the same.
#include <ostream>
#include <vector>

#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

struct Vector {
  const char* name;
  Conversion setup;
  Bytes input;
};

Conversion with(Conversion setup, void (*change)(Conversion&)) {
  change(setup);
  return setup;
}

const Bytes kJapanese = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E ABC\r\n\xEF\xBD\xB1\xE3\x80\x9C\n\r";

std::vector<Vector> vectors() {
  const Bytes shiftJis = bytes("93 FA 96 7B 8C EA 20 41 0D 0A B1 81 60 0A 0D 0D 0A 5C 7E");
  const auto newlines = [](uint32_t form) {
    return [form](Conversion setup) {
      setup.options.convertNewlines = 1;
      setup.options.newlineForm = form;
      return setup;
    };
  };
  const auto skipping = [](Conversion& s) { s.parameters[2] = 1; };
  const auto marked = [](Conversion& s) { s.options.writeByteOrderMark = 1; };
  const auto detecting = [](Conversion& s) { s.parameters[1] = 1; };
  const auto replacing = [](Conversion& s) { s.options.replaceUnmappable = 1; };
  const auto references = [](Conversion& s) { s.options.supplementaryMode = 1; };
  return {
      {"Shift_JIS to UTF-8", {"Shift_JIS", "UTF-8"}, shiftJis},
      {"UTF-8 to Shift_JIS", {"UTF-8", "Shift_JIS"}, kJapanese},
      {"UTF-8 to UTF-16", {"UTF-8", "UTF-16"}, kJapanese + "\xF0\x9F\x98\x80"},
      {"UTF-16 to UTF-8", {"UTF-16", "UTF-8"}, bytes("65 E5 D8 3D DE 00 00 0D 00 0A")},
      {"UCS-4 to WINDOWS31J", {"ISO-10646-UCS-4", "WINDOWS31J"}, bytes("00 00 24 60 00 00 00 41")},
      {"CR LF forms", newlines(1)({"Shift_JIS", "UTF-8"}), shiftJis},
      {"LF forms", newlines(3)({"Shift_JIS", "UTF-16"}), shiftJis},
      {"separator forms", newlines(4)({"UTF-8", "ISO-10646-UCS-4"}), kJapanese},
      {"skipped bytes", with({"Shift_JIS", "UTF-8"}, skipping),
       bytes("41 81 7F 82 A0 FD 42 85 40")},
      {"marks out", with({"Shift_JIS", "UTF-16"}, marked), shiftJis},
      {"marks in", with({"UTF-16", "UTF-8"}, detecting), bytes("FE FF 30 42 00 41")},
      {"replacements", with({"UTF-8", "Shift_JIS"}, replacing), "a\xE0\xB8\x81\xC3\xA9z"},
      {"references", with({"UTF-8", "ISO-10646-UCS-2"}, references),
       "a\xF0\x9F\x98\x80\xE0\xB8\x81"},
      {"marks and 2004", {"Shift_JIS-2004", "UTF-8"}, bytes("82 F5 82 A9 F0 40 81 4B")},
      {"invalid at the end", {"Shift_JIS", "UTF-8"}, bytes("41 82 A0 81 7F")},
      {"cut at the end", {"Shift_JIS", "UTF-8"}, bytes("41 82 A0 81")},
      {"unmappable at the end", {"UTF-8", "Shift_JIS"}, "ab\xE0\xB8\x81"},
  };
}

// The last status, the final counts, and all that was written.
struct Outcome {
  uint32_t status;
  int32_t position;
  int32_t charactersRead;
  int32_t unitsWritten;
  uint32_t rawCode;
  uint32_t unicodeCode;
  Bytes output;

  bool operator==(const Outcome&) const = default;
};
void PrintTo(const Outcome& o, std::ostream* out) {
  *out << "status " << o.status << " at " << o.position << ", " << o.charactersRead
       << " characters, " << o.unitsWritten << " units, raw " << std::hex << o.rawCode
       << ", unicode " << o.unicodeCode << " [" << hex(o.output) << "]";
}

Outcome outcomeOf(const Converter& converter) {
  const ConverterRecord& r = converter.record;
  return {r.status,  r.inputPosition, r.charactersRead,   r.unitsWritten,
          r.rawCode, r.unicodeCode,   converter.written()};
}

constexpr int32_t kAmple = 1000;

Outcome convertInOneCall(const Vector& vector) {
  Converter converter(vector.setup);
  converter.give(vector.input, kAmple);
  converter.convert();
  return outcomeOf(converter);
}

// Shows the input up to cut first. Output comes in pieces of that size, and twice
// as large while a character does not fit.
Outcome convertInPieces(const Vector& vector, int32_t cut, int32_t capacity) {
  Converter converter(vector.setup);
  converter.give(vector.input, capacity);
  const int32_t length = converter.record.inputLength;
  converter.showInput(cut);
  int32_t room = capacity;
  for (int calls = 0; calls < 10000; ++calls) {
    const int32_t before = converter.record.outputPosition;
    const uint32_t status = converter.convert();
    if (status == 22) {
      room = converter.record.outputPosition > before ? capacity : room * 2;
      converter.drain(room);
    } else if ((status == 0 || status == 12) && converter.record.inputLength < length) {
      converter.showInput(length);
    } else {
      return outcomeOf(converter);
    }
  }
  ADD_FAILURE() << vector.name << ": no end at cut " << cut << ", capacity " << capacity;
  return outcomeOf(converter);
}

class Split : public ConversionTest, public testing::WithParamInterface<size_t> {};

TEST_P(Split, the_result_is_the_same_at_every_cut) {
  const Vector vector = vectors()[GetParam()];
  SCOPED_TRACE(vector.name);
  const Outcome whole = convertInOneCall(vector);
  EXPECT_FALSE(whole.output.empty());
  const int32_t inputLength = static_cast<int32_t>(vector.input.size());
  const int32_t outputLength = static_cast<int32_t>(whole.output.size());
  for (int32_t cut = 0; cut <= inputLength; ++cut) {
    for (int32_t capacity = 1; capacity <= outputLength + 2; ++capacity) {
      ASSERT_EQ(convertInPieces(vector, cut, capacity), whole)
          << "cut " << cut << ", capacity " << capacity;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Vectors, Split, testing::Range<size_t>(0, vectors().size()));

}  // namespace
}  // namespace ksv_test
