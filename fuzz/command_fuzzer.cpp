// The command, as its arguments and files have it: whatever they are, it has to end with a status
// that it may have, to say so in whole lines when it failed, and to leave behind neither an open
// file nor one that was not asked for.
//
// Input: the arguments, each ended by a zero; then standard input and the files "a" and "b", each
// behind a byte 1E.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "cli/jobs/command_line.h"
#include "cli/system/failure.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "tests/system/system.h"

namespace {

namespace fs = std::filesystem;
using ksv_fuzz::require;

constexpr char kSeparator = '\x1E';
constexpr size_t kMostArguments = 24;

// All files below a directory, by their names in it, with what they hold.
using Files = std::map<std::string, std::string>;

Files filesBelow(const fs::path& directory) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    const std::string name = entry.path().lexically_relative(directory).string();
    files[name] = entry.is_regular_file() ? ksv_fuzz::contentOf(entry.path().string()) : "";
  }
  return files;
}

// A standard stream that is a file as long as the object lives.
class Redirection {
 public:
  Redirection(int stream, const std::string& path, int flags)
      : stream_(stream), kept_(dup(stream)) {
    const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
    require(file >= 0 && dup2(file, stream) == stream, "a standard stream can be a file");
    close(file);
  }
  ~Redirection() {
    if (kept_ >= 0) {
      dup2(kept_, stream_);
      close(kept_);
    } else {
      close(stream_);
    }
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  const int stream_;
  const int kept_;
};

// A charset directory, one where the command works, and one for its standard streams.
class Place {
 public:
  Place() {
    for (const char* name : {"charset", "streams"}) fs::create_directory(root_.pathOf(name));
    copyCharsets();
    ksv::test::setVariable("Charsetpath", root_.pathOf("charset"));
  }

  std::string work() const { return root_.pathOf("work"); }
  std::string stream(const char* name) const { return root_.pathOf("streams/") + name; }

  void begin(std::string_view input, std::string_view a, std::string_view b) {
    fs::remove_all(work());
    fs::create_directory(work());
    root_.write("streams/input", input);
    root_.write("work/a", a);
    root_.write("work/b", b);
  }

 private:
  // Few charsets, since they are loaded for each input.
  void copyCharsets() const {
    static constexpr std::array kBeginnings = {"set.",       "one_way.",     "jis_",
                                               "iso-646",    "iso-10646",    "utf-",
                                               "shift_jis.", "iso-2022-jp.", "iso-8859-1."};
    for (const auto& entry : fs::directory_iterator(KSV_FUZZ_CHARSET_DIRECTORY)) {
      const std::string name = entry.path().filename().string();
      const bool isWanted = std::any_of(kBeginnings.begin(), kBeginnings.end(),
                                        [&](const char* begin) { return name.starts_with(begin); });
      if (isWanted) fs::copy_file(entry.path(), root_.pathOf("charset/" + name));
    }
  }

  ksv_fuzz::ScratchDirectory root_;
};

// No argument leads out of the directory.
std::vector<std::string> argumentsOf(std::string_view bytes) {
  const auto count = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '\0'));
  std::vector<std::string> arguments = ksv_fuzz::stringsOf(bytes, std::min(count, kMostArguments));
  for (std::string& argument : arguments) {
    std::replace(argument.begin(), argument.end(), '/', '_');
    for (size_t at; (at = argument.find("..")) != argument.npos;) argument[at] = '_';
  }
  return arguments;
}

int run(const Place& place, const std::vector<std::string>& arguments) {
  const fs::path before = fs::current_path();
  fs::current_path(place.work());
  int status;
  {
    constexpr int kNew = O_WRONLY | O_CREAT | O_TRUNC;
    const Redirection input(STDIN_FILENO, place.stream("input"), O_RDONLY);
    const Redirection output(STDOUT_FILENO, place.stream("output"), kNew);
    const Redirection errors(STDERR_FILENO, place.stream("errors"), kNew);
    status = ksv_cli::runCommand(arguments);
  }
  fs::current_path(before);
  return status;
}

void requireWholeLines(const Place& place, int status) {
  const std::string errors = ksv_fuzz::contentOf(place.stream("errors"));
  require(errors.empty() || errors.back() == '\n', "what is told are whole lines");
  // What is wrong with a charset directory is a result.
  const bool hasSaidSo = !errors.empty() || !ksv_fuzz::contentOf(place.stream("output")).empty();
  require(status == ksv_cli::kExitDone || hasSaidSo, "who fails says so");
  const auto lines = std::count(errors.begin(), errors.end(), '\n');
  require(status != ksv_cli::kExitUsage || lines == 1, "wrong usage is told in one line");
  for (size_t at = 0; at < errors.size(); at = errors.find('\n', at) + 1) {
    require(errors.compare(at, 5, "ksv: ") == 0, "a line of what is told begins with the command");
  }
}

bool isAsked(const std::vector<std::string>& arguments, const std::string& name) {
  return std::any_of(arguments.begin(), arguments.end(), [&](const std::string& argument) {
    return argument.find(name) != argument.npos;
  });
}

// A new name is one that an argument has, or an input's with something behind it.
void requireAskedFiles(const Files& before, const Files& after,
                       const std::vector<std::string>& arguments) {
  for (const auto& [name, content] : after) {
    require(name.find(".ksv-") == name.npos, "no passing file is left");
    const std::string first = name.substr(0, name.find('/'));
    const bool isBackup =
        (first[0] == 'a' || first[0] == 'b') && isAsked(arguments, first.substr(1));
    require(before.contains(first) || isBackup || isAsked(arguments, first),
            "a new file was asked for");
  }
  const bool mayWrite = isAsked(arguments, "-o") || isAsked(arguments, "--in-place");
  for (const auto& [name, content] : before) {
    const auto found = after.find(name);
    require(found != after.end(), "no file goes");
    require(mayWrite || found->second == content, "no file changes unless that was asked for");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Place place;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  std::array<std::string_view, 4> pieces;
  for (std::string_view& piece : pieces) {
    const size_t end = std::min(rest.find(kSeparator), rest.size());
    piece = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  const std::vector<std::string> arguments = argumentsOf(pieces[0]);
  place.begin(pieces[1], pieces[2], pieces[3]);
  const Files before = filesBelow(place.work());
  const ptrdiff_t descriptors = ksv::test::openDescriptors();

  const int status = run(place, arguments);
  require(status >= ksv_cli::kExitDone && status <= ksv_cli::kExitUndetermined,
          "the status is one of four");
  require(ksv::test::openDescriptors() == descriptors, "no file is left open");
  requireWholeLines(place, status);
  requireAskedFiles(before, filesBelow(place.work()), arguments);
  return 0;
}
