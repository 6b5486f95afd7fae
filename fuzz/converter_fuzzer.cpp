// Any sequence of converter calls on the shipped charsets and a few more, once with the bulk path
// and once without: whatever is asked for, every call ends, keeps to its buffers and
// leaves the record in order, and both ways do the same.
//
// Input: see readScript; what follows the steps is the text.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "cconv/bulk/registry.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_cconv.h"

namespace {

using ksv_fuzz::require;

constexpr const char* kCharsets[] = {"Shift_JIS", "WINDOWS31J", "Shift_JIS-2004", "UTF-8", "UTF-16",
                                     "ISO-10646-UCS-2", "ISO-10646-UCS-4",
                                     // As sources: asks for a pre-conversion; for another of a
                                     // charset that may not be there; not there.
                                     "UTF-7", "HZ-GB-2312", "no such charset",
                                     // Not shipped: see addCharsets.
                                     "Tabled-UTF-8", "Tabled-UTF-16", "Tabled-UCS-4", "ChineseGBK"};

constexpr const char* kTargets[] = {"Shift_JIS",       "WINDOWS31J",   "Shift_JIS-2004",
                                    "UTF-8",           "UTF-16",       "ISO-10646-UCS-2",
                                    "ISO-10646-UCS-4", "Tabled-UTF-8", "Tabled-UTF-16",
                                    "Tabled-UCS-4",    "ChineseGBK"};

constexpr const char* kLanguages[] = {"", "ja", "en", "a rather long name of a language"};

// Enough for one character with the longest language tag in any target.
constexpr int32_t kAmpleRoom = 2048;
constexpr size_t kMostSteps = 16;
constexpr int kMostCalls = 300;
constexpr size_t kBulkSize = 1100;

// --- Charsets that the shipped directory does not have. ---

std::string charsetFile(const std::string& name, const std::string& codec,
                        const std::string& members) {
  return ksv_fuzz::ruleFile(
      "<?xml version=\"1.0\" encoding=\"UTF-16\"?>"
      "<!ENTITY tabled SYSTEM \"tabled.dat\"><!ENTITY tabled.table SYSTEM \"tabled.txt\">"
      "<!ENTITY user SYSTEM \"user.dat\"><!ENTITY latin SYSTEM \"latin.dat\">"
      "<!ENTITY latin.table SYSTEM \"latin.txt\">"
      "<!ENTITY gbk SYSTEM \"gbk.dat\"><!ENTITY gbk.table SYSTEM \"gbk.txt\"><charset><name>" +
      name + "</name><rule construle=\"const" + codec + "\" destrule=\"dest" + codec + "\"/>" +
      members + "</charset>");
}

std::string subsetFile(const std::string& name, int bytesPerCode, const std::string& table) {
  return ksv_fuzz::ruleFile(
      "<?xml version=\"1.0\" encoding=\"UTF-16\"?><subseta><name>" + name +
      "</name><lang domain=\"\"/><code bytenum=\"" + std::to_string(bytesPerCode) + "\"></code>" +
      (table.empty() ? "" : "<srtable>&" + table + ";</srtable>") + "</subseta>");
}

std::string asciiTable() {
  std::string table = "A A\r\nD D\r\n";
  for (int c = 0x20; c < 0x7F; ++c) {
    char line[16];
    std::snprintf(line, sizeof line, "%02X %04X\r\n", c, c);
    table += line;
  }
  return table;
}

// Unicode forms with a table, and with user-defined characters: only where some
// values are in no group are language tags read. And the charset that HZ asks for.
void addCharsets(const ksv_fuzz::ScratchDirectory& directory) {
  const std::string unicode = "<baseset>&tabled;</baseset><eudcset>&user;</eudcset>";
  directory.write("tabled-utf-8.xml", charsetFile("Tabled-UTF-8", "UTF-8", unicode));
  directory.write("tabled-utf-16.xml", charsetFile("Tabled-UTF-16", "UTF-16", unicode));
  directory.write("tabled-ucs-4.xml", charsetFile("Tabled-UCS-4", "ISO-10646-UCS-4", unicode));
  directory.write("tabled.dat", subsetFile("tabled", 4, "tabled.table"));
  directory.write("tabled.txt",
                  ksv_fuzz::ruleFile("00A5 00A5\r\n2028 2028\r\n3042 3042\r\n304B 304B\r\n"
                                     "309A 309A\r\n732B 732B\r\n1F600 1F600\r\n"));
  directory.write(
      "user.dat",
      ksv_fuzz::ruleFile("<?xml version=\"1.0\" encoding=\"UTF-16\"?><name>tabled-user</name>"
                         "<codec bytenum=\"4\"></codec>"
                         "<defrange start=\"E000\" number=\"0100\"/>"));
  directory.write("gbk.xml", charsetFile("ChineseGBK", "SAME",
                                         "<baseset>&latin;</baseset><baseset>&gbk;</baseset>"));
  directory.write("latin.dat", subsetFile("plain-latin", 1, "latin.table"));
  directory.write("latin.txt", ksv_fuzz::ruleFile(asciiTable()));
  directory.write("gbk.dat", subsetFile("plain-gbk", 2, "gbk.table"));
  directory.write("gbk.txt", ksv_fuzz::ruleFile("A1A1 3000\r\nBCBA 5DF1\r\nCBF9 6240\r\n"
                                                "B2BB 4E0D\r\nD3FB 6B32\r\n"));
}

struct Step {
  uint8_t operation;
  uint8_t inputPiece;
  uint8_t outputPiece;
};

struct Script {
  const char* source;
  const char* target;
  ConvertOptions options;
  std::array<uint32_t, 3> parameters;
  std::vector<Step> steps;
  std::string text;
};

Script readScript(ksv_fuzz::Input input) {
  Script script = {};
  script.source = kCharsets[input.byte() % std::size(kCharsets)];
  script.target = kTargets[input.byte() % std::size(kTargets)];
  const uint8_t flags = input.byte();
  const uint8_t more = input.byte();
  ConvertOptions& options = script.options;
  options.outputBigEndian = flags & 1;
  options.writeByteOrderMark = flags >> 1 & 1;
  options.replaceUnmappable = flags >> 2 & 1;
  options.convertNewlines = flags >> 3 & 1;
  script.parameters = {flags >> 4 & 1u, flags >> 5 & 1u, flags >> 6 & 1u};
  const bool isLong = (flags & 0x80) != 0;
  options.newlineForm = more & 7;
  options.supplementaryMode = static_cast<uint16_t>((more >> 3 & 3) % 3);
  std::strcpy(options.defaultLanguage, kLanguages[more >> 5 & 3]);
  options.narrowReplacement = input.word();
  options.wideReplacement = input.word();
  const size_t steps = input.byte() % (kMostSteps + 1);
  for (size_t i = 0; i < steps; ++i) {
    const uint8_t operation = input.byte();
    const uint8_t inputPiece = input.byte();
    script.steps.push_back({operation, inputPiece, input.byte()});
  }
  script.text = isLong ? ksv_fuzz::repeated(input.rest(), kBulkSize) : std::string(input.rest());
  return script;
}

// A buffer of exactly so many bytes, so that the sanitizer sees an access outside it,
// with marked bytes around it for builds without one.
class Guarded {
 public:
  explicit Guarded(size_t size) : size_(size), bytes_(new uint8_t[size + 2 * kGuard]) {
    std::memset(bytes_.get(), kMark, size + 2 * kGuard);
  }
  uint8_t* data() { return bytes_.get() + kGuard; }
  bool isIntact() const {
    return std::all_of(bytes_.get(), bytes_.get() + kGuard, isMark) &&
           std::all_of(bytes_.get() + kGuard + size_, bytes_.get() + size_ + 2 * kGuard, isMark);
  }

 private:
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KSV_FUZZ_NO_GUARD
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define KSV_FUZZ_NO_GUARD
#endif
#ifdef KSV_FUZZ_NO_GUARD
  static constexpr size_t kGuard = 0;
#else
  static constexpr size_t kGuard = 16;
#endif
  static constexpr uint8_t kMark = 0xA5;
  static bool isMark(uint8_t byte) { return byte == kMark; }

  const size_t size_;
  const std::unique_ptr<uint8_t[]> bytes_;
};

// Runs a script and keeps what every call left behind.
class Run {
 public:
  Run(const Script& script, bool bulkPath) : script_(script), input_(script.text.size()) {
    ksv::setBulkPathForTests(bulkPath ? ksv::BulkPath::kAlways : ksv::BulkPath::kNever);
    std::memcpy(input_.data(), script.text.data(), script.text.size());
    std::memset(&record_, 0, sizeof record_);
    setUp(script.source, script.target);
    for (const Step& step : script.steps) perform(step);
    finish();
  }

  const std::vector<ConverterRecord>& records() const { return records_; }
  const std::string& output() const { return output_; }

 private:
  void setUp(const char* source, const char* target) {
    noteResult(cconvInitConvert(&record_, &script_.options, target));
    changeSource(source);
  }

  void changeSource(const char* source) {
    std::array<uint32_t, 3> parameters = script_.parameters;
    noteResult(cconvChgCharset(&record_, parameters.data(), source));
  }

  void perform(const Step& step) {
    switch (step.operation % 8) {
      case 0:
        changeSource(kCharsets[step.inputPiece % std::size(kCharsets)]);
        break;
      case 1:
        setUp(kCharsets[step.inputPiece % std::size(kCharsets)],
              kTargets[step.outputPiece % std::size(kTargets)]);
        break;
      case 2:
        noteResult(cconvChgLang(&record_, kLanguages[step.inputPiece % std::size(kLanguages)]));
        break;
      case 3:
        terminate(step.outputPiece);
        break;
      case 4:
        record_.inputPosition = 0;
        break;
      default:
        convertPiece(step.inputPiece, step.outputPiece);
        break;
    }
  }

  // Shows more of the input and offers so much room, once.
  void convertPiece(int32_t more, int32_t room) {
    shown_ = std::min(shown_ + more, textSize());
    convert(room);
    stepOverInvalid();
  }

  // All of the input with ample room, until nothing more comes.
  void finish() {
    shown_ = textSize();
    for (int calls = 0; calls < kMostCalls; ++calls) {
      const int32_t before = record_.inputPosition;
      const uint32_t status = convert(kAmpleRoom);
      if (status == KSV_STATUS_DONE || status == KSV_STATUS_FAILURE ||
          status == KSV_STATUS_INCOMPLETE) {
        break;
      }
      stepOverInvalid();
      // A pre-converted text that ample room cuts off is no progress either.
      if (record_.preConversion != 0 && record_.inputPosition == before) break;
      require(record_.inputPosition > before, "with ample room a call makes progress");
    }
    terminate(kAmpleRoom);
  }

  void stepOverInvalid() {
    if (record_.status == KSV_STATUS_INVALID && record_.preConversion == 0) ++record_.inputPosition;
  }

  uint32_t convert(int32_t room) {
    const int32_t before = record_.inputPosition;
    const int32_t charactersBefore = record_.charactersRead;
    const uint32_t status = callWithRoom(room, cconvConvert);
    require(status == KSV_STATUS_DONE || status == KSV_STATUS_FAILURE ||
                status == KSV_STATUS_INCOMPLETE || status == KSV_STATUS_INVALID ||
                status == KSV_STATUS_FULL || status == KSV_STATUS_UNMAPPABLE,
            "a conversion ends with a status of its own");
    require(record_.inputPosition >= before, "the input position does not go back");
    require(record_.charactersRead >= charactersBefore, "the count of characters does not go back");
    if (record_.preConversion == 0 && before <= shown_) {
      require(record_.inputPosition <= shown_, "the input position lies in the input");
      require(status != KSV_STATUS_INCOMPLETE || record_.inputPosition < shown_,
              "what is incomplete is still to be read");
    }
    return status;
  }

  void terminate(int32_t room) {
    const uint32_t status = callWithRoom(room, cconvTermConvert);
    require(status == KSV_STATUS_DONE || status == KSV_STATUS_FULL,
            "a conversion is terminated or there is no room");
  }

  uint32_t callWithRoom(int32_t room, uint32_t (*call)(ConverterRecord*)) {
    Guarded output(static_cast<size_t>(room));
    record_.input = input_.data();
    record_.inputLength = shown_;
    record_.output = output.data();
    record_.outputPosition = 0;
    record_.outputCapacity = room;
    const int32_t unitsBefore = record_.unitsWritten;
    const uint32_t status = call(&record_);
    require(record_.input == input_.data() && record_.inputLength == shown_, "the input stays");
    require(record_.output == output.data() && record_.outputCapacity == room, "the output stays");
    require(record_.outputPosition >= 0 && record_.outputPosition <= room,
            "the output position lies in the output");
    require(record_.unitsWritten >= unitsBefore, "the count of units does not go back");
    require(output.isIntact() && input_.isIntact(), "nothing outside the buffers is written");
    output_.append(output.data(), output.data() + record_.outputPosition);
    noteResult(status);
    return status;
  }

  void noteResult(uint32_t result) {
    require(result == record_.status, "the result is the status");
    records_.push_back(record_);
    records_.back().input = nullptr;
    records_.back().output = nullptr;
  }

  int32_t textSize() const { return static_cast<int32_t>(script_.text.size()); }

  const Script& script_;
  Guarded input_;
  ConverterRecord record_;
  int32_t shown_ = 0;
  std::vector<ConverterRecord> records_;
  std::string output_;
};

void requireSameRun(const Run& fast, const Run& slow) {
  require(fast.output() == slow.output(), "both paths write the same");
  require(fast.records().size() == slow.records().size(), "both paths need as many calls");
  for (size_t i = 0; i < fast.records().size(); ++i) {
    require(std::memcmp(&fast.records()[i], &slow.records()[i], sizeof(ConverterRecord)) == 0,
            "both paths leave the same record");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  static int runs = 0;
  if (runs == 0) {
    directory.copyFilesOf(KSV_FUZZ_CHARSET_DIRECTORY);
    addCharsets(directory);
    require(startProcess() == 1, "the library starts");
  }
  // Loading anew drops the direct tables of the bulk path, which would otherwise
  // reach their limit and make the bulk path stand aside.
  if (runs++ % 512 == 0) require(cconvLoadRule() == 1, "the charset directory is loaded");
  const Script script = readScript(ksv_fuzz::Input(data, size));
  const Run fast(script, true);
  const Run slow(script, false);
  requireSameRun(fast, slow);
  return 0;
}
