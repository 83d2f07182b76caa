#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/no_services.h"

namespace veyla {

/// Keeps the mail that is composed, for a command to write where it was asked to.
class KeptMail : public NoSharing {
 public:
  bool canSendMail() const override { return true; }
  void composeMail(const Mail& composed, MailFinished finished) override {
    mail = composed;
    finished(MailResult::saved, "");
  }

  std::optional<Mail> mail;
};

}  // namespace veyla
