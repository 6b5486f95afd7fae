// ksv.hpp : ksv.h for C++17 and later. Header only.
//
//     std::string text = ksv::convert("SJIS", "UTF-8", bytes);
//
// What fails throws ksv::Error; whoever wants a value asks try_convert. Objects are owned by their
// variables, are moved and not copied, and may be used as ksv.h says of the handles in them.
#ifndef KSV_HPP
#define KSV_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ksv.h"

namespace ksv {

class Error : public std::runtime_error {
 public:
  explicit Error(const ksv_error& error) : std::runtime_error(error.message), error_(error) {}

  ksv_result result() const noexcept { return static_cast<ksv_result>(error_.result); }
  std::uint64_t offset() const noexcept { return error_.offset; }
  std::uint64_t line() const noexcept { return error_.line; }
  std::uint64_t column() const noexcept { return error_.column; }
  // None where the error is not about a character.
  std::optional<std::uint32_t> code_point() const noexcept {
    if (error_.code_point == KSV_NO_CODE_POINT) return std::nullopt;
    return error_.code_point;
  }
  const ksv_error& value() const noexcept { return error_; }

 private:
  ksv_error error_;
};

namespace detail {

struct Free {
  void operator()(void* block) const noexcept { ksv_free(block); }
};
using Text = std::unique_ptr<char, Free>;

inline void require(ksv_result result, const ksv_error& error) {
  if (result != KSV_OK) throw Error(error);
}

inline std::string taken(char* text) {
  const Text owner(text);
  return owner == nullptr ? std::string() : std::string(owner.get());
}

}  // namespace detail

// The options of ksv.h, with texts and a function that live as long as they do.
class Options {
 public:
  // What is asked about a problem: none ends the conversion, else what is written in its place.
  using Ask = std::function<std::optional<std::string>(const ksv_problem&)>;

  Options& invalid(ksv_policy policy) { return with(values_.invalid, policy); }
  Options& unmappable(ksv_policy policy) { return with(values_.unmappable, policy); }
  Options& invalid(std::string text) {
    invalid_text_ = std::move(text);
    return invalid(KSV_REPLACE);
  }
  Options& unmappable(std::string text) {
    unmappable_text_ = std::move(text);
    return unmappable(KSV_REPLACE);
  }
  // Asked about everything that is invalid or unmappable.
  Options& ask(Ask function) {
    ask_ = std::move(function);
    return invalid(KSV_ASK).unmappable(KSV_ASK);
  }
  Options& newlines(ksv_newline form) { return with(values_.newlines, form); }
  Options& mark(ksv_mark mark) { return with(values_.mark, mark); }
  Options& byte_order(ksv_byte_order order) { return with(values_.byte_order, order); }
  Options& normalization(ksv_normalization form) { return with(values_.normalization, form); }
  Options& widths(std::uint32_t widths) {
    values_.widths = widths;
    return *this;
  }
  Options& profile(std::string name) {
    profile_ = std::move(name);
    return *this;
  }
  Options& profile_text(std::string text) {
    profile_text_ = std::move(text);
    return *this;
  }

  // What holds as long as this object stays where it is.
  ksv_options values() const {
    ksv_options options = values_;
    options.invalid_text = pointer(invalid_text_);
    options.unmappable_text = pointer(unmappable_text_);
    options.profile = pointer(profile_);
    options.profile_text = pointer(profile_text_);
    if (ask_) {
      options.ask = &Options::answer;
      options.ask_context = const_cast<Options*>(this);
    }
    return options;
  }

 private:
  template <typename Value>
  Options& with(std::int32_t& field, Value value) {
    field = static_cast<std::int32_t>(value);
    return *this;
  }
  static const char* pointer(const std::optional<std::string>& text) {
    return text ? text->c_str() : nullptr;
  }
  // An exception of the function's ends the conversion with the problem.
  static std::int32_t answer(void* context, const ksv_problem* problem, const char** text,
                             std::size_t* length) {
    Options& options = *static_cast<Options*>(context);
    try {
      options.answer_ = options.ask_(*problem);
    } catch (...) {
      return KSV_FAIL;
    }
    if (!options.answer_) return KSV_FAIL;
    *text = options.answer_->data();
    *length = options.answer_->size();
    return KSV_REPLACE;
  }

  ksv_options values_ = KSV_OPTIONS_INIT;
  std::optional<std::string> invalid_text_;
  std::optional<std::string> unmappable_text_;
  std::optional<std::string> profile_;
  std::optional<std::string> profile_text_;
  Ask ask_;
  std::optional<std::string> answer_;
};

// What does not change from text to text. Many threads may use one.
class Plan {
 public:
  // A function of the options is asked as long as the plan and its converters are used: the
  // options have to stay where they are.
  Plan(const std::string& from, const std::string& to) : Plan(from, to, nullptr) {}
  Plan(const std::string& from, const std::string& to, const Options& options) {
    const ksv_options values = options.values();
    make(from, to, &values);
  }

  std::string convert(std::string_view input) const {
    char* output = nullptr;
    std::size_t length = 0;
    ksv_error error;
    detail::require(
        ksv_plan_convert(plan_.get(), input.data(), input.size(), &output, &length, &error), error);
    const detail::Text owner(output);
    return {output, length};
  }

  const ksv_plan* handle() const noexcept { return plan_.get(); }

 private:
  struct Delete {
    void operator()(ksv_plan* plan) const noexcept { ksv_plan_free(plan); }
  };

  Plan(const std::string& from, const std::string& to, std::nullptr_t) { make(from, to, nullptr); }
  void make(const std::string& from, const std::string& to, const ksv_options* options) {
    ksv_plan* plan = nullptr;
    ksv_error error;
    detail::require(ksv_plan_new(from.c_str(), to.c_str(), options, &plan, &error), error);
    plan_.reset(plan);
  }

  std::unique_ptr<ksv_plan, Delete> plan_;
};

inline std::string convert(const std::string& from, const std::string& to, std::string_view input) {
  char* output = nullptr;
  std::size_t length = 0;
  ksv_error error;
  detail::require(ksv_convert(from.c_str(), to.c_str(), nullptr, input.data(), input.size(),
                              &output, &length, &error),
                  error);
  const detail::Text owner(output);
  return {output, length};
}

inline std::string convert(const std::string& from, const std::string& to, std::string_view input,
                           const Options& options) {
  return Plan(from, to, options).convert(input);
}

// The text, or the error.
struct Attempt {
  std::string text;
  ksv_error error{};

  explicit operator bool() const noexcept { return error.result == KSV_OK; }
};

inline Attempt try_convert(const std::string& from, const std::string& to, std::string_view input,
                           const Options& options = {}) {
  Attempt attempt;
  char* output = nullptr;
  std::size_t length = 0;
  const ksv_options values = options.values();
  ksv_convert(from.c_str(), to.c_str(), &values, input.data(), input.size(), &output, &length,
              &attempt.error);
  const detail::Text owner(output);
  if (output != nullptr) attempt.text.assign(output, length);
  return attempt;
}

// A text that comes in pieces.
class Converter {
 public:
  explicit Converter(const Plan& plan) {
    ksv_converter* converter = nullptr;
    ksv_error error;
    detail::require(ksv_converter_new(plan.handle(), &converter, &error), error);
    converter_.reset(converter);
  }

  // What becomes of the piece, as far as it can be told yet.
  std::string feed(std::string_view piece) {
    std::string made;
    while (feedSome(piece, made)) {
    }
    return made;
  }

  // What is left of the text. The next piece begins a new one.
  std::string finish() {
    std::string made;
    ksv_result result;
    do {
      Room room(made, 0);
      ksv_error error;
      result =
          ksv_converter_finish(converter_.get(), room.begin(), room.size(), &room.used, &error);
      if (result != KSV_OK && result != KSV_NO_ROOM) throw Error(error);
    } while (result == KSV_NO_ROOM);
    reset();
    return made;
  }

  void reset() noexcept { ksv_converter_reset(converter_.get()); }

  ksv_counts counts() const noexcept {
    ksv_counts counts;
    ksv_converter_counts(converter_.get(), &counts);
    return counts;
  }

 private:
  // Room behind what a text holds, cut to what of it was used.
  struct Room {
    Room(std::string& text, std::size_t wanted) : text_(text), at_(text.size()) {
      constexpr std::size_t kLeast = 256;
      text.resize(at_ + wanted + wanted / 2 + kLeast);
    }
    ~Room() { text_.resize(at_ + used); }
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;

    char* begin() { return &text_[at_]; }
    std::size_t size() const { return text_.size() - at_; }

    std::size_t used = 0;

   private:
    std::string& text_;
    std::size_t at_;
  };

  bool feedSome(std::string_view& piece, std::string& made) {
    Room room(made, piece.size());
    std::size_t used = 0;
    ksv_error error;
    const ksv_result result =
        ksv_converter_feed(converter_.get(), piece.data(), piece.size(), &used, room.begin(),
                           room.size(), &room.used, &error);
    piece.remove_prefix(used);
    if (result != KSV_OK && result != KSV_NO_ROOM) throw Error(error);
    return result == KSV_NO_ROOM;
  }

  struct Delete {
    void operator()(ksv_converter* converter) const noexcept { ksv_converter_free(converter); }
  };
  std::unique_ptr<ksv_converter, Delete> converter_;
};

// What a conversion would lose.
class Report {
 public:
  Report(const std::string& from, const std::string& to, std::string_view text,
         const Options& options = {})
      : Report(from, to, options) {
    feed(text);
    finish();
  }
  Report(const std::string& from, const std::string& to, const Options& options) {
    const ksv_options values = options.values();
    ksv_report* report = nullptr;
    ksv_error error;
    detail::require(ksv_report_new(from.c_str(), to.c_str(), &values, &report, &error), error);
    report_.reset(report);
  }

  void feed(std::string_view piece) {
    ksv_error error;
    detail::require(ksv_report_feed(report_.get(), piece.data(), piece.size(), &error), error);
  }
  void finish() {
    ksv_error error;
    detail::require(ksv_report_finish(report_.get(), &error), error);
  }

  std::size_t size() const noexcept { return ksv_report_count(report_.get()); }
  const ksv_loss& operator[](std::size_t index) const {
    return *ksv_report_loss(report_.get(), index);
  }
  ksv_loss_totals totals() const noexcept {
    ksv_loss_totals totals;
    ksv_report_totals(report_.get(), &totals);
    return totals;
  }
  std::optional<std::string> outcome(std::size_t index, ksv_policy policy) const {
    char* const text = ksv_report_outcome(report_.get(), index, policy);
    if (text == nullptr) return std::nullopt;
    return detail::taken(text);
  }
  std::string json() const { return detail::taken(ksv_report_json(report_.get())); }
  std::string table() const { return detail::taken(ksv_report_table(report_.get())); }

 private:
  struct Delete {
    void operator()(ksv_report* report) const noexcept { ksv_report_free(report); }
  };
  std::unique_ptr<ksv_report, Delete> report_;
};

// A charset of the directory. Cheap to copy.
class Charset {
 public:
  static std::optional<Charset> find(const std::string& name) {
    const ksv_charset* const charset = ksv_charset_find(name.c_str());
    if (charset == nullptr) return std::nullopt;
    return Charset(charset);
  }
  static std::vector<Charset> all() {
    std::vector<Charset> charsets;
    for (std::size_t i = 0; const ksv_charset* charset = ksv_charset_at(i); ++i)
      charsets.push_back(Charset(charset));
    return charsets;
  }

  std::string name() const { return ksv_charset_name(charset_); }
  std::vector<std::string> aliases() const {
    std::vector<std::string> aliases;
    for (std::size_t i = 0; const char* alias = ksv_charset_alias(charset_, i); ++i)
      aliases.emplace_back(alias);
    return aliases;
  }
  std::optional<std::string> mime_name() const { return named(ksv_charset_mime_name(charset_)); }
  std::optional<std::string> web_name() const { return named(ksv_charset_web_name(charset_)); }
  std::uint32_t code_page() const noexcept { return ksv_charset_code_page(charset_); }
  bool can_be_written() const noexcept { return ksv_charset_can_be_written(charset_) != 0; }
  bool is_stateful() const noexcept { return ksv_charset_is_stateful(charset_) != 0; }
  std::uint32_t longest_character() const noexcept {
    return ksv_charset_longest_character(charset_);
  }
  bool has(std::uint32_t code_point) const noexcept {
    return ksv_charset_has(charset_, code_point) != 0;
  }
  bool can_hold(std::string_view utf8) const noexcept {
    return ksv_charset_can_hold(charset_, utf8.data(), utf8.size(), nullptr) == KSV_OK;
  }
  std::size_t encoded_length(std::string_view utf8) const {
    std::size_t length = 0;
    ksv_error error;
    detail::require(ksv_charset_encoded_length(charset_, utf8.data(), utf8.size(), &length, &error),
                    error);
    return length;
  }

 private:
  explicit Charset(const ksv_charset* charset) : charset_(charset) {}
  static std::optional<std::string> named(const char* name) {
    if (name == nullptr) return std::nullopt;
    return std::string(name);
  }

  const ksv_charset* charset_;
};

// The beginning of a text of at most so many bytes, with no character, escape or shift sequence and
// no CR LF cut apart. It lies in the text.
inline std::string_view leading_piece(const std::string& charset, std::string_view text,
                                      std::size_t limit) {
  std::size_t piece = 0;
  ksv_error error;
  detail::require(
      ksv_leading_piece(charset.c_str(), text.data(), text.size(), limit, &piece, &error), error);
  return text.substr(0, piece);
}

// What is known of a text before it is looked at, with texts that live as long as this does.
class Hints {
 public:
  Hints& languages(std::string list) { return with(languages_, std::move(list)); }
  Hints& charsets(std::string list) { return with(charsets_, std::move(list)); }
  Hints& declared(std::string charset) { return with(declared_, std::move(charset)); }
  Hints& file_name(std::string name) { return with(file_name_, std::move(name)); }

  // What holds as long as this object stays where it is.
  ksv_hints values() const {
    ksv_hints hints = KSV_HINTS_INIT;
    hints.languages = pointer(languages_);
    hints.charsets = pointer(charsets_);
    hints.declared = pointer(declared_);
    hints.file_name = pointer(file_name_);
    return hints;
  }

 private:
  Hints& with(std::optional<std::string>& field, std::string text) {
    field = std::move(text);
    return *this;
  }
  static const char* pointer(const std::optional<std::string>& text) {
    return text ? text->c_str() : nullptr;
  }

  std::optional<std::string> languages_;
  std::optional<std::string> charsets_;
  std::optional<std::string> declared_;
  std::optional<std::string> file_name_;
};

// A charset that a text may be in.
struct Guess {
  std::string charset;
  std::optional<std::string> decode_as;  // none: the library cannot read it
  std::string language;                  // empty where nothing tells
  std::string reason;
  double confidence = 0;
  std::optional<std::uint64_t> invalid_offset;
  ksv_line_end line_end = KSV_LINE_ENDS_NONE;
  std::uint32_t mark_length = 0;
};

// What was found out about a text.
struct Detection {
  ksv_content content = KSV_CONTENT_EMPTY;
  bool settled = false;
  std::uint64_t bytes = 0;  // that were looked at
  std::optional<std::string> misread_as;
  std::vector<Guess> guesses;  // the best one first
};

namespace detail {

inline std::optional<std::string> unlessNull(const char* text) {
  if (text == nullptr) return std::nullopt;
  return std::string(text);
}

inline Guess guessOf(const ksv_guess& guess) {
  Guess made;
  made.charset = guess.charset;
  made.decode_as = unlessNull(guess.decode_as);
  made.language = guess.language;
  made.reason = guess.reason;
  made.confidence = guess.confidence;
  if (guess.invalid_offset != KSV_NO_OFFSET) made.invalid_offset = guess.invalid_offset;
  made.line_end = static_cast<ksv_line_end>(guess.line_end);
  made.mark_length = guess.mark_length;
  return made;
}

struct FreeDetection {
  void operator()(ksv_detection* detection) const noexcept { ksv_detection_free(detection); }
};

// Takes over what was found.
inline Detection taken(ksv_detection* found) {
  const std::unique_ptr<ksv_detection, FreeDetection> owner(found);
  ksv_text_facts facts;
  ksv_detection_facts(found, &facts);
  Detection detection;
  detection.content = static_cast<ksv_content>(facts.content);
  detection.settled = facts.settled != 0;
  detection.bytes = facts.bytes;
  detection.misread_as = unlessNull(facts.misread_as);
  for (std::size_t i = 0; const ksv_guess* guess = ksv_detection_guess(found, i); ++i)
    detection.guesses.push_back(guessOf(*guess));
  return detection;
}

}  // namespace detail

inline Detection detect(std::string_view text, const Hints& hints = {}) {
  const ksv_hints values = hints.values();
  ksv_detection* detection = nullptr;
  ksv_error error;
  detail::require(ksv_detect(text.data(), text.size(), &values, &detection, &error), error);
  return detail::taken(detection);
}

// path: UTF-8.
inline Detection detect_file(const std::string& path, const Hints& hints = {}) {
  const ksv_hints values = hints.values();
  ksv_detection* detection = nullptr;
  ksv_error error;
  detail::require(ksv_detect_file(path.c_str(), &values, &detection, &error), error);
  return detail::taken(detection);
}

// A text that comes in pieces, whose charset is to be found out.
class Detector {
 public:
  explicit Detector(const Hints& hints = {}) {
    const ksv_hints values = hints.values();
    ksv_detector* detector = nullptr;
    ksv_error error;
    detail::require(ksv_detector_new(&values, &detector, &error), error);
    detector_.reset(detector);
  }

  // Whether more of the same text would not change the first guess any more.
  bool feed(std::string_view piece) {
    int settled = 0;
    ksv_error error;
    detail::require(
        ksv_detector_feed(detector_.get(), piece.data(), piece.size(), &settled, &error), error);
    return settled != 0;
  }

  // Of what was taken so far. complete: whether that is the whole text.
  Detection verdict(bool complete = true) const {
    ksv_detection* detection = nullptr;
    ksv_error error;
    detail::require(ksv_detector_verdict(detector_.get(), complete ? 1 : 0, &detection, &error),
                    error);
    return detail::taken(detection);
  }

 private:
  struct Delete {
    void operator()(ksv_detector* detector) const noexcept { ksv_detector_free(detector); }
  };
  std::unique_ptr<ksv_detector, Delete> detector_;
};

// A part of a text, of whole lines, in one charset.
struct Segment {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  std::string charset;                   // empty where none fits
  std::optional<std::string> decode_as;  // none: the library cannot read it
  double confidence = 0;
};

// They follow each other without gaps, and hold the whole text.
inline std::vector<Segment> segments(std::string_view text, const Hints& hints = {}) {
  const ksv_hints values = hints.values();
  ksv_segment* found = nullptr;
  std::size_t count = 0;
  ksv_error error;
  detail::require(ksv_segments(text.data(), text.size(), &values, &found, &count, &error), error);
  const std::unique_ptr<ksv_segment, detail::Free> owner(found);
  std::vector<Segment> segments;
  for (std::size_t i = 0; i < count; ++i)
    segments.push_back({found[i].offset, found[i].length,
                        detail::unlessNull(found[i].charset).value_or(""),
                        detail::unlessNull(found[i].decode_as), found[i].confidence});
  return segments;
}

// A text that had been written as UTF-8 twice, and what was done about it.
struct Repair {
  std::string text;
  ksv_repair_counts counts{};
};

// misread_as: what the lines were taken for; none: it is found out.
inline Repair repair(std::string_view utf8,
                     const std::optional<std::string>& misread_as = std::nullopt) {
  Repair repair;
  char* output = nullptr;
  std::size_t length = 0;
  ksv_error error;
  detail::require(ksv_repair(misread_as ? misread_as->c_str() : nullptr, utf8.data(), utf8.size(),
                             &output, &length, &repair.counts, &error),
                  error);
  const detail::Text owner(output);
  repair.text.assign(output, length);
  return repair;
}

// An entry of a document's tree.
struct Entry {
  std::string name;           // as ksv_entry has it: control characters are escaped
  std::u16string name_units;  // as it stands in the document
  ksv_entry_kind kind = KSV_ENTRY_ROOT;
  std::uint32_t id = 0;
  std::optional<std::uint32_t> parent;  // its index
  std::uint64_t size = 0;
  std::uint64_t created = 0;  // FILETIME; 0: not told
  std::uint64_t modified = 0;
  std::array<std::uint8_t, 16> class_id{};
  std::uint32_t state_bits = 0;
  bool is_orphan = false;
};

// An open compound document. One thread at a time may use it.
class Document {
 public:
  static Document open(const std::string& path) {
    return opened([&](ksv_document** document, ksv_error* error) {
      return ksv_document_open(path.c_str(), document, error);
    });
  }
  // On Windows a HANDLE. It stays open, and has to, as long as the document is.
  static Document open_descriptor(std::intptr_t descriptor) {
    return opened([&](ksv_document** document, ksv_error* error) {
      return ksv_document_open_descriptor(descriptor, document, error);
    });
  }
  // The bytes have to stay where they are.
  static Document open_memory(std::string_view bytes) {
    return opened([&](ksv_document** document, ksv_error* error) {
      return ksv_document_open_memory(bytes.data(), bytes.size(), document, error);
    });
  }

  ksv_document_facts facts() const {
    ksv_document_facts facts;
    ksv_document_get_facts(document_.get(), &facts);
    return facts;
  }

  // The root is 0, and orphans are the last.
  std::size_t entry_count() const { return ksv_document_entry_count(document_.get()); }
  Entry entry(std::size_t index) const {
    const ksv_entry* found = ksv_document_entry(document_.get(), index);
    if (found == nullptr) throw std::out_of_range("there is no entry of that index");
    Entry entry;
    entry.name = found->name;
    entry.name_units.assign(found->name_units, found->name_units + found->name_length);
    entry.kind = static_cast<ksv_entry_kind>(found->kind);
    entry.id = found->id;
    if (found->parent != KSV_NO_ENTRY) entry.parent = found->parent;
    entry.size = found->size;
    entry.created = found->created;
    entry.modified = found->modified;
    for (std::size_t i = 0; i < entry.class_id.size(); ++i) entry.class_id[i] = found->class_id[i];
    entry.state_bits = found->state_bits;
    entry.is_orphan = found->is_orphan != 0;
    return entry;
  }

  // The index of the entry at a path.
  std::optional<std::uint32_t> find(const std::string& path) const {
    std::uint32_t index = 0;
    ksv_error error;
    detail::require(ksv_document_find(document_.get(), path.c_str(), &index, &error), error);
    if (index == KSV_NO_ENTRY) return std::nullopt;
    return index;
  }
  std::string path(std::uint32_t index) const {
    char* path = nullptr;
    ksv_error error;
    detail::require(ksv_document_path(document_.get(), index, &path, &error), error);
    return detail::taken(path);
  }

  // At most so many bytes of a stream from an offset on; fewer only behind its end.
  std::string read(std::uint32_t index, std::uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t length = 0;
    ksv_error error;
    detail::require(
        ksv_document_read(document_.get(), index, offset, bytes.data(), count, &length, &error),
        error);
    bytes.resize(length);
    return bytes;
  }

  // Comes upon all that is wrong; without it damages are those that reading came upon.
  void check() {
    ksv_error error;
    detail::require(ksv_document_check(document_.get(), &error), error);
  }
  std::vector<ksv_damage> damages() const {
    std::vector<ksv_damage> damages;
    ksv_damage damage;
    for (std::size_t i = 0; ksv_document_damage(document_.get(), i, &damage) != 0; ++i)
      damages.push_back(damage);
    return damages;
  }

  ksv_document* handle() const noexcept { return document_.get(); }

 private:
  struct Delete {
    void operator()(ksv_document* document) const noexcept { ksv_document_close(document); }
  };

  template <typename Open>
  static Document opened(Open open) {
    ksv_document* document = nullptr;
    ksv_error error;
    detail::require(open(&document, &error), error);
    return Document(document);
  }
  explicit Document(ksv_document* document) : document_(document) {}

  std::unique_ptr<ksv_document, Delete> document_;
};

// Which kind of document it is.
struct DocumentKind {
  std::string name;  // "word"; empty: nothing is known
  std::string description;
  double confidence = 0;
  bool has_macros = false;
  bool is_encrypted = false;
  std::optional<bool> is_template;
};

inline DocumentKind kind_of(Document& document) {
  ksv_document_kind found;
  ksv_error error;
  detail::require(ksv_document_get_kind(document.handle(), &found, &error), error);
  DocumentKind kind;
  if (found.name != nullptr) kind.name = found.name;
  if (found.description != nullptr) kind.description = found.description;
  kind.confidence = found.confidence;
  kind.has_macros = found.has_macros != 0;
  kind.is_encrypted = found.is_encrypted != 0;
  if (found.is_template >= 0) kind.is_template = found.is_template != 0;
  return kind;
}

// The property sets of a document. What its functions give points into it.
class Properties {
 public:
  static Properties of(Document& document, ksv_property_scope scope = KSV_PROPERTIES_KNOWN) {
    return made([&](ksv_properties** properties, ksv_error* error) {
      return ksv_document_properties(document.handle(), scope, properties, error);
    });
  }
  // Of the bytes of one set.
  static Properties read(std::string_view bytes) {
    return made([&](ksv_properties** properties, ksv_error* error) {
      return ksv_properties_read(bytes.data(), bytes.size(), properties, error);
    });
  }

  std::vector<ksv_property_section> sections() const {
    std::vector<ksv_property_section> sections;
    for (std::size_t i = 0; i < ksv_properties_section_count(properties_.get()); ++i)
      sections.push_back(*ksv_properties_section(properties_.get(), i));
    return sections;
  }
  // Of a section.
  std::vector<ksv_property> properties(std::size_t section) const {
    std::vector<ksv_property> properties;
    while (const ksv_property* found =
               ksv_properties_at(properties_.get(), section, properties.size()))
      properties.push_back(*found);
    return properties;
  }
  // By its key, or by the name that users have given it; null: there is none.
  const ksv_property* find(const std::string& key) const noexcept {
    return ksv_properties_find(properties_.get(), key.c_str());
  }
  // The same of a text.
  std::optional<std::string> text(const std::string& key) const {
    const ksv_property* found = find(key);
    if (found == nullptr || found->value.form != KSV_VALUE_TEXT) return std::nullopt;
    return std::string(found->value.text, found->value.text_length);
  }
  // The elements of a vector or an array that find() has given.
  std::vector<ksv_property_value> elements(const ksv_property* property) const {
    std::vector<ksv_property_value> elements;
    ksv_property_value element;
    while (ksv_properties_element(properties_.get(), property, elements.size(), &element) != 0)
      elements.push_back(element);
    return elements;
  }
  std::vector<ksv_property_damage> damages() const {
    std::vector<ksv_property_damage> damages;
    while (const ksv_property_damage* damage =
               ksv_properties_damage(properties_.get(), damages.size()))
      damages.push_back(*damage);
    return damages;
  }

  const ksv_properties* handle() const noexcept { return properties_.get(); }

 private:
  struct Delete {
    void operator()(ksv_properties* properties) const noexcept { ksv_properties_free(properties); }
  };

  template <typename Make>
  static Properties made(Make make) {
    ksv_properties* properties = nullptr;
    ksv_error error;
    detail::require(make(&properties, &error), error);
    return Properties(properties);
  }
  explicit Properties(ksv_properties* properties) : properties_(properties) {}

  std::unique_ptr<ksv_properties, Delete> properties_;
};

}  // namespace ksv

#endif
