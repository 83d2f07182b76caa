#pragma once

#include <string>

#include "platform/date.h"
#include "platform/sharing.h"

namespace veyla {

/// Whom a mail is from.
struct Sender {
  /// In UTF-8; may be empty.
  std::string name;
  std::string address;
};

/// What writes mails, as the functions of these names in `platform/linux/mail_draft.h`.
struct Mails {
  std::string (*mailDraft)(const Mail& mail, const Sender& sender, Date date);
  Sender (*mailSender)();
};

/// The ones there are. The program opens them as a module when they are first asked for; tests and
/// tools are linked with them.
const Mails& mails();

}  // namespace veyla
