#include "tests/detect/slow_check.h"

#include <algorithm>
#include <array>
#include <vector>

#include "tests/detect/ranges.h"

namespace ksv_detect_tests {
namespace {

// The text in units of the width, little-endian, but for the zeroes behind the last.
Bytes pattern(const std::string& text, size_t width) {
  Bytes bytes;
  for (const char c : text) {
    bytes.push_back(static_cast<uint8_t>(c));
    bytes.insert(bytes.end(), width - 1, 0);
  }
  bytes.resize(bytes.size() - (width - 1));
  return bytes;
}

// A buffer that is read between two offsets.
struct Text {
  const Bytes& bytes;
  size_t end;

  bool holds(size_t offset, const Bytes& wanted) const {
    return offset + wanted.size() <= end &&
           std::equal(wanted.begin(), wanted.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(offset));
  }
  uint32_t unit(size_t offset, size_t width, bool big) const {
    uint32_t value = 0;
    for (size_t i = 0; i < width; ++i)
      value |= uint32_t{bytes[offset + i]} << (8 * (big ? width - 1 - i : i));
    return value;
  }
};

struct Mark {
  Bytes bytes;
  const char* name;
  uint32_t bigEndian;
};
const Mark kMarks[] = {{{0xFF, 0xFE, 0, 0}, "ISO-10646-UCS-4", 0},
                       {{0, 0, 0xFE, 0xFF}, "ISO-10646-UCS-4", 1},
                       {{0xEF, 0xBB, 0xBF}, "UTF-8", 1},
                       {{0xFE, 0xFF}, "UTF-16", 1},
                       {{0xFF, 0xFE}, "UTF-16", 0}};

bool declaredWith(const Text& text, size_t at, bool marked, size_t width) {
  const std::vector<size_t> offsets =
      width == 1 ? std::vector<size_t>{0} : std::vector<size_t>{0, width - 1};
  for (const char* word : {"<?xml", "<?XML"}) {
    const Bytes wanted = pattern(word, width);
    for (const size_t offset : offsets) {
      if (text.end > offset + wanted.size() && text.holds(at + offset, wanted)) return true;
      if (marked && text.end > offset + wanted.size() + 2 && text.holds(at + offset + 2, wanted))
        return true;
    }
  }
  return false;
}

// False when there is no value to take.
bool declaredValue(const Text& text, size_t width, bool big, std::string& name) {
  const Bytes lower = pattern("encoding", width);
  const Bytes upper = pattern("ENCODING", width);
  size_t hit = 0;
  for (size_t i = 0; text.end > lower.size() && i + 1 < text.end - lower.size(); ++i) {
    if (text.bytes[i] == 13 || text.bytes[i] == 10) break;
    if (text.holds(i, lower) || text.holds(i, upper)) {
      hit = i / width * width;
      break;
    }
  }
  if (hit == 0) return false;
  std::vector<size_t> quotes;
  std::string value;
  for (size_t i = hit; i + width <= text.end && quotes.size() < 2; i += width) {
    const uint32_t unit = text.unit(i, width, big);
    if (unit == '"' || unit == '\'') {
      quotes.push_back(i);
    } else if (quotes.size() == 1) {
      value += static_cast<char>(unit & 0xFF);
    }
  }
  if (quotes.size() < 2 || quotes[1] - quotes[0] + 1 > 259) return false;
  name = value.c_str();
  return true;
}

// ---- Scores

bool space(int c) { return c == 32 || c == 13 || c == 10 || c == 9; }
bool plain(int c) { return (c >= 0x21 && c <= 0x7E) || space(c); }
bool kana(int c) { return c >= 0xA1 && c <= 0xDF; }

struct Score {
  int64_t good = 0;
  int64_t bad = 0;
  bool none = false;
  int64_t first = 0;   // multibyte or double-byte characters
  int64_t second = 0;  // high bytes
  void count(bool isGood) { ++(isGood ? good : bad); }
  int64_t value() const { return none || good == 0 ? 0 : good * 10000 / (good + bad); }
};

bool isChecked(uint32_t code) {
  static const std::set<uint32_t> codes = codesOf(kCheckedText);
  return codes.count(code) != 0;
}

bool isShiftJisCode(uint32_t code) {
  static const std::set<uint32_t> codes = codesOf(kShiftJisCodeText);
  return codes.count(code) != 0;
}

Score iso2022(const Bytes& t) {
  Score s;
  int state = 2002;
  size_t i = 0;
  while (i < t.size()) {
    const int c = t[i++];
    if (c == 0x1B) {
      if (i + 2 > t.size()) break;
      const std::string two(t.begin() + static_cast<std::ptrdiff_t>(i),
                            t.begin() + static_cast<std::ptrdiff_t>(i + 2));
      i += 2;
      if (two == "$(") {
        if (i == t.size()) break;
        if (t[i++] == 'D') state = 2007;
      } else {
        state = two == "$B"   ? 2006
                : two == "$@" ? 2004
                : two == "(J" ? 2002
                : two == "(B" ? 2001
                : two == "(I" ? 2003
                              : 0;
      }
    } else if (state == 0) {
      s.count(false);
    } else if (state <= 2002) {
      s.count(plain(c));
    } else if (state == 2003) {
      s.count(kana(c) || space(c));
    } else if (c < 0x21 || c > 0x7E) {
      s.count(false);
    } else {
      if (i == t.size()) break;
      const int second = t[i++];
      s.count(second >= 0x21 && second <= 0x7E);
    }
  }
  return s;
}

Score utf8(const Bytes& t) {
  Score s;
  size_t i = 0;
  while (i < t.size()) {
    const int c = t[i++];
    if (c == 0 || c == 0x1B) {
      s.none = true;
      break;
    }
    if (plain(c)) {
      s.count(true);
    } else if (c >= 0xC0 && c < 0xFE) {
      const size_t more = c >= 0xFC ? 5 : c >= 0xF8 ? 4 : c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : 1;
      if (i + more > t.size()) break;
      uint64_t value = static_cast<uint64_t>(c) & ((1u << (6 - more)) - 1);
      for (size_t k = 0; k < more; ++k) value = value * 64 + (t[i++] & 63);
      const uint64_t least[] = {0, 0x80, 0x800, 0x10000, 0x200000, 0x4000000};
      const uint64_t most[] = {0, 0x7FF, 0xFFFF, 0x1FFFFF, 0x3FFFFFF, 0x7FFFFFFF};
      const bool isGood = value >= least[more] && value <= most[more];
      s.count(isGood);
      s.first += isGood;
    } else if (c < 0xFE) {
      s.count(false);
    }
  }
  return s;
}

Score eucJp(const Bytes& t) {
  Score s;
  size_t i = 0;
  while (i < t.size()) {
    const int c = t[i++];
    if (c == 0 || c == 0x1B) {
      s.none = true;
      break;
    }
    if (!kana(c) && c != 0x8E && c != 0x8F) {
      s.count(plain(c));
      continue;
    }
    if (i == t.size()) break;
    const int second = t[i++];
    if (c == 0x8F && kana(second)) {
      if (i == t.size()) break;
      s.count(t[i++] >= 0xA1);
    } else {
      s.count(kana(c) ? second >= 0xA1 : c == 0x8E && kana(second));
    }
  }
  return s;
}

Score eucJpFix(const Bytes& t) {
  Score s;
  for (size_t i = 0; i + 1 < t.size() && !s.none; i += 2) {
    const int c = t[i];
    const int second = t[i + 1];
    if (c == 0x1B) s.none = true;
    s.count(c == 0 ? plain(second) || kana(second)
                   : kana(c) && ((second >= 0x21 && second <= 0x7E) || second >= 0xA1));
  }
  return s;
}

Score units(const Bytes& t, size_t width, bool big) {
  Score s;
  bool ascii = width == 4;
  const Text text{t, t.size()};
  for (size_t i = 0; i + width <= t.size(); i += width) {
    const uint32_t unit = text.unit(i, width, big);
    const uint32_t plane = unit >> 16;
    if (plane >= 17 && plane <= 127) s.none = true;
    s.count(plane <= 16 && isChecked(unit & 0xFFFF));
    ascii = ascii || (unit >= 0x21 && unit <= 0x7E);
  }
  s.none = s.none || !ascii;
  return s;
}

Score windows31j(const Bytes& t) {
  Score s;
  for (size_t i = 0; i < t.size(); ++i) {
    const int c = t[i];
    if (i + 1 < t.size() && isShiftJisCode(static_cast<uint32_t>(c * 256 + t[i + 1]))) {
      s.count(true);
      ++s.first;
      ++i;
    } else if (c == 0 || c == 0x1B || c == 0x7F) {
      s.none = true;
      break;
    } else {
      s.count(plain(c) || kana(c));
      s.second += c > 0x9F;
    }
  }
  return s;
}

std::string nameByScores(const Bytes& t, uint32_t& bigEndian) {
  const Score fixScore = eucJpFix(t), eucScore = eucJp(t), utf8Score = utf8(t);
  const Score sjisScore = windows31j(t), isoScore = iso2022(t);
  const int64_t big16 = units(t, 2, true).value(), little16 = units(t, 2, false).value();
  const int64_t big32 = units(t, 4, true).value(), little32 = units(t, 4, false).value();
  const int64_t fix = fixScore.value(), euc = eucScore.value(), u8 = utf8Score.value();
  const int64_t sjis = sjisScore.value(), iso = isoScore.value();
  const int64_t u16 = std::max(big16, little16), u32 = std::max(big32, little32);
  for (int64_t limit = 10000; limit >= 7000; limit -= 100) {
    if (fix > limit && fix > u8 && fix > euc && fix > u16 && fix > u32 && sjis < fix)
      return "EUC-JP-FIX";
    if (euc > limit && euc >= fix && euc > u8 && euc > u16 && euc > u32 && sjis < euc)
      return "EUC-JP";
    if (u16 > limit && u16 >= fix && u16 > u8 && u16 > euc && u16 > u32 && sjis < u16) {
      bigEndian = big16 > little16;
      return "UTF-16";
    }
    if (u32 > limit && u32 >= fix && u32 > u8 && u32 > euc && u32 > u16 && u32 > sjis) {
      bigEndian = big32 > little32;
      return "ISO-10646-UCS-4";
    }
    if (sjis > limit && sjis >= fix && sjis >= euc && sjis >= u16 && sjis > u8 && sjis > u32)
      return sjisScore.first >= 1    ? "WINDOWS31J"
             : sjisScore.second >= 1 ? "ISO-8859-1"
                                     : "ISO-646IRV";
    if (u8 > limit && u8 >= fix && u8 >= euc && u8 >= u16 && u8 >= u32 && u8 >= sjis && u8 >= iso)
      return utf8Score.first >= 1 ? "UTF-8" : "ISO-646IRV";
    if (iso > limit) return "ISO-2022-JP";
  }
  return "";
}

// ---- Line ends

uint32_t lineEndOf(const Bytes& t, const std::string& name, size_t width, bool big) {
  if (name == "EUC-JP-FIX") {
    width = 2;
    big = true;
  } else if (name == "UTF-16") {
    width = 2;
  } else if (name == "ISO-10646-UCS-4") {
    width = 4;
  }
  std::array<int, 6> n{};  // by kind
  uint32_t previous = 0xFFFFFFFF;
  const Text text{t, t.size()};
  size_t i = 0;
  while (i + width <= t.size()) {
    const uint32_t unit = text.unit(i, width, big);
    i += width;
    if (previous == 13) {
      ++n[unit == 10 ? 1 : 2];
      previous = 0xFFFFFFFF;
    } else if (previous == 10) {
      ++n[unit == 13 ? 1 : 3];
      previous = 0xFFFFFFFF;
    } else if (previous == 0xE2 && unit == 0x80) {
      if (i == t.size()) break;
      if (t[i] == 0xA8) ++n[4];
      if (t[i] == 0xA9) ++n[5];
      ++i;
      previous = 0xFFFFFFFF;
    } else {
      if (unit == 0x2028) ++n[4];
      if (unit == 0x2029) ++n[5];
      previous = unit;
    }
  }
  const uint32_t otherwise = n[1] > 0 ? 1 : 0;
  if (name == "ISO-2022-JP") return n[2] > n[3] ? 2 : n[3] > n[2] ? 3 : otherwise;
  for (const size_t kind : {size_t{4}, size_t{5}, size_t{2}, size_t{3}}) {
    bool isMost = true;
    for (size_t other = 1; other <= 5; ++other)
      if (other != kind && n[other] >= n[kind]) isMost = false;
    if (isMost) return static_cast<uint32_t>(kind);
  }
  return otherwise;
}

}  // namespace

SlowCheck slowCheck(const Bytes& input, size_t position, size_t end) {
  SlowCheck check;
  if (position >= end) return check;
  const Text text{input, end};
  std::string name;
  size_t at = position;
  for (const Mark& mark : kMarks) {
    if (check.mark != 0 || !text.holds(position, mark.bytes)) continue;
    check.mark = 1;
    check.bigEndian = mark.bigEndian;
    name = mark.name;
    at += mark.bytes.size();
  }
  size_t width = 1;
  for (const size_t candidate : {size_t{1}, size_t{2}, size_t{4}}) {
    if (check.declared != 0 || !declaredWith(text, at, check.mark != 0, candidate)) continue;
    check.declared = 1;
    width = candidate;
    if (width > 1) check.bigEndian = input[at] == 0;
  }
  const Bytes beginning(
      input.begin() + static_cast<std::ptrdiff_t>(position),
      input.begin() + static_cast<std::ptrdiff_t>(std::min(end, position + 2048)));
  if (check.declared != 0) {
    if (!declaredValue(text, width, check.bigEndian != 0, name))
      name = width == 2 ? "UTF-16" : width == 4 ? "ISO-10646-UCS-4" : "UTF-8";
  } else if (check.mark == 0) {
    name = nameByScores(beginning, check.bigEndian);
  }
  if (name.empty()) return check;
  check.name = name;
  check.result = 1;
  check.lineEnd = lineEndOf(beginning, name, width, check.bigEndian != 0);
  const bool hasOrder = name == "UTF-16" || name == "ISO-10646-UCS-4" || name == "ISO-10646-UCS-2";
  check.resultClass = hasOrder ? 4098 : 1;
  return check;
}

}  // namespace ksv_detect_tests
