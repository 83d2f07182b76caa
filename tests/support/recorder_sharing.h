#pragma once

#include <string>
#include <vector>

#include "platform/sharing.h"
#include "tests/support/journal.h"

namespace veyla {

/// Keeps what is composed and its completions, for the test to call; every call stands in the
/// journal as "sharing …".
class RecorderSharing : public Sharing {
 public:
  explicit RecorderSharing(Journal& journal) : journal_(journal) {}

  bool sendsMail = true;
  bool sendsText = true;
  std::vector<Mail> mails;
  MailFinished mailFinished;
  std::vector<std::string> messages;
  MessageFinished messageFinished;

  bool canSendMail() const override { return sendsMail; }
  void composeMail(const Mail& mail, MailFinished finished) override {
    mails.push_back(mail);
    mailFinished = std::move(finished);
    journal_.add("sharing mail " + mail.subject);
  }
  void dismissMail() override { journal_.add("sharing dismiss mail"); }
  bool canSendText() const override { return sendsText; }
  void composeMessage(const std::string& body, MessageFinished finished) override {
    messages.push_back(body);
    messageFinished = std::move(finished);
    journal_.add("sharing message " + body);
  }
  void dismissMessage() override { journal_.add("sharing dismiss message"); }
  void open(const std::string& address) override { journal_.add("sharing open " + address); }

 private:
  Journal& journal_;
};

}  // namespace veyla
