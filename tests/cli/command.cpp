#include "command.h"

#include <algorithm>
#include <filesystem>
#include <memory>

#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::pathOf;

}  // namespace

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

std::string charsetDirectory() {
  return ksv::test::textOf(std::filesystem::absolute(KSV_CHARSET_DIRECTORY));
}

CommandTest::CommandTest()
    : directory_(ksv::test::makeTemporaryDirectory("ksv-cli")),
      streams_(ksv::test::makeTemporaryDirectory("ksv-cli")) {
  setEnvironment("Charsetpath", charsetDirectory());
  // Tests name a language by LANG, which these come before.
  setEnvironment("LC_ALL", "");
  setEnvironment("LC_CTYPE", "");
}

CommandTest::~CommandTest() {
  std::filesystem::remove_all(pathOf(directory_));
  std::filesystem::remove_all(pathOf(streams_));
}

void CommandTest::setEnvironment(const std::string& name, const std::string& value) {
  environment_[name] = value;
}

void CommandTest::useCharsetDirectoryOf(const std::string& charset) {
  std::filesystem::create_directory(pathOf(path(charset)));
  for (const auto& entry : std::filesystem::directory_iterator(pathOf(charsetDirectory()))) {
    const std::string name = ksv::test::textOf(entry.path().filename());
    if (name.find(charset + ".") != std::string::npos)
      std::filesystem::copy_file(entry.path(), pathOf(path(charset + "/" + name)));
  }
  setEnvironment("Charsetpath", path(charset));
}

Process CommandTest::start(const std::vector<std::string>& arguments,
                           const StandardStreams& streams) const {
  std::vector<std::unique_ptr<ksv::test::ScopedVariable>> variables;
  for (const auto& [name, value] : environment_)
    variables.push_back(std::make_unique<ksv::test::ScopedVariable>(name.c_str(), value));
  return startCommand(directory_, arguments, streams);
}

Outcome CommandTest::ksv(const std::vector<std::string>& arguments,
                         const std::string& input) const {
  const std::string in = streams_ + "/in";
  const std::string out = streams_ + "/out";
  const std::string err = streams_ + "/err";
  ksv::test::writeFile(in, input);
  for (const std::string& stream : {out, err}) ksv::test::writeFile(stream, "");
  const StandardStreams streams = {openForReading(in), openForAppending(out),
                                   openForAppending(err)};
  Outcome outcome = finishCommand(start(arguments, streams));
  closeStreams({streams.in, streams.out, streams.err});
  outcome.out = ksv::test::readFile(out);
  outcome.err = ksv::test::readFile(err);
  return outcome;
}

void CommandTest::write(const std::string& name, const std::string& content) const {
  ksv::test::writeFile(path(name), content);
}

std::string CommandTest::read(const std::string& name) const {
  return ksv::test::readFile(path(name));
}

bool CommandTest::exists(const std::string& name) const { return ksv::test::exists(path(name)); }

std::vector<std::string> CommandTest::files(const std::string& below) const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(pathOf(path(below))))
    names.push_back(ksv::test::textOf(entry.path().filename()));
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace ksv_cli_tests
