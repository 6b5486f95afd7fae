#include "cli/mail/alternatives.h"

namespace ksv_cli {
namespace {

bool isAlternative(const MailPart& part) { return part.type == "multipart/alternative"; }

}  // namespace

Alternatives::Alternatives(const MailMessage& message)
    : message_(message), choices_(message.parts.size()) {
  findParents();
  for (size_t index = 0; index < message_.parts.size(); ++index)
    if (message_.parts[index].isText) choose(index);
}

// Each part stands behind the one it is in, and all between are in that one as well.
void Alternatives::findParents() {
  std::vector<size_t> open;
  for (size_t index = 0; index < message_.parts.size(); ++index) {
    while (!open.empty() && !message_.parts[index].isIn(message_.parts[open.back()]))
      open.pop_back();
    parents_.push_back(open.empty() ? kNone : open.back());
    open.push_back(index);
  }
}

void Alternatives::choose(size_t index) {
  const bool isPlain = message_.parts[index].type == "text/plain";
  for (size_t part = index, outer = parents_[index]; outer != kNone;
       part = outer, outer = parents_[outer]) {
    if (!isAlternative(message_.parts[outer])) continue;
    Choice& choice = choices_[outer];
    if (choice.hasPlainText && !isPlain) continue;
    choice = {part, isPlain};
  }
}

bool Alternatives::isRead(size_t index) const {
  for (size_t part = index, outer = parents_[index]; outer != kNone;
       part = outer, outer = parents_[outer])
    if (isAlternative(message_.parts[outer]) && choices_[outer].part != part) return false;
  return true;
}

bool Alternatives::isBodyOfMessage(size_t index) const {
  const size_t outer = parents_[index];
  return outer == kNone || message_.parts[outer].kind == KSV_MAIL_MESSAGE;
}

}  // namespace ksv_cli
