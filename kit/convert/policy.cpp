#include <cinttypes>

#include "kit/convert/problem.h"
#include "kit/text/formatted.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

std::string eachByte(const char* format, std::string_view bytes) {
  std::string text;
  for (const char byte : bytes)
    text += formatted(format, static_cast<unsigned>(static_cast<unsigned char>(byte)));
  return text;
}

// The character, or of what is none each byte by its number.
std::string byNumber(const Problem& problem, const char* ofCharacter, const char* ofByte) {
  if (problem.codePoint != Problem::kNoCodePoint) return formatted(ofCharacter, problem.codePoint);
  return eachByte(ofByte, problem.bytes);
}

std::string percentEncoded(const Problem& problem) {
  const bool isCharacter = problem.codePoint != Problem::kNoCodePoint;
  return eachByte("%%%02X", isCharacter ? utf8Of(problem.codePoint) : problem.bytes);
}

}  // namespace

std::string messageOf(ProblemKind kind, const std::string& charset, std::string_view bytes) {
  if (kind == ProblemKind::kTruncated) return "the text ends inside a " + charset + " character";
  std::string message = "invalid " + charset;
  if (!bytes.empty())
    message += formatted(" (0x%02X)", static_cast<unsigned>(static_cast<unsigned char>(bytes[0])));
  return message;
}

std::string messageOfLacking(uint32_t character, const std::string& charset) {
  return formatted("U+%04" PRIX32, character) + " is not in " + charset;
}

Answer answerBy(const Policy& policy, const Problem& problem) {
  constexpr auto kWrite = Answer::Kind::kWrite;
  switch (policy.kind) {
    case PolicyKind::kFail:
      return {Answer::Kind::kFail, ""};
    case PolicyKind::kSkip:
      return {Answer::Kind::kLeaveOut, ""};
    case PolicyKind::kHexReference:
      return {kWrite, byNumber(problem, "&#x%" PRIX32 ";", "&#x%X;")};
    case PolicyKind::kDecimalReference:
      return {kWrite, byNumber(problem, "&#%" PRIu32 ";", "&#%u;")};
    case PolicyKind::kEscape:
      return {kWrite, byNumber(problem, "\\u{%" PRIX32 "}", "\\x%02X")};
    case PolicyKind::kPercent:
      return {kWrite, percentEncoded(problem)};
    case PolicyKind::kBuiltIn:
      return {Answer::Kind::kBuiltIn, policy.text};
    case PolicyKind::kAsk:
      return policy.judge(problem);
    case PolicyKind::kReplace:
    case PolicyKind::kLookAlike:
      break;
  }
  return {kWrite, policy.text};
}

}  // namespace ksv_kit
