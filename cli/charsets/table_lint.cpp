#include "cli/charsets/table_lint.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

constexpr size_t kMostFaults = 10;
constexpr size_t kMostDigits = 8;
constexpr uint32_t kLastCharacter = 0x10FFFF;

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

struct Number {
  uint32_t value = 0;
  size_t digits = 0;
  size_t position = 0;
};

// The numbers of a table as the library reads them, and what it passes over.
class TableNumbers {
 public:
  explicit TableNumbers(const LinedText& lines) : lines_(lines), text_(lines.text()) {}

  std::optional<Number> next() {
    skipToDigit();
    if (at_ >= text_.size()) return std::nullopt;
    Number number = {0, 0, at_};
    for (; at_ < text_.size() && hexDigit(text_[at_]) >= 0; ++at_, ++number.digits)
      number.value = number.value << 4 | static_cast<uint32_t>(hexDigit(text_[at_]));
    return number;
  }

  // The line of a '<' without its '>'; 0 when there is none.
  size_t unclosedLine() const { return unclosedLine_; }
  // Whether a number ends at least so many characters before the text does.
  bool isFollowedBy(size_t count) const { return at_ + count <= text_.size(); }

 private:
  void skipToDigit() {
    while (at_ < text_.size() && hexDigit(text_[at_]) < 0) {
      if (text_[at_] == '<') skipMarkup();
      ++at_;
    }
  }

  void skipMarkup() {
    const size_t end = text_.find('>', at_);
    if (end == std::string::npos) unclosedLine_ = lines_.lineAt(at_);
    at_ = std::min(end, text_.size());
  }

  const LinedText& lines_;
  const std::string& text_;
  size_t at_ = 0;
  size_t unclosedLine_ = 0;
};

class TableLint {
 public:
  TableLint(const std::string& directory, const TableUse& use, std::vector<Fault>& faults)
      : directory_(directory), use_(use), faults_(faults) {}

  void run() {
    const auto bytes = fileBytes(platform::joinPath(directory_, use_.file));
    const auto compiled = fileBytes(platform::joinPath(directory_, compiledName(use_.file)));
    if (!bytes && (!compiled || compiled->empty()))
      return add(0, "is missing; " + use_.declaredBy + " declares it");
    if (bytes && isReadable(*bytes)) lintText(*bytes);
    if (bytes && compiled) compareCompiled(*compiled);
  }

 private:
  void add(size_t line, std::string reason) {
    if (count_ == kMostFaults) reason = "has more faults, which are not told";
    if (count_++ <= kMostFaults) faults_.push_back({use_.file, line, std::move(reason)});
  }

  // A table is read in the form of the rule file that declares it, whatever its own.
  bool isReadable(const std::vector<uint8_t>& bytes) {
    const FormFinding own = formOf(bytes);
    if (!own.form) {
      add(0, own.fault);
    } else if (*own.form != use_.form) {
      add(0, "is not written as " + use_.declaredBy + ", which declares it");
    }
    return own.form == use_.form;
  }

  void lintText(const std::vector<uint8_t>& bytes) {
    const LinedText lines = decoded(bytes, use_.form);
    TableNumbers numbers(lines);
    std::vector<Number> line;
    size_t lineNumber = 0;
    bool isWhole = true;
    while (const std::optional<Number> number = numbers.next()) {
      const size_t itsLine = lines.lineAt(number->position);
      if (itsLine != lineNumber) checkLine(lineNumber, std::exchange(line, {}));
      lineNumber = itsLine;
      line.push_back(*number);
      isWhole = numbers.isFollowedBy(2);
      if (isWhole) take(*number);
    }
    checkLine(lineNumber, line);
    if (numbers.unclosedLine() != 0) add(numbers.unclosedLine(), "opens a '<' that nothing closes");
    if (!isWhole) add(lineNumber, "loses its last number: a line end of CR LF has to follow it");
  }

  void take(const Number& number) {
    if (!first_) {
      first_ = number.value;
      return;
    }
    for (const uint32_t value : {*first_, number.value})
      for (int i = 0; i < 4; ++i) records_ += static_cast<char>(value >> (8 * i));
    first_.reset();
  }

  void checkLine(size_t line, const std::vector<Number>& numbers) {
    if (numbers.empty()) return;
    if (numbers.size() != 2)
      return add(line, "holds " + std::to_string(numbers.size()) +
                           (numbers.size() == 1 ? " number" : " numbers") +
                           ", not a code and a character");
    for (const Number& number : numbers)
      if (number.digits > kMostDigits) return add(line, "has a number of more than 8 digits");
    const bool fits = use_.width >= 4 || numbers[0].value >> (8 * use_.width) == 0;
    if (!fits)
      return add(line, "has a code of more than " + std::to_string(use_.width) +
                           (use_.width == 1 ? " byte" : " bytes"));
    if (numbers[1].value > kLastCharacter) add(line, "has a character beyond U+10FFFF");
  }

  void compareCompiled(const std::vector<uint8_t>& compiled) {
    const std::string bytes(compiled.begin(), compiled.end());
    if (bytes == records_) return;
    const std::string reason = bytes.empty() ? "is empty" : "is not what " + use_.file + " says";
    faults_.push_back({compiledName(use_.file), 0, reason + "; without it, it is made anew"});
  }

  const std::string& directory_;
  const TableUse& use_;
  std::vector<Fault>& faults_;
  size_t count_ = 0;
  std::optional<uint32_t> first_;
  std::string records_;  // as the compiled copy has them
};

}  // namespace

std::string compiledName(const std::string& table) {
  return table.substr(0, table.rfind('.')) + ".cmp";
}

void lintTable(const std::string& directory, const TableUse& use, std::vector<Fault>& faults) {
  TableLint(directory, use, faults).run();
}

}  // namespace ksv_cli
