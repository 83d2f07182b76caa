#pragma once

#include <string>

#include "platform/date.h"
#include "platform/sharing.h"

namespace veyla {

/// The mail as a message in the form of RFC 5322, with lines that end in CRLF: a draft, which mail
/// programs open for editing. It has no sender, whom the mail program knows. A body that is not
/// HTML is plain text; attachments keep every byte.
std::string mailDraft(const Mail& mail, Date date);

}  // namespace veyla
