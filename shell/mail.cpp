#include "shell/mail.h"

#include "platform/platform.h"

namespace veyla::Utils {

bool isEmailConfiguredOnDevice() { return services().sharing.canSendMail(); }

void finishMail(MailResult result, const std::string& error) {
  switch (result) {
    case MailResult::cancelled:
      logLine("Mail cancelled");
      break;
    case MailResult::saved:
      logLine("Mail saved");
      break;
    case MailResult::sent:
      logLine("Mail sent");
      break;
    case MailResult::failed:
      logLine("Mail sent failure: %s", error.c_str());
      break;
  }
  services().sharing.dismissMail();
}

std::string htmlLink(const std::string& address, const std::string& text) {
  return "<a href=\"" + address + "\">" + text + "</a>";
}

}  // namespace veyla::Utils
