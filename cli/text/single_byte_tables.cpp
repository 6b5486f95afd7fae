#include "cli/text/single_byte_tables.h"

#include "kit/text/utf8_characters.h"
#include "ksv_cconv.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;
using ksv_kit::Utf8Characters;

namespace {

struct SingleByteCharset {
  const char* name;
  Language language;
};

// In the order in which they are named where several fit. What differs from one of these
// in few or unused characters (ISO-8859-1, ISO-8859-9, TIS-620) is named by it.
constexpr SingleByteCharset kCharsets[] = {
    {"windows-1252", Language::kLatin},      {"ISO-8859-15", Language::kLatin},
    {"windows-1250", Language::kLatin},      {"ISO-8859-2", Language::kLatin},
    {"windows-1254", Language::kLatin},      {"windows-1257", Language::kLatin},
    {"macintosh", Language::kLatin},         {"KOI8-R", Language::kCyrillic},
    {"KOI8-U", Language::kCyrillic},         {"windows-1251", Language::kCyrillic},
    {"ISO-8859-5", Language::kCyrillic},     {"IBM866", Language::kCyrillic},
    {"x-mac-cyrillic", Language::kCyrillic}, {"windows-1253", Language::kGreek},
    {"ISO-8859-7", Language::kGreek},        {"windows-874", Language::kThai},
    {"windows-1255", Language::kHebrew},     {"ISO-8859-8", Language::kHebrew},
    {"windows-1256", Language::kArabic},     {"ISO-8859-6", Language::kArabic},
};

uint32_t characterOf(ConverterRecord record, uint8_t byte) {
  uint8_t output[8];
  record.input = &byte;
  record.inputLength = 1;
  record.output = output;
  record.outputCapacity = sizeof output;
  uint32_t result = SingleByteTable::kNoCharacter;
  if (cconvConvert(&record) != KSV_STATUS_DONE) return result;
  Utf8Characters characters;
  for (int32_t i = 0; i < record.outputPosition; ++i)
    characters.take(output[i], [&](uint32_t character) { result = character; });
  return result;
}

bool fill(SingleByteTable& table, const std::string& charset) {
  ConverterRecord record{};
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&record, nullptr, "utf-8") != KSV_STATUS_DONE ||
      cconvChgCharset(&record, parameters, charset.c_str()) != KSV_STATUS_DONE)
    return false;
  for (size_t byte = 0; byte < table.characters.size(); ++byte)
    table.characters[byte] = characterOf(record, static_cast<uint8_t>(byte));
  return true;
}

std::vector<SingleByteTable> filledTables(const CharsetNames& names) {
  std::vector<SingleByteTable> tables;
  for (const SingleByteCharset& charset : kCharsets) {
    const std::optional<CharsetChoice> choice = names.find(charset.name);
    SingleByteTable table{charset.name, charset.language, {}};
    if (choice && fill(table, choice->name)) tables.push_back(std::move(table));
  }
  return tables;
}

}  // namespace

bool SingleByteTable::holds(const ByteFacts& facts) const {
  for (size_t byte = 0; byte < characters.size(); ++byte)
    if (facts.isUsed[byte] && characters[byte] == kNoCharacter) return false;
  return true;
}

uint64_t SingleByteTable::cost(const ByteFacts& facts) const {
  const LanguageModel& model = LanguageModel::of(language);
  std::array<uint8_t, 256> groups;
  for (size_t byte = 0; byte < groups.size(); ++byte)
    groups[byte] = LanguageModel::groupOf(characters[byte]);
  uint64_t total = model.cost(LanguageModel::kStart, characters[facts.first], groups[facts.first]);
  for (const BytePair& pair : facts.pairs)
    total += pair.count * model.cost(groups[pair.before], characters[pair.byte], groups[pair.byte]);
  return total;
}

uint64_t SingleByteTable::differingBytes(const SingleByteTable& other,
                                         const ByteFacts& facts) const {
  const auto differs = [&](size_t byte) { return characters[byte] != other.characters[byte]; };
  uint64_t count = differs(facts.first) ? 1 : 0;
  for (const BytePair& pair : facts.pairs)
    if (differs(pair.byte)) count += pair.count;
  return count;
}

const std::vector<SingleByteTable>& SingleByteTables::all(const CharsetNames& names) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!isFilled_) tables_ = filledTables(names);
  isFilled_ = true;
  return tables_;
}

}  // namespace ksv_cli
