// Text detection: files of one encoding and size, opened, read and detected one after
// the other. With the language of the texts the first chunk settles most of them;
// without it ties are read on.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/detector_peer.h"
#include "bench/text.h"
#include "ksv_detect.h"
#include "ksv_file.h"

namespace ksv_bench {
namespace {

namespace fs = std::filesystem;

struct Encoding {
  const char* name;
  const Charset* charset;
  const char* mark;
};
const Encoding kEncodings[] = {{"Shift_JIS", &kShiftJis, ""},
                               {"EUC-JP", &kEucJp, ""},
                               {"ISO-2022-JP", &kIso2022Jp, ""},
                               {"UTF-8", &kUtf8, ""},
                               {"UTF-16", &kUtf16, "\xFF\xFE"}};

struct Size {
  const char* name;
  size_t bytes;
  size_t files;
};
constexpr Size kSizes[] = {{"1_KB", 1024, 256}, {"64_KB", 64 * 1024, 32}, {"4_MB", 4 << 20, 1}};

// A piece of the text, from a place of its own, that has at most so many bytes.
std::string piece(const std::u32string& text, size_t at, const Encoding& encoding, size_t bytes) {
  const size_t most = bytes - std::string(encoding.mark).size();
  size_t length = most;
  for (;;) {
    std::u32string characters;
    while (characters.size() < length)
      characters += text.substr(at, length - characters.size()), at = 0;
    const std::string encoded = encode(characters, *encoding.charset);
    if (encoded.size() <= most) return encoding.mark + encoded;
    length = length * most / encoded.size();
  }
}

// The files of one encoding and size, as long as the program runs.
class TextFiles {
 public:
  TextFiles(const Encoding& encoding, const Size& size)
      : directory_(fs::temp_directory_path() /
                   ("ksv_bench_" + std::to_string(std::random_device()()))) {
    fs::create_directory(directory_);
    const std::u32string& text = texts().front().characters;
    for (size_t i = 0; i < size.files; ++i) {
      const std::string bytes = piece(text, text.size() / size.files * i, encoding, size.bytes);
      paths_.push_back((directory_ / std::to_string(i)).string());
      std::ofstream(paths_.back(), std::ios::binary) << bytes;
      total_ += bytes.size();
    }
  }
  ~TextFiles() { fs::remove_all(directory_); }
  TextFiles(const TextFiles&) = delete;
  TextFiles& operator=(const TextFiles&) = delete;

  const std::vector<std::string>& paths() const { return paths_; }
  size_t bytes() const { return total_; }

 private:
  const fs::path directory_;
  std::vector<std::string> paths_;
  size_t total_ = 0;
};

const TextFiles& textFiles(const Encoding& encoding, const Size& size) {
  static std::map<std::string, std::unique_ptr<TextFiles>> made;
  std::unique_ptr<TextFiles>& files = made[std::string(encoding.name) + size.name];
  if (files == nullptr) files = std::make_unique<TextFiles>(encoding, size);
  return *files;
}

template <typename Detect>
void detectAll(benchmark::State& state, const TextFiles& files, Detect detect) {
  for ([[maybe_unused]] auto _ : state)
    for (const std::string& path : files.paths())
      if (!detect(path)) fail("not detected: " + path);
  const auto rounds = static_cast<int64_t>(state.iterations());
  state.SetItemsProcessed(rounds * static_cast<int64_t>(files.paths().size()));
  state.SetBytesProcessed(rounds * static_cast<int64_t>(files.bytes()));
}

// As the library's own reading: unbuffered, in one call.
size_t readFile(const std::string& path, std::vector<char>& buffer) {
  std::FILE* file = KSV_FileOpen(path.c_str(), "rb");
  std::setvbuf(file, nullptr, _IONBF, 0);
  const int32_t count = KSV_FileRead(buffer.data(), 1, static_cast<int32_t>(buffer.size()), file);
  KSV_FileClose(file);
  return static_cast<size_t>(count);
}

void registerGroup(const std::string& group, const char* language) {
  for (const Encoding& encoding : kEncodings) {
    for (const Size& size : kSizes) {
      const std::string row = group + "/" + encoding.name + "/" + size.name + "/";
      benchmark::RegisterBenchmark(
          (row + "library").c_str(), [=, &encoding, &size](benchmark::State& state) {
            detectAll(state, textFiles(encoding, size), [language](const std::string& path) {
              return dtctText(path.c_str(), language) != KSV_TEXT_FAILURE;
            });
          });
      const std::shared_ptr<DetectorPeer> peer = DetectorPeer::open();
      if (peer == nullptr) continue;
      benchmark::RegisterBenchmark(
          (row + peer->name()).c_str(), [peer, &encoding, &size](benchmark::State& state) {
            std::vector<char> buffer(size.bytes + 1);
            detectAll(state, textFiles(encoding, size), [&](const std::string& path) {
              return peer->detect(buffer.data(), readFile(path, buffer));
            });
          });
    }
  }
}

}  // namespace

void registerDetection() {
  registerGroup("detect", "Japanese");
  registerGroup("detect_without_language", "English");
}

}  // namespace ksv_bench
