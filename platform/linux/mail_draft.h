#pragma once

#include <string>

#include "platform/linux/mails.h"

namespace veyla {

/// The mail as a message in the form of RFC 5322, with lines that end in CRLF: a draft, which mail
/// programs open for editing. A body that is not HTML is plain text; attachments keep every byte.
/// The form asks for a sender; a mail program puts its own account in place.
std::string mailDraft(const Mail& mail, const Sender& sender, Date date);

/// The user: the first of $EMAIL where its address is a plain one, or else the user's name at this
/// machine.
Sender mailSender();

}  // namespace veyla

/// Mails by GMime: what the module's file is asked for, by this name.
extern "C" const veyla::Mails* veylaGmimeMails();
