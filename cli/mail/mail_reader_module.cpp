#include "cli/mail/mail_reader_module.h"

#include <string>

#include "cli/system/failure.h"
#include "cli/system/loadable_module.h"

namespace ksv_cli {

const ksv_mail_reader& loadedMailReader() {
  try {
    const auto function = reinterpret_cast<ksv_mail_reader_function>(
        platform::functionOfModule("ksv_mail", KSV_MAIL_READER_FUNCTION));
    const ksv_mail_reader* reader = function();
    if (reader->interface_number != KSV_MAIL_INTERFACE)
      throw UsageError("it is of another build than this command");
    return *reader;
  } catch (const UsageError& error) {
    throw UsageError(std::string("there is no mail reader: ") + error.what());
  }
}

}  // namespace ksv_cli
