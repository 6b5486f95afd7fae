#include "cli/mail/header_parameters.h"

#include <algorithm>
#include <map>
#include <utility>

#include "cli/mail/header_tokens.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

constexpr size_t kMostDigits = 4;  // of the number of a piece

struct Piece {
  std::string text;
  bool isExtended;
};

// What a field has of one parameter.
struct Forms {
  std::optional<std::string> plain;
  std::optional<std::string> extended;
  std::map<unsigned, Piece> pieces;
};

// "name*12*" of a parameter: its name, its number, and whether its value is extended.
struct WrittenName {
  std::string name;
  std::optional<unsigned> number;
  bool isExtended = false;
};

WrittenName readName(std::string_view written) {
  WrittenName read;
  if (written.ends_with('*')) {
    read.isExtended = true;
    written.remove_suffix(1);
  }
  const size_t star = written.find('*');
  const std::string_view digits =
      star == std::string_view::npos ? std::string_view() : written.substr(star + 1);
  const bool isNumber = !digits.empty() && digits.size() <= kMostDigits &&
                        std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
  if (isNumber) {
    read.number = static_cast<unsigned>(std::stoul(std::string(digits)));
    written = written.substr(0, star);
  }
  read.name = ksv_kit::lowered(written);
  return read;
}

// "CHARSET'LANGUAGE'" in front of an extended value.
std::optional<std::string> takeCharset(std::string& text) {
  const size_t first = text.find('\'');
  const size_t second = first == std::string::npos ? first : text.find('\'', first + 1);
  if (second == std::string::npos) return std::nullopt;
  std::string charset = ksv_kit::lowered(text.substr(0, first));
  text.erase(0, second + 1);
  if (charset.empty()) return std::nullopt;
  return charset;
}

std::vector<HeaderRun> extendedValue(std::string text) {
  const std::optional<std::string> charset = takeCharset(text);
  return {{hexDecoded(text, '%'), charset}};
}

// Pieces count as far as no number is missing.
std::vector<HeaderRun> joinedValue(const std::map<unsigned, Piece>& pieces) {
  std::string bytes;
  std::optional<std::string> charset;
  bool isExtended = false;
  for (unsigned number = 0; const auto& [given, piece] : pieces) {
    if (given != number++) break;
    std::string text = piece.text;
    if (given == 0 && piece.isExtended) charset = takeCharset(text);
    isExtended = isExtended || piece.isExtended;
    bytes += piece.isExtended ? hexDecoded(text, '%') : text;
  }
  if (!isExtended) return headerRuns(bytes);
  return {{bytes, charset}};
}

std::vector<HeaderRun> valueOf(const Forms& forms) {
  if (forms.extended) return extendedValue(*forms.extended);
  if (forms.pieces.contains(0)) return joinedValue(forms.pieces);
  return headerRuns(forms.plain.value_or(""));
}

class FieldReader {
 public:
  explicit FieldReader(std::string_view field) : cursor_(field) {}

  ParameterField read() {
    ParameterField result;
    result.value = ksv_kit::lowered(withoutBlanksAround(takeWord(";")));
    while (!cursor_.isAtEnd()) {
      cursor_.pass();
      takeParameter();
    }
    for (const std::string& name : order_)
      result.parameters.push_back({name, valueOf(forms_[name])});
    return result;
  }

 private:
  // A value, quoted or not, without comments.
  std::string takeWord(std::string_view ends) {
    const std::string stops = std::string(ends) + "\"(";
    std::string word = cursor_.takeUntil(stops);
    while (!cursor_.isAtEnd() && ends.find(cursor_.next()) == std::string_view::npos) {
      const bool isQuoted = cursor_.next() == '"';
      cursor_.pass();
      if (isQuoted)
        word = std::string(withoutBlanksAround(word)) + cursor_.takeQuoted();
      else
        cursor_.takeComment();
      const std::string behind = cursor_.takeUntil(stops);
      word += isQuoted ? std::string(withoutBlanksAround(behind)) : behind;
    }
    return word;
  }

  void takeParameter() {
    const std::string name = takeWord("=;");
    if (cursor_.isAtEnd() || cursor_.next() != '=') return;
    cursor_.pass();
    add(readName(withoutBlanksAround(name)), std::string(withoutBlanksAround(takeWord(";"))));
  }

  // Of what is there twice the first counts.
  void add(const WrittenName& written, std::string value) {
    const auto [place, isNew] = forms_.try_emplace(written.name);
    if (isNew) order_.push_back(written.name);
    Forms& forms = place->second;
    if (written.number)
      forms.pieces.try_emplace(*written.number, Piece{std::move(value), written.isExtended});
    else if (std::optional<std::string>& form = written.isExtended ? forms.extended : forms.plain;
             !form)
      form = std::move(value);
  }

  HeaderCursor cursor_;
  std::map<std::string, Forms> forms_;
  std::vector<std::string> order_;
};

}  // namespace

const HeaderParameter* ParameterField::find(std::string_view name) const {
  const auto found = std::ranges::find(parameters, name, &HeaderParameter::name);
  return found == parameters.end() ? nullptr : &*found;
}

ParameterField parameterField(std::string_view field) { return FieldReader(field).read(); }

std::string plainValue(const HeaderParameter& parameter) {
  std::string text;
  for (const HeaderRun& run : parameter.value) text += run.bytes;
  return text;
}

}  // namespace ksv_cli
