#include "kit/convert/refusal_stage.h"

#include <utility>

#include "kit/unicode/utf8_text.h"

namespace ksv_kit {

RefusalStage::RefusalStage(RefusedCharacters refused, ProblemKind kind, const Policy& policy,
                           std::string charset, LookAlikes lookAlikes)
    : refused_(std::move(refused)),
      kind_(kind),
      policy_(policy),
      charset_(std::move(charset)),
      lookAlikes_(lookAlikes) {}

// Of look-alikes the first that is not refused as well; whether the target has it is seen behind.
std::string RefusalStage::textOf(const Answer& answer, uint32_t character) const {
  if (answer.kind == Answer::Kind::kBuiltIn) return "?";
  if (policy_.kind != PolicyKind::kLookAlike || lookAlikes_ == nullptr) return answer.text;
  for (const std::string& candidate : lookAlikes_(character))
    if (!refusesAnyOf(candidate)) return candidate;
  return answer.text;
}

bool RefusalStage::refusesAnyOf(std::string_view text) const {
  for (size_t at = 0; at < text.size(); at += utf8LengthOf(text[at]))
    if (refused_.refuses(firstCharacter(text.substr(at)))) return true;
  return false;
}

void RefusalStage::restart() {
  links_ = {};
  taken_ = made_ = pieceBegin_ = 0;
  counts_ = {};
  forgetProblem();
}

bool RefusalStage::take(const uint8_t* bytes, size_t size, PieceEnd, ByteBuffer& out) {
  links_.forgetBefore(pieceBegin_);
  pieceBegin_ = made_;
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  size_t copied = 0;
  const auto copyUpTo = [&](size_t at) {
    links_.add(made_, taken_ + copied);
    out.append(text.substr(copied, at - copied));
    made_ += at - copied;
  };
  for (size_t at = 0; at < size;) {
    const size_t length = utf8LengthOf(text[at]);
    const char32_t character = firstCharacter(text.substr(at));
    if (refused_.refuses(character)) {
      copyUpTo(at);
      if (!answer(character, length, taken_ + at, out)) return false;
      copied = at + length;
    }
    at += length;
  }
  copyUpTo(size);
  taken_ += size;
  return true;
}

bool RefusalStage::answer(uint32_t character, size_t length, uint64_t at, ByteBuffer& out) {
  const Problem problem = problemOf(character, at);
  const Answer answer = answerBy(policy_, problem);
  if (answer.kind == Answer::Kind::kFail) return fail(problem);
  (kind_ == ProblemKind::kInvalid ? counts_.invalidBytes : counts_.unmappable) +=
      kind_ == ProblemKind::kInvalid ? length : 1;
  const std::string text = textOf(answer, character);
  links_.add(made_, at);
  out.append(text);
  made_ += text.size();
  return true;
}

Problem RefusalStage::problemOf(uint32_t character, uint64_t at) const {
  Problem problem;
  problem.kind = kind_;
  problem.offset = placeInText(at);
  if (kind_ == ProblemKind::kUnmappable) problem.codePoint = character;
  problem.message = messageOfLacking(character, charset_);
  problem.bytes = utf8Of(static_cast<char32_t>(character));
  return problem;
}

}  // namespace ksv_kit
