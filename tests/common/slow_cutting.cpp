#include "tests/common/slow_cutting.h"

#include <cstddef>

namespace ksv::test {
namespace {

struct Text {
  const std::vector<uint8_t>& bytes;
  int64_t n;
  int64_t at(int64_t i) const { return bytes[static_cast<size_t>(i)]; }
  bool between(int64_t i, int64_t low, int64_t high) const { return at(i) >= low && at(i) <= high; }
};

int64_t finish(const Text& text, int64_t i, int64_t back) {
  return i == text.n && i > 0 && text.at(i - 1) == 13 && text.at(i) == 10 ? i - back : i;
}

template <typename IsLead>
int64_t pairs(const Text& text, IsLead isLead) {
  int64_t i = 0;
  while (i < text.n) {
    if (!isLead(i)) {
      i += 1;
    } else if (i >= text.n - 1) {
      break;
    } else {
      i += 2;
    }
  }
  return finish(text, i, 1);
}

int64_t eucJisX0213(const Text& text) {
  int64_t i = 0;
  while (i < text.n) {
    if (text.at(i) == 0x8F) {
      if (i >= text.n - 2) break;
      i += 2;
    } else if (text.between(i, 0xA1, 0xDF)) {
      if (i >= text.n - 1) break;
      i += 2;
    } else {
      i += 1;
    }
  }
  return finish(text, i, 1);
}

int64_t gb18030(const Text& text) {
  int64_t i = 0;
  while (i < text.n) {
    if (!text.between(i, 0x81, 0xFE)) {
      i += 1;
    } else if (i < text.n - 3) {
      const bool four = text.between(i + 1, 0x30, 0x39) && text.between(i + 2, 0x81, 0xFE) &&
                        text.between(i + 3, 0x30, 0x39);
      i += four ? 4 : 2;
    } else if (i >= text.n - 1) {
      break;
    } else {
      i += text.between(i + 1, 0x40, 0x7E) || text.between(i + 1, 0x80, 0xFE) ? 2 : 1;
    }
  }
  return finish(text, i, 1);
}

int64_t utf8(const Text& text) {
  int64_t i = 0;
  while (i < text.n) {
    const int64_t c = text.at(i);
    const int64_t length = c <= 0xBF   ? 1
                           : c <= 0xDF ? 2
                           : c <= 0xEF ? 3
                           : c <= 0xF7 ? 4
                           : c <= 0xFB ? 5
                           : c <= 0xFD ? 6
                                       : 1;
    if (i >= text.n - length + 1) break;
    i += length;
  }
  return finish(text, i, 1);
}

int64_t units(const Text& text, int64_t width) {
  const int64_t m = text.n - text.n % width;
  if (m == 0) return 0;
  if (text.at(m - 1) != 13 && text.at(m - width) != 13) return m;
  return text.at(m) == 10 || text.at(m + width - 1) == 10 ? m - width : m;
}

int64_t iso2022(const Text& text, bool jp3) {
  int64_t i = 0;
  int mode = 0;
  bool flag = false;
  while (i < text.n) {
    if (text.at(i) == 0x1B && jp3) {
      if (i >= text.n - 3) break;
      if (text.at(i + 1) == '(') {
        mode = 1;
        flag = text.at(i + 3) == 13;
        i += 4;
        continue;
      }
      if (text.at(i + 1) != '$' || i >= text.n - 4) break;
      mode = 2;
      i += 4;
      if (i + 1 >= text.n) break;
      i += 2;
      continue;
    }
    if (text.at(i) == 0x1B) {
      if (i < text.n - 3 && text.at(i + 1) == '(') {
        mode = 1;
        flag = flag || text.at(i + 3) == 13;
        i += 3;
      } else if (i < text.n - 4 && text.at(i + 1) == '$') {
        mode = 2;
        i += 3;
      } else {
        mode = 0;
      }
    } else if (text.at(i) == 13) {
      flag = false;
    }
    if (mode == 0) {
      if (i != 0 || jp3) break;
      mode = 1;
    }
    if (mode == 2 && i + 1 >= text.n) break;
    i += mode;
  }
  return finish(text, i, flag ? 4 : 1);
}

}  // namespace

int64_t slowCut(const std::string& name, const std::vector<uint8_t>& bytes, int64_t end) {
  const Text text{bytes, end};
  if (text.n <= 0) return 0;
  if (name == "EUC-JISX0213") return eucJisX0213(text);
  if (name == "ISO-2022-JP-3") return iso2022(text, true);
  if (name == "ISO-2022-JP") return iso2022(text, false);
  if (name == "GB18030") return gb18030(text);
  if (name == "UTF-8") return utf8(text);
  if (name == "UTF-16") return units(text, 2);
  if (name == "ISO-10646-UCS-4") return units(text, 4);
  if (name == "ISO-8859-1") return finish(text, text.n, 1);
  return pairs(text, [&](int64_t i) {
    if (name == "Shift_JIS") return text.between(i, 0x81, 0x9F) || text.at(i) >= 0xE0;
    if (name == "EUC-JP") return text.between(i, 0xA1, 0xDF) || text.between(i, 0x8E, 0x8F);
    return text.at(i) >= 0x81;
  });
}

}  // namespace ksv::test
