// What the command does on a console. Bound to Windows: a console takes characters,
// not bytes, and an interrupt comes from it on a thread of its own.

#include <windows.h>

#include <thread>

#include "cli/system/standard_streams.h"
#include "command.h"
#include "tests/system/start_windows.h"
#include "tests/system/system.h"
#include "tests/system/wide_windows.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::ChildBody;
using ksv::test::quoted;
using ksv::test::wide;

Stream openConsole(const wchar_t* name) {
  return reinterpret_cast<Stream>(::CreateFileW(name, GENERIC_READ | GENERIC_WRITE,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                OPEN_EXISTING, 0, nullptr));
}

// Runs the command with all its streams on the console. Arguments: its directory,
// and its own.
int runOnConsole(const std::vector<std::string>& arguments) {
  const StandardStreams streams = {openConsole(L"CONIN$"), openConsole(L"CONOUT$"),
                                   openConsole(L"CONOUT$")};
  return finishCommand(
             startCommand(arguments[0], {arguments.begin() + 1, arguments.end()}, streams))
      .status;
}
const ChildBody onConsole("on_console", runOnConsole);

// Standard error on the console tells how wide that is.
int tellColumns(const std::vector<std::string>&) {
  ::SetStdHandle(STD_ERROR_HANDLE, reinterpret_cast<HANDLE>(openConsole(L"CONOUT$")));
  return static_cast<int>(ksv_cli::platform::standardErrorColumns());
}
const ChildBody columns("columns", tellColumns);

BOOL WINAPI takeNoNotice(DWORD) { return TRUE; }

bool holdsPassingFile(const std::string& directory) {
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileW(wide(directory + "/.ksv-*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return false;
  ::FindClose(search);
  return true;
}

// Interrupts the command while it waits for more input. Argument: its directory.
int runAndInterrupt(const std::vector<std::string>& arguments) {
  ::SetConsoleCtrlHandler(takeNoNotice, TRUE);
  const Pipe pipe = makePipe();
  const Stream null = openNullDevice();
  const Process process =
      startCommand(arguments[0], {"convert", "-f", "utf8", "-t", "sjis", "-o", "out"},
                   {pipe.reading, null, null});
  writeTo(pipe.writing, "abcdefgh");
  const auto hasBegun = [&] { return holdsPassingFile(arguments[0]); };
  if (!ksv::test::waitUntil(hasBegun)) return 1;
  ::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
  return finishCommand(process).status;
}
const ChildBody interrupted("interrupted", runAndInterrupt);

class WindowsConsole : public CommandTest {
 protected:
  // Wine makes its desktop for the first process that asks for it. Where that is the
  // pseudo console, which asks while it translates a key, the key never arrives.
  static void SetUpTestSuite() { ::GetDesktopWindow(); }

  struct Session {
    DWORD status = 0;
    std::string seen;
  };

  // Runs a body on a console of its own, where typed is typed.
  Session run(const std::string& body, const std::vector<std::string>& arguments,
              const std::string& typed = "") const {
    const Pipe keyboard = makePipe();
    const Pipe screen = makePipe();
    HPCON console = nullptr;
    EXPECT_EQ(::CreatePseudoConsole({120, 25}, reinterpret_cast<HANDLE>(keyboard.reading),
                                    reinterpret_cast<HANDLE>(screen.writing), 0, &console),
              S_OK);
    closeStreams({keyboard.reading, screen.writing});
    Session session;
    std::thread reader([&] { session.seen = everythingFrom(screen.reading); });
    const HANDLE process = startOn(console, body, arguments);
    writeTo(keyboard.writing, typed);
    EXPECT_EQ(::WaitForSingleObject(process, 30000), static_cast<DWORD>(WAIT_OBJECT_0));
    ::TerminateProcess(process, 1);  // so that what has not come to its end fails
    ::GetExitCodeProcess(process, &session.status);
    ::CloseHandle(process);
    ::ClosePseudoConsole(console);
    closeStreams({keyboard.writing});
    reader.join();
    closeStreams({screen.reading});
    return session;
  }

  Session ksvOnConsole(std::vector<std::string> arguments, const std::string& typed = "") const {
    arguments.insert(arguments.begin(), path(""));
    return run(onConsole.name, arguments, typed);
  }

 private:
  static std::string everythingFrom(Stream stream) {
    std::string text;
    char buffer[4096];
    DWORD count = 0;
    while (::ReadFile(reinterpret_cast<HANDLE>(stream), buffer, sizeof buffer, &count, nullptr))
      text.append(buffer, count);
    return text;
  }

  static HANDLE startOn(HPCON console, const std::string& body,
                        const std::vector<std::string>& arguments) {
    std::wstring line = L"cli_tests " + wide(ksv::test::kChildOption) + L" " + wide(body);
    for (const std::string& argument : arguments) line += L" " + quoted(wide(argument));
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<char> memory(size);
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
    ::InitializeProcThreadAttributeList(startup.lpAttributeList, 1, 0, &size);
    ::UpdateProcThreadAttribute(startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE,
                                console, sizeof console, nullptr, nullptr);
    const HANDLE process = ksv::test::started({.executable = wide(ksv::test::ownExecutable()),
                                               .line = line,
                                               .inherits = FALSE,
                                               .flags = EXTENDED_STARTUPINFO_PRESENT},
                                              startup.StartupInfo);
    ::DeleteProcThreadAttributeList(startup.lpAttributeList);
    return process;
  }
};

TEST_F(WindowsConsole, shows_japanese_text_and_diagnostics) {
  write("草枕.txt", bytes({0x8E, 0x52, 0x98, 0x48}));
  const Session session =
      ksvOnConsole({"convert", "-f", "sjis", "-t", "utf8", "草枕.txt", "無い.txt"});
  EXPECT_EQ(session.status, 1u);
  EXPECT_NE(session.seen.find("山路"), std::string::npos) << session.seen;
  EXPECT_NE(session.seen.find("ksv: 無い.txt: No such file or directory"), std::string::npos)
      << session.seen;
}

TEST_F(WindowsConsole, shows_a_character_whose_bytes_come_apart) {
  std::string text;
  for (int i = 0; i < 20; ++i) text += "吾輩は猫";
  write("in", text);
  const Session session =
      ksvOnConsole({"convert", "-f", "utf8", "-t", "utf8", "--block-size", "16", "in"});
  EXPECT_EQ(session.status, 0u);
  size_t cats = 0;
  for (size_t at = 0; (at = session.seen.find("猫", at)) != std::string::npos; ++at) ++cats;
  EXPECT_EQ(cats, 20u) << session.seen;
}

TEST_F(WindowsConsole, says_how_wide_it_is) { EXPECT_EQ(run(columns.name, {}).status, 120u); }

// The line of progress has gone from where a diagnostic begins, and from the end.
TEST_F(WindowsConsole, shows_progress_that_makes_way) {
  write("a", std::string(100'000, 'a'));
  write("b", "b");
  const Session session =
      ksvOnConsole({"convert", "-f", "utf8", "-t", "sjis", "--output-dir", "to", "a", "none", "b"});
  EXPECT_EQ(session.status, 1u);
  EXPECT_NE(session.seen.find("ksv: none: No such file or directory"), std::string::npos)
      << session.seen;
  EXPECT_EQ(session.seen.find("ksv: none: No such file or directory left"), std::string::npos);
}

TEST_F(WindowsConsole, reads_what_is_typed_as_utf8) {
  const Session session =
      ksvOnConsole({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "山路を\r\x1A\r");
  EXPECT_EQ(session.status, 0u);
  EXPECT_EQ(read("out"), bytes({0x8E, 0x52, 0x98, 0x48, 0x82, 0xF0, '\r', '\n'}));
}

TEST_F(WindowsConsole, leaves_nothing_behind_an_interrupt) {
  EXPECT_EQ(run(interrupted.name, {path("")}).status, static_cast<DWORD>(STATUS_CONTROL_C_EXIT));
  EXPECT_TRUE(files().empty());
}

}  // namespace
}  // namespace ksv_cli_tests
