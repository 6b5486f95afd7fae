// The judge of charsets, on texts that people wrote: bytes in memory, one text after the other. The
// texts are the held-out ones that scripts/judge/training_texts.py has put into the folder that
// KSV_BENCH_TEXTS names; without it nothing is measured.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/detector_peer.h"
#include "bench/text.h"
#include "ksv.h"

namespace ksv_bench {
namespace {

namespace fs = std::filesystem;

struct Kind {
  const char* language;  // the folder of its texts
  const char* charset;
  const char* iconv;
};
const Kind kKinds[] = {{"ja", "Shift_JIS", "CP932"},     {"ja", "EUC-JP", "EUC-JP"},
                       {"ja", "UTF-8", "UTF-8"},         {"ru", "windows-1251", "CP1251"},
                       {"de", "windows-1252", "CP1252"}, {"en", "US-ASCII", "ASCII"}};

struct Size {
  const char* name;
  size_t bytes;
  size_t texts;
};
constexpr Size kSizes[] = {{"1_KB", 1024, 256}, {"64_KB", 64 * 1024, 32}, {"4_MB", 4 << 20, 1}};

// The lines of a language's held-out texts, in the order of the files' names.
std::vector<std::string> linesOf(const fs::path& folder) {
  std::vector<fs::path> paths;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> lines;
  for (const fs::path& path : paths) {
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) lines.push_back(line + "\n");
  }
  return lines;
}

class Encoder {
 public:
  explicit Encoder(const char* charset) : handle_(iconv_open(charset, "UTF-8")) {}
  ~Encoder() { iconv_close(handle_); }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  // Empty where the charset does not have the line.
  std::string encode(std::string line) {
    std::string bytes(2 * line.size(), 0);
    char* in = line.data();
    char* out = bytes.data();
    size_t left = line.size();
    size_t room = bytes.size();
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(handle_, &in, &left, &out, &room) != 0) return {};
    bytes.resize(bytes.size() - room);
    return bytes;
  }

 private:
  const iconv_t handle_;
};

// All lines that the charset has.
std::string wholeText(const fs::path& folder, const Kind& kind) {
  Encoder encoder(kind.iconv);
  std::string whole;
  for (const std::string& line : linesOf(folder / kind.language / "held"))
    whole += encoder.encode(line);
  if (whole.empty()) fail(std::string("no text in ") + kind.charset);
  return whole;
}

// Pieces from the starts of lines all over the text, which is taken again where it is too short.
std::vector<std::string> piecesOf(const std::string& whole, const Size& size) {
  std::vector<std::string> pieces;
  for (size_t i = 0; i < size.texts; ++i) {
    const size_t start = whole.find('\n', whole.size() / (size.texts + 1) * i) + 1;
    std::string piece = whole.substr(start, size.bytes);
    while (piece.size() < size.bytes) piece += whole.substr(0, size.bytes - piece.size());
    // No character is cut: the text ends with a line.
    piece.resize(piece.rfind('\n') + 1);
    if (!piece.empty()) pieces.push_back(piece);
  }
  return pieces;
}

bool judged(const std::string& text) {
  ksv_detection* detection = nullptr;
  if (ksv_detect(text.data(), text.size(), nullptr, &detection, nullptr) != KSV_OK) return false;
  const bool named = ksv_detection_count(detection) > 0;
  ksv_detection_free(detection);
  return named;
}

using Pieces = std::shared_ptr<const std::vector<std::string>>;

template <typename Judge>
void judgeAll(benchmark::State& state, const Pieces& pieces, Judge judge) {
  size_t bytes = 0;
  size_t named = 0;
  for (const std::string& piece : *pieces) bytes += piece.size();
  for ([[maybe_unused]] auto _ : state)
    for (const std::string& piece : *pieces) named += judge(piece) ? 1 : 0;
  // A peer may name nothing for a text; a contestant that never names anything measures nothing.
  if (named == 0) fail("no text was named");
  const auto rounds = static_cast<int64_t>(state.iterations());
  state.SetItemsProcessed(rounds * static_cast<int64_t>(pieces->size()));
  state.SetBytesProcessed(rounds * static_cast<int64_t>(bytes));
}

void registerRow(const std::string& row, const Pieces& pieces) {
  benchmark::RegisterBenchmark((row + "library").c_str(),
                               [=](benchmark::State& state) { judgeAll(state, pieces, judged); });
  const std::shared_ptr<DetectorPeer> peer = DetectorPeer::open();
  if (peer == nullptr) return;
  benchmark::RegisterBenchmark((row + peer->name()).c_str(), [=](benchmark::State& state) {
    judgeAll(state, pieces,
             [&](const std::string& piece) { return peer->detect(piece.data(), piece.size()); });
  });
}

}  // namespace

void registerJudge() {
  const char* folder = std::getenv("KSV_BENCH_TEXTS");
  if (folder == nullptr) return;
  for (const Kind& kind : kKinds) {
    const std::string whole = wholeText(folder, kind);
    for (const Size& size : kSizes)
      registerRow(std::string("judge/") + kind.charset + "/" + size.name + "/",
                  std::make_shared<const std::vector<std::string>>(piecesOf(whole, size)));
  }
}

}  // namespace ksv_bench
