#include "kit/text/declarations.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ksv_kit {
namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr size_t kNone = std::string_view::npos;

bool isAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isInName(char c) {
  return isAsciiLetter(c) || (c >= '0' && c <= '9') || std::string_view("._:+-").find(c) != kNone;
}

bool isName(std::string_view text) { return !text.empty() && std::ranges::all_of(text, isInName); }

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isSameButForCase(std::string_view text, std::string_view lowerCase) {
  return std::ranges::equal(text, lowerCase, {}, lowered);
}

// A part of the text, by its place.
struct Part {
  size_t at = 0;
  size_t length = 0;

  size_t end() const { return at + length; }
  std::string_view in(std::string_view text) const { return text.substr(at, length); }
};

// ---- XML ----

constexpr std::string_view kXmlBlanks = " \t\r\n";

size_t behindBlanks(std::string_view text, size_t at, std::string_view blanks) {
  return std::min(text.find_first_not_of(blanks, at), text.size());
}

struct PseudoAttribute {
  std::string_view name;
  Part value;  // without its quotes
};

// From the blanks in front of it on; moves at behind it. None: there is none, or it is malformed.
std::optional<PseudoAttribute> nextPseudoAttribute(std::string_view text, size_t& at) {
  const size_t begin = behindBlanks(text, at, kXmlBlanks);
  if (begin == at) return std::nullopt;
  size_t end = begin;
  while (end < text.size() && isAsciiLetter(text[end])) ++end;
  const size_t equals = behindBlanks(text, end, kXmlBlanks);
  if (end == begin || equals == text.size() || text[equals] != '=') return std::nullopt;
  const size_t quote = behindBlanks(text, equals + 1, kXmlBlanks);
  if (quote == text.size() || (text[quote] != '"' && text[quote] != '\'')) return std::nullopt;
  const size_t close = text.find(text[quote], quote + 1);
  if (close == kNone) return std::nullopt;
  at = close + 1;
  return PseudoAttribute{text.substr(begin, end - begin), {quote + 1, close - quote - 1}};
}

// What an XML declaration has, each at most once and in this order.
struct XmlDeclaration {
  std::optional<Part> version;
  std::optional<Part> encoding;
};

std::optional<XmlDeclaration> xmlDeclarationOf(std::string_view text, size_t begin) {
  constexpr std::string_view kBegin = "<?xml";
  if (!text.substr(begin).starts_with(kBegin)) return std::nullopt;
  XmlDeclaration found;
  size_t at = begin + kBegin.size();
  std::optional<PseudoAttribute> next = nextPseudoAttribute(text, at);
  const auto take = [&](std::string_view name) -> std::optional<Part> {
    if (!next || next->name != name) return std::nullopt;
    const Part value = next->value;
    next = nextPseudoAttribute(text, at);
    return value;
  };
  found.version = take("version");
  found.encoding = take("encoding");
  take("standalone");
  const bool isWhole = !next && text.substr(behindBlanks(text, at, kXmlBlanks)).starts_with("?>");
  return isWhole ? std::optional(found) : std::nullopt;
}

void addXmlEdit(std::string_view text, size_t begin, const DeclaredName& declared,
                std::vector<TextEdit>& edits) {
  const std::optional<XmlDeclaration> found = xmlDeclarationOf(text, begin);
  if (!found) return;
  if (found->encoding) {
    if (isName(found->encoding->in(text)))
      edits.push_back({found->encoding->at, found->encoding->length, declared.name});
  } else if (found->version && declared.isNeededByXml) {
    const std::string quote(1, text[found->version->end()]);
    const size_t behindVersion = found->version->end() + quote.size();
    edits.push_back({behindVersion, 0, " encoding=" + quote + declared.name + quote});
  }
}

// ---- Style sheets ----

void addStyleSheetEdit(std::string_view text, size_t begin, const DeclaredName& declared,
                       std::vector<TextEdit>& edits) {
  constexpr std::string_view kBegin = "@charset \"";
  if (!text.substr(begin).starts_with(kBegin)) return;
  const size_t at = begin + kBegin.size();
  const size_t end = text.find('"', at);
  if (end == kNone || !text.substr(end).starts_with("\";")) return;
  if (isName(text.substr(at, end - at))) edits.push_back({at, end - at, declared.name});
}

// ---- HTML ----

constexpr std::string_view kHtmlBlanks = "\t\n\f\r ";

bool isHtmlBlank(char c) { return kHtmlBlanks.find(c) != kNone; }

// Ends the prescan where the beginning does.
struct EndOfBeginning {};

// The prescan of a byte stream to determine its encoding, with the names of the HTML standard's
// steps.
class Prescan {
 public:
  explicit Prescan(std::string_view text, size_t begin) : text_(text), at_(begin) {}

  // What names a charset, in the order of the places.
  std::vector<Part> names() {
    try {
      for (;; ++at_) takeStep();
    } catch (const EndOfBeginning&) {
      return std::move(names_);
    }
  }

 private:
  struct Attribute {
    std::string name;  // in lower case
    Part value;
  };

  char current() const {
    if (at_ >= text_.size()) throw EndOfBeginning();
    return text_[at_];
  }

  bool beginsWith(std::string_view lowerCase) const {
    return isSameButForCase(text_.substr(at_, lowerCase.size()), lowerCase);
  }

  char behind(size_t length) const { return at_ + length < text_.size() ? text_[at_ + length] : 0; }

  void takeStep() {
    if (current() != '<') return;
    const bool isEndTag = behind(1) == '/';
    if (beginsWith("<!--")) {
      passComment();
    } else if (beginsWith("<meta") && (isHtmlBlank(behind(5)) || behind(5) == '/')) {
      at_ += 5;
      takeMeta();
    } else if (isAsciiLetter(behind(isEndTag ? 2 : 1))) {
      while (!isHtmlBlank(current()) && current() != '>') ++at_;
      while (nextAttribute()) {
      }
    } else if (isEndTag || behind(1) == '!' || behind(1) == '?') {
      while (current() != '>') ++at_;
    }
  }

  // The hyphens of its beginning may be those of its end.
  void passComment() {
    const size_t end = text_.find("-->", at_ + 2);
    if (end == kNone) throw EndOfBeginning();
    at_ = end + 2;
  }

  void takeMeta() {
    bool isContentType = false;
    std::optional<Part> charset;
    std::optional<Part> content;
    std::vector<std::string> seen;
    while (const std::optional<Attribute> attribute = nextAttribute()) {
      if (std::ranges::find(seen, attribute->name) != seen.end()) continue;
      seen.push_back(attribute->name);
      if (attribute->name == "http-equiv")
        isContentType = isSameButForCase(attribute->value.in(text_), "content-type");
      if (attribute->name == "content") content = charsetIn(attribute->value);
      if (attribute->name == "charset") charset = attribute->value;
    }
    if (!isContentType) content.reset();
    std::vector<Part> found;
    for (const std::optional<Part>& part : {charset, content})
      if (part) found.push_back(*part);
    std::ranges::sort(found, {}, &Part::at);
    names_.insert(names_.end(), found.begin(), found.end());
  }

  // "get an attribute". What is cut off by the end of the beginning is none.
  std::optional<Attribute> nextAttribute() {
    while (isHtmlBlank(current()) || current() == '/') ++at_;
    if (current() == '>') return std::nullopt;
    Attribute attribute;
    for (;; ++at_) {
      const char c = current();
      if (c == '=' && !attribute.name.empty()) break;
      if (isHtmlBlank(c)) {
        passBlanks();
        break;
      }
      if (c == '/' || c == '>') return attribute;
      attribute.name += lowered(c);
    }
    if (current() != '=') return attribute;
    ++at_;
    passBlanks();
    attribute.value = attributeValue();
    return attribute;
  }

  void passBlanks() {
    while (isHtmlBlank(current())) ++at_;
  }

  Part attributeValue() {
    const char quote = current();
    const bool isQuoted = quote == '"' || quote == '\'';
    if (isQuoted) ++at_;
    const size_t begin = at_;
    while (isQuoted ? current() != quote : !isHtmlBlank(current()) && current() != '>') ++at_;
    const Part value = {begin, at_ - begin};
    if (isQuoted) ++at_;
    return value;
  }

  // "extracting a character encoding from a meta element", of the value of its content.
  std::optional<Part> charsetIn(const Part& content) const {
    constexpr std::string_view kName = "charset";
    const std::string_view value = content.in(text_);
    for (size_t at = 0; at + kName.size() <= value.size(); ++at) {
      if (!isSameButForCase(value.substr(at, kName.size()), kName)) continue;
      size_t begin = behindBlanks(value, at + kName.size(), kHtmlBlanks);
      if (begin == value.size() || value[begin] != '=') continue;
      begin = behindBlanks(value, begin + 1, kHtmlBlanks);
      if (begin == value.size()) return std::nullopt;
      if (value[begin] != '"' && value[begin] != '\'') {
        const size_t end = std::min(value.find_first_of("\t\n\f\r ;", begin), value.size());
        return Part{content.at + begin, end - begin};
      }
      const size_t end = value.find(value[begin], begin + 1);
      if (end == kNone) return std::nullopt;
      return Part{content.at + begin + 1, end - begin - 1};
    }
    return std::nullopt;
  }

  const std::string_view text_;
  size_t at_;
  std::vector<Part> names_;
};

}  // namespace

std::vector<TextEdit> declarationEdits(std::string_view beginning, const DeclaredName& declared) {
  const size_t begin = beginning.starts_with(kMark) ? kMark.size() : 0;
  std::vector<TextEdit> edits;
  addXmlEdit(beginning, begin, declared, edits);
  addStyleSheetEdit(beginning, begin, declared, edits);
  for (const Part& name : Prescan(beginning, begin).names())
    if (isName(name.in(beginning))) edits.push_back({name.at, name.length, declared.name});
  return edits;
}

}  // namespace ksv_kit
