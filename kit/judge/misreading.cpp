#include "kit/judge/misreading.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "kit/convert/plan.h"
#include "kit/judge/text_cost.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit::judge {
namespace {

// What UTF-8 is taken for, the usual ones first. Of those of one byte the codes that have no
// character stand for the control codes of the same number, as browsers read them.
constexpr const char* kTakenFor[] = {
    "windows-1252", "ISO-8859-1", "WINDOWS31J",   "ISO-8859-15",  "macintosh",
    "IBM850",       "IBM437",     "windows-1250", "windows-1251", "KOI8-R",
    "ChineseGBK",   "KoreanKSC",  "EUC-JP",       "ChineseBIG5",
};

constexpr char kReplacement[] = "\xEF\xBF\xBD";

// The bytes that a text was before it was taken for the charset.
class WayBack {
 public:
  explicit WayBack(const std::string& charset) : charset_(charset) {
    const ByteTable* const table = byteTable(charset.c_str());
    if (table == nullptr) return;
    isOfBytes_ = ksv_kit::judge::isOfSingleBytes(*table);
    if (isOfBytes_)
      fillCodes(*table);
    else
      plan_ = std::make_unique<const Plan>("UTF-8", charset.c_str(), nullptr);
  }

  const std::string& charset() const { return charset_; }
  bool isOfBytes() const { return isOfBytes_; }

  // None when the charset does not have all of its characters.
  std::optional<std::string> bytesOf(Bytes line) const {
    if (isOfBytes_) return codesOf(line);
    if (plan_ == nullptr || line.empty()) return std::nullopt;
    std::string bytes(line.size() + 16, '\0');
    Plan::Fit fit{};
    if (!plan_->convertSound(line.data(), line.size(), reinterpret_cast<uint8_t*>(bytes.data()),
                             bytes.size(), fit) ||
        !fit.done)
      return std::nullopt;
    bytes.resize(fit.written);
    return bytes;
  }

 private:
  void fillCodes(const ByteTable& table) {
    for (size_t byte = 0x80; byte < table.size(); ++byte)
      codes_[table[byte] == kNoCharacter ? static_cast<char16_t>(byte) : table[byte]] =
          static_cast<char>(byte);
    for (char16_t control = 0x80; control < 0xA0; ++control)
      codes_.try_emplace(control, static_cast<char>(control));
  }

  std::optional<std::string> codesOf(Bytes line) const {
    std::string bytes;
    for (size_t at = 0; at < line.size();) {
      const uint8_t lead = line[at];
      if (lead < 0x80) {
        bytes.push_back(static_cast<char>(lead));
        ++at;
        continue;
      }
      if (lead >= 0xF0) return std::nullopt;
      const size_t length = lead < 0xE0 ? 2 : 3;
      if (line.size() - at < length) return std::nullopt;
      uint32_t character = lead & (length == 2 ? 0x1Fu : 0x0Fu);
      for (size_t i = 1; i < length; ++i) character = character << 6 | (line[at + i] & 0x3Fu);
      const auto found = codes_.find(static_cast<char16_t>(character));
      if (found == codes_.end()) return std::nullopt;
      bytes.push_back(found->second);
      at += length;
    }
    return bytes;
  }

  const std::string charset_;
  bool isOfBytes_ = false;
  std::map<char16_t, char> codes_;
  std::unique_ptr<const Plan> plan_;
};

// The ways that were asked for, kept until the process ends.
const WayBack& wayBack(const std::string& named) {
  // Whoever says this means what has the characters of vendors, too.
  const std::string charset = named == "Shift_JIS" ? "WINDOWS31J" : named;
  static std::mutex* const mutex = new std::mutex;
  static auto* const ways = new std::map<std::string, std::unique_ptr<const WayBack>>;
  const std::lock_guard<std::mutex> lock(*mutex);
  std::unique_ptr<const WayBack>& way = (*ways)[charset];
  if (way == nullptr) way = std::make_unique<const WayBack>(charset);
  return *way;
}

Bytes bytesIn(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

bool isAsciiOnly(Bytes line) {
  return std::none_of(line.begin(), line.end(), [](uint8_t byte) { return byte >= 0x80; });
}

// Control codes that no text has, as two bytes of UTF-8.
bool hasControlCodes(const std::string& text) {
  for (size_t i = 0; i + 1 < text.size(); ++i)
    if (text[i] == '\xC2' && static_cast<uint8_t>(text[i + 1]) < 0xA0) return true;
  return false;
}

bool isUtf8Text(const std::string& text) {
  const Bytes bytes = bytesIn(text);
  return !isAsciiOnly(bytes) &&
         scanUnicode(UnicodeForm::kUtf8, false, bytes.data(), bytes.size()).end == ScanEnd::kAll &&
         !hasControlCodes(text);
}

// The line as it was; none when it was not taken for the charset.
std::optional<std::string> undone(Bytes line, const WayBack& way) {
  std::optional<std::string> bytes = way.bytesOf(line);
  if (!bytes || !isUtf8Text(*bytes)) return std::nullopt;
  return bytes;
}

// A line was written twice and lost something where the rest of it reads as UTF-8 on the way back.
bool hasLost(Bytes line, const WayBack& way) {
  std::string_view text(reinterpret_cast<const char*>(line.data()), line.size());
  std::string rest;
  bool isMarked = false;
  for (size_t at = 0; (at = text.find(kReplacement)) != std::string_view::npos;) {
    rest += text.substr(0, at);
    text.remove_prefix(at + std::size(kReplacement) - 1);
    isMarked = true;
  }
  if (!isMarked) return false;
  rest += text;
  const std::optional<std::string> bytes = way.bytesOf(bytesIn(rest));
  return bytes && looksLikeUtf8(bytesIn(*bytes));
}

// Calls the function with each line, its end included.
template <typename Take>
void eachLine(Bytes text, Take take) {
  while (!text.empty()) {
    const void* const found = std::memchr(text.data(), '\n', text.size());
    const size_t length =
        found == nullptr
            ? text.size()
            : static_cast<size_t>(static_cast<const uint8_t*>(found) - text.data()) + 1;
    take(text.first(length));
    text = text.subspan(length);
  }
}

// A line that lost bytes may be all that there is of what was written twice.
bool hasLostWith(Bytes line, const WayBack* way) {
  if (isAsciiOnly(line)) return false;
  return hasLost(line, way == nullptr ? wayBack(kTakenFor[0]) : *way);
}

// What a way back has to be better than another one by.
constexpr int64_t kClearlyText = 8 * kBit;

int64_t leastCost(const std::string& utf8) {
  const auto text = decodeSound("UTF-8", bytesIn(utf8), false);
  if (!text) return kNoLimit;
  const LanguagePriors priors;
  return std::min(bestLanguage(*text, priors).cost, unknownCost(*text));
}

// The cost of what the lines were has to be less, or they are what they are.
bool isCheaper(const std::string& way, const std::string& asItIs) {
  return leastCost(way) + kClearlyText < leastCost(asItIs);
}

// Whether the first character above ASCII may be the first byte of one in UTF-8.
bool mayBegin(Bytes line, const WayBack& way) {
  const auto first =
      std::find_if(line.begin(), line.end(), [](uint8_t byte) { return byte >= 0x80; });
  const bool isEastAsian = *first >= 0xE3 && *first <= 0xED;
  if (isEastAsian == way.isOfBytes()) return false;
  const auto length = static_cast<size_t>(line.end() - first);
  const size_t wanted = *first < 0xE0 ? 2 : *first < 0xF0 ? 3 : 4;
  const auto bytes = way.bytesOf({&*first, std::min(wanted, length)});
  if (!bytes || bytes->empty()) return false;
  const auto lead = static_cast<uint8_t>(bytes->front());
  return lead >= 0xC2 && lead <= 0xF4;
}

// The ways of all of them.
const std::vector<const WayBack*>& allWays() {
  static const auto* const ways = [] {
    auto all = std::make_unique<std::vector<const WayBack*>>();
    for (const char* const charset : kTakenFor) all->push_back(&wayBack(charset));
    return all.release();
  }();
  return *ways;
}

}  // namespace

std::string misreadingOf(Bytes lines) {
  constexpr size_t kMostLines = 200;
  std::vector<Bytes> high;
  // A text that is not complete may end inside a character.
  lines =
      lines.first(scanUnicode(UnicodeForm::kUtf8, false, lines.data(), lines.size()).wellFormed);
  eachLine(lines, [&](Bytes line) {
    if (!isAsciiOnly(line) && high.size() < kMostLines) high.push_back(line);
  });
  for (const WayBack* const way : allWays()) {
    if (high.empty() || !mayBegin(high.front(), *way)) continue;
    std::string undoneText;
    std::string asItIs;
    size_t count = 0;
    for (size_t i = 0; i < high.size(); ++i) {
      if (count + high.size() / 4 + 1 < i) break;
      const std::optional<std::string> text = undone(high[i], *way);
      if (!text) continue;
      ++count;
      undoneText += *text;
      asItIs.append(high[i].begin(), high[i].end());
    }
    if (count * 4 >= high.size() * 3 && count != 0 && isCheaper(undoneText, asItIs))
      return way->charset();
  }
  return {};
}

namespace {

// How many lines were taken for a charset, and what some of them were.
struct Vote {
  const WayBack* way;
  uint64_t lines = 0;
  std::string undoneText;
};

// The votes of the lines, the most first.
std::vector<Vote> votesOf(Bytes text) {
  constexpr size_t kEnoughText = 4096;
  std::vector<Vote> votes;
  for (const WayBack* const way : allWays()) votes.push_back({way, 0, {}});
  eachLine(text, [&](Bytes line) {
    if (isAsciiOnly(line)) return;
    for (Vote& vote : votes) {
      if (!mayBegin(line, *vote.way)) continue;
      const std::optional<std::string> undoneLine = undone(line, *vote.way);
      if (!undoneLine) continue;
      ++vote.lines;
      if (vote.undoneText.size() < kEnoughText) vote.undoneText += *undoneLine;
    }
  });
  std::stable_sort(votes.begin(), votes.end(),
                   [](const Vote& a, const Vote& b) { return a.lines > b.lines; });
  return votes;
}

// The charset that the text was taken for: what most lines say, and of those that say the same the
// one that is text. None where the lines were not written twice, or may have been in two ways.
const WayBack* wayOf(Bytes text, bool& isAmbiguous) {
  std::vector<Vote> votes = votesOf(text);
  const uint64_t most = votes.front().lines;
  if (most == 0) return nullptr;
  std::erase_if(votes, [&](const Vote& vote) { return vote.lines < most; });
  std::stable_sort(votes.begin(), votes.end(), [](const Vote& a, const Vote& b) {
    return leastCost(a.undoneText) < leastCost(b.undoneText);
  });
  const std::string& best = votes.front().undoneText;
  const auto rival = std::find_if(votes.begin(), votes.end(),
                                  [&](const Vote& vote) { return vote.undoneText != best; });
  isAmbiguous =
      rival != votes.end() && leastCost(rival->undoneText) < leastCost(best) + kClearlyText;
  return votes.front().way;
}

void leave(uint64_t offset, uint64_t line, uint64_t& count, RepairCounts& counts) {
  ++count;
  if (counts.firstLeftLine != 0) return;
  counts.firstLeft = offset;
  counts.firstLeftLine = line;
}

}  // namespace

std::string repaired(Bytes text, const std::string& misreadAs, RepairCounts& counts) {
  bool isAmbiguous = false;
  const WayBack* const way = misreadAs.empty() ? wayOf(text, isAmbiguous) : &wayBack(misreadAs);
  std::string output;
  output.reserve(text.size());
  uint64_t number = 0;
  eachLine(text, [&](Bytes line) {
    ++number;
    const auto offset = static_cast<uint64_t>(line.data() - text.data());
    const bool isWritten = !isAsciiOnly(line) && way != nullptr;
    const std::optional<std::string> back = isWritten ? undone(line, *way) : std::nullopt;
    if (back && !isAmbiguous) {
      ++counts.repaired;
      output += *back;
      return;
    }
    if (back)
      leave(offset, number, counts.ambiguous, counts);
    else if (hasLostWith(line, way))
      leave(offset, number, counts.lost, counts);
    output.append(line.begin(), line.end());
  });
  if (counts.repaired != 0) counts.misreadAs = way->charset();
  return output;
}

}  // namespace ksv_kit::judge
