// The bulk path against the step-by-step engine: whatever the charsets, options
// and cuts, every byte and every field is the same.
#include <algorithm>
#include <cstring>
#include <vector>

#include "cconv/bulk/vector_level.h"
#include "tests/convert/bulk_comparison.h"

namespace ksv_test {
namespace {

void expectSame(const Conversion& setup, const Bytes& input,
                const std::vector<int32_t>& capacities) {
  const std::string what = std::string(setup.source) + " to " + setup.target;
  const Trace bulk = trace(setup, input, capacities);
  Trace steps;
  {
    const EngineOnly engineOnly;
    steps = trace(setup, input, capacities);
  }
  ASSERT_EQ(difference(bulk, steps), "") << what;
  const WithoutVectors withoutVectors;
  ASSERT_EQ(difference(trace(setup, input, capacities), steps), "") << what << " without vectors";
}

Conversion randomSetup(Random& random, const char* source, const char* target) {
  Conversion setup{source, target};
  const auto flag = [&] { return below(random, 3) == 0 ? 1u : 0u; };
  setup.options.outputBigEndian = below(random, 2);
  setup.options.writeByteOrderMark = flag();
  setup.options.replaceUnmappable = below(random, 2);
  setup.options.convertNewlines = flag();
  setup.options.newlineForm = below(random, 6);
  setup.options.supplementaryMode = static_cast<uint16_t>(flag());
  if (flag()) std::strcpy(setup.options.defaultLanguage, "ja");
  setup.parameters = {below(random, 4) != 0, flag(), below(random, 2)};
  return setup;
}

std::vector<int32_t> randomCapacities(Random& random) {
  if (below(random, 2) == 0) return {100000};
  std::vector<int32_t> capacities;
  for (uint32_t i = 0; i < 3; ++i) {
    capacities.push_back(static_cast<int32_t>(40 + below(random, 4000)));
  }
  return capacities;
}

using Bulk = BulkTest;

TEST_F(Bulk, random_text_converts_as_the_engine_converts_it) {
  Random random(20261121);
  for (int round = 0; round < 3; ++round) {
    for (const char* source : kCharsets) {
      startAnew();
      for (const char* target : kCharsets) {
        const Conversion setup = randomSetup(random, source, target);
        expectSame(setup, randomText(random, source), randomCapacities(random));
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(Bulk, random_bytes_convert_as_the_engine_converts_them) {
  Random random(7);
  for (int round = 0; round < 2; ++round) {
    for (const char* source : kCharsets) {
      startAnew();
      for (const char* target : kCharsets) {
        Bytes input(2000, '\0');
        for (char& c : input) c = static_cast<char>(random());
        expectSame(randomSetup(random, source, target), input, randomCapacities(random));
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(Bulk, the_shortest_texts_convert_as_the_engine_converts_them) {
  Random random(8);
  for (const char* source : kCharsets) {
    startAnew();
    for (const char* target : kCharsets) {
      const Bytes text = randomText(random, source);
      ksv::setBulkPathForTests(ksv::BulkPath::kAlways);
      for (size_t length = 0; length < 40; ++length)
        expectSame(randomSetup(random, source, target), text.substr(0, length), {400});
      for (int32_t capacity = 1; capacity < 90; ++capacity)
        expectSame(randomSetup(random, source, target), text.substr(0, 40), {capacity, 400});
      if (HasFatalFailure()) return;
    }
  }
}

constexpr const char* kUsualSources[] = {
    "Shift_JIS", "EUC-JP",    "ISO-2022-JP", "UTF-8",        "UTF-16",
    "GB18030",   "KoreanKSC", "ISO-8859-1",  "windows-1252", "ISO-10646-UCS-2"};
// From the last one JIS X 0201 is designated, not ASCII.
constexpr const char* kUsualTargets[] = {"UTF-8",      "UTF-16",       "EUC-JP",     "ISO-2022-JP",
                                         "ISO-8859-1", "windows-1252", "EUC-JP-FIX", "WINDOWS31J"};

// With options that leave the bulk path in charge.
Conversion usualSetup(Random& random, const char* source, const char* target, uint32_t bigEndian) {
  Conversion setup{source, target};
  setup.options.outputBigEndian = below(random, 2);
  setup.options.replaceUnmappable = 1;
  setup.options.convertNewlines = below(random, 4) == 0 ? 1 : 0;
  setup.options.newlineForm = below(random, 4);
  setup.parameters = {bigEndian, 0, 1};
  return setup;
}

// Made of characters that the target has, so that the runs get longer.
Bytes mappableText(Random& random, const char* source, const char* target, size_t count,
                   uint32_t bigEndian) {
  const EngineOnly engineOnly;
  Conversion back{target, source};
  back.options.replaceUnmappable = 1;
  back.options.outputBigEndian = bigEndian;
  back.parameters = {1, 0, 1};
  return convertWhole(back, ordinaryText(random, target, count, 1)).output;
}

void expectSameOfLongTexts(Random& random, const char* source, const char* target) {
  for (const uint32_t bigEndian : {0u, 1u}) {
    expectSame(usualSetup(random, source, target, bigEndian),
               ordinaryText(random, source, 10000, bigEndian), {90000, 33333});
    expectSame(usualSetup(random, source, target, bigEndian),
               mappableText(random, source, target, 40000, bigEndian), {1000000});
  }
}

// Inside a run of what goes well anything may stand that has to be left to the engine.
void expectSameWithStrangers(Random& random, const char* source, const char* target) {
  const Bytes strangers[] = {
      bytes("1B"),          bytes("1B 24 42"), bytes("1B 28 42"),    bytes("1B 28 4A"),
      bytes("0A"),          bytes("0D"),       bytes("7F"),          bytes("80"),
      bytes("FF"),          bytes("8F A2 AF"), bytes("B1"),          bytes("E3 82"),
      bytes("F0 9F 98 80"), bytes("E3 82 9A"), bytes("CC 80"),       bytes("9A 30"),
      bytes("00 D8"),       bytes("C0 80"),    bytes("81 30 81 30"), bytes("00"),
      bytes("E0 80 8D"),    bytes("ED A0 80"), bytes("E2 82 AC"),    bytes("EF BF BF")};
  const uint32_t bigEndian = below(random, 2);
  const Bytes text = mappableText(random, source, target, 260, bigEndian);
  for (size_t at = 0; at < 150; ++at) {
    Bytes disturbed = text;
    const Bytes& stranger = strangers[below(random, std::size(strangers))];
    disturbed.replace(std::min(at, text.size()), below(random, 2) * stranger.size(), stranger);
    expectSame(usualSetup(random, source, target, bigEndian), disturbed, {4000});
  }
}

TEST_F(Bulk, long_ordinary_texts_convert_as_the_engine_converts_them) {
  Random random(11);
  for (const char* source : kUsualSources) {
    for (const char* target : kUsualTargets) {
      startAnew();
      ASSERT_NO_FATAL_FAILURE(expectSameOfLongTexts(random, source, target));
    }
  }
}

TEST_F(Bulk, a_stranger_at_every_place_of_an_ordinary_text) {
  Random random(12);
  for (const char* source : kUsualSources) {
    for (const char* target : kUsualTargets) {
      startAnew();
      ASSERT_NO_FATAL_FAILURE(expectSameWithStrangers(random, source, target));
    }
  }
}

class WithVectorsUpTo {
 public:
  explicit WithVectorsUpTo(ksv::vector_runs::VectorLevel level) {
    ksv::vector_runs::limitVectorsForTests(level);
  }
  ~WithVectorsUpTo() {
    ksv::vector_runs::limitVectorsForTests(ksv::vector_runs::VectorLevel::kAvx512);
  }
};

void expectSameWithVectorsUpTo(ksv::vector_runs::VectorLevel level) {
  if (ksv::vector_runs::vectorLevel() <= level) GTEST_SKIP() << "the processor has no more";
  const WithVectorsUpTo limited(level);
  Random random(13);
  for (const char* source : kUsualSources) {
    for (const char* target : kUsualTargets) {
      startAnew();
      ASSERT_NO_FATAL_FAILURE(expectSameOfLongTexts(random, source, target));
      ASSERT_NO_FATAL_FAILURE(expectSameWithStrangers(random, source, target));
    }
  }
}

TEST_F(Bulk, ordinary_texts_convert_as_the_engine_converts_them_with_avx2) {
  expectSameWithVectorsUpTo(ksv::vector_runs::VectorLevel::kAvx2);
}

TEST_F(Bulk, ordinary_texts_convert_as_the_engine_converts_them_with_sse41) {
  expectSameWithVectorsUpTo(ksv::vector_runs::VectorLevel::kSse41);
}

TEST_F(Bulk, ordinary_texts_convert_as_the_engine_converts_them_without_vectors) {
  expectSameWithVectorsUpTo(ksv::vector_runs::VectorLevel::kNone);
}

// The whole buffer behind one call, what lies behind the output included.
Bytes bufferAfter(const Conversion& setup, const Bytes& input, size_t capacity) {
  Converter converter(setup);
  Bytes buffer(capacity, '\xEE');
  ConverterRecord& record = converter.record;
  record.input = reinterpret_cast<const uint8_t*>(input.data());
  record.inputLength = static_cast<int32_t>(input.size());
  record.output = reinterpret_cast<uint8_t*>(buffer.data());
  record.outputCapacity = static_cast<int32_t>(capacity);
  cconvConvert(&record);
  return buffer;
}

TEST_F(Bulk, touches_nothing_behind_the_output_of_a_short_text) {
  Random random(10);
  for (const char* source : kCharsets) {
    startAnew();
    for (const char* target : kCharsets) {
      const Bytes text = randomText(random, source).substr(0, 60 + below(random, 900));
      Conversion setup = randomSetup(random, source, target);
      setup.options.replaceUnmappable = 0;
      for (const size_t capacity : {text.size() / 2, text.size() + 7, 8 * text.size()}) {
        ksv::setBulkPathForTests(ksv::BulkPath::kAlways);
        const Bytes bulk = bufferAfter(setup, text, capacity);
        const EngineOnly engineOnly;
        ASSERT_EQ(hex(bulk), hex(bufferAfter(setup, text, capacity)))
            << source << " to " << target << ", " << capacity << " bytes";
      }
    }
  }
}

TEST_F(Bulk, every_output_size_around_the_batches) {
  const Bytes input = [] {
    Bytes text;
    for (int i = 0; i < 600; ++i) text += i % 7 == 0 ? bytes("41") : bytes("82 A0");
    return text;
  }();
  for (int32_t capacity = 1; capacity < 1700; capacity += 3) {
    expectSame({"Shift_JIS", "UTF-8"}, input, {capacity, 5000});
    if (HasFatalFailure()) return;
  }
}

TEST_F(Bulk, an_invalid_byte_at_every_place) {
  Bytes good;
  for (int i = 0; i < 700; ++i) good += bytes("82 A0");
  for (size_t at = 0; at < 300; ++at) {
    Bytes bad = good;
    bad[at] = '\xFD';
    Conversion setup{"Shift_JIS", "UTF-8"};
    expectSame(setup, bad, {10000});
    setup.parameters[2] = 1;
    expectSame(setup, bad, {10000});
    if (HasFatalFailure()) return;
  }
}

TEST_F(Bulk, a_mark_at_every_place_composes_with_its_base) {
  for (size_t at = 0; at < 200; ++at) {
    std::vector<uint32_t> values(600, 0x304B);
    values[at] = 0x309A;
    const Bytes text = convertWhole({"ISO-10646-UCS-4", "UTF-8"}, ucs4(values)).output;
    expectSame({"UTF-8", "Shift_JIS-2004"}, text, {10000});
    expectSame({"UTF-8", "Shift_JIS"}, text, {10000});
    if (HasFatalFailure()) return;
  }
}

TEST_F(Bulk, writes_nothing_behind_the_outputs_end) {
  for (int32_t capacity = 1000; capacity < 1040; ++capacity) {
    Converter converter({"Shift_JIS", "UTF-8"});
    Bytes input;
    for (int i = 0; i < 2000; ++i) input += bytes("82 A0");
    converter.give(input, capacity);
    EXPECT_EQ(converter.convert(), 22u);  // the buffer is exactly as large as it says
    EXPECT_EQ(converter.record.outputPosition, capacity / 3 * 3);
  }
}

}  // namespace
}  // namespace ksv_test
