#pragma once

#include <string>

#include "platform/sharing.h"

namespace veyla::Utils {

bool isEmailConfiguredOnDevice();

/// Tells the log how the mail composer ended, and closes it.
void finishMail(MailResult result, const std::string& error);

/// A link in HTML.
std::string htmlLink(const std::string& address, const std::string& text);

}  // namespace veyla::Utils
