#include "tests/detect/slow_detection.h"

#include <algorithm>
#include <map>

namespace ksv_detect_tests {
namespace {

constexpr size_t kChunk = 2048;
constexpr size_t kEnough = 0x400000;

// Without ASCII: the encodings that can have the highest score, in the order in which
// they are looked at.
struct Contender {
  const char* name;
  uint32_t bit;
};
constexpr Contender kContenders[] = {
    {"GBK", 0x400},   {"Big5", 0x800},      {"Korean", 0x1000},    {"Shift_JIS", 0x100},
    {"EUC-JP", 0x40}, {"EUC-JP-FIX", 0x80}, {"ISO-2022-JP", 0x20}, {"UTF-8", 0x2},
    {"UTF-16", 0x4},  {"UCS-4", 0x10},
};

class SlowDetection {
 public:
  SlowDetection(const Bytes& file, const std::string& language) : file_(file), language_(language) {
    offset_ = std::min(file.size(), kChunk);
    setChunk(0);
  }

  uint32_t run() {
    if (marked()) return compose();
    for (;;) {
      scoreAll();
      if (decide() || offset_ > kEnough || offset_ == file_.size()) return compose();
      const size_t start = offset_;
      offset_ = std::min(file_.size(), offset_ + kChunk);
      setChunk(start);
    }
  }

 private:
  void setChunk(size_t start) {
    chunk_.assign(file_.begin() + static_cast<std::ptrdiff_t>(start),
                  file_.begin() + static_cast<std::ptrdiff_t>(offset_));
  }

  int64_t score(const std::string& name, const std::string& record, size_t start) {
    SlowRecord& r = records_[record];
    r.data = chunk_;
    r.position = start;
    r.more = offset_ < file_.size();
    return slowScore(name, r);
  }

  // Whether a mark stands at the position and the text behind it fits: the position is
  // behind the mark then.
  bool mark(const Bytes& bytes, const std::string& name, uint32_t bit, uint32_t order) {
    const size_t behind = position_ + bytes.size();
    if (chunk_.size() < behind) return false;
    for (size_t i = 0; i < bytes.size(); ++i)
      if (chunk_[position_ + i] != bytes[i]) return false;
    if (score(name, name, behind) < 90) return false;
    position_ = behind;
    const SlowRecord& r = records_[name];
    detected_ = bit;
    words_ = 0x80000000u | 0x40000000u | order | r.lineFlags() | r.separatorFlags();
    return true;
  }

  // Marks of three forms may stand one behind the other, and the last one holds.
  bool marked() {
    if (!mark({0xFF, 0xFE, 0, 0}, "UCS-4LE", 0x10, 0))
      mark({0, 0, 0xFE, 0xFF}, "UCS-4BE", 0x10, 0x20000000u);
    mark({0xEF, 0xBB, 0xBF}, "UTF-8", 0x2, 0x20000000u);
    if (!mark({0xFF, 0xFE}, "UTF-16LE", 0x4, 0)) mark({0xFE, 0xFF}, "UTF-16BE", 0x4, 0x20000000u);
    return position_ != 0;
  }

  void scoreOrders(const std::string& name, uint32_t bit) {
    scores_[name] = 0;
    if ((enabled_ & bit) == 0) return;
    const int64_t big = score(name + "BE", name + "BE", 0);
    const int64_t little = score(name + "LE", name + "LE", 0);
    bigChosen_[name] = big > little;
    scores_[name] = std::max(big, little);
  }

  void scoreAll() {
    scores_["ASCII"] = (enabled_ & 0x200) != 0 ? score("ASCII", "ASCII", 0) : 0;
    const std::map<std::string, SlowRecord> before = records_;
    for (const Contender& c : kContenders) {
      const std::string name = c.name;
      if (name == "UTF-16" || name == "UCS-4") {
        scoreOrders(name, c.bit);
      } else {
        scores_[name] = (enabled_ & c.bit) != 0 ? score(name, name, 0) : 0;
      }
    }
    if (scores_["UTF-8"] != 100 || scores_["Shift_JIS"] != 100) return;
    SlowRecord& r = records_["Shift_JIS"];
    const auto earlier = before.find("Shift_JIS");
    r.carried = earlier == before.end() ? Bytes{} : earlier->second.carried;
    scores_["Shift_JIS"] = score("Shift_JIS by code", "Shift_JIS", 0);
  }

  bool win(const std::string& name, uint32_t bit, const std::string& record, uint32_t order) {
    detected_ = bit;
    const SlowRecord& r = records_[record.empty() ? name : record];
    words_ = 0x40000000u | order | r.lineFlags() | r.separatorFlags();
    return true;
  }

  bool winChosen(const Contender& c) {
    const std::string name = c.name;
    if (name != "UTF-16" && name != "UCS-4") return win(name, c.bit, "", 0x20000000u);
    return bigChosen_[name] ? win(name, c.bit, name + "BE", 0x20000000u)
                            : win(name, c.bit, name + "LE", 0);
  }

  bool preferred() {
    static const std::map<std::string, std::vector<Contender>> preferences = {
        {"japanese", {{"Shift_JIS", 0x100}, {"EUC-JP", 0x40}, {"ISO-2022-JP", 0x20}}},
        {"simplified chinese", {{"GBK", 0x400}}},
        {"traditional chinese", {{"Big5", 0x800}}},
        {"korean", {{"Korean", 0x1000}}}};
    const auto own = preferences.find(language_);
    if (own == preferences.end()) return false;
    for (const Contender& c : own->second)
      if (scores_[c.name] == 100) return winChosen(c);
    return false;
  }

  bool decide() {
    if (preferred()) return true;
    if (scores_["UTF-8"] == 100) return win("UTF-8", 0x2, "", 0x20000000u);
    if (scores_["UTF-16"] == 100 && !bigChosen_["UTF-16"]) return win("UTF-16", 0x4, "UTF-16LE", 0);
    if (scores_["UCS-4"] == 100 && !bigChosen_["UCS-4"]) return win("UCS-4", 0x10, "UCS-4LE", 0);
    for (const Contender& c : kContenders) {
      bool isAbove = scores_[c.name] >= 90;
      for (const Contender& other : kContenders)
        if (std::string(other.name) != c.name && scores_[other.name] >= scores_[c.name])
          isAbove = false;
      if (isAbove) return winChosen(c);
    }
    enabled_ = 0;
    for (const Contender& c : kContenders) {
      bool isLower = scores_[c.name] < 90;
      for (const Contender& other : kContenders)
        if (scores_[other.name] > scores_[c.name]) isLower = true;
      if (!isLower) enabled_ |= c.bit;
    }
    if (scores_["ASCII"] == 100) enabled_ |= 0x200;
    detected_ = enabled_ == 0 ? 1 : enabled_;
    return enabled_ == 0;
  }

  uint32_t compose() {
    if ((detected_ & 0x200) != 0) return 0x200 | records_["ASCII"].lineFlags();
    uint32_t result = detected_ | words_;
    if (result > 0x00FFFFFF) return result;
    if ((detected_ & 0x14) == 0) {
      result |= 0x60000000u;
      if ((detected_ & 0x2) != 0) return result;
      if ((detected_ & 0x1FE0) != 0) result |= records_["ISO-2022-JP"].lineFlags();
      return result;
    }
    const SlowRecord& r = records_["UTF-16BE"];
    if (result == 0x84 && !r.lineSeparator && !r.paragraphSeparator) result |= r.lineFlags();
    return result;
  }

  const Bytes& file_;
  const std::string language_;
  size_t offset_ = 0;
  size_t position_ = 0;
  Bytes chunk_;
  uint32_t enabled_ = 0x1FF7;
  uint32_t detected_ = 0;
  uint32_t words_ = 0;
  std::map<std::string, SlowRecord> records_;
  std::map<std::string, int64_t> scores_;
  std::map<std::string, bool> bigChosen_;
};

}  // namespace

uint32_t slowDetect(const Bytes& file, const std::string& language) {
  if (file.empty()) return 0xFFFFFFFF;
  return SlowDetection(file, language).run();
}

}  // namespace ksv_detect_tests
