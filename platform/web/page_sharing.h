#pragma once

#include <emscripten/val.h>

#include <string>
#include <utility>

#include "platform/sharing.h"
#include "platform/web/pending.h"

namespace veyla {

/// Mails, messages and addresses as the page hands them on. A browser tells neither whether there
/// is a mail program nor what became of a mail in it.
class PageSharing : public Sharing {
 public:
  /// `page` answers `composeMail(mail, pending)`, `mailFailure()`, `dismissMail()`,
  /// `composeMessage(body, pending)` and `open(address)`. The answers are the results in the order
  /// of their enumerations.
  PageSharing(emscripten::val page, Pending& pending) : page_(std::move(page)), pending_(pending) {}

  bool canSendMail() const override { return true; }
  void composeMail(const Mail& mail, MailFinished finished) override;
  void dismissMail() override { page_.call<void>("dismissMail"); }

  bool canSendText() const override { return true; }
  void composeMessage(const std::string& body, MessageFinished finished) override;
  void dismissMessage() override {}

  void open(const std::string& address) override { page_.call<void>("open", address); }

 private:
  emscripten::val page_;
  Pending& pending_;
};

}  // namespace veyla
