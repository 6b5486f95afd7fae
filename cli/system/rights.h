// What the command is allowed to do, and does not need.
#pragma once

namespace ksv_cli::platform {

// To be called once, before any thread starts: from here on the system refuses this process what
// nobody wants of it who hands it a text, should a text make it ask: to start programs, to talk to
// others, and to look into them. Where the system knows no such refusal, all stays as it is.
void dropUnneededRights() noexcept;

}  // namespace ksv_cli::platform
