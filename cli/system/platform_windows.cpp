#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/in_place.h"
#include "cli/system/platform.h"

namespace ksv_cli::platform {
namespace {

constexpr wchar_t kSeparators[] = L"/\\";
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string utf8Of(std::wstring_view units) {
  const int length = static_cast<int>(units.size());
  std::string text(units.size() * 3, '\0');
  const int count = ::WideCharToMultiByte(CP_UTF8, 0, units.data(), length, text.data(),
                                          static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<size_t>(count));
  return text;
}

// None when the bytes are no UTF-8.
std::optional<std::wstring> utf16Of(std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring units(text.size(), L'\0');
  const int count = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length,
                                          units.data(), length);
  if (count == 0 && length != 0) return std::nullopt;
  units.resize(static_cast<size_t>(count));
  return units;
}

std::string systemMessage(DWORD error) {
  wchar_t text[512];
  DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, std::size(text), nullptr);
  while (length > 0 && std::wcschr(L"\r\n .", text[length - 1]) != nullptr) --length;
  return length == 0 ? "error " + std::to_string(error) : utf8Of({text, length});
}

// In the words that every system has for it, and in this system's own for the
// rest. Writes to a pipe that nobody reads any more end the work, but are no news.
std::string words(DWORD error) {
  const std::error_condition kind =
      std::system_category().default_error_condition(static_cast<int>(error));
  return kind.category() == std::generic_category() ? kind.message() : systemMessage(error);
}

[[noreturn]] void fail(DWORD error) {
  const std::error_condition kind =
      std::system_category().default_error_condition(static_cast<int>(error));
  throw Failure(words(error), kind == std::errc::broken_pipe);
}

[[noreturn]] void fail(std::errc error) { throw Failure(std::make_error_code(error).message()); }

// What call writes into a buffer that is as large as it asks for; empty: it failed.
template <typename Call>
std::wstring written(Call call) {
  std::wstring units(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(units.data(), static_cast<DWORD>(units.size()));
    const bool fits = length < units.size();
    units.resize(length);
    if (fits) return units;
  }
}

std::wstring fullPath(const std::wstring& path) {
  return written([&](wchar_t* buffer, DWORD size) {
    return ::GetFullPathNameW(path.c_str(), size, buffer, nullptr);
  });
}

bool isVerbatimOrDevice(const std::wstring& path) {
  const std::wstring begin = path.substr(0, 4);
  return begin == L"\\\\?\\" || begin == L"\\\\.\\" || begin == L"//?/" || begin == L"//./";
}

// A path as the system takes it: one that is too long for the usual form in the
// form without a limit. Directories have to leave room for a short name.
std::wstring systemPath(std::wstring path) {
  constexpr size_t kLongest = MAX_PATH - 12;
  if (path.size() < kLongest || isVerbatimOrDevice(path)) return path;
  const std::wstring full = fullPath(path);
  if (full.empty()) return path;
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

std::wstring systemPath(const std::string& path) {
  std::optional<std::wstring> units = utf16Of(path);
  if (!units) fail(std::errc::illegal_byte_sequence);
  return systemPath(std::move(*units));
}

// How much of a path is in front of its last component.
template <typename Text>
size_t directoryLength(const Text& path, const typename Text::value_type* separators) {
  const size_t separator = path.find_last_of(separators);
  if (separator != Text::npos) return separator + 1;
  return path.size() >= 2 && path[1] == ':' ? 2 : 0;
}

bool endsInSeparator(const std::string& path) {
  return path.ends_with('/') || path.ends_with('\\');
}

bool isConsole(HANDLE handle) {
  DWORD mode;
  return ::GetConsoleMode(handle, &mode) != 0;
}

class Handle {
 public:
  explicit Handle(HANDLE value) : value_(value) {}
  ~Handle() {
    if (isOpen()) ::CloseHandle(value_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  HANDLE get() const { return value_; }
  bool isOpen() const { return value_ != INVALID_HANDLE_VALUE; }

  void closeChecked() {
    if (!::CloseHandle(std::exchange(value_, INVALID_HANDLE_VALUE))) fail(::GetLastError());
  }

 private:
  HANDLE value_;
};

void writeAll(HANDLE handle, const uint8_t* bytes, size_t size) {
  constexpr size_t kMostAtOnce = 1 << 30;
  while (size != 0) {
    DWORD count = 0;
    const DWORD wanted = static_cast<DWORD>(std::min(size, kMostAtOnce));
    if (!::WriteFile(handle, bytes, wanted, &count, nullptr)) fail(::GetLastError());
    bytes += count;
    size -= count;
  }
}

class HandleSource : public ByteSource {
 public:
  explicit HandleSource(HANDLE handle) : handle_(handle) {}

  size_t read(uint8_t* buffer, size_t size) override {
    constexpr size_t kMostAtOnce = 1 << 30;
    const DWORD wanted = static_cast<DWORD>(std::min(size, kMostAtOnce));
    for (;;) {
      DWORD count = 0;
      const bool isRead = ::ReadFile(handle_, buffer, wanted, &count, nullptr) != 0;
      const DWORD error = isRead ? ERROR_SUCCESS : ::GetLastError();
      if (error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF) return 0;
      if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA) fail(error);
      // A pipe hands out an empty message for an empty write; its end is an error.
      if (count != 0 || ::GetFileType(handle_) != FILE_TYPE_PIPE) return count;
    }
  }

 private:
  HANDLE handle_;
};

class FileSource : public ByteSource {
 public:
  explicit FileSource(HANDLE handle) : handle_(handle), source_(handle) {}
  size_t read(uint8_t* buffer, size_t size) override { return source_.read(buffer, size); }

 private:
  Handle handle_;
  HandleSource source_;
};

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

class HandleSink : public ByteSink {
 public:
  explicit HandleSink(HANDLE handle) : handle_(handle) {}
  void write(const uint8_t* bytes, size_t size) override { writeAll(handle_, bytes, size); }

 private:
  HANDLE handle_;
};

class FileSink : public ByteSink {
 public:
  explicit FileSink(HANDLE handle) : handle_(handle) {}
  void write(const uint8_t* bytes, size_t size) override { writeAll(handle_.get(), bytes, size); }

 private:
  Handle handle_;
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

int64_t countOf(const FILETIME& time) {
  return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

FILETIME timeOf(int64_t count) {
  return {static_cast<DWORD>(count), static_cast<DWORD>(static_cast<uint64_t>(count) >> 32)};
}

FileFacts factsOf(HANDLE handle) {
  FileFacts facts;
  const DWORD type = ::GetFileType(handle);
  BY_HANDLE_FILE_INFORMATION information;
  if (type == FILE_TYPE_CHAR || type == FILE_TYPE_PIPE) {
    facts.kind = FileKind::kOther;
  } else if (type == FILE_TYPE_DISK && ::GetFileInformationByHandle(handle, &information)) {
    const bool isDirectory = (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    facts.kind = isDirectory ? FileKind::kDirectory : FileKind::kRegular;
    if (!isDirectory)
      facts.size = uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
    facts.device = information.dwVolumeSerialNumber;
    facts.number = uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow;
    facts.names = information.nNumberOfLinks;
    facts.readTime = countOf(information.ftLastAccessTime);
    facts.writeTime = countOf(information.ftLastWriteTime);
  }
  return facts;
}

// For a look at it, which no other program's use of it forbids.
HANDLE openToLook(const std::wstring& path) {
  return ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

HANDLE openChecked(const std::string& path, DWORD access) {
  const HANDLE handle = ::CreateFileW(systemPath(path).c_str(), access, kShareAll, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle != INVALID_HANDLE_VALUE) return handle;
  const DWORD error = ::GetLastError();
  if (fileFacts(path).kind == FileKind::kDirectory) fail(std::errc::is_a_directory);
  fail(error);
}

// The place of a result: where the path is a link, the file that it leads to.
std::wstring linkEnd(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (!isLink) return path;
  const Handle file(openToLook(path));
  if (!file.isOpen()) fail(::GetLastError());
  const std::wstring end = written([&](wchar_t* buffer, DWORD size) {
    return ::GetFinalPathNameByHandleW(file.get(), buffer, size, FILE_NAME_NORMALIZED);
  });
  return end.empty() ? path : end;
}

// The passing names that exist at the moment. An interrupt comes on a thread of
// its own: it takes the lock, removes them, and keeps the lock, so that whoever
// wants to create, remove or rename one waits for the end of the process.
class TemporaryNames {
 public:
  template <typename Action>
  auto guarded(Action action) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return action(names_);
  }

  void removeAllForGood() {
    mutex_.lock();
    removeAll();
  }

  // For a thread that may have stopped with the lock.
  void tryToRemoveAllForGood() {
    if (mutex_.try_lock()) removeAll();
  }

 private:
  void removeAll() {
    for (const std::wstring& name : names_) ::DeleteFileW(name.c_str());
  }

  std::mutex mutex_;
  std::set<std::wstring> names_;
};

// Never destroyed: an interrupt may come until the very end.
TemporaryNames& temporaryNames() {
  static TemporaryNames& names = *new TemporaryNames;
  return names;
}

// Other threads may be anywhere, so the process ends without asking them.
BOOL WINAPI endAtInterrupt(DWORD) {
  temporaryNames().removeAllForGood();
  return ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
}

std::wstring randomName() {
  static constexpr wchar_t kLetters[] = L"0123456789abcdefghijklmnopqrstuvwxyz";
  std::random_device random;
  std::wstring name = L".ksv-";
  for (int i = 0; i < 12; ++i) name += kLetters[random() % (std::size(kLetters) - 1)];
  return name;
}

// A new file under a passing name, open for writing. It goes with the object unless
// it has been renamed.
class PassingFile {
 public:
  // directory: with the separator at its end, or empty.
  explicit PassingFile(const std::wstring& directory)
      : path_(systemPath(directory + randomName())), file_(create()) {}

  ~PassingFile() {
    const DWORD error = temporaryNames().guarded([this](std::set<std::wstring>& names) {
      const bool isThere = names.erase(path_) != 0;
      return !isThere || ::DeleteFileW(path_.c_str()) ? ERROR_SUCCESS : ::GetLastError();
    });
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) tellStays(error);
  }
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;

  const std::wstring& path() const { return path_; }
  Handle& handle() { return file_; }

  // Does what renames the file, and forgets its name. What action throws leaves it.
  template <typename Action>
  void rename(Action action) {
    temporaryNames().guarded([&](std::set<std::wstring>& names) {
      action();
      names.erase(path_);
    });
  }

 private:
  // Others may remove it while it is open, as an interrupt does.
  HANDLE create() const {
    return temporaryNames().guarded([this](std::set<std::wstring>& names) {
      const auto name = names.insert(path_).first;
      const HANDLE handle =
          ::CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                        CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
      if (handle != INVALID_HANDLE_VALUE) return handle;
      const DWORD error = ::GetLastError();
      names.erase(name);
      fail(error);
    });
  }

  void tellStays(DWORD error) const noexcept {
    try {
      tellLeftOver(utf8Of(path_), {static_cast<int>(error), std::system_category()});
    } catch (const std::exception&) {
      tellOutOfMemory();
    }
  }

  std::wstring path_;
  Handle file_;
};

// The name under which an original is kept, taken before anything is moved there: a file
// that has it already is left alone.
class BackupName {
 public:
  // shown: the name as the user gave it; empty: nothing is kept.
  explicit BackupName(const std::string& shown) {
    if (shown.empty()) return;
    path_ = systemPath(shown);
    const Handle file(::CreateFileW(path_.c_str(), GENERIC_WRITE, kShareAll, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.isOpen()) return;
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS)
      throw Failure("the backup " + shown + " exists already");
    fail(error);
  }

  // Null when nothing is kept.
  const wchar_t* path() const { return path_.empty() ? nullptr : path_.c_str(); }

  // Gives the name back, and what has been moved there to its place.
  void giveBack(const std::wstring& place) const {
    if (path_.empty()) return;
    if (::GetFileAttributesW(place.c_str()) != INVALID_FILE_ATTRIBUTES)
      ::DeleteFileW(path_.c_str());
    else
      ::MoveFileExW(path_.c_str(), place.c_str(), 0);
  }

 private:
  std::wstring path_;
};

class WindowsPendingFile : public PendingFile {
 public:
  WindowsPendingFile(const std::string& path, std::optional<InPlace> inPlace)
      : place_(linkEnd(systemPath(path))),
        file_(place_.substr(0, directoryLength(place_, kSeparators))),
        inPlace_(std::move(inPlace)) {}

  void write(const uint8_t* bytes, size_t size) override {
    writeAll(file_.handle().get(), bytes, size);
  }

  void commit() override {
    if (inPlace_) {
      if (haveSameBytes(*openInput(utf8Of(file_.path())), *openInput(utf8Of(place_)))) return;
      if (inPlace_->keepsTimes) handOnTimes();
    }
    if (!::FlushFileBuffers(file_.handle().get())) fail(::GetLastError());
    file_.handle().closeChecked();
    file_.rename([this] { replace(); });
  }

 private:
  void handOnTimes() {
    const FILETIME readTime = timeOf(inPlace_->original.readTime);
    const FILETIME writeTime = timeOf(inPlace_->original.writeTime);
    WIN32_FILE_ATTRIBUTE_DATA old;
    if (!::GetFileAttributesExW(place_.c_str(), GetFileExInfoStandard, &old) ||
        !::SetFileTime(file_.handle().get(), &old.ftCreationTime, &readTime, &writeTime))
      fail(::GetLastError());
  }

  void replace() const {
    if (!inPlace_) return takePlace(nullptr);
    checkThatNothingIsLost(inPlace_->original, fileFacts(utf8Of(place_)));
    const BackupName backup(inPlace_->backup);
    try {
      takePlace(backup.path());
    } catch (const Failure&) {
      backup.giveBack(place_);
      throw;
    }
  }

  // ReplaceFileW hands the rights of the old file on. Some file systems do not have
  // it, and it may stop when the old file has its backup name.
  void takePlace(const wchar_t* backup) const {
    const std::wstring& temporary = file_.path();
    const DWORD attributes = ::GetFileAttributesW(place_.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
      refuseFileInUse();
      ::SetFileAttributesW(temporary.c_str(), attributes);
      if (::ReplaceFileW(place_.c_str(), temporary.c_str(), backup, REPLACEFILE_IGNORE_MERGE_ERRORS,
                         nullptr, nullptr))
        return;
      const bool isStillThere = ::GetFileAttributesW(place_.c_str()) != INVALID_FILE_ATTRIBUTES;
      if (backup != nullptr && isStillThere) move(place_, backup);
    }
    move(temporary, place_);
  }

  // Which the calls that replace it report as a matter of rights.
  void refuseFileInUse() const {
    const Handle file(::CreateFileW(place_.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isOpen() && ::GetLastError() == ERROR_SHARING_VIOLATION)
      fail(ERROR_SHARING_VIOLATION);
  }

  static void move(const std::wstring& from, const std::wstring& to) {
    constexpr DWORD kHow = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (!::MoveFileExW(from.c_str(), to.c_str(), kHow)) fail(::GetLastError());
  }

  std::wstring place_;
  PassingFile file_;
  const std::optional<InPlace> inPlace_;
};

// What fails here has nothing to do with the input that is copied.
template <typename Action>
auto onTemporaryFile(Action action) {
  try {
    return action();
  } catch (const Failure& failure) {
    throw Failure(std::string("a temporary file cannot be written: ") + failure.what());
  }
}

std::wstring temporaryDirectory() {
  return written([](wchar_t* buffer, DWORD size) { return ::GetTempPathW(size, buffer); });
}

class WindowsTemporaryFile : public TemporaryFile {
 public:
  WindowsTemporaryFile() : file_(temporaryDirectory()), path_(utf8Of(file_.path())) {}

  void write(const uint8_t* bytes, size_t size) override {
    onTemporaryFile([&] { writeAll(file_.handle().get(), bytes, size); });
  }
  const std::string& finish() override {
    if (file_.handle().isOpen()) onTemporaryFile([&] { file_.handle().closeChecked(); });
    return path_;
  }

 private:
  PassingFile file_;
  const std::string path_;
};

std::unique_ptr<PendingFile> pendingFile(const std::string& path, std::optional<InPlace> inPlace) {
  const DWORD attributes = ::GetFileAttributesW(systemPath(path).c_str());
  const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
  if (isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY)) fail(std::errc::is_a_directory);
  if (isThere && (attributes & FILE_ATTRIBUTE_READONLY)) fail(std::errc::permission_denied);
  return std::make_unique<WindowsPendingFile>(path, std::move(inPlace));
}

void createOneAfterAnother(const std::wstring& path) {
  if (::CreateDirectoryW(systemPath(path).c_str(), nullptr)) return;
  const DWORD error = ::GetLastError();
  if (error == ERROR_ALREADY_EXISTS) return;
  const size_t end = path.find_last_not_of(kSeparators);
  const size_t parent = end == std::wstring::npos ? 0 : path.find_last_of(kSeparators, end);
  if (error != ERROR_PATH_NOT_FOUND || parent == 0 || parent == std::wstring::npos) fail(error);
  createOneAfterAnother(path.substr(0, parent));
  if (!::CreateDirectoryW(systemPath(path).c_str(), nullptr)) fail(::GetLastError());
}

}  // namespace

std::vector<std::string> commandLineArguments(int, char**) {
  int count = 0;
  wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (words == nullptr) fail(::GetLastError());
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(utf8Of(words[i]));
  ::LocalFree(words);
  return arguments;
}

std::string errorText(int error) { return words(static_cast<DWORD>(error)); }

std::string environmentValue(const char* name) {
  const std::wstring units = *utf16Of(name);
  return utf8Of(written([&](wchar_t* buffer, DWORD size) {
    return ::GetEnvironmentVariableW(units.c_str(), buffer, size);
  }));
}

std::vector<std::string> filesNamedBy(const std::string& operand) {
  const size_t nameAt = directoryLength(operand, "/\\");
  if (operand.find_first_of("*?", nameAt) == std::string::npos) return {operand};
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileW(systemPath(operand).c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return {operand};
  std::vector<std::string> files;
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
      files.push_back(operand.substr(0, nameAt) + utf8Of(entry.cFileName));
  } while (::FindNextFileW(search, &entry));
  ::FindClose(search);
  if (files.empty()) return {operand};
  std::sort(files.begin(), files.end());
  return files;
}

void prepareProcess() { ::SetConsoleCtrlHandler(endAtInterrupt, TRUE); }

bool standardErrorIsTerminal() { return isConsole(::GetStdHandle(STD_ERROR_HANDLE)); }

bool standardErrorTakesEscapes() {
  const HANDLE console = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode;
  return ::GetConsoleMode(console, &mode) &&
         ::SetConsoleMode(console,
                          mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

const char kOutOfMemory[] = "Not enough memory";

void tellOutOfMemory() noexcept {
  constexpr std::string_view kLastWords = "ksv: Not enough memory\r\n";
  DWORD written;
  ::WriteFile(::GetStdHandle(STD_ERROR_HANDLE), kLastWords.data(),
              static_cast<DWORD>(kLastWords.size()), &written, nullptr);
}

// Whoever is about to change a name when there is no memory waits for nobody.
void endOutOfMemory() noexcept {
  temporaryNames().tryToRemoveAllForGood();
  tellOutOfMemory();
  ::TerminateProcess(::GetCurrentProcess(), kExitFailed);
  for (;;) ::Sleep(INFINITE);
}

void writeToStandardError(std::string_view text) {
  try {
    sinkTo(::GetStdHandle(STD_ERROR_HANDLE))
        ->write(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  } catch (const Failure&) {
    // There is nowhere left to say so.
  }
}

// A pipe is not opened for a look at it, which would take the place of a reader.
FileFacts fileFacts(const std::string& path) {
  FileFacts facts;
  const std::wstring units = systemPath(path);
  if (isVerbatimOrDevice(units) && (units[2] == L'.')) {
    facts.kind = FileKind::kOther;
    return facts;
  }
  const Handle file(openToLook(units));
  return file.isOpen() ? factsOf(file.get()) : facts;
}

FileFacts standardInputFacts() { return factsOf(::GetStdHandle(STD_INPUT_HANDLE)); }
FileFacts standardOutputFacts() { return factsOf(::GetStdHandle(STD_OUTPUT_HANDLE)); }

std::unique_ptr<ByteSource> openInput(const std::string& path) {
  return std::make_unique<FileSource>(openChecked(path, GENERIC_READ));
}

std::unique_ptr<ByteSource> openStandardInput() {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  if (isConsole(input)) return std::make_unique<ConsoleSource>(input);
  return std::make_unique<HandleSource>(input);
}

std::unique_ptr<ByteSink> openStandardOutput() { return sinkTo(::GetStdHandle(STD_OUTPUT_HANDLE)); }

std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path) {
  return std::make_unique<FileSink>(openChecked(path, GENERIC_WRITE));
}

std::unique_ptr<PendingFile> PendingFile::create(const std::string& path) {
  return pendingFile(path, std::nullopt);
}

std::unique_ptr<PendingFile> PendingFile::createInPlace(const std::string& path,
                                                        const InPlace& how) {
  return pendingFile(path, how);
}

std::unique_ptr<TemporaryFile> TemporaryFile::create() {
  return onTemporaryFile([] { return std::make_unique<WindowsTemporaryFile>(); });
}

void createDirectories(const std::string& path) {
  const std::optional<std::wstring> units = utf16Of(path);
  if (!units) fail(std::errc::illegal_byte_sequence);
  createOneAfterAnother(*units);
  if (fileFacts(path).kind != FileKind::kDirectory) fail(std::errc::not_a_directory);
}

std::vector<std::string> filesIn(const std::string& directory) {
  if (fileFacts(directory).kind != FileKind::kDirectory) fail(ERROR_PATH_NOT_FOUND);
  const std::string all = joinPath(directory, "*");
  std::vector<std::string> names;
  for (const std::string& file : filesNamedBy(all))
    if (file != all) names.push_back(lastComponent(file));
  return names;
}

bool namesHaveNoCase() { return true; }

std::string joinPath(const std::string& directory, const std::string& name) {
  const bool isJoined = directory.empty() || endsInSeparator(directory) ||
                        (directory.size() == 2 && directory[1] == ':');
  return directory + (isJoined ? "" : "\\") + name;
}

std::string lastComponent(const std::string& path) {
  return path.substr(directoryLength(path, "/\\"));
}

bool backslashSeparates() { return true; }

// Without regard to case, to dots on the way, and to the separator.
std::string placeKey(const std::string& path) {
  std::optional<std::wstring> units = utf16Of(path);
  if (!units) return path;
  std::wstring full = fullPath(*units);
  ::CharUpperBuffW(full.data(), static_cast<DWORD>(full.size()));
  return utf8Of(full);
}

}  // namespace ksv_cli::platform
