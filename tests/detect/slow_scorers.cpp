#include "tests/detect/slow_scorers.h"

#include <utility>

#include "tests/detect/ranges.h"

namespace ksv_detect_tests {

int SlowRecord::read(size_t atLeast) {
  if (atLeast < 1) atLeast = 1;
  if (position + atLeast > data.size()) return -1;
  return data[position++];
}

namespace {

using Trails = std::map<uint32_t, std::set<uint32_t>>;

// Lead ranges and trail ranges by turns.
Trails trails(const std::vector<std::pair<std::string, std::string>>& rows) {
  Trails result;
  for (const auto& [leads, good] : rows)
    for (const uint32_t lead : codesOf(leads)) result[lead].merge(codesOf(good));
  return result;
}

const std::map<std::string, Trails>& allTrails() {
  static const std::map<std::string, Trails> all = {
      {"Shift_JIS", trails({{"81-86 88-9F E0-EC EF", "40-7E 80-FC"},
                            {"87", "3F-FC"},
                            {"ED-EE FA-FB", "40-FC"},
                            {"FC", "40-4B"}})},
      {"EUC-JP", trails({{"A1-F4", "A1-FF"}, {"8E 8F", "A1-DF"}})},
      {"GBK", trails({{"81-A0 B0-D6 D8-F7", "40-7E 80-FE"},
                      {"A1 A3", "A1-FE"},
                      {"A2", "A1-AA B1-E2 E5-EE F1-FC"},
                      {"A4", "A1-F3"},
                      {"A5", "A1-F6"},
                      {"A6", "A1-B8 C1-D8 E0-EB EE-F2 F4-F5"},
                      {"A7", "A1-C1 D1-F1"},
                      {"A8", "40-7E 80-95 A1-BE C0 C5-E9"},
                      {"A9", "40-57 59-5A 5C 60-88 96 A4-EF"},
                      {"AA-AF F8-FE", "40-7E 80-A0"},
                      {"D7", "40-7E 80-F9"}})},
      {"Big5", trails({{"A1-C7 C9-F9", "40-7E A1-FE"}, {"C8", "40-79 7B 7D A2 CD-D3"}})},
      {"Korean", trails({{"A1-A4 A8-A9 AD-FE", "41-A0 A1-FE"},
                         {"A5", "41-A0 A1-AA B0-B9 C1-D8 E1-F8"},
                         {"A6", "41-A0 A1-E4"},
                         {"A7", "41-A0 A1-EF"},
                         {"AA", "41-A0 A1-F3"},
                         {"AB", "41-A0 A1-F6"},
                         {"AC", "41-A0 A1-C1 D1-F1"}})},
  };
  return all;
}

// All codes, true where one is in the ranges.
std::vector<bool> membersOf(const char* ranges) {
  std::vector<bool> members(0x10000);
  for (const uint32_t code : codesOf(ranges)) members[code] = true;
  return members;
}

bool isShiftJisCode(int lead, int trail) {
  static const std::vector<bool> members = membersOf(kShiftJisCodeText);
  return members[static_cast<size_t>(lead * 256 + trail)];
}

bool isAssigned(uint32_t unit) {
  static const std::vector<bool> members = membersOf(kAssignedText);
  return members[unit];
}

bool printable(int c) { return c > 0x20 && c < 0x7F; }

// Behind a CR that has been read and counted.
void behindCr(SlowRecord& r) {
  const int next = r.read();
  if (next == 10) {
    ++r.good;
    r.setCrlf();
    return;
  }
  if (next >= 0) r.unread();
  if (next >= 0 || !r.more) r.setCr();
}

// What the byte scorers have in common. False when the byte is nothing of it.
bool common(SlowRecord& r, int c) {
  if (c != 13 && c != 10 && c != 9 && c != 32 && !printable(c)) return false;
  ++r.good;
  if (c == 10) r.setLf();
  if (c == 13) behindCr(r);
  return true;
}

// ---- Pairs

enum class Result { kRead, kStop, kCut };

struct PairRules {
  std::string name;
  bool byCode = false;
  std::set<int> stops;
  const Trails* trails = nullptr;

  bool isKana(int c) const { return name.starts_with("Shift_JIS") && c >= 0xA1 && c <= 0xDF; }
  bool isLead(int c) const {
    if (byCode) return c >= 0x80 && !isKana(c);
    return trails->count(static_cast<uint32_t>(c)) != 0;
  }
  bool isGood(int lead, int trail) const {
    if (byCode) return isShiftJisCode(lead, trail);
    return trails->at(static_cast<uint32_t>(lead)).count(static_cast<uint32_t>(trail)) != 0;
  }
};

Result cut(SlowRecord& r, const Bytes& bytes) {
  if (r.more) {
    r.carried = bytes;
  } else {
    r.good = 0;
  }
  return Result::kCut;
}

Result character(const PairRules& rules, SlowRecord& r, int c, const Bytes& rest = {}) {
  if (rules.stops.count(c) != 0) return Result::kStop;
  if (common(r, c)) return Result::kRead;
  if (rules.isKana(c)) {
    ++r.good;
    return Result::kRead;
  }
  if (!rules.isLead(c)) {
    ++r.bad;
    return Result::kRead;
  }
  const uint8_t lead = static_cast<uint8_t>(c);
  const int trail = rest.empty() ? r.read() : rest[0];
  if (trail < 0) return cut(r, {lead});
  const bool isGood = rules.isGood(c, trail);
  if (rules.name == "EUC-JP" && c == 0x8F && isGood) {
    const int third = r.read();
    if (third < 0) return cut(r, {lead, static_cast<uint8_t>(trail)});
    ++(third < 0xA1 ? r.bad : r.good);
    return Result::kRead;
  }
  ++(isGood ? r.good : r.bad);
  if (!isGood && rules.name == "Shift_JIS" && c >= 0xFA && c <= 0xFC) r.unread();
  return Result::kRead;
}

void scorePairs(const PairRules& rules, SlowRecord& r) {
  Result result = Result::kRead;
  if (!r.carried.empty()) {
    const Bytes carried = std::exchange(r.carried, {});
    result = character(rules, r, carried[0], Bytes(carried.begin() + 1, carried.end()));
  }
  while (result == Result::kRead) {
    const int c = r.read(r.more ? 2 : 1);
    if (c < 0) break;
    result = character(rules, r, c);
  }
  if (result == Result::kStop) return;
  if (result == Result::kRead && r.more && r.left() == 1) {
    const int last = r.read();
    if (last == 13 || (rules.isLead(last))) r.carried = {static_cast<uint8_t>(last)};
  }
  if (r.good != 0) r.add();
}

// ---- ISO-2022-JP

enum class Mode { kRoman, kKatakana, kPairs, kInvalid };

// The bytes behind an ESC, from those carried and then from the chunk.
Result escape(SlowRecord& r, Mode& mode, Bytes carried) {
  Bytes sequence = std::move(carried);
  const auto complete = [&sequence] {
    return sequence.size() == 4 ||
           (sequence.size() == 3 && !(sequence[1] == '$' && sequence[2] == '('));
  };
  while (!complete()) {
    const int c = r.read();
    if (c < 0) return cut(r, sequence);
    sequence.push_back(static_cast<uint8_t>(c));
  }
  const std::string text(sequence.begin() + 1, sequence.end());
  static const std::map<std::string, Mode> modes = {{"$B", Mode::kPairs},  {"$@", Mode::kPairs},
                                                    {"$(D", Mode::kPairs}, {"(J", Mode::kRoman},
                                                    {"(B", Mode::kRoman},  {"(I", Mode::kKatakana}};
  const auto known = modes.find(text);
  mode = known == modes.end() ? Mode::kInvalid : known->second;
  if (known == modes.end() && text.size() == 3) ++r.bad;
  return Result::kRead;
}

void pair(SlowRecord& r, int first, int second) {
  ++(printable(first) && printable(second) ? r.good : r.bad);
}

void scoreIso2022(SlowRecord& r) {
  Mode mode = Mode::kRoman;
  Result result = Result::kRead;
  const Bytes carried = std::exchange(r.carried, {});
  if (!carried.empty()) {
    if (std::exchange(r.carriedInPairs, false)) {
      pair(r, carried[0], r.read());
    } else if (carried[0] == 0x1B) {
      result = escape(r, mode, carried);
    } else {
      common(r, carried[0]);
    }
    mode = Mode::kRoman;
  }
  while (result == Result::kRead) {
    const int c = r.read(r.more ? 3 : 1);
    if (c < 0) break;
    if (mode == Mode::kInvalid) {
      ++r.bad;
    } else if (c == 0x1B) {
      result = escape(r, mode, {0x1B});
    } else if (mode == Mode::kPairs) {
      const int second = r.read();
      if (second < 0) {
        r.good = 0;
        break;
      }
      pair(r, c, second);
    } else if (mode == Mode::kKatakana && printable(c)) {
      ++r.bad;
    } else if (!common(r, c)) {
      ++(mode == Mode::kKatakana && c >= 0xA1 && c <= 0xDF ? r.good : r.bad);
    }
  }
  if (result == Result::kRead && r.more && mode != Mode::kInvalid) {
    const Bytes rest(r.data.begin() + static_cast<std::ptrdiff_t>(r.position), r.data.end());
    if (!rest.empty() && rest[0] == 0x1B) {
      r.carried = rest;
    } else if (mode == Mode::kPairs) {
      if (rest.size() == 1) {
        r.carried = rest;
        r.carriedInPairs = true;
      }
    } else if (!rest.empty() && rest != Bytes{13, 10}) {
      if (rest.back() == 0x1B || rest.back() == 13) r.carried = {rest.back()};
    }
  }
  r.add();
}

// ---- ASCII, UTF-8

void scoreAscii(SlowRecord& r) {
  bool isText = true;
  for (int c = r.read(); c >= 0 && isText; c = r.read()) {
    if (c == 0 || c == 0x1B || c > 0x7E) {
      isText = false;
    } else if (!common(r, c)) {
      ++r.bad;
    }
  }
  if (isText && r.good != 0) {
    r.add();
  } else {
    r.goodTotal = 0;
    r.badTotal = 0;
  }
}

void scoreUtf8(SlowRecord& r) {
  for (;;) {
    const int c = r.read(r.more ? 3 : 1);
    if (c < 0) break;
    if (c == 0 || c == 0x1B) return;
    if (common(r, c)) continue;
    if (c >= 0xFE) continue;
    if (c < 0xC0) {
      ++r.bad;
      continue;
    }
    size_t length = 2;
    if (c >= 0xE0) length = 3;
    if (c >= 0xF0) length = 4;
    if (c >= 0xF8) length = 5;
    if (c >= 0xFC) length = 6;
    if (r.left() < length - 1) {
      ++r.bad;
      continue;
    }
    bool isGood = true;
    for (size_t i = 1; i < length; ++i) {
      const int next = r.read();
      if (next < 0x80 || next > 0xBF) isGood = false;
    }
    ++(isGood ? r.good : r.bad);
  }
  if (r.good != 0) r.add();
}

// ---- Units of two and four bytes

// The next unit of so many bytes; -1 when it is not all there.
int64_t unit(SlowRecord& r, size_t width, bool bigEndian) {
  if (r.left() < width) return -1;
  int64_t value = 0;
  int64_t weight = 1;
  for (size_t i = 0; i < width; ++i) {
    value =
        bigEndian ? value * 256 + r.data[r.position + i] : value + weight * r.data[r.position + i];
    weight *= 256;
  }
  r.position += width;
  return value;
}

// 1: a character, 0: none, 2: this is no text.
int verdict(int64_t value, size_t width) {
  const int64_t plane = value / 0x10000;
  if (width == 2 || plane == 0) return isAssigned(static_cast<uint32_t>(value)) ? 1 : 0;
  if (plane >= 17 && plane <= 127) return 2;
  return (plane >= 1 && plane <= 3) || (plane >= 14 && plane <= 16) ? 1 : 0;
}

bool readUnit(SlowRecord& r, size_t width, bool bigEndian, int64_t value) {
  const int kind = verdict(value, width);
  if (kind == 2) return false;
  if (kind == 1) {
    ++r.good;
    if (value == 0x2028) r.lineSeparator = true;
    if (value == 0x2029) r.paragraphSeparator = true;
    if (value == 10) r.setLf();
    if (value != 13) return true;
    const bool isLast = r.left() == 0;
    const int64_t next = unit(r, width, bigEndian);
    if (next < 0) {
      if (isLast && !r.more) r.setCr();
    } else if (next == 10) {
      ++r.good;
      r.setCrlf();
    } else if (verdict(next, width) == 1) {
      ++r.good;
      r.setCr();
    } else {
      ++r.bad;
    }
    return true;
  }
  if (width == 2 && value >= 0xD800 && value <= 0xDBFF) {
    const int64_t next = unit(r, 2, bigEndian);
    if (next >= 0) ++(next >= 0xDC00 && next <= 0xDFFF ? r.good : r.bad);
    return true;
  }
  ++r.bad;
  return true;
}

void scoreUnits(SlowRecord& r, size_t width, bool bigEndian) {
  for (;;) {
    const int64_t value = unit(r, width, bigEndian);
    if (value < 0) break;
    if (!readUnit(r, width, bigEndian, value)) return;
  }
  if (width == 2) {
    while (r.read() >= 0) {
    }
    if (r.position % 2 != 0) r.good = 0;
    r.add();
  } else if (r.good != 0) {
    r.add();
  }
}

// Behind 00 0D, which has been counted.
void behindFixedCr(SlowRecord& r) {
  if (r.left() < 2) {
    if (r.left() == 0 && !r.more) r.setCr();
    return;
  }
  const int zero = r.read();
  const int lineFeed = r.read();
  if (zero == 0 && lineFeed == 10) {
    ++r.good;
    r.setCrlf();
  } else {
    r.unread(2);
    r.setCr();
  }
}

void scoreFixed(SlowRecord& r) {
  for (;;) {
    const int first = r.read(r.more ? 2 : 1);
    if (first < 0) break;
    if (first == 0x1B) return;
    if (first != 0 && (first < 0xA1 || first > 0xF4)) {
      ++r.bad;
      continue;
    }
    const int second = r.read();
    if (second < 0) {
      r.good = 0;
    } else if (first != 0) {
      ++(printable(second) || second >= 0xA1 ? r.good : r.bad);
    } else if (second == 13) {
      ++r.good;
      behindFixedCr(r);
    } else if (second == 10 || second == 9 || second == 32 || printable(second) ||
               (second >= 0xA1 && second <= 0xDF)) {
      ++r.good;
      if (second == 10) r.setLf();
    } else {
      ++r.bad;
    }
  }
  if (r.position == r.data.size() && r.position % 2 == 0 && r.good != 0) r.add();
}

}  // namespace

const Trails& trailsOf(const std::string& name) { return allTrails().at(name); }

int64_t slowScore(const std::string& name, SlowRecord& record) {
  record.good = 0;
  record.bad = 0;
  if (name == "ASCII") {
    scoreAscii(record);
  } else if (name == "Shift_JIS") {
    scorePairs({name, false, {0, 0x1B, 0x7F}, &trailsOf(name)}, record);
  } else if (name == "Shift_JIS by code") {
    scorePairs({name, true, {}, nullptr}, record);
  } else if (name == "EUC-JP" || name == "GBK" || name == "Big5" || name == "Korean") {
    scorePairs({name, false, {0, 0x1B}, &trailsOf(name)}, record);
  } else if (name == "ISO-2022-JP") {
    scoreIso2022(record);
  } else if (name == "UTF-8") {
    scoreUtf8(record);
  } else if (name == "EUC-JP-FIX") {
    scoreFixed(record);
  } else {
    scoreUnits(record, name.starts_with("UTF-16") ? 2 : 4, name.ends_with("BE"));
  }
  return record.score();
}

}  // namespace ksv_detect_tests
