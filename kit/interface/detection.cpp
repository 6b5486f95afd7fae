// Detection, segments and repair.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/platform.h"
#include "common/stream.h"
#include "kit/engine.h"
#include "kit/interface/errors.h"
#include "kit/judge/detector.h"
#include "kit/judge/misreading.h"
#include "kit/judge/segments.h"
#include "kit/text/unicode_check.h"
#include "ksv.h"

using ksv_kit::judge::Bytes;
using ksv_kit::judge::Hints;

struct ksv_detection {
  ksv_kit::judge::Detection found;
  std::vector<ksv_guess> guesses;
};

struct ksv_detector {
  explicit ksv_detector(Hints hints) : detector(std::move(hints)) {}
  ksv_kit::judge::Detector detector;
};

namespace ksv_kit {
namespace {

std::vector<std::string> separated(const char* list) {
  std::vector<std::string> names;
  std::string name;
  for (const char* c = list; c != nullptr; ++c) {
    if (*c != ',' && *c != ' ' && *c != 0) {
      name.push_back(*c);
      continue;
    }
    if (!name.empty()) names.push_back(std::exchange(name, {}));
    if (*c == 0) break;
  }
  return names;
}

std::string textOf(const char* text) { return text == nullptr ? std::string() : text; }

// The size says which fields there are: none yet beyond the first.
Hints hintsOf(const ksv_hints* given) {
  Hints hints;
  if (given == nullptr || given->size < sizeof(ksv_hints)) return hints;
  hints.languages = textOf(given->languages);
  hints.charsets = separated(given->charsets);
  hints.declared = textOf(given->declared);
  hints.fileName = textOf(given->file_name);
  return hints;
}

ksv_guess guessOf(const judge::Guess& found) {
  ksv_guess guess{};
  guess.charset = found.charset.c_str();
  guess.decode_as = found.decodeAs.empty() ? nullptr : found.decodeAs.c_str();
  guess.language = found.language.c_str();
  guess.reason = found.reason.c_str();
  guess.confidence = found.confidence;
  guess.invalid_offset = found.invalidOffset;
  guess.line_end = found.lineEnd;
  guess.mark_length = found.markLength;
  return guess;
}

void give(judge::Detection found, ksv_detection** detection) {
  auto made = std::make_unique<ksv_detection>();
  made->found = std::move(found);
  made->guesses.reserve(made->found.guesses.size());
  for (const judge::Guess& guess : made->found.guesses) made->guesses.push_back(guessOf(guess));
  *detection = made.release();
}

Bytes bytesAt(const void* text, size_t length) {
  return {static_cast<const uint8_t*>(text), length};
}

// Names that outlive every detection.
const char* kept(const std::string& name) {
  static std::mutex* const mutex = new std::mutex;
  static auto* const names = new std::set<std::string>;
  if (name.empty()) return nullptr;
  const std::lock_guard<std::mutex> lock(*mutex);
  return names->insert(name).first->c_str();
}

struct Freed {
  void operator()(void* block) const { std::free(block); }
};
template <typename Type>
using Block = std::unique_ptr<Type, Freed>;

template <typename Type>
Block<Type> allocated(size_t count) {
  Block<Type> block(static_cast<Type*>(std::malloc(count * sizeof(Type))));
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

ksv_segment segmentOf(const judge::Segment& found) {
  ksv_segment segment{};
  segment.offset = found.offset;
  segment.length = found.length;
  segment.charset = kept(found.charset);
  segment.decode_as = kept(found.decodeAs);
  segment.confidence = found.confidence;
  return segment;
}

// As much of the file as settles it. False: it cannot be read.
bool takeFile(const char* path, judge::Detector& detector) {
  const ksv::Stream file(ksv::platform::openFile(path, "rb"));
  if (file == nullptr) return false;
  constexpr size_t kBlock = 64 * 1024;
  std::vector<uint8_t> block(kBlock);
  while (!detector.isSettled()) {
    const size_t count = std::fread(block.data(), 1, block.size(), file.get());
    detector.take(block.data(), count);
    if (count < block.size()) return std::ferror(file.get()) == 0;
  }
  return true;
}

bool isNoText(const void* text, size_t length) { return text == nullptr && length != 0; }

constexpr char kNull[] = "an argument is null";
constexpr char kNoText[] = "there is no text, and it has a length";

}  // namespace
}  // namespace ksv_kit

using namespace ksv_kit;

ksv_result ksv_detect(const void* text, size_t length, const ksv_hints* hints,
                      ksv_detection** detection, ksv_error* error) {
  if (detection == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *detection = nullptr;
  if (isNoText(text, length)) return refuse(error, KSV_BAD_ARGUMENT, kNoText);
  return guarded(error, [&] {
    judge::Detection found;
    Engine::refusingFaults(
        [&](const Engine&) { found = judge::detect(bytesAt(text, length), hintsOf(hints)); });
    give(std::move(found), detection);
    return succeed(error);
  });
}

ksv_result ksv_detect_file(const char* path, const ksv_hints* hints, ksv_detection** detection,
                           ksv_error* error) {
  if (path == nullptr || detection == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *detection = nullptr;
  return guarded(error, [&] {
    Hints known = hintsOf(hints);
    if (known.fileName.empty()) known.fileName = path;
    judge::Detection found;
    bool isRead = false;
    Engine::refusingFaults([&](const Engine&) {
      judge::Detector detector(std::move(known));
      isRead = takeFile(path, detector);
      if (isRead) found = detector.verdict(true);
    });
    if (!isRead) return refuse(error, KSV_SYSTEM, std::string(path) + " cannot be read");
    give(std::move(found), detection);
    return succeed(error);
  });
}

void ksv_detection_free(ksv_detection* detection) { delete detection; }

size_t ksv_detection_count(const ksv_detection* detection) {
  return detection == nullptr ? 0 : detection->guesses.size();
}

const ksv_guess* ksv_detection_guess(const ksv_detection* detection, size_t index) {
  if (detection == nullptr || index >= detection->guesses.size()) return nullptr;
  return &detection->guesses[index];
}

void ksv_detection_facts(const ksv_detection* detection, ksv_text_facts* facts) {
  if (detection == nullptr || facts == nullptr) return;
  const judge::Detection& found = detection->found;
  *facts = {found.content, found.isSettled ? 1 : 0, found.bytes,
            found.misreadAs.empty() ? nullptr : found.misreadAs.c_str()};
}

ksv_result ksv_detector_new(const ksv_hints* hints, ksv_detector** detector, ksv_error* error) {
  if (detector == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *detector = nullptr;
  return guarded(error, [&] {
    *detector = std::make_unique<ksv_detector>(hintsOf(hints)).release();
    return succeed(error);
  });
}

void ksv_detector_free(ksv_detector* detector) { delete detector; }

ksv_result ksv_detector_feed(ksv_detector* detector, const void* text, size_t length, int* settled,
                             ksv_error* error) {
  if (detector == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  if (isNoText(text, length)) return refuse(error, KSV_BAD_ARGUMENT, kNoText);
  return guarded(error, [&] {
    Engine::refusingFaults(
        [&](const Engine&) { detector->detector.take(static_cast<const uint8_t*>(text), length); });
    if (settled != nullptr) *settled = detector->detector.isSettled() ? 1 : 0;
    return succeed(error);
  });
}

ksv_result ksv_detector_verdict(const ksv_detector* detector, int complete,
                                ksv_detection** detection, ksv_error* error) {
  if (detector == nullptr || detection == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *detection = nullptr;
  return guarded(error, [&] {
    judge::Detection found;
    Engine::refusingFaults(
        [&](const Engine&) { found = detector->detector.verdict(complete != 0); });
    give(std::move(found), detection);
    return succeed(error);
  });
}

ksv_result ksv_segments(const void* text, size_t length, const ksv_hints* hints,
                        ksv_segment** segments, size_t* count, ksv_error* error) {
  if (segments == nullptr || count == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *segments = nullptr;
  *count = 0;
  if (isNoText(text, length)) return refuse(error, KSV_BAD_ARGUMENT, kNoText);
  return guarded(error, [&] {
    std::vector<judge::Segment> found;
    Engine::refusingFaults(
        [&](const Engine&) { found = judge::segmentsOf(bytesAt(text, length), hintsOf(hints)); });
    if (found.empty()) return succeed(error);
    Block<ksv_segment> block = allocated<ksv_segment>(found.size());
    for (size_t i = 0; i < found.size(); ++i) block.get()[i] = segmentOf(found[i]);
    *count = found.size();
    *segments = block.release();
    return succeed(error);
  });
}

ksv_result ksv_repair(const char* misread_as, const char* utf8, size_t length, char** output,
                      size_t* output_length, ksv_repair_counts* counts, ksv_error* error) {
  if (output == nullptr || output_length == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNull);
  *output = nullptr;
  *output_length = 0;
  if (isNoText(utf8, length)) return refuse(error, KSV_BAD_ARGUMENT, kNoText);
  return guarded(error, [&] {
    const Bytes text = bytesAt(utf8, length);
    const ScanResult scanned = scanUnicode(UnicodeForm::kUtf8, false, text.data(), text.size());
    if (scanned.end != ScanEnd::kAll) {
      refuse(error, KSV_INVALID, "the text is not UTF-8");
      if (error != nullptr) error->offset = scanned.wellFormed;
      return KSV_INVALID;
    }
    std::string charset;
    if (misread_as != nullptr) {
      const auto choice = Engine::instance().names().findSource(misread_as);
      if (!choice)
        return refuse(error, KSV_UNKNOWN_CHARSET, Engine::instance().names().unknown(misread_as));
      charset = choice->display;
    }
    judge::RepairCounts repairs;
    std::string repaired;
    Engine::refusingFaults(
        [&](const Engine&) { repaired = judge::repaired(text, charset, repairs); });
    Block<char> block = allocated<char>(repaired.size() + 1);
    std::memcpy(block.get(), repaired.c_str(), repaired.size() + 1);
    if (counts != nullptr)
      *counts = {repairs.repaired,  repairs.lost,          repairs.ambiguous,
                 repairs.firstLeft, repairs.firstLeftLine, kept(repairs.misreadAs)};
    *output_length = repaired.size();
    *output = block.release();
    return succeed(error);
  });
}
