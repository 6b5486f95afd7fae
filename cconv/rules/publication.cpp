#include "cconv/rules/publication.h"

namespace ksv {

constinit std::atomic<PublicationPause> publicationPauseForTests = nullptr;

}  // namespace ksv
