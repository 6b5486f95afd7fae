// Charsets as objects.
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/convert/pipeline.h"
#include "kit/engine.h"
#include "kit/interface/errors.h"
#include "kit/repertoire/charset_facts.h"
#include "ksv.h"

struct ksv_charset : ksv_kit::NamedCharset {
  explicit ksv_charset(ksv_kit::NamedCharset charset) : NamedCharset(std::move(charset)) {}

  const ksv_kit::Repertoire& repertoire() const {
    std::call_once(counted, [this] {
      if (canBeWritten()) found = ksv_kit::repertoireOf(choice);
    });
    return found;
  }

  mutable std::once_flag counted;
  mutable ksv_kit::Repertoire found;
};

namespace ksv_kit {
namespace {

// All of them, kept until the process ends.
using Charsets = std::vector<std::unique_ptr<ksv_charset>>;

const Charsets& charsets() {
  static const Charsets* const all = [] {
    auto made = std::make_unique<Charsets>();
    for (NamedCharset& charset : namedCharsets(Engine::instance().names()))
      made->push_back(std::make_unique<ksv_charset>(std::move(charset)));
    return made.release();
  }();
  return *all;
}

const ksv_charset* charsetNamed(const char* name) {
  const std::optional<CharsetChoice> choice = findWrittenOrRead(Engine::instance().names(), name);
  if (!choice) return nullptr;
  for (const auto& charset : charsets())
    if (charset->choice.name == choice->name) return charset.get();
  return nullptr;
}

template <typename Value, typename Function>
Value unlessThrown(Value otherwise, Function function) noexcept {
  try {
    return function();
  } catch (...) {
    return otherwise;
  }
}

ConversionTask encodingTask(const ksv_charset& charset) {
  ConversionTask task;
  task.source = Engine::instance().names().find("UTF-8").value();
  task.target = charset.choice;
  task.options.outputBigEndian =
      !task.target.hasByteOrder() || task.target.order == ByteOrder::kBig;
  return task;
}

// Calls take() with what the text becomes, piece by piece.
template <typename Take>
ksv_result encode(const ksv_charset& charset, const char* utf8, size_t length, ksv_error* error,
                  Take take) {
  const ConversionTask task = encodingTask(charset);
  Pipeline pipeline(task);
  const auto* text = reinterpret_cast<const uint8_t*>(utf8);
  if (pipeline.takeWhole(text, length, [&](const ByteBuffer& out) { take(out.size()); }))
    return succeed(error);
  const Problem& problem = *pipeline.problem();
  return tell(error, problem, placeIn(task.source, text, length, problem.offset));
}

ksv_result refuseCharset(ksv_error* error, const ksv_charset* charset) {
  if (charset == nullptr) return refuse(error, KSV_BAD_ARGUMENT, "an argument is null");
  return refuse(error, KSV_UNKNOWN_CHARSET,
                charset->listing.display + " can be read, but not written");
}

}  // namespace
}  // namespace ksv_kit

const ksv_charset* ksv_charset_find(const char* name) {
  if (name == nullptr) return nullptr;
  const ksv_charset* const none = nullptr;
  return ksv_kit::unlessThrown(none, [&] { return ksv_kit::charsetNamed(name); });
}

const ksv_charset* ksv_charset_at(size_t index) {
  const ksv_charset* const none = nullptr;
  return ksv_kit::unlessThrown(none, [&] {
    const ksv_kit::Charsets& all = ksv_kit::charsets();
    return index < all.size() ? all[index].get() : none;
  });
}

const char* ksv_charset_name(const ksv_charset* charset) {
  return charset == nullptr ? nullptr : charset->listing.display.c_str();
}

const char* ksv_charset_alias(const ksv_charset* charset, size_t index) {
  if (charset == nullptr || index >= charset->listing.aliases.size()) return nullptr;
  return charset->listing.aliases[index].c_str();
}

const char* ksv_charset_mime_name(const ksv_charset* charset) {
  return charset == nullptr ? nullptr : charset->mimeName();
}

const char* ksv_charset_web_name(const ksv_charset* charset) {
  return charset == nullptr ? nullptr : charset->webName();
}

uint32_t ksv_charset_code_page(const ksv_charset* charset) {
  return charset == nullptr ? 0 : charset->codePage();
}

int ksv_charset_can_be_written(const ksv_charset* charset) {
  return charset != nullptr && charset->canBeWritten();
}

int ksv_charset_is_stateful(const ksv_charset* charset) {
  return charset != nullptr && charset->isStateful();
}

uint32_t ksv_charset_longest_character(const ksv_charset* charset) {
  if (charset == nullptr) return 0;
  return ksv_kit::unlessThrown(0u, [&] { return charset->repertoire().longestCharacter; });
}

ksv_result ksv_charset_repertoire(const ksv_charset* charset, const uint32_t** ranges,
                                  size_t* count, ksv_error* error) {
  if (ranges == nullptr || count == nullptr || charset == nullptr)
    return ksv_kit::refuseCharset(error, nullptr);
  *ranges = nullptr;
  *count = 0;
  if (!charset->canBeWritten()) return ksv_kit::refuseCharset(error, charset);
  return ksv_kit::guarded(error, [&] {
    const ksv_kit::Repertoire& repertoire = charset->repertoire();
    *ranges = repertoire.ranges.data();
    *count = repertoire.ranges.size() / 2;
    return ksv_kit::succeed(error);
  });
}

int ksv_charset_has(const ksv_charset* charset, uint32_t code_point) {
  if (charset == nullptr) return 0;
  return ksv_kit::unlessThrown(false, [&] { return charset->repertoire().has(code_point); });
}

ksv_result ksv_charset_can_hold(const ksv_charset* charset, const char* utf8, size_t length,
                                ksv_error* error) {
  if (charset == nullptr || !charset->canBeWritten()) return ksv_kit::refuseCharset(error, charset);
  if (utf8 == nullptr && length != 0) return ksv_kit::refuseCharset(error, nullptr);
  return ksv_kit::guarded(
      error, [&] { return ksv_kit::encode(*charset, utf8, length, error, [](size_t) {}); });
}

ksv_result ksv_charset_encoded_length(const ksv_charset* charset, const char* utf8, size_t length,
                                      size_t* encoded_length, ksv_error* error) {
  if (encoded_length == nullptr) return ksv_kit::refuseCharset(error, nullptr);
  *encoded_length = 0;
  if (charset == nullptr || !charset->canBeWritten()) return ksv_kit::refuseCharset(error, charset);
  if (utf8 == nullptr && length != 0) return ksv_kit::refuseCharset(error, nullptr);
  return ksv_kit::guarded(error, [&] {
    size_t total = 0;
    const ksv_result result = ksv_kit::encode(*charset, utf8, length, error,
                                              [&total](size_t written) { total += written; });
    if (result == KSV_OK) *encoded_length = total;
    return result;
  });
}
