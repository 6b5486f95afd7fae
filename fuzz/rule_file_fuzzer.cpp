// Any bytes as the files of a charset directory, loaded and used.
//
// Input: the files in the order of kFileNames, separated by bytes 0x1E. The first
// byte of each says how its other bytes become the file (see fileOf).
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cconv/bulk/registry.h"
#include "cconv/rules/rule_base.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_cconv.h"

namespace {

using ksv_fuzz::require;
using ksv_fuzz::widen;
using ksv_fuzz::Widening;

constexpr const char* kFileNames[] = {"first.xml", "second.xml", "a.xml", "b.xml",
                                      "c.dat",     "t.txt",      "u.txt", "v.txt"};
constexpr char kSeparator = '\x1E';
// All pairs of so many charsets are tried.
constexpr int kMostCharsets = 3;

std::string fileOf(std::string_view section) {
  if (section.empty()) return {};
  const std::string_view text = section.substr(1);
  switch (section[0]) {
    case 'l':
      return ksv_fuzz::ruleFile(text);
    case 'b':
      return "\xFE\xFF" + widen(text, Widening::kTwoBig);
    case 'n':
      return widen(text, Widening::kTwoLittle);  // no mark
    case 'L':
      return std::string("\xFF\0\0\xFE", 4) + widen(text, Widening::kFourLittle);
    case 'B':
      return std::string("\xFE\0\0\xFF", 4) + widen(text, Widening::kFourBig);
    case 'w':
      return widen(text, Widening::kFourLittle);  // tables of a UCS-4 charset
    default:
      return std::string(text);
  }
}

void writeFiles(const ksv_fuzz::ScratchDirectory& directory, std::string_view input) {
  directory.clear();
  for (const char* name : kFileNames) {
    const size_t end = std::min(input.find(kSeparator), input.size());
    directory.write(name, fileOf(input.substr(0, end)));
    if (end == input.size()) break;
    input.remove_prefix(end + 1);
  }
}

// A declared table may lie outside the directory; the compiled table would be written
// beside it.
void keepInside(ksv::CodeTable& table) {
  if (table.fileName.find("..") != std::string::npos) table.fileName.clear();
}

void keepTablesInside() {
  for (const auto& subset : ksv::ruleBase.lists->groups()) {
    keepInside(subset->toUcs);
    keepInside(subset->fromUcs);
  }
  for (const auto& charset : ksv::ruleBase.lists->charsets()) {
    for (const auto& list : charset->destTables) {
      for (const auto& table : *list) keepInside(*table);
    }
  }
}

struct Outcome {
  ConverterRecord record;
  std::string output;
};

Outcome convertText(const char* source, const char* target, const std::string& text,
                    bool bulkPath) {
  ksv::setBulkPathForTests(bulkPath ? ksv::BulkPath::kAlways : ksv::BulkPath::kNever);
  Outcome outcome;
  ConverterRecord& record = outcome.record;
  std::memset(&record, 0, sizeof record);
  ConvertOptions options = {};
  options.outputBigEndian = 1;
  options.replaceUnmappable = 1;
  uint32_t parameters[3] = {1, 0, 1};
  require(cconvInitConvert(&record, &options, target) == KSV_STATUS_DONE, "the target is there");
  require(cconvChgCharset(&record, parameters, source) == KSV_STATUS_DONE, "the source is there");

  const size_t capacity = 4 * text.size() + 16;
  const auto output = std::make_unique<uint8_t[]>(capacity);
  const auto input = std::make_unique<uint8_t[]>(text.size());
  std::memcpy(input.get(), text.data(), text.size());
  record.input = input.get();
  record.inputLength = static_cast<int32_t>(text.size());
  record.output = output.get();
  record.outputCapacity = static_cast<int32_t>(capacity);
  const uint32_t status = cconvConvert(&record);
  // 11 comes from a rule file that names a decoder as its encoder.
  require(status == KSV_STATUS_DECODED || status == KSV_STATUS_DONE ||
              status == KSV_STATUS_FAILURE || status == KSV_STATUS_INCOMPLETE ||
              status == KSV_STATUS_INVALID || status == KSV_STATUS_FULL ||
              status == KSV_STATUS_UNMAPPABLE,
          "a conversion ends with a status of its own");
  require(record.inputPosition >= 0 && record.inputPosition <= record.inputLength,
          "the input position lies in the input");
  require(record.outputPosition >= 0 && record.outputPosition <= record.outputCapacity,
          "the output position lies in the output");
  cconvTermConvert(&record);
  outcome.output.assign(output.get(), output.get() + record.outputPosition);
  record.input = nullptr;
  record.output = nullptr;
  return outcome;
}

using Name = std::array<char, KSV_NAME_SIZE>;

std::vector<Name> charsetNames() {
  std::vector<Name> names(kMostCharsets);
  int count = 0;
  while (count < kMostCharsets &&
         cconvEnumGroup(count, names[static_cast<size_t>(count)].data()) == 1) {
    ++count;
  }
  names.resize(static_cast<size_t>(count));
  // Without names that stand for a pre-conversion, or whose sum of bytes another has.
  std::erase_if(names,
                [](const Name& name) { return ksv::findCharsetByName(name.data()) == nullptr; });
  return names;
}

bool load() {
  require(startProcess() == 1, "the library starts");
  const bool accepted = cconvLoadRule() == 1;
  require(accepted == !ksv::ruleBase.lists->charsets().empty(),
          "a rule file is accepted when there is a charset");
  keepTablesInside();
  return accepted;
}

// From a new start on: whether a table answers depends on how often it has been asked.
std::vector<Outcome> convertAnew(const Name& source, const Name& target,
                                 const std::vector<std::string>& texts, bool bulkPath) {
  endProcess();
  load();
  std::vector<Outcome> outcomes;
  for (const std::string& text : texts)
    outcomes.push_back(convertText(source.data(), target.data(), text, bulkPath));
  for (Outcome& outcome : outcomes)
    outcome.record.sourceCharset = outcome.record.targetCharset = nullptr;
  return outcomes;
}

void convertBothWays(const std::vector<std::string>& texts) {
  const std::vector<Name> names = charsetNames();
  for (const Name& source : names) {
    for (const Name& target : names) {
      const std::vector<Outcome> fast = convertAnew(source, target, texts, true);
      const std::vector<Outcome> slow = convertAnew(source, target, texts, false);
      for (size_t i = 0; i < texts.size(); ++i) {
        require(fast[i].output == slow[i].output, "both paths write the same");
        require(std::memcmp(&fast[i].record, &slow[i].record, sizeof fast[i].record) == 0,
                "both paths leave the same record");
      }
    }
  }
}

std::vector<std::string> textsFor(std::string_view input) {
  std::string everyByte;
  for (int c = 0; c < 0x100; ++c) everyByte += static_cast<char>(c);
  const std::string line = "Text 0123\r\n\x82\xA0\x30\x42\x81\x40\x1B$B\x7F";
  return {line, everyByte, ksv_fuzz::repeated(line + std::string(input.substr(0, 64)), 1100)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  writeFiles(directory, input);
  const bool accepted = load();
  convertBothWays(textsFor(input));
  // What is there already counts as accepted.
  require((cconvLoadRule() == 1) == accepted, "loading again accepts the same");
  endProcess();
  return 0;
}
