#pragma once

#include "platform/sharing.h"

namespace veyla {

/// A machine that hands nothing on. What is composed all the same is cancelled.
class NoSharing : public Sharing {
 public:
  bool canSendMail() const override { return false; }
  void composeMail(const Mail& /*mail*/, MailFinished finished) override {
    finished(MailResult::cancelled, "");
  }
  void dismissMail() override {}
  bool canSendText() const override { return false; }
  void composeMessage(const std::string& /*body*/, MessageFinished finished) override {
    finished(MessageResult::cancelled);
  }
  void dismissMessage() override {}
  void open(const std::string& /*address*/) override {}
};

}  // namespace veyla
