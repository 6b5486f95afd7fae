#include <windows.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

#include "cli/system/failure.h"
#include "cli/system/files_windows.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_paths_windows.h"

namespace ksv_cli::platform {
namespace {

bool isConsole(HANDLE handle) {
  DWORD mode;
  return ::GetConsoleMode(handle, &mode) != 0;
}

// What is typed, as UTF-8 whatever the code page of the console; Ctrl+Z at the
// beginning of a line ends it.
class ConsoleSource : public ByteSource {
 public:
  explicit ConsoleSource(HANDLE handle) : handle_(handle) {}

  size_t read(uint8_t* buffer, size_t size) override {
    if (at_ == held_.size() && !readLine()) return 0;
    const size_t count = std::min(size, held_.size() - at_);
    std::copy_n(held_.data() + at_, count, buffer);
    at_ += count;
    return count;
  }

 private:
  bool readLine() {
    constexpr wchar_t kEnd = 0x1A;
    std::wstring line;
    wchar_t units[1024];
    do {
      DWORD count = 0;
      if (!::ReadConsoleW(handle_, units, std::size(units), &count, nullptr))
        fail(::GetLastError());
      if (count == 0) break;
      line.append(units, count);
    } while (line.back() != L'\n');
    held_ = utf8Of(line);
    at_ = 0;
    return !line.empty() && line.front() != kEnd;
  }

  HANDLE handle_;
  std::string held_;
  size_t at_ = 0;
};

void writeUnits(HANDLE console, std::wstring_view units) {
  constexpr size_t kMostAtOnce = 8192;
  while (!units.empty()) {
    DWORD count = 0;
    const DWORD wanted = static_cast<DWORD>(std::min(units.size(), kMostAtOnce));
    if (!::WriteConsoleW(console, units.data(), wanted, &count, nullptr)) fail(::GetLastError());
    units.remove_prefix(count);
  }
}

// The length of the beginning of a character that text ends in.
size_t unfinishedLength(std::string_view text) {
  for (size_t length = 1; length <= std::min<size_t>(3, text.size()); ++length) {
    const auto byte = static_cast<uint8_t>(text[text.size() - length]);
    if ((byte & 0xC0) == 0x80) continue;
    const size_t whole = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    return whole > length ? length : 0;
  }
  return 0;
}

// Shows UTF-8 whatever the code page of the console, and leaves other bytes to
// that code page.
class ConsoleSink : public ByteSink {
 public:
  explicit ConsoleSink(HANDLE console) : console_(console) {}
  ~ConsoleSink() override {
    try {
      show(held_);
    } catch (const Failure&) {
      // The last bytes were no whole character.
    }
  }

  void write(const uint8_t* bytes, size_t size) override {
    held_.append(reinterpret_cast<const char*>(bytes), size);
    const size_t whole = held_.size() - unfinishedLength(held_);
    const std::string text = held_.substr(0, whole);
    held_.erase(0, whole);
    show(text);
  }

 private:
  void show(const std::string& text) const {
    if (const std::optional<std::wstring> units = utf16Of(text))
      writeUnits(console_, *units);
    else
      writeAll(console_, reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }

  HANDLE console_;
  std::string held_;
};

std::unique_ptr<ByteSink> sinkTo(HANDLE handle) {
  if (isConsole(handle)) return std::make_unique<ConsoleSink>(handle);
  return std::make_unique<HandleSink>(handle);
}

}  // namespace

FileFacts standardInputFacts() { return factsOf(::GetStdHandle(STD_INPUT_HANDLE)); }
FileFacts standardOutputFacts() { return factsOf(::GetStdHandle(STD_OUTPUT_HANDLE)); }

std::unique_ptr<ByteSource> openStandardInput() {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  if (isConsole(input)) return std::make_unique<ConsoleSource>(input);
  return std::make_unique<HandleSource>(input);
}

std::unique_ptr<ByteSink> openStandardOutput() { return sinkTo(::GetStdHandle(STD_OUTPUT_HANDLE)); }

bool standardErrorIsTerminal() { return isConsole(::GetStdHandle(STD_ERROR_HANDLE)); }

bool standardErrorTakesEscapes() {
  const HANDLE console = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode;
  return ::GetConsoleMode(console, &mode) &&
         ::SetConsoleMode(console,
                          mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

size_t standardErrorColumns() {
  constexpr size_t kUsual = 80;
  CONSOLE_SCREEN_BUFFER_INFO information;
  const HANDLE console = ::GetStdHandle(STD_ERROR_HANDLE);
  if (!::GetConsoleScreenBufferInfo(console, &information)) return kUsual;
  const int columns = information.srWindow.Right - information.srWindow.Left + 1;
  return columns > 0 ? static_cast<size_t>(columns) : kUsual;
}

void writeToStandardError(std::string_view text) {
  try {
    sinkTo(::GetStdHandle(STD_ERROR_HANDLE))
        ->write(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  } catch (const Failure&) {
    // There is nowhere left to say so.
  }
}

}  // namespace ksv_cli::platform
