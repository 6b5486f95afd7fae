// The reader of code-table texts, against a plain one over the whole text.
//
// Input: encoding kind (low 7 bits) and byte order (high bit); blanks to put in
// front (times 96), so that a small input reaches the ends of the reader's buffer;
// 0 raw bytes, else one unit a byte; then the text.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cconv/rules/rule_base.h"
#include "cconv/rules/table_reader.h"
#include "fuzz/reference_table.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_cconv.h"

namespace {

using ksv::TextEncodingKind;
using ksv_fuzz::Pair;
using ksv_fuzz::require;

class PlainReader {
 public:
  PlainReader(const std::string& bytes, TextEncodingKind kind, bool bigEndian)
      : bytes_(bytes), kind_(kind), bigEndian_(bigEndian) {}

  std::optional<uint32_t> nextNumber() {
    std::optional<uint32_t> c = nextCharacter();
    while (c && digitValue(*c) < 0) {
      if (*c == '<') {
        do c = nextCharacter();
        while (c && *c != '>');
      }
      if (c) c = nextCharacter();
    }
    std::string digits;
    while (c && digitValue(*c) >= 0 && digits.size() < 64) {
      digits += static_cast<char>(*c);
      c = nextCharacter();
    }
    if (!c) return std::nullopt;
    at_ -= width();
    uint32_t value = 0;
    for (const char digit : digits) {
      value = value * 16 + static_cast<uint32_t>(digitValue(static_cast<unsigned char>(digit)));
    }
    return value;
  }

 private:
  static int digitValue(uint32_t c) {
    static const std::string kDigits = "0123456789abcdef0123456789ABCDEF";
    const size_t found = c > 0 && c < 0x80 ? kDigits.find(static_cast<char>(c)) : std::string::npos;
    return found == std::string::npos ? -1 : static_cast<int>(found % 16);
  }

  size_t width() const { return kind_ == TextEncodingKind::kUcs4 ? 4 : 2; }

  std::optional<uint32_t> nextUnit() {
    if (at_ + width() >= bytes_.size()) return std::nullopt;
    uint32_t unit = 0;
    for (size_t i = 0; i < width(); ++i) {
      const auto byte = static_cast<unsigned char>(bytes_[at_ + i]);
      const size_t place = bigEndian_ ? width() - 1 - i : i;
      unit += uint32_t{byte} << (8 * place);
    }
    at_ += width();
    return unit;
  }

  std::optional<uint32_t> nextCharacter() {
    if (kind_ != TextEncodingKind::kUtf16 && kind_ != TextEncodingKind::kUcs2 &&
        kind_ != TextEncodingKind::kUcs4) {
      return std::nullopt;
    }
    const auto first = nextUnit();
    if (!first || kind_ != TextEncodingKind::kUtf16 || *first < 0xD800 || *first > 0xDFFF) {
      return first;
    }
    const auto second = nextUnit();
    if (!second) return std::nullopt;
    // The unit that counts as the upper one is the first only when the second is a
    // high surrogate.
    const bool secondIsHigh = *second >= 0xD800 && *second <= 0xDBFF;
    return secondIsHigh ? (*first - 0xD7F7) * 1024 + *second : (*second - 0xD7F7) * 1024 + *first;
  }

  const std::string& bytes_;
  const TextEncodingKind kind_;
  const bool bigEndian_;
  size_t at_ = 0;
};

std::string textOf(ksv_fuzz::Input& input, TextEncodingKind kind, bool bigEndian) {
  using ksv_fuzz::Widening;
  const std::string blanks(96 * size_t{input.byte()}, ' ');
  const bool raw = input.byte() == 0;
  const bool four = kind == TextEncodingKind::kUcs4;
  const Widening widening = four ? (bigEndian ? Widening::kFourBig : Widening::kFourLittle)
                                 : (bigEndian ? Widening::kTwoBig : Widening::kTwoLittle);
  return ksv_fuzz::widen(blanks, widening) +
         ksv_fuzz::widen(input.rest(), raw ? Widening::kNone : widening);
}

std::vector<uint32_t> numbersOf(const std::string& path, const std::string& text,
                                TextEncodingKind kind, bool bigEndian) {
  const auto reader = ksv::TableReader::open(path, kind, bigEndian);
  require(reader != nullptr, "the text can be opened");
  PlainReader plain(text, kind, bigEndian);
  std::vector<uint32_t> numbers;
  for (;;) {
    const auto number = reader->nextNumber();
    require(number == plain.nextNumber(), "both readers find the same numbers");
    if (!number) return numbers;
    numbers.push_back(*number);
  }
}

std::string compiledFormOf(const std::vector<Pair>& pairs) {
  std::string bytes;
  for (const auto& pair : pairs) {
    for (const uint32_t number : {pair.first, pair.second}) {
      for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
    }
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  ksv_fuzz::Input input(data, size);
  const uint8_t form = input.byte();
  const auto kind = static_cast<TextEncodingKind>((form & 0x7F) % 6);
  const bool bigEndian = (form & 0x80) != 0;
  const std::string text = textOf(input, kind, bigEndian);

  directory.clear();
  directory.write("table.txt", text);
  require(startProcess() == 1, "the library starts");
  const std::string path = std::string(ksv::ruleBase.charsetPath) + "table.txt";
  const std::vector<uint32_t> numbers = numbersOf(path, text, kind, bigEndian);
  std::vector<Pair> pairs;
  for (size_t i = 0; i + 1 < numbers.size(); i += 2) pairs.push_back({numbers[i], numbers[i + 1]});

  // The first table compiles the text, the second reads what it wrote.
  for (const auto column : {ksv::CodeTable::kFirstColumn, ksv::CodeTable::kSecondColumn}) {
    ksv::CodeTable table(column, 4);
    table.fileName = "TABLE.txt";
    table.sourceEncoding = kind;
    table.sourceBigEndian = bigEndian;
    const bool firstIsKey = column == ksv::CodeTable::kFirstColumn;
    ksv_fuzz::requireSameTable(
        table, ksv_fuzz::ReferenceTable(pairs, firstIsKey, 4, ksv::kDefaultBlockSize));
    require(directory.read("table.cmp") == compiledFormOf(pairs), "every pair is compiled");
    directory.remove("table.txt");
  }
  endProcess();
  return 0;
}
