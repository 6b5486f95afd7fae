// What keeps a text from being converted, and what may be done about it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ksv_kit {

enum class ProblemKind {
  kInvalid,     // bytes that are no character of the source charset
  kTruncated,   // the text ends inside a character
  kUnmappable,  // a character that the target charset does not have
  kTooLong      // a single thing that is longer than any text has it
};

struct Problem {
  static constexpr uint32_t kNoCodePoint = 0xFFFFFFFF;

  ProblemKind kind = ProblemKind::kInvalid;
  uint64_t offset = 0;                // of the first byte, in the text as it came
  std::string bytes;                  // those that are concerned, as far as they are at hand
  uint32_t codePoint = kNoCodePoint;  // of a character that cannot be written
  std::string message;                // one line, without the offset
};

// What to say of bytes that are no text of the charset.
std::string messageOf(ProblemKind kind, const std::string& charset, std::string_view bytes);

// What to say of a character that the charset does not have.
std::string messageOfLacking(uint32_t character, const std::string& charset);

// What is done about one problem.
struct Answer {
  enum class Kind {
    kFail,  // the conversion ends with the problem
    kLeaveOut,
    kWrite,   // the text stands in its place
    kBuiltIn  // the replacement of the engine, which knows a narrow and a wide one
  };
  Kind kind = Kind::kFail;
  std::string text;  // UTF-8
};

// Asked about every problem. A judge may be asked by one thread at a time.
using ProblemJudge = std::function<Answer(const Problem&)>;

enum class PolicyKind {
  kFail,
  kSkip,
  kReplace,           // by the policy's text
  kHexReference,      // &#x3042;
  kDecimalReference,  // &#12354;
  kEscape,            // \u{3042}, and \xE3 for bytes
  kPercent,           // %E3%81%82: the bytes; of a character those of its UTF-8
  kLookAlike,         // what looks most like it, else the policy's text
  kBuiltIn,
  kAsk  // a judge
};

struct Policy {
  PolicyKind kind = PolicyKind::kFail;
  std::string text;    // UTF-8
  ProblemJudge judge;  // for kAsk

  // Whether it has to be known where the problem is, which costs something to find out.
  bool needsPlace() const {
    return kind == PolicyKind::kAsk || kind == PolicyKind::kFail || kind == PolicyKind::kBuiltIn;
  }
};

// What a policy that asks nobody writes for the problem.
Answer answerBy(const Policy& policy, const Problem& problem);

}  // namespace ksv_kit
