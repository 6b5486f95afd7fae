// Conversions: each kind of decoder and encoder, with the bulk path and without, from
// compiled tables and from texts.
#include <array>
#include <cstring>
#include <string>

#include "ksv_cconv.h"
#include "ksv_sjis.h"
#include "tests/faults/charset_files.h"
#include "tests/faults/job.h"

namespace ksv::test {
namespace {

// Made ready outside of act(): the charsets of a started rule base.
class JobOfCharsets : public Job {
 public:
  JobOfCharsets(std::string name, std::vector<std::string> charsets)
      : Job(std::move(name)), charsets_(std::move(charsets)) {}

  void install() override { installCharsets(charsets_); }
  bool isSilent() const override { return true; }
  bool prepare(Answer& answer) override { return startLoaded(answer); }
  void finish() override { endProcess(); }

 private:
  const std::vector<std::string> charsets_;
};

struct Conversion {
  const char* name;
  const char* source;
  const char* target;
  std::vector<std::string> charsets;  // rule files
  std::string text;
  ConvertOptions options = {};
  std::array<uint32_t, 3> parameters = {1, 0, 0};
  bool fromTexts = false;  // of the tables
  // A lane has two. In which lanes a text comes to stand depends on whether runs by vectors are
  // tried.
  int64_t blocksThatMayLack = 0;
};

// Some of the text at once, so that the bulk path is taken, and some in two short pieces.
class ConversionJob : public JobOfCharsets {
 public:
  explicit ConversionJob(Conversion conversion)
      : JobOfCharsets(conversion.name, conversion.charsets), conversion_(std::move(conversion)) {
    while (longText_.size() < 1200) longText_ += conversion_.text;
  }

  // A directory's tables made anew, or the largest of all read.
  uint64_t cost() const override {
    return conversion_.fromTexts || conversion_.charsets.front() == "gb18030" ? 6 : 1;
  }
  int64_t blocksThatMayLack() const override { return conversion_.blocksThatMayLack; }
  bool prepare(Answer& answer) override {
    if (conversion_.fromTexts) removeCompiledTables();
    return JobOfCharsets::prepare(answer);
  }

  void act(Answer& answer) override {
    std::memset(&record_, 0, sizeof record_);
    if (!setUp(answer)) return;
    convert(answer, longText_);
    convert(answer, conversion_.text);
    convert(answer, conversion_.text);
    record_.outputPosition = 0;
    if (answer.expects("cconvTermConvert", cconvTermConvert(&record_), KSV_STATUS_FAILURE))
      addOutput(answer);
  }

 private:
  bool setUp(Answer& answer) {
    std::array<uint32_t, 3> parameters = conversion_.parameters;
    const uint32_t isSetUp = cconvInitConvert(&record_, &conversion_.options, conversion_.target);
    if (!answer.needs(isSetUp == KSV_STATUS_DONE, "cconvInitConvert")) return false;
    const uint32_t isChanged = cconvChgCharset(&record_, parameters.data(), conversion_.source);
    if (!answer.needs(isChanged == KSV_STATUS_DONE, "cconvChgCharset")) return false;
    return answer.needs(cconvChgLang(&record_, "ja") == KSV_STATUS_DONE, "cconvChgLang");
  }

  void convert(Answer& answer, const std::string& text) {
    record_.input = reinterpret_cast<const uint8_t*>(text.data());
    record_.inputPosition = 0;
    record_.inputLength = static_cast<int32_t>(text.size());
    record_.output = output_.data();
    record_.outputPosition = 0;
    record_.outputCapacity = static_cast<int32_t>(output_.size());
    if (!answer.expects("cconvConvert", cconvConvert(&record_), KSV_STATUS_FAILURE)) return;
    answer.add("read", record_.charactersRead);
    answer.add("units", record_.unitsWritten);
    addOutput(answer);
  }

  void addOutput(Answer& answer) {
    answer.add("output", std::string_view(reinterpret_cast<const char*>(output_.data()),
                                          static_cast<size_t>(record_.outputPosition)));
  }

  const Conversion conversion_;
  std::string longText_;
  ConverterRecord record_;
  std::array<uint8_t, 16384> output_;
};

// The string forms set a converter up of themselves, and replace what they do not know.
class StringFormsJob : public JobOfCharsets {
 public:
  using JobOfCharsets::JobOfCharsets;

  void act(Answer& answer) override {
    const uint16_t units[] = {'H', 'e', 'l', 'l', 'o', ',', 0x3042, 0x65E5, 0};
    char narrow[64] = {};
    uint16_t wide[64] = {};
    answer.add("KSV_ucs2sjisstr", KSV_ucs2sjisstr(narrow, units));
    answer.add("is", narrow);
    answer.add("KSV_sjis2ucsstr", KSV_sjis2ucsstr(wide, "Hello, \x82\xA0\x93\xFA"));
    answer.add("is", std::string_view(reinterpret_cast<const char*>(wide), 20));
  }
};

std::string inUnits(std::u32string_view text, size_t width) {
  std::string bytes;
  for (const char32_t c : text) {
    for (size_t i = width; i-- > 0;) bytes += static_cast<char>(c >> (8 * i));
  }
  return bytes;
}

constexpr char kShiftJisText[] = "Hello, \x82\xA0\x82\xA2\x93\xFA\x96\x7B\xB1\xB2 87\x87\x54\r\n";
constexpr char kEucText[] = "Hello, \xA4\xA2\xA4\xA4\xC6\xFC\xCB\xDC\x8E\xB1\x8F\xB0\xA1\r\n";
constexpr char kUtf8Text[] = "Hello, \u3042\u3044\u65E5\u672C \u00E9\r\n";
constexpr char kJisText[] = "Hello, \x1B$B$\"$$F|K\\\x1B(B\r\n";
constexpr char kHalfWidthText[] = "\uFF76\uFF9E\u3042\u2015\u301C\r\n";

ConvertOptions replacing() {
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  options.convertNewlines = 1;
  options.newlineForm = KSV_NEWLINE_LF;
  return options;
}

ConvertOptions withMarkAndLanguage() {
  ConvertOptions options = {};
  options.outputBigEndian = 1;
  options.writeByteOrderMark = 1;
  std::strcpy(options.defaultLanguage, "en");
  return options;
}

std::vector<Conversion> conversions() {
  const std::u32string plain = U"Hello, \u3042\u65E5\u672C\r\n";
  return {
      {"by_rules_to_utf_8", "windows-1252", "UTF-8", {"windows-1252", "utf-8"}, "caf\xE9 \x80\r\n"},
      {"utf_8_to_one_byte",
       "UTF-8",
       "windows-1252",
       {"windows-1252", "utf-8"},
       "caf\u00E9 \u20AC\r\n",
       replacing()},
      {"shift_jis_to_utf_8",
       "Shift_JIS",
       "UTF-8",
       {"shift_jis", "utf-8"},
       "Hello, \x82\xA0\x93\xFA\xB1\r\n"},
      {"windows_31j_to_utf_16",
       "WINDOWS31J",
       "UTF-16",
       {"windows31j", "utf-16"},
       kShiftJisText,
       withMarkAndLanguage()},
      {"utf_8_to_windows_31j",
       "UTF-8",
       "WINDOWS31J",
       {"windows31j", "utf-8"},
       kUtf8Text,
       replacing()},
      {"shift_jis_2004_to_utf_8",
       "Shift_JIS-2004",
       "UTF-8",
       {"shift_jis-2004", "utf-8"},
       "Hello, \x82\xA0\x82\xF5\x98\x73\r\n"},
      {"utf_8_to_shift_jis_2004",
       "UTF-8",
       "Shift_JIS-2004",
       {"shift_jis-2004", "utf-8"},
       "Hello, \u3042\u304B\u309A\u65E5\r\n",
       replacing()},
      {"euc_jp_to_utf_8", "EUC-JP", "UTF-8", {"euc-jp", "utf-8"}, kEucText},
      {"utf_8_to_euc_jp", "UTF-8", "EUC-JP", {"euc-jp", "utf-8"}, kUtf8Text, replacing()},
      {"euc_jp_to_shift_jis",
       "EUC-JP",
       "Shift_JIS",
       {"euc-jp", "shift_jis"},
       "Hello, \xA4\xA2\xC6\xFC\r\n"},
      {"euc_jis_2004_to_utf_8",
       "EUC-JIS-2004",
       "UTF-8",
       {"euc-jis-2004", "utf-8"},
       "Hello, \xA4\xA2\xA4\xF7\r\n"},
      {"iso_2022_jp_to_utf_8", "ISO-2022-JP", "UTF-8", {"iso-2022-jp", "utf-8"}, kJisText},
      {"utf_8_to_iso_2022_jp",
       "UTF-8",
       "ISO-2022-JP",
       {"iso-2022-jp", "utf-8"},
       "Hello, \u3042\u65E5\r\n",
       {},
       {1, 0, 0},
       false,
       2},
      // The lane of one group is only learned from, for the run across all groups.
      {"utf_8_to_cp50220",
       "UTF-8",
       "CP50220",
       {"cp50220", "utf-8"},
       kHalfWidthText,
       replacing(),
       {1, 0, 0},
       false,
       2},
      {"utf_8_to_oasys", "UTF-8", "OASYS_WIN", {"oasys_win", "utf-8"}, kUtf8Text, replacing()},
      {"ucs_2_to_utf_8",
       "ISO-10646-UCS-2",
       "UTF-8",
       {"iso-10646-ucs-2", "utf-8"},
       inUnits(plain, 2)},
      {"ucs_4_to_utf_16",
       "ISO-10646-UCS-4",
       "UTF-16",
       {"iso-10646-ucs-4", "utf-16"},
       inUnits(plain, 4)},
      {"utf_16_to_ucs_4",
       "UTF-16",
       "ISO-10646-UCS-4",
       {"iso-10646-ucs-4", "utf-16"},
       inUnits(plain, 2)},
      {"gb18030_to_utf_8",
       "GB18030",
       "UTF-8",
       {"gb18030", "utf-8"},
       "Hello, \xC4\xE3\xBA\xC3\x81\x30\x89\x37\r\n"},
      {"utf_8_to_gb18030",
       "UTF-8",
       "GB18030",
       {"gb18030", "utf-8"},
       "Hello, \u4F60\u597D\u00E0\r\n"},
      {"language_tags",
       "UTF-8",
       "UTF-16",
       {"utf-16", "utf-8"},
       "a\U000E0001\U000E006A\U000E0061\u3042\r\n",
       withMarkAndLanguage()},
      {"utf_7_to_utf_8", "UTF-7", "UTF-8", {"iso-10646-ucs-4", "utf-8"}, "Hi +MEIwRA- there\r\n"},
      {"hz_to_utf_8", "HZ-GB-2312", "UTF-8", {"chinesegbk", "utf-8"}, "Hi ~{<:Ky2;~} there\r\n"},
      {"tables_from_texts",
       "windows-1252",
       "windows-1251",
       {"windows-1252", "windows-1251"},
       "caf\xE9 \x80\r\n",
       replacing(),
       {1, 0, 0},
       true,
       // By demand, by which of the texts comes to the bulk path first.
       1},
      {"destination_tables_from_texts",
       "UTF-8",
       "CP50220",
       {"cp50220", "utf-8"},
       kHalfWidthText,
       replacing(),
       {1, 0, 0},
       true,
       2},
  };
}

}  // namespace

void addConversionJobs(Jobs& jobs) {
  for (Conversion& conversion : conversions())
    jobs.push_back(std::make_unique<ConversionJob>(std::move(conversion)));
  jobs.push_back(std::make_unique<StringFormsJob>(
      "string_forms", std::vector<std::string>{"windows31j", "iso-10646-ucs-2"}));
}

}  // namespace ksv::test
