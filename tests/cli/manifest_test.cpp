// Runs that are written down as they go: what they write, how they go on, and how they are taken
// back.

#include <algorithm>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/system/sha256.h"
#include "command.h"

namespace ksv_cli_tests {
namespace {

using nlohmann::json;

const std::string kShiftJis = "\x82\xA0\x82\xA2\n";
const std::string kUtf8 = "\xE3\x81\x82\xE3\x81\x84\n";
const std::string kNoShiftJis = "\xFF\n";

class ManifestTest : public CommandTest {
 protected:
  Outcome toUtf8(std::vector<std::string> more) const {
    std::vector<std::string> all = {"convert", "-f", "sjis", "-t", "utf8"};
    all.insert(all.end(), more.begin(), more.end());
    return ksv(all);
  }

  Outcome inPlace(std::vector<std::string> more) const {
    more.insert(more.begin(), {"--in-place=.orig", "--manifest", "m"});
    return toUtf8(std::move(more));
  }

  Outcome resumed(std::vector<std::string> more) const {
    more.insert(more.begin(), "--resume");
    return inPlace(std::move(more));
  }

  static std::vector<json> recordsIn(const std::string& text) {
    std::vector<json> records;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) records.push_back(json::parse(line));
    return records;
  }

  std::vector<json> manifest(const std::string& kind) const {
    std::vector<json> records = recordsIn(read("m"));
    std::erase_if(records, [&](const json& line) { return line.at("record") != kind; });
    return records;
  }

  // As a run leaves it that is killed at some moment: the lines that the condition is for.
  void keepLines(const std::function<bool(const json&)>& isKept) const {
    std::string text;
    std::istringstream lines(read("m"));
    for (std::string line; std::getline(lines, line);)
      if (isKept(json::parse(line))) text += line + '\n';
    write("m", text);
  }
  void loseResults() const {
    keepLines([](const json& line) {
      return line.at("record") == "head" || line.at("record") == "intent";
    });
  }

  void remove(const std::string& name) const { std::filesystem::remove(path(name)); }
  void rename(const std::string& from, const std::string& to) const {
    std::filesystem::rename(path(from), path(to));
  }
};

class ConvertJson : public ManifestTest {};

TEST_F(ConvertJson, tells_what_was_done_with_each_file) {
  write("a", kShiftJis);
  write("b", "abc\n");
  write("c", kNoShiftJis);
  const Outcome outcome = toUtf8({"--in-place=.orig", "--json", "-j", "3", "a", "b", "c"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: c: invalid Shift_JIS (0xFF) at byte offset 0\n");
  EXPECT_EQ(outcome.out,
            "{\"path\":\"a\",\"source\":\"Shift_JIS\",\"found\":\"given\",\"target\":\"UTF-8\","
            "\"result\":\"converted\",\"sizeBefore\":5,\"sizeAfter\":7,\"invalid\":0,"
            "\"unmappable\":0,\"output\":\"a\",\"kept\":\"a.orig\"}\n"
            "{\"path\":\"b\",\"source\":\"Shift_JIS\",\"found\":\"given\",\"target\":\"UTF-8\","
            "\"result\":\"unchanged\",\"sizeBefore\":4,\"sizeAfter\":4,\"invalid\":0,"
            "\"unmappable\":0,\"output\":\"b\",\"kept\":null}\n"
            "{\"path\":\"c\",\"source\":\"Shift_JIS\",\"found\":\"given\",\"target\":\"UTF-8\","
            "\"result\":\"failed\",\"sizeBefore\":2,\"sizeAfter\":null,\"invalid\":0,"
            "\"unmappable\":0,\"output\":\"c\",\"kept\":null,"
            "\"error\":{\"reason\":\"invalid Shift_JIS (0xFF)\",\"offset\":0}}\n");
}

TEST_F(ConvertJson, tells_how_the_charset_was_found_and_what_was_lost) {
  write("a", "\xEF\xBB\xBF\xE3\x81\x82\xE2\x91\xA0");  // ① is not in Shift_JIS
  const Outcome outcome =
      ksv({"convert", "-t", "sjis", "--unmappable", "skip", "--strict", "-o", "b", "--json", "a"});
  EXPECT_EQ(outcome.status, 1);
  const json record = json::parse(outcome.out);
  EXPECT_EQ(record.at("source"), "UTF-8");
  EXPECT_EQ(record.at("found"), "read as UTF-8: it begins with a byte-order mark");
  EXPECT_EQ(record.at("result"), "converted");
  EXPECT_EQ(record.at("unmappable"), 1);
  EXPECT_EQ(record.at("output"), "b");
  EXPECT_EQ(record.at("error").at("reason"), "0 invalid bytes skipped, 1 character replaced");
}

TEST_F(ConvertJson, is_wrong_usage_where_standard_output_has_the_results) {
  write("a", kShiftJis);
  for (const std::vector<std::string>& more :
       {std::vector<std::string>{"--json", "a"}, {"--json", "-o", "-", "a"}}) {
    const Outcome outcome = toUtf8(more);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err,
              "ksv: convert: --json needs -o, --output-dir or --in-place: standard output has the "
              "results (see 'ksv convert --help')\n");
  }
}

class ManifestOfRun : public ManifestTest {};

TEST_F(ManifestOfRun, tells_options_intents_and_results_with_sums) {
  write("a", kShiftJis);
  write("b", "abc\n");
  EXPECT_EQ(inPlace({"--newline", "lf", "a", "b"}).status, 0);
  const std::vector<json> lines = recordsIn(read("m"));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0].at("format"), "ksv manifest");
  EXPECT_EQ(lines[0].at("options"), json::parse(R"({"to": "UTF-8", "from": "Shift_JIS",
                                                    "in-place": ".orig", "newline": "lf"})"));
  EXPECT_EQ(lines[1].at("record"), "intent");
  for (const json& line : {lines[1], lines[2]}) {
    EXPECT_EQ(line.at("path"), "a");
    EXPECT_EQ(line.at("kept"), "a.orig");
    EXPECT_EQ(line.at("sha256Before"), ksv_cli::sumOf(kShiftJis));
    EXPECT_EQ(line.at("sha256After"), ksv_cli::sumOf(kUtf8));
  }
  EXPECT_EQ(lines[2].at("result"), "converted");
  EXPECT_EQ(lines[2].at("modifiedBefore"), lines[2].at("modifiedAfter"));
  EXPECT_EQ(lines[3].at("record"), "result");
  EXPECT_EQ(lines[3].at("result"), "unchanged");
  EXPECT_EQ(lines[4].at("record"), "end");
  EXPECT_EQ(lines[4].at("converted"), 1);
  EXPECT_EQ(lines[4].at("unchanged"), 1);
}

TEST_F(ManifestOfRun, is_never_overwritten) {
  write("a", kShiftJis);
  write("m", "somebody's\n");
  const Outcome outcome = inPlace({"a"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(
      outcome.err,
      "ksv: convert: m exists already; --resume goes on with it (see 'ksv convert --help')\n");
  EXPECT_EQ(resumed({"a"}).status, 2);
  EXPECT_EQ(ksv({"convert", "--undo", "m"}).status, 2);
  EXPECT_EQ(read("m"), "somebody's\n");
  EXPECT_EQ(read("a"), kShiftJis);
}

TEST_F(ManifestOfRun, needs_files_with_names_for_texts_and_results) {
  write("a", kShiftJis);
  EXPECT_EQ(toUtf8({"--manifest", "m", "a"}).status, 2);
  EXPECT_EQ(toUtf8({"--manifest", "m", "-o", "b"}).status, 2);
  EXPECT_EQ(toUtf8({"--manifest", "m", "-o", "m", "a"}).status, 2);
  EXPECT_EQ(toUtf8({"--resume", "-o", "b", "a"}).status, 2);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

TEST_F(ManifestOfRun, stops_where_it_cannot_be_made) {
  write("a", kShiftJis);
  const Outcome outcome = toUtf8({"--in-place", "--manifest", "none/m", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("ksv: none/m: "), 0u) << outcome.err;
  EXPECT_EQ(read("a"), kShiftJis);
}

TEST_F(ManifestOfRun, tells_results_elsewhere) {
  write("a", kShiftJis);
  write("b", kNoShiftJis);
  EXPECT_EQ(toUtf8({"--output-dir", "out", "--manifest", "m", "a", "b"}).status, 1);
  EXPECT_EQ(manifest("intent").size(), 0u);
  const std::vector<json> results = manifest("result");
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[0].at("sha256After"), ksv_cli::sumOf(kUtf8));
  EXPECT_EQ(results[0].at("kept"), nullptr);
  EXPECT_EQ(results[1].at("result"), "failed");
  EXPECT_EQ(results[1].at("sha256After"), nullptr);
  EXPECT_EQ(results[1].at("error").at("offset"), 0);
}

class Resume : public ManifestTest {};

TEST_F(Resume, begins_where_there_is_no_manifest_or_none_with_a_whole_head) {
  for (const char* text : {"", "{\"record\":\"head\",\"format\":\"ksv ma"}) {
    write("a", kShiftJis);
    remove("a.orig");
    if (*text == '\0')
      remove("m");
    else
      write("m", text);
    EXPECT_EQ(resumed({"a"}).status, 0);
    EXPECT_EQ(read("a"), kUtf8);
    EXPECT_EQ(manifest("head").size(), 1u);
  }
}

// UTF-8 read as Shift_JIS is no text, but ISO-8859-1 takes whatever there is.
TEST_F(Resume, never_converts_twice) {
  write("a", "\xE9\n");
  write("b", "\xE8\n");
  const std::vector<std::string> call = {"convert",    "-f",         "latin1", "-t",      "utf8",
                                         "--in-place", "--manifest", "m",      "--resume"};
  const auto convert = [&](std::vector<std::string> names) {
    names.insert(names.begin(), call.begin(), call.end());
    return ksv(names);
  };
  EXPECT_EQ(convert({"a", "b"}).status, 0);
  EXPECT_EQ(convert({"a", "b"}).status, 0);
  loseResults();
  const Outcome outcome = convert({"a", "b"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(read("a"), "\xC3\xA9\n");
  EXPECT_EQ(read("b"), "\xC3\xA8\n");
  EXPECT_EQ(manifest("result").size(), 2u);
  EXPECT_EQ(manifest("end").back().at("converted"), 2);
}

TEST_F(Resume, does_what_is_left_and_tries_again_what_failed) {
  write("a", kShiftJis);
  write("b", kNoShiftJis);
  EXPECT_EQ(inPlace({"a", "b"}).status, 1);
  write("b", kShiftJis);
  write("c", kShiftJis);
  const Outcome outcome = resumed({"--json", "a", "b", "c"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(recordsIn(outcome.out).size(), 3u);
  for (const json& record : recordsIn(outcome.out)) EXPECT_EQ(record.at("result"), "converted");
  for (const char* name : {"a", "b", "c"}) EXPECT_EQ(read(name), kUtf8);
  EXPECT_EQ(manifest("intent").size(), 3u);
}

TEST_F(Resume, fails_again_for_what_strict_refuses) {
  write("a", kShiftJis + "\xFF");
  EXPECT_EQ(inPlace({"--invalid", "skip", "--strict", "a"}).status, 1);
  const Outcome outcome = resumed({"--invalid", "skip", "--strict", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: a: 1 invalid byte skipped, 0 characters replaced\n");
  EXPECT_EQ(resumed({"--invalid", "skip", "a"}).status, 0);
}

TEST_F(Resume, leaves_alone_what_has_been_changed_since) {
  write("a", kShiftJis);
  write("b", "abc\n");
  EXPECT_EQ(inPlace({"a", "b"}).status, 0);
  write("a", "edited\n");
  write("b", "edited too\n");
  const Outcome outcome = resumed({"a", "b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: a: it has been changed since it was converted, and is left alone\n"
            "ksv: b: it has been changed since it was converted, and is left alone\n");
  EXPECT_EQ(read("a"), "edited\n");
}

TEST_F(Resume, makes_missing_results_elsewhere_again_and_leaves_edited_ones) {
  write("a", kShiftJis);
  write("b", kShiftJis);
  const std::vector<std::string> call = {"--output-dir", "out", "--manifest", "m",
                                         "--resume",     "a",   "b"};
  EXPECT_EQ(toUtf8(call).status, 0);
  remove("out/a");
  write("out/b", "edited\n");
  const Outcome outcome = toUtf8(call);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("ksv: b: out"), 0u) << outcome.err;
  EXPECT_NE(outcome.err.find("has been changed since"), std::string::npos) << outcome.err;
  EXPECT_EQ(read("out/a"), kUtf8);
  EXPECT_EQ(read("out/b"), "edited\n");
}

TEST_F(Resume, takes_the_options_of_the_head_only) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  const Outcome outcome = resumed({"--newline", "crlf", "a"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err,
            "ksv: convert: the run to resume had nothing for --newline, not crlf (see 'ksv convert "
            "--help')\n");
  EXPECT_EQ(ksv({"convert", "-f", "cp932", "-t", "utf8", "--in-place=.orig", "--manifest", "m",
                 "--resume", "a"})
                .status,
            2);
}

// What a pattern of the shell names grows by what the first run made.
TEST_F(Resume, passes_over_the_manifest_and_originals_that_were_kept) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  EXPECT_EQ(resumed({"a", "a.orig", "m"}).status, 0);
  EXPECT_EQ(read("a.orig"), kShiftJis);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.orig", "m"}));
}

// An original is a text of which no run has told anything yet.
TEST_F(Resume, knows_files_by_other_names) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  for (const std::vector<std::string>& names : {std::vector<std::string>{"./a", "./a.orig", "./m"},
                                                {path("a"), path("a.orig"), path("m")}}) {
    const Outcome outcome = resumed(names);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(read("a"), kUtf8);
    EXPECT_EQ(read("a.orig"), kShiftJis);
    EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.orig", "m"}));
  }
}

TEST_F(Resume, drops_a_line_that_was_cut_off) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  const std::string whole = read("m");
  write("m", whole.substr(0, whole.rfind("\"time\"")));
  EXPECT_EQ(resumed({"a"}).status, 0);
  EXPECT_EQ(manifest("end").size(), 1u);
}

TEST_F(Resume, tells_the_line_that_is_damaged) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  std::string text = read("m");
  text[text.find('\n') + 5] = '\0';
  write("m", text);
  for (const std::vector<std::string>& call :
       {std::vector<std::string>{"convert", "--undo", "m"},
        {"convert", "-f", "sjis", "-t", "utf8", "--in-place=.orig", "--manifest", "m", "--resume",
         "a"}}) {
    const Outcome outcome = ksv(call);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ksv: m: line 2 is damaged\n");
  }
  EXPECT_EQ(read("m"), text);
}

// Where volumes have no second names, a file may be killed between losing its old and getting its
// new bytes.
TEST_F(Resume, puts_an_original_back_that_has_lost_its_place) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  loseResults();
  remove("a");
  EXPECT_EQ(resumed({"other"}).status, 1);
  EXPECT_EQ(read("a"), kUtf8);
  EXPECT_EQ(read("a.orig"), kShiftJis);
}

TEST_F(Resume, takes_a_name_back_that_was_held_for_an_original) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  loseResults();
  write("a", kShiftJis);
  write("a.orig", "");
  EXPECT_EQ(resumed({"a"}).status, 0);
  EXPECT_EQ(read("a"), kUtf8);
  EXPECT_EQ(read("a.orig"), kShiftJis);
}

TEST_F(Resume, converts_what_is_named_and_no_more) {
  write("a", kShiftJis);
  write("b", kShiftJis);
  EXPECT_EQ(inPlace({"a", "b"}).status, 0);
  loseResults();
  for (const char* name : {"a", "b"}) {
    remove(name);
    rename(std::string(name) + ".orig", name);
  }
  EXPECT_EQ(resumed({"b"}).status, 0);
  EXPECT_EQ(read("a"), kShiftJis);
  EXPECT_EQ(read("b"), kUtf8);
}

// Under the name that the run gives it: what others have left is theirs.
TEST_F(Resume, removes_what_its_own_run_left_unfinished) {
  write("a", kNoShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 1);
  const std::string run = manifest("head").front().at("run");
  const std::string left = ".ksv-" + ksv_cli::sumOf(run + "\na").substr(0, 12);
  write(left, "half");
  write(".ksv-0123456789ab", "somebody's");
  write("a", kShiftJis);
  EXPECT_EQ(resumed({"a"}).status, 0);
  EXPECT_EQ(files(), (std::vector<std::string>{".ksv-0123456789ab", "a", "a.orig", "m"}));
}

class Undo : public ManifestTest {
 protected:
  Outcome undo(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> all = {"convert", "--undo", "m"};
    all.insert(all.end(), more.begin(), more.end());
    return ksv(all);
  }
};

TEST_F(Undo, gives_originals_their_places_again) {
  write("a", kShiftJis);
  write("b", "abc\n");
  EXPECT_EQ(inPlace({"a", "b"}).status, 0);
  const Outcome dry = undo({"--dry-run"});
  EXPECT_EQ(dry.status, 0);
  EXPECT_EQ(dry.out, "a\ta.orig\n");
  EXPECT_EQ(read("a"), kUtf8);
  const Outcome outcome = undo({"--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "{\"path\":\"a\",\"result\":\"restored\",\"kept\":\"a.orig\"}\n"
            "{\"path\":\"b\",\"result\":\"original\"}\n");
  EXPECT_EQ(read("a"), kShiftJis);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "b", "m"}));
}

TEST_F(Undo, may_be_called_again_and_gone_on_from) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  EXPECT_EQ(undo().status, 0);
  EXPECT_EQ(undo().status, 0);
  EXPECT_EQ(read("a"), kShiftJis);
  EXPECT_EQ(resumed({"a"}).status, 0);
  EXPECT_EQ(read("a"), kUtf8);
  EXPECT_EQ(undo().status, 0);
  EXPECT_EQ(read("a"), kShiftJis);
}

TEST_F(Undo, leaves_alone_and_tells_what_it_cannot_restore) {
  for (const char* name : {"changed", "gone", "spoilt", "well"}) write(name, kShiftJis);
  EXPECT_EQ(inPlace({"changed", "gone", "spoilt", "well"}).status, 0);
  write("changed", "edited\n");
  remove("gone.orig");
  write("spoilt.orig", "edited\n");
  const Outcome outcome = undo();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: changed: it has been changed since it was converted, and is left alone\n"
            "ksv: gone: its original gone.orig is not there any more\n"
            "ksv: spoilt: its original spoilt.orig has been changed\n");
  EXPECT_EQ(read("changed"), "edited\n");
  EXPECT_EQ(read("gone"), kUtf8);
  EXPECT_EQ(read("spoilt"), kUtf8);
  EXPECT_EQ(read("well"), kShiftJis);
  EXPECT_EQ(read("changed.orig"), kShiftJis);
}

TEST_F(Undo, tells_that_originals_were_not_kept) {
  write("a", kShiftJis);
  EXPECT_EQ(toUtf8({"--in-place", "--manifest", "m", "a"}).status, 0);
  const Outcome outcome = undo();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: a: its original was not kept\n");
  EXPECT_EQ(read("a"), kUtf8);
}

TEST_F(Undo, leaves_results_elsewhere_and_counts_them) {
  write("a", kShiftJis);
  EXPECT_EQ(toUtf8({"-o", "b", "--manifest", "m", "a"}).status, 0);
  const Outcome outcome = undo();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "ksv: m: 1 result elsewhere stays where it is\n");
  EXPECT_EQ(read("b"), kUtf8);
}

TEST_F(Undo, puts_an_original_back_that_has_lost_its_place) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  loseResults();
  remove("a");
  EXPECT_EQ(undo().status, 0);
  EXPECT_EQ(read("a"), kShiftJis);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "m"}));
}

TEST_F(Undo, goes_by_the_directory_of_the_run) {
  std::filesystem::create_directory(path("deep"));
  write("deep/a", kShiftJis);
  EXPECT_EQ(inPlace({"deep/a"}).status, 0);
  std::filesystem::create_directory(path("deep/er"));
  rename("m", "deep/m");
  const std::string manifest = path("deep/m");
  EXPECT_EQ(ksv({"convert", "--undo", manifest}).status, 0);
  EXPECT_EQ(read("deep/a"), kShiftJis);
}

TEST_F(Undo, goes_with_few_options) {
  write("a", kShiftJis);
  EXPECT_EQ(inPlace({"a"}).status, 0);
  for (const std::vector<std::string>& more : {std::vector<std::string>{"a"},
                                               {"-t", "utf8"},
                                               {"--in-place"},
                                               {"--manifest", "n"},
                                               {"--report"}})
    EXPECT_EQ(undo(more).status, 2) << more.front();
  EXPECT_EQ(read("a"), kUtf8);
}

}  // namespace
}  // namespace ksv_cli_tests
