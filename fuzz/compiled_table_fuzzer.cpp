// A compiled table of any bytes beside a fixed rule file.
//
// Input: bytes a code less 1; block size; then the compiled table.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "cconv/rules/rule_base.h"
#include "cconv/rules/table_loader.h"
#include "fuzz/reference_table.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_cconv.h"

namespace {

using ksv_fuzz::Pair;
using ksv_fuzz::ReferenceTable;
using ksv_fuzz::require;

constexpr char kCharsetFile[] =
    "<?xml version=\"1.0\" encoding=\"UTF-16\"?>"
    "<!ENTITY set SYSTEM \"set.dat\"><!ENTITY table SYSTEM \"Table.txt\">"
    "<charset><name>Fuzzed</name><rule construle=\"constSAME\" destrule=\"destSAME\"/>"
    "<baseset>&set;<dstable bytenum=\"2\">&table;</dstable></baseset></charset>";

std::string subsetFile(int bytesPerCode) {
  return "<?xml version=\"1.0\" encoding=\"UTF-16\"?><subseta><name>fuzzed-set</name>"
         "<lang domain=\"\"/><code bytenum=\"" +
         std::to_string(bytesPerCode) + "\"></code><srtable>&table;</srtable></subseta>";
}

std::vector<Pair> pairsOf(std::string_view bytes) {
  const auto number = [&](size_t at) {
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;) value = value * 256 + static_cast<unsigned char>(bytes[at + i]);
    return value;
  };
  std::vector<Pair> pairs;
  for (size_t at = 0; at + 8 <= bytes.size(); at += 8) {
    pairs.push_back({number(at), number(at + 4)});
  }
  return pairs;
}

// The destination table of the member, whose values have two bytes.
void requireSameList(const ksv::TableList& tables, const ReferenceTable& reference) {
  for (const bool secondAttempt : {false, true}) {
    for (const uint32_t key : reference.keys()) {
      uint32_t wanted = 0;
      // The first look-up is the first attempt, the second the second.
      const bool isFirstLookUp = !secondAttempt && key == *reference.keys().begin();
      const bool loaded = reference.isFilled() || !isFirstLookUp;
      const bool has = loaded && reference.find(key, wanted) && wanted != 0;
      uint32_t value = 0;
      uint16_t bytes = 0;
      require(ksv::tableListLookup(tables, key, value, bytes) == has, "the list has the same keys");
      require(!has || (value == wanted && bytes == 2), "the list has the same values");
    }
  }
}

void convertSomething() {
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  uint32_t source[3] = {1, 0, 1};
  require(cconvInitConvert(&record, &options, "Fuzzed") == KSV_STATUS_DONE, "a target is found");
  require(cconvChgCharset(&record, source, "fuzzed") == KSV_STATUS_DONE, "a source is found");
  const std::string text = "0123456789\r\n\x7F\x82\xA0\xFF";
  std::array<uint8_t, 64> output;
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.inputLength = static_cast<int32_t>(text.size());
  record.output = output.data();
  record.outputCapacity = static_cast<int32_t>(output.size());
  cconvConvert(&record);
  cconvTermConvert(&record);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  ksv_fuzz::Input input(data, size);
  const int bytesPerCode = 1 + input.byte() % 4;
  const uint16_t blockSize = input.word();
  const std::vector<Pair> pairs = pairsOf(input.rest());

  directory.clear();
  directory.write("fuzzed.xml", ksv_fuzz::ruleFile(kCharsetFile));
  directory.write("set.dat", ksv_fuzz::ruleFile(subsetFile(bytesPerCode)));
  directory.write("table.cmp", input.rest());
  require(startProcess() == 1, "the library starts");
  setBlockSize(blockSize);
  require(cconvLoadRule() == 1, "the rule file is accepted");

  ksv::CharsetDef* charset = ksv::findCharsetByName("Fuzzed");
  require(charset != nullptr && charset->groups.count() == 1, "the charset has its member");
  ksv::GroupDef& subset = *charset->groups[0];
  const uint32_t entries = blockSize != 0 ? blockSize : ksv::kDefaultBlockSize;
  ksv_fuzz::requireSameTable(subset.toUcs, ReferenceTable(pairs, true, 4, entries));
  ksv_fuzz::requireSameTable(
      subset.fromUcs, ReferenceTable(pairs, false, static_cast<uint16_t>(bytesPerCode), entries));
  const ksv::TableList* list = charset->destTablesOf(0);
  require(list != nullptr && list->count() == 1, "the member has its destination table");
  requireSameList(*list, ReferenceTable(pairs, false, 2, entries));
  convertSomething();
  endProcess();
  return 0;
}
