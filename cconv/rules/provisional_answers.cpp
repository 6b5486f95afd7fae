#include "cconv/rules/provisional_answers.h"

namespace ksv {

constinit thread_local bool ProvisionalAnswers::noted_ = false;

}  // namespace ksv
