// The beginning of a text.
#include <optional>

#include "kit/convert/leading_piece.h"
#include "kit/engine.h"
#include "kit/interface/errors.h"
#include "ksv.h"

ksv_result ksv_leading_piece(const char* charset, const void* text, size_t length, size_t limit,
                             size_t* piece, ksv_error* error) {
  using namespace ksv_kit;
  if (piece == nullptr) return refuse(error, KSV_BAD_ARGUMENT, "an argument is null");
  *piece = 0;
  if (charset == nullptr) return refuse(error, KSV_BAD_ARGUMENT, "no charset is named");
  if (text == nullptr && length != 0)
    return refuse(error, KSV_BAD_ARGUMENT, "there is no text, and it has a length");
  return guarded(error, [&] {
    std::optional<CharsetChoice> choice;
    Engine::refusingFaults([&](const Engine& engine) {
      choice = engine.names().findSource(charset);
      if (!choice) return;
      *piece = leadingPiece(*choice, static_cast<const uint8_t*>(text), length, limit);
    });
    if (choice) return succeed(error);
    return refuse(error, KSV_UNKNOWN_CHARSET, Engine::instance().names().unknown(charset));
  });
}
