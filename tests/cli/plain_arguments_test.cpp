// Whole options and operands are read without the library's parser, and all lines as that reads
// them.
#include "cli/jobs/plain_arguments.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "cli/jobs/options.h"
#include "cli/system/failure.h"
#include "tests/system/system.h"

namespace {

using ksv_cli::OptionParser;
using Reading = OptionParser::Reading;

// An option of each kind, and what a line leaves in their places.
struct Values {
  std::vector<std::string> files = {};
  std::vector<std::string> globs = {};
  std::string to = "default";
  std::optional<std::string> from = {};
  std::string form = "keep";
  std::string language = {};
  std::optional<std::string> inPlace = {};
  bool touches = false;
  uint64_t count = 7;
  std::string first = {};
  std::string second = {};
  std::string worked = {};

  std::string described() const {
    std::ostringstream text;
    for (const std::string& file : files) text << '<' << file << '>';
    for (const std::string& glob : globs) text << '{' << glob << '}';
    text << " to=" << to << " from=" << from.value_or("(none)") << " form=" << form
         << " language=" << language << " inPlace=" << inPlace.value_or("(none)")
         << " touches=" << touches << " count=" << count << " first=" << first
         << " second=" << second << " worked=" << worked;
    return text.str();
  }
};

void addMany(OptionParser& parser, Values& values) {
  ksv_cli::Subcommand job = parser.job("Texts", "many", "Takes many operands");
  job.operands("FILE", values.files, "The files");
  job.value("-t,--to", "NAME", values.to, "Needed", {.required = true});
  job.value("-f,--from", "NAME", values.from, "Not needed");
  job.value("--form", "FORM", values.form, "One of three", {.oneOf = {"keep", "lf", "crlf"}});
  job.value("--language", "NAME", values.language, "In any case",
            {.oneOf = {"ja", "ko"}, .ignoresCase = true});
  job.flagOrValue("--in-place", "SUFFIX", values.inPlace, "May have a value");
  job.flag("--touch", values.touches, "A flag");
  job.values("-g,--glob", "GLOB", values.globs, "As often as wanted");
  job.number("-n,--count", "N", values.count, {1, 20}, "A number");
  job.footer("The end.");
  job.work([&values] {
    values.worked = "many";
    return 3;
  });
}

void addTwo(OptionParser& parser, Values& values) {
  ksv_cli::Subcommand job = parser.job("Texts", "two", "Takes two operands");
  job.operand("FIRST", values.first, "Needed", {.required = true});
  job.operand("SECOND", values.second, "Not needed");
  job.flag("-q,--quiet", values.touches, "A flag");
  job.work([&values] {
    values.worked = "two";
    return 4;
  });
}

void addParted(OptionParser& parser, Values& values) {
  ksv_cli::Subcommand job = parser.job("Others", "parted", "Has parts");
  ksv_cli::Subcommand part = job.part("list", "A part");
  part.operand("FIRST", values.first, "Needed", {.required = true});
  part.work([&values] {
    values.worked = "list";
    return 5;
  });
}

using Arguments = std::vector<std::string>;

// What comes of a line: help, a mistake, or the values and the status of the work.
std::string outcome(Reading reading, const Arguments& arguments, const std::string& jobs) {
  Values values;
  OptionParser parser("program", "Does things.", "program 1", reading);
  if (jobs.find('m') != jobs.npos) addMany(parser, values);
  if (jobs.find('t') != jobs.npos) addTwo(parser, values);
  if (jobs.find('p') != jobs.npos) addParted(parser, values);
  parser.footer("More help.");
  std::string text;
  try {
    const ksv_cli::Request request = parser.parse(arguments);
    text = request.work ? std::to_string(request.work()) : request.answer;
  } catch (const ksv_cli::UsageError& error) {
    text = std::string("mistake: ") + error.what();
  }
  return parser.chosenJob() + ": " + text + '\n' + values.described();
}

std::string shown(const Arguments& arguments) {
  std::string line;
  for (const std::string& argument : arguments) line += "'" + argument + "' ";
  return line;
}

bool isPlain(const Arguments& arguments) {
  Values values;
  ksv_cli::RecordedCommand command{"program", "", ""};
  command.jobs.push_back(std::make_unique<ksv_cli::RecordedJob>(
      ksv_cli::RecordedJob{"Texts", "many", "Takes many operands"}));
  ksv_cli::Subcommand job(*command.jobs.back());
  job.operands("FILE", values.files, "The files");
  job.value("-t,--to", "NAME", values.to, "Needed", {.required = true});
  job.flagOrValue("--in-place", "SUFFIX", values.inPlace, "May have a value");
  job.values("-g,--glob", "GLOB", values.globs, "As often as wanted");
  job.number("-n,--count", "N", values.count, {1, 20}, "A number");
  const std::string before = values.described();
  const bool isRead = ksv_cli::readPlainArguments(command, arguments) != nullptr;
  EXPECT_TRUE(isRead || values.described() == before) << shown(arguments) << "changes nothing";
  return isRead;
}

TEST(PlainArguments, are_whole_options_with_their_values_and_operands) {
  EXPECT_TRUE(isPlain({"many", "-t", "x"}));
  EXPECT_TRUE(isPlain({"many", "-g", "*.x", "-t", "x", "a", "--glob", "*.y"}));
  EXPECT_TRUE(isPlain({"many", "a", "--to", "x", "-n", "12", "b", "--in-place", "c"}));
}

TEST(PlainArguments, are_nothing_that_the_library_may_read_otherwise) {
  for (const Arguments& arguments : std::vector<Arguments>{
           {},
           {"many"},
           {"other", "-t", "x"},
           {"-t", "x"},
           {"many", "-t"},
           {"many", "-t", "x", "-t", "y"},
           {"many", "-t", "-"},
           {"many", "-t", ""},
           {"many", "-t", "[x]"},
           {"many", "-tx"},
           {"many", "--to=x"},
           {"many", "-t", "x", "-"},
           {"many", "-t", "x", "--"},
           {"many", "-t", "x", "--", "-n"},
           {"many", "-t", "x", "--help"},
           {"many", "-t", "x", "--unknown"},
           {"many", "-t", "x", ""},
           {"many", "-t", "x", "many"},
           {"many", "-t", "x", "--in-place", "--in-place"},
           {"many", "-t", "x", "--in-place=s"},
           {"many", "-t", "x", "-n", "21"},
           {"many", "-t", "x", "-n", "0x2"},
           {"many", "-t", "x", "-g"},
           {"many", "-t", "x", "-g", "[a]"},
           {"many", "-t", "x", "-g", "-a"},
       })
    EXPECT_FALSE(isPlain(arguments)) << shown(arguments);
}

// A value in brackets is one, and the words behind it are operands.
TEST(PlainArguments, may_repeat_an_option_whose_values_are_taken_one_by_one) {
  for (const Reading reading : {Reading::kAsFastAsMaybe, Reading::kByLibraryAlone}) {
    const std::string read = outcome(
        reading, {"many", "-g", "[a,b]", "c", "--glob=*.x", "-t", "x", "-g", "y", "d", "-n", "2"},
        "m");
    EXPECT_EQ(read.substr(read.find('<'), 26), "<c><d>{[a,b]}{*.x}{y} to=x");
  }
}

// What marks a bracket for the library may stand in an argument as well.
TEST(PlainArguments, of_brackets_and_odd_bytes_are_operands_as_they_are) {
  const std::string read = outcome(
      Reading::kByLibraryAlone,
      {"many", "[a,b]", "\x01[a]", "\x01\x01[a]", "\x01", "x\x01[a]", "-t", "\x01[x]", "[]"}, "m");
  EXPECT_NE(read.find("<[a,b]><\x01[a]><\x01\x01[a]><\x01><x\x01[a]><[]>"), read.npos) << read;
  EXPECT_NE(read.find("to=\x01[x]"), read.npos) << read;
}

TEST(PlainArguments, are_read_by_the_command_as_by_the_library_alone) {
  const Arguments words = {
      "many",    "two",       "parted",      "list",        "-t",         "--to",
      "-f",      "--from",    "a",           "b c",         "-",          "--",
      "",        "[a,b]",     "-tx",         "--to=x",      "-t=x",       "--form",
      "lf",      "LF",        "keep",        "--form=crlf", "ja",         "--language",
      "JA",      "-g",        "--glob",      "--glob=[a]",  "--in-place", "--in-place=.o",
      "--touch", "-n",        "12",          "012",         "21",         "-5",
      "--count", "--count=3", "--touch=0",   "-q",          "-qn",        "--quiet",
      "-h",      "--help",    "--version",   "--unknown",   "/",          "a=b",
      "{x}",     "x y",       "'q'",         "--in-place=", "--tou",      "-n12",
      "\"d\"",   "%",         "\xE3\x81\x82"};
  std::mt19937 random(ksv::test::testSeed());
  size_t works = 0;
  for (int round = 0; round < 4000; ++round) {
    const char* const jobs[] = {"m", "t", "p", "mtp", "mt"};
    const std::string added = jobs[random() % std::size(jobs)];
    Arguments arguments;
    if (random() % 8 != 0)
      arguments.push_back(added[0] == 'm' ? "many" : added[0] == 't' ? "two" : "parted");
    if (random() % 2 == 0) arguments.insert(arguments.end(), {"-t", "x"});
    for (size_t i = random() % 5; i > 0; --i) arguments.push_back(words[random() % words.size()]);
    const std::string whole = outcome(Reading::kAsFastAsMaybe, arguments, added);
    ASSERT_EQ(whole, outcome(Reading::kByLibraryAlone, arguments, added)) << shown(arguments);
    works += whole.find("worked=m") != whole.npos || whole.find("worked=t") != whole.npos;
  }
  EXPECT_GT(works, 200u);
}

}  // namespace
