#include "kit/engine.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/platform.h"
#include "kit/charsets/alias_file.h"
#include "kit/charsets/charset_directory.h"
#include "ksv_cconv.h"

namespace ksv_kit {
namespace {

constinit std::atomic<Engine*> started = nullptr;
// System errors of attempts that failed, and of others before this library was first used.
constinit std::atomic<uint64_t> faultsKnown = 0;

std::mutex& startMutex() {
  static std::mutex mutex;
  return mutex;
}

// One use of the engine's process; given back where nothing comes of it.
class Use {
 public:
  Use() : isGranted_(startProcess() != 0) {}
  ~Use() {
    if (isGranted_) endProcess();
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

  explicit operator bool() const { return isGranted_; }
  void keep() { isGranted_ = false; }

 private:
  bool isGranted_;
};

// Of its converter records this library sees what every caller sees: the row of the codec table is
// one of those things, and says what else the engine has for this library.
const ksv::CodecEntry* anyCodec(const std::vector<std::string>& charsets) {
  ConverterRecord record{};
  const auto rowOf = [&record](const char* charset) {
    cconvInitConvert(&record, nullptr, charset);
    return static_cast<const ksv::CodecEntry*>(record.targetEncoder);
  };
  const ksv::CodecEntry* row = rowOf("utf-8");
  for (auto name = charsets.begin(); row == nullptr && name != charsets.end(); ++name)
    row = rowOf(name->c_str());
  return row;
}

std::vector<CharsetAlias> aliasesOf(const std::string& directory) {
  const std::string path = directory + ksv::platform::pathSeparator() + kAliasFile;
  ksv::platform::InputFile file(path.c_str());
  std::string text(static_cast<size_t>(std::max<int64_t>(file.size(), 0)), '\0');
  text.resize(file.read(text.data(), text.size()));
  if (file.error() != 0)
    throw UnusableEngine(path + " cannot be read: " + ksv::platform::errorText(file.error()));
  std::vector<CharsetAlias> aliases;
  for (AliasLine& line : readAliases(std::move(text)).aliases)
    aliases.push_back(std::move(line.alias));
  return aliases;
}

}  // namespace

Engine::Engine(CharsetNames names, const ksv::CodecEntry* codec)
    : names_(std::move(names)), codec_(codec) {}

const Engine& Engine::instance() {
  if (const Engine* engine = started.load(std::memory_order_acquire)) return *engine;
  const std::lock_guard<std::mutex> guard(startMutex());
  if (started.load(std::memory_order_acquire) == nullptr)
    started.store(start(), std::memory_order_release);
  return *started.load(std::memory_order_acquire);
}

Engine* Engine::start() {
  Use use;
  if (!use) throw std::bad_alloc();
  const std::optional<std::string> directory = charsetDirectory();
  if (!directory) throw UnusableEngine("there is no charset directory");
  if (cconvLoadRule() == 0)
    throw UnusableEngine("the charset directory " + *directory +
                         " holds no charset rule file that can be read");
  std::vector<std::string> charsets = loadedCharsets();
  const ksv::CodecEntry* const codec = anyCodec(charsets);
  std::unique_ptr<Engine> engine(
      new Engine(CharsetNames(std::move(charsets), aliasesOf(*directory)), codec));
  engine->refuseFaultsBehind(faultsKnown.exchange(engine->faultCount()));
  use.keep();
  return engine.release();
}

void Engine::refuseFaultsBehind(uint64_t count) const {
  if (faultCount() == count) return;
  char text[1024];
  codec_->faults->inWordsBehind(count, text, sizeof text);
  throw UnusableEngine(text);
}

}  // namespace ksv_kit
