// The mail reader, which stands in a module of its own.
#pragma once

#include "cli/mail_module/mail_module.h"

namespace ksv_cli {

// Throws UsageError where it is not installed, or belongs to another build.
const ksv_mail_reader& loadedMailReader();

}  // namespace ksv_cli
