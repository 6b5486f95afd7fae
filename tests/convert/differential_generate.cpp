#include "differential_generate.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>
#include <unordered_map>

#include "reference/parts.h"
#include "reference/rules.h"

namespace ksv_differential {
namespace {

using ksv_reference::CharsetFile;
using ksv_reference::MemberEntry;
using ksv_reference::RuleDirectory;
using ksv_reference::SubsetFile;
using ksv_reference::TablePair;

const std::vector<uint32_t> kSpecials = {
    0x0,        0x1,       0x9,     0xA,     0xD,     0x1B,    0x1F,     0x20,      0x2B,
    0x3F,       0x41,      0x5C,    0x61,    0x7E,    0x7F,    0x80,     0x85,      0xA0,
    0xA5,       0xE6,      0xFF,    0x100,   0x254,   0x259,   0x25A,    0x28C,     0x2E5,
    0x2E9,      0x300,     0x301,   0x302,   0x2028,  0x2029,  0x3000,   0x3013,    0x304B,
    0x304D,     0x3053,    0x309A,  0x30AB,  0x30BB,  0x30C4,  0x30C8,   0x31F7,    0x4E00,
    0xD7FF,     0xD800,    0xDBFF,  0xDC00,  0xDFFF,  0xE000,  0xE005,   0xE758,    0xE759,
    0xF8FF,     0xFF01,    0xFF1D,  0xFF5E,  0xFF5F,  0xFF61,  0xFF9F,   0xFFE2,    0xFFE5,
    0xFFFE,     0xFEFF,    0xFFFF,  0x10000, 0x1F600, 0x2000B, 0x10FFFF, 0x110000,  0x1FFFFF,
    0xE0001,    0xE0020,   0xE0041, 0xE006A, 0xE007E, 0xE007F, 0xE0080,  0x3FFFFFF, 0x7FFFFFFF,
    0x80000000, 0xFFFFFFFF};

const std::vector<std::string> kSubsetNames = {
    "ISO-646irv",     "JIS_X0201Latin", "JIS_X0201Kana", "JIS_X0208-1990", "NEC_ExtSet",
    "IBM_ExtSet",     "NECIBM_ExtSet",  "JIS_X0213",     "Windows31J-usr", "JIS_X0212-1990",
    "Alpha-Set",      "Beta-Set",       "Gamma",         "delta.4",        "KoreanKSC",
    "JIS_C6226-1978", "OASYS_ExtSet"};

const std::vector<std::string> kCharsetNames = {
    "Shift_JIS",    "ISO-10646-UCS-2",  "UTF-16",   "UTF-8", "EUC-JP",    "EUC-JP-FIX",
    "ISO-2022-JP",  "Shift_JIS-2004",   "GB18030",  "Quay",  "Harbour-1", "Mole",
    "EUC-JIS-2004", "ISO-2022-JP-2004", "Pier-Nine"};

const std::vector<std::string> kUnicodeCodecs = {"ISO-10646-UCS-2", "ISO-10646-UCS-4", "UTF-16",
                                                 "UTF-8"};
const std::vector<std::string> kByteCodecs = {
    "SAME",       "Shift_JIS",   "Shift_JIS-2004",   "WINDOWS31J", "EUC-JP",       "EUC-JIS-2004",
    "EUC-JP-FIX", "ISO-2022-JP", "ISO-2022-JP-2004", "OASYS_WIN",  "OASYS_ONLINE", "CP50220"};

uint32_t randomCharacter(Random& random) {
  const uint32_t kind = random.below(100);
  if (kind < 45) return random.pick(kSpecials);
  if (kind < 65) return 0x20 + random.below(0x5F);
  if (kind < 80) return 0x3041 + random.below(0x56);
  if (kind < 90) return 0x4E00 + random.below(0x200);
  if (kind < 96) return random.below(0x10000);
  return 0x10000 + random.below(0x100000);
}

uint32_t randomJis(Random& random, bool extended) {
  const uint32_t row =
      extended && random.percent(25) ? 0x7F + random.below(0x1A) : 0x21 + random.below(0x5E);
  return row * 256 + 0x21 + random.below(0x5E);
}

uint32_t randomCode(Random& random, uint16_t width) {
  const uint32_t kind = random.below(100);
  if (width == 1) return kind < 95 ? random.below(256) : random.below(0x10000);
  if (kind < 10) return random.below(0x80);
  if (kind < 20) return random.pick(kSpecials);
  if (kind < 60) return randomJis(random, true);
  if (width > 2 && kind < 80) return 0x10000 | randomJis(random, false);
  if (width > 2 && kind < 90) return static_cast<uint32_t>(random.next());
  return random.below(0x10000);
}

void addIdentity(std::vector<TablePair>& pairs, Random& random, uint32_t low, uint32_t high) {
  for (uint32_t code = low; code <= high; ++code) {
    if (!random.percent(3)) pairs.push_back({code, code});
  }
}

std::vector<TablePair> oddTable(Random& random) {
  switch (random.below(5)) {
    case 0:
      return {};
    case 1:
      return {{0, 0}};
    case 2:
      return {{0, random.pick(kSpecials)}};
    case 3:
      return {{random.pick(kSpecials), 0}};
    default:
      return {{0xFFFFFFFF, 0x41}, {0xFFFFFFF0, 0x42}, {0x41, 0xFFFFFFFF}};
  }
}

std::vector<TablePair> randomTable(Random& random, uint16_t width) {
  if (random.percent(5)) return oddTable(random);
  std::vector<TablePair> pairs;
  const uint32_t style = random.below(100);
  if (width == 1 && style < 70) {
    addIdentity(pairs, random, random.percent(50) ? 0 : 0x20, 0x7E);
  }
  if (width >= 2 && style < 40) {
    addIdentity(pairs, random, 0, 0x7F);
    for (uint32_t special : kSpecials) {
      if (!random.percent(20)) pairs.push_back({special, special});
    }
    addIdentity(pairs, random, 0x3041, 0x3096);
  }
  const int32_t extra = random.between(5, width == 1 ? 60 : 250);
  for (int32_t i = 0; i < extra; ++i) {
    pairs.push_back({randomCode(random, width), randomCharacter(random)});
  }
  if (random.percent(30)) pairs.push_back({random.pick(pairs).first, 0});
  if (random.percent(30)) pairs.push_back({0, random.pick(pairs).second});
  if (random.percent(30)) std::reverse(pairs.begin(), pairs.end());
  return pairs;
}

class RuleMaker {
 public:
  explicit RuleMaker(Random& random) : random_(random) {}

  RuleDirectory make() {
    addFixed("windows31j", "WINDOWS31J", 70,
             {{"JIS_X0201Latin", 1},
              {"JIS_X0201Kana", 1},
              {"JIS_X0208-1990", 2},
              {"NEC_ExtSet", 2},
              {"IBM_ExtSet", 2},
              {"NECIBM_ExtSet", 2},
              {"Windows31J-usr", 2}});
    addFixed("Shift_JIS-2004", "Shift_JIS-2004", 50,
             {{"JIS_X0201Latin", 1}, {"JIS_X0201Kana", 1}, {"JIS_X0213", 3}});
    addFixed(
        "EUC-JP", "EUC-JP", 50,
        {{"ISO-646irv", 1}, {"JIS_X0208-1990", 2}, {"JIS_X0201Kana", 1}, {"JIS_X0212-1990", 2}});
    addFixed("EUC-JIS-2004", "EUC-JIS-2004", 40,
             {{"ISO-646irv", 1}, {"JIS_X0201Kana", 1}, {"JIS_X0213", 3}});
    addFixed(
        "EUC-JP-FIX", "EUC-JP-FIX", 40,
        {{"ISO-646irv", 2}, {"JIS_X0208-1990", 2}, {"JIS_X0201Kana", 2}, {"JIS_X0212-1990", 2}});
    addFixed("ISO-2022-JP", "ISO-2022-JP", 50,
             {{"ISO-646irv", 1},
              {"JIS_X0201Latin", 1},
              {"JIS_X0201Kana", 1},
              {"JIS_C6226-1978", 2},
              {"JIS_X0208-1990", 2}});
    addFixed("Mail", "CP50220", 40,
             {{"ISO-646irv", 1}, {"JIS_X0208-1990", 2}, {"NEC_ExtSet", 2}, {"NECIBM_ExtSet", 2}});
    addFixed("ISO-2022-JP-2004", "ISO-2022-JP-2004", 40,
             {{"ISO-646irv", 1}, {"JIS_X0208-1990", 2}, {"JIS_X0213", 2}});
    addFixed(
        "OASYS_ONLINE", "OASYS_ONLINE", 40,
        {{"JIS_X0201Latin", 2}, {"JIS_X0201Kana", 2}, {"JIS_C6226-1978", 2}, {"OASYS_ExtSet", 2}});
    addFixed("ISO-10646-UCS-4", "ISO-10646-UCS-4", 70, {{"Everything", 4}});
    addFixed("ChineseGBK", "SAME", 60, {{"ISO-646irv", 1}, {"GBK-Set", 2}});
    const int32_t more = random_.between(4, 7);
    for (int32_t i = 0; i < more; ++i) addRandom();
    return rules_;
  }

 private:
  std::string fileName(const char* prefix, const char* ending) {
    char name[32];
    std::snprintf(name, sizeof name, "%s%03d%s", prefix, random_.between(0, 99) * 10, ending);
    std::string unique = name;
    while (!used_.insert(unique).second) unique = "x" + unique;
    return unique;
  }

  std::string addTable(uint16_t width) {
    const std::string name = fileName("table", ".txt");
    if (!random_.percent(3)) rules_.tables[name] = randomTable(random_, width);
    return name;
  }

  std::string addSubset(const std::string& name, uint16_t width, uint32_t tablePercent) {
    SubsetFile subset;
    subset.name = name;
    subset.bytesPerCode = width;
    if (random_.percent(tablePercent)) {
      const bool shared = !rules_.tables.empty() && random_.percent(15);
      subset.tableFile = shared ? anyTable() : addTable(width);
    }
    subset.defStart = static_cast<uint16_t>(
        random_.pick(std::vector<uint32_t>{0x20, 0xA0, 0xF040, 0x7F21, 0xFFF0, 0xE000, 0}));
    subset.defNumber =
        static_cast<uint16_t>(random_.pick(std::vector<uint32_t>{0, 1, 10, 300, 0x2000, 0xFFFF}));
    const std::string file = fileName("subset", ".xml");
    rules_.subsets[file] = subset;
    return file;
  }

  std::string anyTable() {
    auto table = rules_.tables.begin();
    std::advance(table, random_.below(static_cast<uint32_t>(rules_.tables.size())));
    return table->first;
  }

  std::vector<TablePair> sequences(uint16_t bytes) {
    std::vector<TablePair> pairs;
    const int32_t count = random_.between(1, 25);
    for (int32_t i = 0; i < count; ++i) {
      const uint32_t code =
          random_.percent(50) ? randomJis(random_, false) : static_cast<uint32_t>(random_.next());
      pairs.push_back(
          {bytes >= 4 && random_.percent(50) ? code << 16 | randomJis(random_, false) : code,
           randomCharacter(random_)});
    }
    return pairs;
  }

  MemberEntry member(uint16_t kind, const std::string& subsetFile) {
    MemberEntry entry;
    entry.kind = kind;
    entry.subsetFile = subsetFile;
    while (kind != 3 && random_.percent(35)) {
      const auto bytes = static_cast<uint16_t>(random_.between(1, 6));
      const std::string table = fileName("dest", ".txt");
      rules_.tables[table] = sequences(bytes);
      entry.destTables.push_back({table, bytes});
    }
    return entry;
  }

  struct Wanted {
    const char* subset;
    uint16_t width;
  };

  void add(CharsetFile charset) {
    rules_.charsets[fileName("charset", ".xml")] = std::move(charset);
  }

  void addFixed(const char* name, const char* codec, uint32_t percent,
                const std::vector<Wanted>& members) {
    if (!random_.percent(percent)) return;
    CharsetFile charset = {name, std::string("const") + codec, std::string("dest") + codec, {}};
    for (const Wanted& wanted : members) {
      charset.members.push_back(
          member(random_.percent(80) ? 1 : 2, addSubset(wanted.subset, wanted.width, 90)));
    }
    add(std::move(charset));
  }

  void addRandom() {
    CharsetFile charset;
    charset.name = random_.pick(kCharsetNames);
    const bool unicode = random_.percent(50);
    const std::string codec = unicode ? random_.pick(kUnicodeCodecs) : random_.pick(kByteCodecs);
    charset.construle = "const" + (random_.percent(80) ? codec : anyCodec());
    charset.destrule = "dest" + (random_.percent(80) ? codec : anyCodec());
    if (random_.percent(2)) charset.construle = "constNONE";
    if (random_.percent(2)) charset.destrule = "";
    const int32_t groups = random_.between(random_.percent(3) ? 0 : 1, 4);
    for (int32_t i = 0; i < groups; ++i) {
      charset.members.push_back(member(random_.percent(80) ? 1 : 2, anySubset(unicode ? 45 : 80)));
    }
    if (random_.percent(35)) charset.members.push_back(member(3, anySubset(50)));
    add(std::move(charset));
  }

  const std::string& anyCodec() {
    return random_.pick(random_.percent(40) ? kUnicodeCodecs : kByteCodecs);
  }

  std::string anySubset(uint32_t tablePercent) {
    if (!rules_.subsets.empty() && random_.percent(35)) {
      auto subset = rules_.subsets.begin();
      std::advance(subset, random_.below(static_cast<uint32_t>(rules_.subsets.size())));
      return subset->first;
    }
    const auto width = static_cast<uint16_t>(random_.between(1, 4));
    return addSubset(random_.pick(kSubsetNames), width, tablePercent);
  }

  Random& random_;
  RuleDirectory rules_;
  std::set<std::string> used_;
};

// Bytes of JIS codes in the Shift_JIS family, the other way round by trying all.
const std::unordered_map<uint32_t, uint32_t>& shiftJisPairs(bool plane2) {
  static const auto make = [](uint32_t (*convert)(uint8_t, uint8_t)) {
    std::unordered_map<uint32_t, uint32_t> pairs;
    for (uint32_t pair = 0x8000; pair <= 0xFFFF; ++pair) {
      const uint32_t code =
          convert(static_cast<uint8_t>(pair >> 8), static_cast<uint8_t>(pair & 0xFF));
      if (code != 0) pairs[code] = pair;
    }
    return pairs;
  };
  static const auto plain = make(ksv_reference::shiftJisToJis);
  static const auto both = make(ksv_reference::shiftJis2004ToJis);
  return plane2 ? both : plain;
}

class TextMaker {
 public:
  TextMaker(Random& random, const RuleDirectory& rules, const CharsetFile* charset, bool bigEndian,
            uint32_t wildness)
      : random_(random),
        rules_(rules),
        charset_(charset),
        bigEndian_(bigEndian),
        wildness_(wildness) {}

  std::vector<uint8_t> plain(size_t bytes) {
    if (random_.percent(12)) mark();
    while (text_.size() < bytes) {
      if (random_.percent(wildness_)) {
        wild();
      } else {
        valid();
      }
    }
    text_.resize(bytes);
    return text_;
  }

  std::vector<uint8_t> tags() {
    const int32_t tokens = random_.between(1, 9);
    for (int32_t i = 0; i < tokens; ++i) {
      const uint32_t kind = random_.below(100);
      if (kind < 55) {
        tagPiece();
      } else if (kind < 80) {
        put(random_.pick(std::vector<uint32_t>{0x61, 0x62, 0x304B, 0x309A, 0xE6, 0x300, 0x4E00}),
            4);
      } else if (kind < 90) {
        put(random_.pick(kSpecials), 4);
      } else {
        wild();
      }
    }
    if (random_.percent(15)) text_.resize(random_.below(static_cast<uint32_t>(text_.size() + 1)));
    return text_;
  }

  std::vector<uint8_t> utf7(size_t bytes) {
    static const std::string kBase64 =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    while (text_.size() < bytes) {
      const uint32_t kind = random_.below(100);
      if (kind < 55) {
        text_.push_back(static_cast<uint8_t>(0x20 + random_.below(0x5F)));
      } else if (kind < 65) {
        append(random_.percent(50) ? "\r\n" : "+-");
      } else if (kind < 95 || wildness_ == 0) {
        base64Run(kBase64);
      } else {
        text_.push_back(static_cast<uint8_t>(random_.below(256)));
      }
    }
    if (random_.percent(50)) text_.push_back(0);
    return text_;
  }

  std::vector<uint8_t> hz(size_t bytes) {
    const std::vector<std::string> escapes = {"~{", "~}", "~~", "~\n", "~", "~~{", "~a", "~\n~\n"};
    while (text_.size() < bytes) {
      const uint32_t kind = random_.below(100);
      if (kind < 40) {
        text_.push_back(static_cast<uint8_t>(0x20 + random_.below(0x5F)));
      } else if (kind < 70) {
        text_.push_back(static_cast<uint8_t>(0x21 + random_.below(0x5E)));
        text_.push_back(static_cast<uint8_t>(0x21 + random_.below(0x5E)));
      } else if (kind < 97 || wildness_ == 0) {
        append(random_.pick(escapes));
      } else {
        text_.push_back(static_cast<uint8_t>(random_.below(256)));
      }
    }
    if (random_.percent(50)) text_.push_back(0);
    return text_;
  }

 private:
  void append(const std::string& bytes) { text_.insert(text_.end(), bytes.begin(), bytes.end()); }

  void base64Run(const std::string& alphabet) {
    text_.push_back('+');
    uint32_t bits = 0;
    int count = 0;
    const int32_t characters = random_.between(0, 4);
    for (int32_t i = 0; i < characters; ++i) {
      const uint32_t value = randomCharacter(random_) % 0x110000;
      std::vector<uint32_t> units = {value & 0xFFFF};
      if (value >= 0x10000) units = {0xD7C0 + (value >> 10), 0xDC00 + (value & 0x3FF)};
      for (uint32_t unit : units) {
        bits = bits << 16 | unit;
        for (count += 16; count >= 6; count -= 6) {
          text_.push_back(static_cast<uint8_t>(alphabet[(bits >> (count - 6)) & 0x3F]));
        }
        bits &= (1U << count) - 1;
      }
    }
    if (count > 0) text_.push_back(static_cast<uint8_t>(alphabet[(bits << (6 - count)) & 0x3F]));
    if (random_.percent(wildness_)) {
      text_.push_back(static_cast<uint8_t>(alphabet[random_.below(64)]));
    }
    if (!random_.percent(20)) text_.push_back('-');
  }

  void number(uint32_t value, int width) {
    const bool big = random_.percent(wildness_ / 8) ? !bigEndian_ : bigEndian_;
    for (int i = 0; i < width; ++i) {
      text_.push_back(static_cast<uint8_t>(value >> (8 * (big ? width - 1 - i : i))));
    }
  }

  void utf8(uint32_t value) {
    int following = 0;
    const uint32_t limits[] = {0x80, 0x800, 0x10000, 0x200000, 0x4000000};
    while (following < 5 && value >= limits[following]) ++following;
    if (random_.percent(wildness_ / 6)) following = random_.between(following, 5);
    const uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
    text_.push_back(static_cast<uint8_t>(leads[following] | (value >> (6 * following))));
    for (int i = following - 1; i >= 0; --i) {
      text_.push_back(static_cast<uint8_t>(0x80 | ((value >> (6 * i)) & 0x3F)));
    }
  }

  void utf16(uint32_t value) {
    if (value < 0x10000) {
      number(value, 2);
      return;
    }
    uint32_t high = 0xD7C0 + (value >> 10);
    uint32_t low = 0xDC00 + (value & 0x3FF);
    if (random_.percent(wildness_ / 4)) std::swap(high, low);
    number(high & 0xFFFF, 2);
    number(low, 2);
  }

  void shiftJis(uint32_t code, bool plane2) {
    if (code < 0x80 || (code > 0xA0 && code < 0xE0)) {
      text_.push_back(static_cast<uint8_t>(code));
      return;
    }
    const auto& pairs = shiftJisPairs(plane2);
    const auto pair = pairs.find(code);
    if (pair == pairs.end()) return text_.push_back(static_cast<uint8_t>(0x20 + code % 0x5F));
    text_.push_back(static_cast<uint8_t>(pair->second >> 8));
    text_.push_back(static_cast<uint8_t>(pair->second));
  }

  void bytes(std::initializer_list<uint32_t> values) {
    for (uint32_t value : values) text_.push_back(static_cast<uint8_t>(value));
  }

  void euc(uint32_t code) {
    if (code < 0x80) return bytes({code});
    if (code < 0x100) return bytes({0x8E, code});
    if (code > 0xFFFF || random_.percent(15)) bytes({0x8F});
    bytes({code >> 8 | 0x80, code | 0x80});
  }

  void eucFix(uint32_t code) {
    if (code < 0x100) return bytes({0, code});
    bytes({code >> 8 | 0x80, random_.percent(70) ? code | 0x80 : code});
  }

  // Mostly with an escape sequence that designates some group in front.
  void iso2022(uint32_t code) {
    static const std::vector<std::string> kSingle = {"\x1B(B", "\x1B(J", "\x1B(I"};
    static const std::vector<std::string> kPairs = {"\x1B$B", "\x1B$@", "\x1B$(Q", "\x1B$(P"};
    const bool single = code < 0x100;
    if (random_.percent(60)) append(random_.pick(single ? kSingle : kPairs));
    if (random_.percent(wildness_ / 10)) append(random_.percent(50) ? "\x1B" : "\x1B$I");
    if (single) return bytes({code});
    bytes({code >> 8, code});
  }

  void oasysOnline(uint32_t code) {
    if (random_.percent(20)) code |= 0x8000;
    bytes({code >> 8, code});
  }

  const std::string& rule() const { return charset_->destrule; }

  void put(uint32_t code, int width) {
    if (rule() == "destEUC-JP" || rule() == "destEUC-JIS-2004") return euc(code);
    if (rule() == "destEUC-JP-FIX") return eucFix(code);
    if (rule().starts_with("destISO-2022-JP") || rule() == "destCP50220") return iso2022(code);
    if (rule() == "destOASYS_ONLINE") return oasysOnline(code);
    if (rule() == "destOASYS_WIN" && code > 0xFF) {
      const auto pair = shiftJisPairs(false).find(code & 0xFFFF);
      return number(pair == shiftJisPairs(false).end() ? code : pair->second, width);
    }
    if (rule() == "destUTF-8") return utf8(code);
    if (rule() == "destUTF-16") return utf16(code);
    if (rule() == "destISO-10646-UCS-4") return number(code, 4);
    if (rule() == "destShift_JIS" || rule() == "destWINDOWS31J" || rule() == "destShift_JIS-2004") {
      return shiftJis(code, ksv_reference::nameToId(charset_->name) == 1010);
    }
    number(code, width);
  }

  void mark() {
    if (rule() == "destUTF-8") return append("\xEF\xBB\xBF");
    number(0xFEFF, rule() == "destISO-10646-UCS-4" ? 4 : 2);
  }

  const SubsetFile* anyGroup() {
    if (charset_->members.empty()) return nullptr;
    return &rules_.subsets.at(random_.pick(charset_->members).subsetFile);
  }

  void valid() {
    const SubsetFile* group = anyGroup();
    if (group == nullptr) return text_.push_back('a');
    if (random_.percent(4)) {
      for (uint32_t code : {13U, 10U}) put(code, group->bytesPerCode);
      return;
    }
    const auto table = rules_.tables.find(group->tableFile);
    if (table == rules_.tables.end() || table->second.empty()) {
      uint32_t value = randomCharacter(random_);
      if (value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) value = 0x61;
      return put(value, group->bytesPerCode);
    }
    put(random_.pick(table->second).first, group->bytesPerCode);
  }

  void tagPiece() {
    if (random_.percent(80)) put(0xE0001, 4);
    const int32_t letters = random_.percent(4) ? random_.between(257, 262) : random_.between(0, 4);
    for (int32_t i = 0; i < letters; ++i) put(0xE0020 + random_.below(0x5F), 4);
    if (random_.percent(50)) put(0xE007F, 4);
  }

  void languageTag() {
    put(0xE0001, 4);
    const int32_t letters = random_.percent(6) ? random_.between(250, 265) : random_.between(0, 4);
    for (int32_t i = 0; i < letters; ++i) put(0xE0020 + random_.below(0x5F), 4);
    if (random_.percent(40)) put(0xE007F, 4);
    if (random_.percent(20)) put(random_.pick(kSpecials), 4);
  }

  void wild() {
    const SubsetFile* group = anyGroup();
    const int width = group == nullptr ? 1 : group->bytesPerCode;
    switch (random_.below(12)) {
      case 0:
        return text_.push_back(static_cast<uint8_t>(random_.below(256)));
      case 1:
        return text_.push_back(static_cast<uint8_t>(0xFE + random_.below(2)));
      case 2:
        return put(13, width);
      case 3:
        return put(10, width);
      case 4:
        return mark();
      case 5:
        return languageTag();
      case 6:
        return number(static_cast<uint32_t>(random_.next()), random_.between(1, 4));
      case 7:
        put(random_.pick(std::vector<uint32_t>{0x304B, 0xE6, 0x254, 0x2E9, 0x2E5, 0x31F7}), width);
        return put(random_.pick(std::vector<uint32_t>{0x309A, 0x300, 0x301, 0x2E5, 0x2E9}), width);
      case 8:
        return put(randomJis(random_, true), width);
      case 9:
        return put(0x10000 | randomJis(random_, false), width);
      case 10:
        return put(random_.pick(std::vector<uint32_t>{0x2477, 0x2578, 0x2678, 0x2B44, 0x2B66}),
                   width);
      default:
        return put(random_.pick(kSpecials), width);
    }
  }

  Random& random_;
  const RuleDirectory& rules_;
  const CharsetFile* charset_;
  bool bigEndian_;
  uint32_t wildness_;
  std::vector<uint8_t> text_;
};

const CharsetFile* findCharset(const RuleDirectory& rules, const std::string& name) {
  for (const auto& [file, charset] : rules.charsets) {
    if (ksv_reference::nameToId(charset.name) == ksv_reference::nameToId(name)) return &charset;
  }
  return nullptr;
}

}  // namespace

RuleDirectory randomRules(Random& random) { return RuleMaker(random).make(); }

RuleDirectory randomTagRules(Random& random) {
  RuleDirectory rules;
  std::vector<TablePair> pairs;
  addIdentity(pairs, random, random.percent(50) ? 0 : 0x20, 0x7E);
  for (uint32_t special : kSpecials) {
    const bool tag = special >= 0xE0001 && special <= 0xE007F;
    if (random.percent(tag ? 8 : 70)) pairs.push_back({special, special});
  }
  rules.tables["some.txt"] = pairs;
  rules.tables["narrow.txt"] = {{0x61, 0x61}, {0x3F, 0x3F}, {0x0D, 0x0D}, {0x80, 0xE0041}};
  rules.subsets["some.xml"] = {"Some", 4, "some.txt", 0, 0};
  rules.subsets["every.xml"] = {"Every", 4, "", 0, 0};
  rules.subsets["narrow.xml"] = {"Narrow", 1, "narrow.txt", 0, 0};
  rules.subsets["user.xml"] = {"User", 2, "", 0xE000, static_cast<uint16_t>(random.below(9))};
  for (const char* form : {"UTF-8", "UTF-16", "ISO-10646-UCS-4"}) {
    const std::string name = form;
    rules.charsets["a" + std::to_string(rules.charsets.size()) + ".xml"] = {
        name, "const" + name, "dest" + name, {{1, "some.xml", {}}, {3, "user.xml", {}}}};
  }
  rules.charsets["b.xml"] = {"Out-8", "constUTF-8", "destUTF-8", {{1, "every.xml", {}}}};
  rules.charsets["c.xml"] = {"Out-16", "constUTF-16", "destUTF-16", {{1, "every.xml", {}}}};
  rules.charsets["d.xml"] = {"Quay", "constSAME", "destSAME", {{1, "narrow.xml", {}}}};
  return rules;
}

std::vector<std::string> targetNames(const RuleDirectory& rules) {
  std::vector<std::string> names;
  for (const auto& [file, charset] : rules.charsets) names.push_back(charset.name);
  return names;
}

std::vector<std::string> sourceNames(const RuleDirectory& rules) {
  std::vector<std::string> names = targetNames(rules);
  names.push_back("UTF-7");
  names.push_back("HZ-GB-2312");
  return names;
}

std::vector<uint8_t> randomText(Random& random, const RuleDirectory& rules,
                                const std::string& source, bool bigEndian, size_t bytes,
                                uint32_t wildness) {
  static const CharsetFile kNone = {"", "", "destSAME", {}};
  const CharsetFile* charset = findCharset(rules, source);
  TextMaker maker(random, rules, charset == nullptr ? &kNone : charset, bigEndian, wildness);
  if (source == "UTF-7") return maker.utf7(bytes);
  if (source == "HZ-GB-2312") return maker.hz(bytes);
  return maker.plain(bytes);
}

std::vector<uint8_t> randomTagText(Random& random, const RuleDirectory& rules,
                                   const std::string& source, bool bigEndian) {
  TextMaker maker(random, rules, findCharset(rules, source), bigEndian, 30);
  return maker.tags();
}

ConvertOptions randomOptions(Random& random) {
  ConvertOptions options = {};
  const std::vector<uint16_t> replacements = {0,      0,      0x3F,   0x41,   0x0D,
                                              0x3013, 0xFF1D, 0x304B, 0xFEFF, 0xD800};
  options.outputBigEndian = random.percent(50) ? 1 : 0;
  options.writeByteOrderMark = random.percent(25) ? 1 : 0;
  options.replaceUnmappable = random.percent(50) ? random.between(1, 2) : 0;
  options.narrowReplacement = random.pick(replacements);
  options.wideReplacement = random.pick(replacements);
  if (random.percent(50)) {
    const std::string language = randomLanguage(random);
    std::memcpy(options.defaultLanguage, language.data(), language.size());
  }
  for (uint8_t& byte : options.unused) byte = static_cast<uint8_t>(random.below(256));
  options.convertNewlines = random.percent(50) ? 1 : 0;
  options.newlineForm = random.below(7);
  options.supplementaryMode = random.percent(50) ? 0 : static_cast<uint16_t>(random.between(1, 3));
  return options;
}

std::string randomLanguage(Random& random) {
  const std::vector<std::string> languages = {"", "ja", "en", "EN", "en-US", "x", "\xE9\x80"};
  if (random.percent(5)) return std::string(259, 'a');
  return random.pick(languages);
}

}  // namespace ksv_differential
