#include "kit/documents/properties/code_page_text.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "kit/documents/properties/code_page_converters.h"
#include "kit/documents/properties/code_page_judgement.h"
#include "kit/engine.h"
#include "kit/repertoire/charset_facts.h"

namespace ksv_kit::properties {
namespace {

constexpr char kWideCharset[] = "UTF-16LE";
constexpr char kUsualCharset[] = "windows-1252";

bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Whether the bytes of ASCII are its characters, so that nobody has to be asked.
bool keepsAscii(uint16_t codePage) {
  switch (codePage) {
    case 0:
    case 874:
    case 932:
    case 936:
    case 949:
    case 950:
    case 10000:
    case 20127:
    case 28591:
    case kUtf8Page:
      return true;
    default:
      return codePage >= 1250 && codePage <= 1258;
  }
}

// Up to the terminator, which is as wide as the units are.
std::string_view untilTerminator(std::string_view bytes, size_t unit) {
  if (unit == 1) return bytes.substr(0, bytes.find('\0'));
  for (size_t at = 0; at + 1 < bytes.size(); at += 2)
    if (bytes[at] == '\0' && bytes[at + 1] == '\0') return bytes.substr(0, at);
  return bytes;
}

bool hasMoreBehind(std::string_view bytes, std::string_view text) {
  const std::string_view rest = bytes.substr(text.size());
  return std::any_of(rest.begin(), rest.end(), [](char c) { return c != '\0'; });
}

// A text of a section, and where it goes.
struct Pending {
  std::string_view bytes;
  std::string* text;
  std::vector<std::string>* notes;
};

void addNote(const Pending& pending, std::string note) {
  std::vector<std::string>& notes = *pending.notes;
  if (std::find(notes.begin(), notes.end(), note) == notes.end()) notes.push_back(std::move(note));
}

std::string declaration(uint16_t codePage) {
  return codePage == 0 ? "no code page is declared"
                       : "code page " + std::to_string(codePage) + " is declared";
}

// ASCII in UTF-16, which most texts are.
bool narrowAscii(std::string_view bytes, std::string& text) {
  if (bytes.size() % 2 != 0) return false;
  text.clear();
  for (size_t at = 0; at < bytes.size(); at += 2) {
    if (bytes[at + 1] != '\0' || (bytes[at] & 0x80) != 0) return false;
    text.push_back(bytes[at]);
  }
  return true;
}

void noteRest(const Pending& pending, std::string_view text) {
  if (hasMoreBehind(pending.bytes, text))
    addNote(pending, "more bytes stand behind the end of the text");
}

void decode(const Pending& pending, const std::string& charset, size_t unit) {
  const std::string_view bytes = untilTerminator(pending.bytes, unit);
  noteRest(pending, bytes);
  if (unit == 2 && narrowAscii(bytes, *pending.text)) return;
  DecodedText decoded = decodedText(charset, bytes);
  if (!decoded.isSound) addNote(pending, "holds bytes that are no text in " + charset);
  *pending.text = std::move(decoded.text);
}

class SectionTexts {
 public:
  explicit SectionTexts(Section& section) : section_(section) {}
  void read();

 private:
  void collect(Value& value, std::vector<std::string>& notes);
  void collectText(Value& value, std::string_view bytes, std::vector<std::string>& notes);
  void decodeDeclaredWide();
  void decodeDeclaredNarrow();
  void decodeNarrow(const std::vector<Pending>& texts, const std::string& declared);
  void showBytes(const Pending& pending) const;
  void nameProperties();

  Section& section_;
  std::vector<Pending> texts_;
};

void SectionTexts::collectText(Value& value, std::string_view bytes,
                               std::vector<std::string>& notes) {
  texts_.push_back({bytes, &value.text, &notes});
}

void SectionTexts::collect(Value& value, std::vector<std::string>& notes) {
  for (Value& element : value.elements) collect(element, notes);
  if (value.isSequence()) return;
  if (value.baseType() == kLpwstr)
    decode({value.bytes, &value.text, &notes}, kWideCharset, 2);
  else if (value.baseType() == kVersionedStream)
    collectText(value, std::string_view(value.bytes).substr(16), notes);
  else if (isCodePageText(value.baseType()))
    collectText(value, value.bytes, notes);
}

void SectionTexts::nameProperties() {
  std::map<uint32_t, const std::string*> names;
  for (const DictionaryEntry& entry : section_.dictionary) names.emplace(entry.id, &entry.name);
  for (Property& property : section_.properties)
    if (const auto found = names.find(property.id); found != names.end())
      property.name = *found->second;
}

void SectionTexts::read() {
  for (Property& property : section_.properties) collect(property.value, property.notes);
  for (DictionaryEntry& entry : section_.dictionary)
    texts_.push_back({entry.bytes, &entry.name, &section_.notes});
  if (section_.codePage == kUtf16Page)
    decodeDeclaredWide();
  else
    decodeDeclaredNarrow();
  nameProperties();
}

void SectionTexts::decodeDeclaredWide() {
  std::vector<Pending> narrow;
  for (const Pending& text : texts_) {
    if (isNarrowText(text.bytes))
      narrow.push_back(text);
    else
      decode(text, kWideCharset, 2);
  }
  decodeNarrow(narrow, "");
}

void SectionTexts::decodeDeclaredNarrow() {
  std::string declared = section_.codePage == 0 ? "" : charsetOf(section_.codePage);
  std::vector<Pending> narrow;
  for (const Pending& text : texts_) {
    if (isWideText(text.bytes)) {
      decode(text, kWideCharset, 2);
      addNote(text, declaration(section_.codePage) + ", and the text is UTF-16");
    } else if (isAscii(text.bytes) && keepsAscii(section_.codePage)) {
      const std::string_view bytes = untilTerminator(text.bytes, 1);
      noteRest(text, bytes);
      *text.text = bytes;
    } else if (declared.empty() && section_.codePage != 0) {
      showBytes(text);
    } else {
      narrow.push_back(text);
    }
  }
  decodeNarrow(narrow, declared);
}

// They are judged together, since a few words say little.
void SectionTexts::decodeNarrow(const std::vector<Pending>& texts, const std::string& declared) {
  if (texts.empty()) return;
  std::string lines;
  bool areSound = !declared.empty();
  for (const Pending& text : texts) {
    const std::string_view bytes = untilTerminator(text.bytes, 1);
    lines += bytes;
    lines += '\n';
    if (declared.empty()) continue;
    DecodedText decoded = decodedText(declared, bytes);
    areSound = areSound && decoded.isSound;
    *text.text = std::move(decoded.text);
  }
  const std::string charset = isAscii(lines) && declared.empty()
                                  ? kUsualCharset
                                  : charsetOfTexts(lines, declared, areSound);
  for (const Pending& text : texts) {
    if (areSound && charset == declared) {
      noteRest(text, untilTerminator(text.bytes, 1));
      continue;
    }
    decode(text, charset, 1);
    if (charset != declared)
      addNote(text, declaration(section_.codePage) + ", and the text is read as " + charset);
  }
}

void SectionTexts::showBytes(const Pending& pending) const {
  const std::string_view bytes = untilTerminator(pending.bytes, 1);
  for (const char c : bytes) {
    if ((c & 0x80) == 0)
      *pending.text += c;
    else
      *pending.text += "\uFFFD";
  }
  addNote(pending, declaration(section_.codePage) + ", which is not known: only ASCII is read");
}

}  // namespace

// Each code page is looked up once a process. Texts in other units than bytes are those of one
// only.
std::string charsetOf(uint16_t codePage) {
  static std::mutex* const mutex = new std::mutex;
  static auto* const charsets = new std::map<uint16_t, std::string>;
  if (codePage == kUtf16Page) return kWideCharset;
  const std::lock_guard<std::mutex> lock(*mutex);
  if (const auto found = charsets->find(codePage); found != charsets->end()) return found->second;
  const CharsetNames& names = Engine::instance().names();
  const RegistryEntry* const entry = registryEntryOfCodePage(codePage);
  const auto choice = names.findSource(entry == nullptr ? "cp" + std::to_string(codePage)
                                                        : std::string(entry->charset));
  return (*charsets)[codePage] = choice && !choice->hasByteOrder() ? choice->display : "";
}

void readTexts(PropertySet& set) {
  for (Section& section : set.sections) SectionTexts(section).read();
}

std::optional<std::string> encodedText(uint16_t codePage, std::string_view utf8) {
  if (isAscii(utf8) && keepsAscii(codePage)) return std::string(utf8);
  const std::string charset = charsetOf(codePage);
  if (charset.empty()) return std::nullopt;
  std::optional<std::string> bytes = encodedIn(charset, utf8);
  if (!bytes || decodedText(charset, *bytes).text != utf8) return std::nullopt;
  return bytes;
}

std::optional<std::string> terminatedText(uint16_t codePage, std::string_view utf8) {
  std::optional<std::string> bytes = encodedText(codePage, utf8);
  if (bytes) bytes->append(codePage == kUtf16Page ? 2 : 1, '\0');
  return bytes;
}

}  // namespace ksv_kit::properties
