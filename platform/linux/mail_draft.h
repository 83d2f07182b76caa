#pragma once

#include <string>

#include "platform/date.h"
#include "platform/sharing.h"

namespace veyla {

/// The mail as a message in the form of RFC 5322, with lines that end in CRLF: a draft, which mail
/// programs open for editing. A body that is not HTML is plain text; attachments keep every byte.
/// `sender` is an address, which the form asks for; a mail program puts its own account in place.
std::string mailDraft(const Mail& mail, const std::string& sender, Date date);

/// The user's address: the first of $EMAIL, which may bear a name, where it is a plain one, or else
/// the user's name at this machine.
std::string mailSender();

}  // namespace veyla
