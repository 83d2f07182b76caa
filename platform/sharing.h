#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"

namespace veyla {

struct MailAttachment {
  std::string data;
  /// Such as "text/csv".
  std::string mimeType;
  std::string fileName;

  bool operator==(const MailAttachment&) const = default;
};

/// A mail that the user may change before it is sent. All texts are UTF-8.
struct Mail {
  std::vector<std::string> recipients;
  std::string subject;
  std::string body;
  bool isHtml = false;
  std::vector<MailAttachment> attachments;
  /// Of the composer's navigation bar; without a colour, the system's own.
  Color tint = black;
  std::optional<Color> titleColor;

  bool operator==(const Mail&) const = default;
};

enum class MailResult { cancelled, saved, sent, failed };
enum class MessageResult { cancelled, sent, failed };

/// The system's ways to hand something on: mail, text messages, addresses.
class Sharing {
 public:
  /// `error` tells why a mail failed and is empty otherwise.
  using MailFinished = std::function<void(MailResult result, const std::string& error)>;
  using MessageFinished = std::function<void(MessageResult result)>;

  virtual ~Sharing() = default;

  virtual bool canSendMail() const = 0;
  /// Shows the mail in the system's composer; `finished` comes once, when the user is done with it,
  /// perhaps before this returns.
  virtual void composeMail(const Mail& mail, MailFinished finished) = 0;
  virtual void dismissMail() = 0;

  virtual bool canSendText() const = 0;
  virtual void composeMessage(const std::string& body, MessageFinished finished) = 0;
  virtual void dismissMessage() = 0;

  /// Opens a web or store address in whatever the system opens it with.
  virtual void open(const std::string& address) = 0;
};

}  // namespace veyla
