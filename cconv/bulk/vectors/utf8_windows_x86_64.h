// Runs from UTF-8 to units of two bytes in windows of 128 bits, of which a vector has one
// or more. To be included where the instructions for it are allowed, behind the few that
// compilers have no operators for. The other way the tables are faster than these.

namespace ksv::vector_runs {
namespace {

constexpr uint32_t kWindow = 16;  // bytes

using Bytes = uint8_t __attribute__((vector_size(kWindow * kWindows)));
// The same vector, as units.
using Units = uint16_t __attribute__((vector_size(kWindow * kWindows)));

// What there are no operators for: windows so many bytes apart, loaded and stored; sixteen
// bytes for each window; bytes by their places; and the upper bit of each byte.
Bytes loaded(const uint8_t* bytes, uint32_t step);
void store(Bytes bytes, uint8_t* output, uint32_t step);
Bytes repeated(const uint8_t (&bytes)[kWindow]);
Bytes shuffled(Bytes bytes, Bytes places);
uint32_t signs(Bytes bytes);

// The same vector of another kind. The library's own cast is compiled for every processor.
template <typename To, typename From>
KSV_IN_LOOP To as(From vector) {
  return (To)vector;
}

KSV_IN_LOOP __m128i window(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

KSV_IN_LOOP void storeWindow(uint8_t* output, __m128i bytes) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(output), bytes);
}

constexpr uint32_t kThrees = 4;  // characters of three bytes in a window
constexpr uint32_t kTwos = 8;    // characters of two bytes in a window
// With so many characters wanted, windows can be loaded and stored.
constexpr uint32_t kLeastWanted = 2 * kTwos * kWindows;

KSV_IN_LOOP Units unitsOf(Bytes bytes) { return as<Units>(bytes); }
KSV_IN_LOOP Bytes bytesOf(Units units) { return as<Bytes>(units); }
KSV_IN_LOOP uint32_t signs(Units comparison) { return signs(bytesOf(comparison)); }

// What a comparison says, as all the bits of those for which it holds.
template <typename Comparison>
KSV_IN_LOOP Units holds(Comparison comparison) {
  return as<Units>(comparison);
}

// The pages of a run that are plain, a bit each: a row for each upper half of a byte. Those of
// surrogates are not, since in UTF-8 they are ill-formed.
struct PlainBits {
  uint8_t low[16];
  uint8_t high[16];

  explicit PlainBits(const PlainPages& pages) {
    for (uint32_t row = 0; row < 16; ++row) {
      uint32_t bits = 0;
      for (uint32_t page = 0; page < 16; ++page) {
        const bool isSurrogate = row == 0xD && page >= 8;
        const uint8_t state = isSurrogate ? PlainPages::kIsNot : pages.classes[16 * row + page];
        bits |= static_cast<uint32_t>(state & PlainPages::kIsPlain) << page;
      }
      low[row] = static_cast<uint8_t>(bits);
      high[row] = static_cast<uint8_t>(bits >> 8);
    }
  }
};

class PlainCheck {
 public:
  KSV_IN_LOOP explicit PlainCheck(const PlainBits& bits)
      : low_(repeated(bits.low)), high_(repeated(bits.high)) {}

  // The bytes of the values, which have to be below U+0800 or not, that are written otherwise than
  // they are.
  template <bool kBelow0800>
  KSV_IN_LOOP uint32_t others(Units values) const {
    static constexpr uint8_t kBits[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const Bytes row = bytesOf(values >> 12);
    const Units page = values >> 8 & 0xF;
    const Units isUpper = holds(page > 7);
    const Units bits =
        (isUpper & unitsOf(shuffled(high_, row))) | (~isUpper & unitsOf(shuffled(low_, row)));
    const Units bit = unitsOf(shuffled(repeated(kBits), bytesOf(page)));
    Units bad = holds((bits & bit & 0xFF) == 0);
    if constexpr (!kBelow0800) bad |= holds((values & 0xF800) == 0);
    for (const StandaloneMark& mark : kStandaloneMarks) {
      if ((mark.unicode < 0x800) == kBelow0800)
        bad |= holds(values == static_cast<uint16_t>(mark.unicode));
    }
    return signs(bad);
  }

 private:
  const Bytes low_;
  const Bytes high_;
};

// How many of the characters that the windows can hold stand before the first that is
// marked, by the signs of their bytes.
template <uint32_t kCharacters, uint32_t kBytes>
KSV_IN_LOOP uint32_t leadingGood(uint32_t marked) {
  constexpr uint32_t kBehind = 1u << kCharacters * kBytes;
  const uint32_t first =
      static_cast<uint32_t>(std::countr_zero((marked & 0xFFFF) | kBehind)) / kBytes;
  if (kWindows == 1 || first < kCharacters) return first;
  return first + static_cast<uint32_t>(std::countr_zero(marked >> 16 | kBehind)) / kBytes;
}

// Goes behind the characters that were put out: all that the windows can hold, or so many.
// By a branch, since the next ones must not wait for the answer.
template <uint32_t kAll, uint32_t kBytes>
KSV_IN_LOOP bool goBehind(BulkPosition& at, uint32_t count) {
  if (count == kAll) [[likely]] {
    at.output += 2 * kAll;
    at.advance(kBytes * kAll, kAll);
    return true;
  }
  at.output += 2 * count;
  at.advance(kBytes * count, count);
  return count > 0;
}

template <bool kBigEndian>
KSV_IN_LOOP Bytes inOrder(Units units) {
  return bytesOf(kBigEndian ? units << 8 | units >> 8 : units);
}

// Takes characters of three bytes each, as many as the windows begin with.
template <bool kBigEndian>
KSV_IN_LOOP bool takeThrees(const PlainCheck& plain, BulkPosition& at) {
  static constexpr uint8_t kMarkers[16] = {0xF0, 0xC0, 0xC0, 0xF0, 0xC0, 0xC0, 0xF0, 0xC0,
                                           0xC0, 0xF0, 0xC0, 0xC0, 0,    0,    0,    0};
  static constexpr uint8_t kThreeBytes[16] = {0xE0, 0x80, 0x80, 0xE0, 0x80, 0x80, 0xE0, 0x80,
                                              0x80, 0xE0, 0x80, 0x80, 0,    0,    0,    0};
  static constexpr uint8_t kNo = 0x80;  // of a shuffle: zero
  static constexpr uint8_t kLeads[16] = {kNo, 0,   kNo, 3,   kNo, 6,   kNo, 9,
                                         kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo};
  static constexpr uint8_t kRests[16] = {2,   1,   5,   4,   8,   7,   11,  10,
                                         kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo};
  const Bytes bytes = loaded(at.input, 3 * kThrees);
  const auto areThrees = (bytes & repeated(kMarkers)) == repeated(kThreeBytes);
  const uint32_t good = leadingGood<kThrees, 3>(~signs(as<Bytes>(areThrees)));
  if (good == 0) return false;
  const Units rests = unitsOf(shuffled(bytes, repeated(kRests)));
  const Units leads = unitsOf(shuffled(bytes, repeated(kLeads)));
  const Units values = leads << 4 | (rests & 0x3F00) >> 2 | (rests & 0x003F);
  const uint32_t count = std::min(good, leadingGood<kThrees, 2>(plain.others<false>(values)));
  store(inOrder<kBigEndian>(values), at.output, 2 * kThrees);
  return goBehind<kThrees * kWindows, 3>(at, count);
}

// The same for characters of two bytes.
template <bool kBigEndian>
KSV_IN_LOOP bool takeTwos(const PlainCheck& plain, BulkPosition& at) {
  const Units bytes = unitsOf(loaded(at.input, kWindow));
  const uint32_t others = ~signs(holds((bytes & 0xC0E0) == 0x80C0) & ~holds((bytes & 0x1E) == 0));
  if ((others & 3) != 0) return false;
  const Units values = (bytes & 0x1F) << 6 | (bytes >> 8 & 0x3F);
  const uint32_t count = leadingGood<kTwos, 2>(others | plain.others<true>(values));
  store(inOrder<kBigEndian>(values), at.output, kWindow);
  return goBehind<kTwos * kWindows, 2>(at, count);
}

// Takes a well-formed character.
KSV_IN_LOOP bool takeWellFormed(const RunTables& run, BulkPosition& at) {
  const uint32_t lead = at.input[0];
  const bool continues = (at.input[1] & 0xC0) == 0x80;
  const bool isTwo = lead >= 0xC2 && lead < 0xE0 && continues;
  const bool isShort = lead == 0xE0 && at.input[1] < 0xA0;
  const bool isSurrogate = lead == 0xED && at.input[1] >= 0xA0;
  const bool isThree = lead >= 0xE0 && lead < 0xF0 && continues && !isShort && !isSurrogate &&
                       (at.input[2] & 0xC0) == 0x80;
  return (lead < 0x80 || isTwo || isThree) && source_forms::Utf8::runOne(run, at);
}

template <AsciiOutput kAscii>
void runUtf8ToUnits(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  constexpr bool kBigEndian = kAscii == AsciiOutput::kBigUnits;
  const PlainCheck plain{PlainBits(*run.pages)};
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    if (const uint32_t leading = leadingAscii(blockAt(at.input)); leading > 0) {
      if (takeAscii<kAscii>(run, at, wanted, leading) > 0) continue;
    }
    const bool isLonger = at.input[0] >= 0xE0;
    const bool areTwos = !isLonger && (at.input[2] & 0xE0) == 0xC0;
    if (isLonger && takeThrees<kBigEndian>(plain, at)) continue;
    if (areTwos && takeTwos<kBigEndian>(plain, at)) continue;
    if (!takeWellFormed(run, at)) break;
  }
  position = at;
}

RunFunction utf8ToUnits(AsciiOutput ascii) {
  if (ascii == AsciiOutput::kLittleUnits) return runUtf8ToUnits<AsciiOutput::kLittleUnits>;
  return ascii == AsciiOutput::kBigUnits ? runUtf8ToUnits<AsciiOutput::kBigUnits> : nullptr;
}

}  // namespace
}  // namespace ksv::vector_runs
