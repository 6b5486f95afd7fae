// Has a stored message taken apart by the mail reader.
#pragma once

#include <memory>

#include "cli/mail/mail_charsets.h"
#include "cli/mail/mail_message.h"
#include "cli/mail/part_saver.h"
#include "cli/mail/stored_message.h"
#include "cli/mail_module/mail_module.h"

namespace ksv_cli {

// saver: for the parts that have a file name; null: none is saved. Throws Failure.
MailMessage readMessage(const ksv_mail_reader& reader, const MailCharsets& charsets,
                        StoredMessage& stored, PartSaver* saver);

}  // namespace ksv_cli
