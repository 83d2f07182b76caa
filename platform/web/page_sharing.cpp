#include "platform/web/page_sharing.h"

namespace veyla {

using emscripten::val;

void PageSharing::composeMail(const Mail& mail, MailFinished finished) {
  val recipients = val::array();
  for (const std::string& recipient : mail.recipients) recipients.call<void>("push", recipient);
  val attachments = val::array();
  for (const MailAttachment& attachment : mail.attachments) {
    val each = val::object();
    each.set("text", attachment.data);
    each.set("mimeType", attachment.mimeType);
    each.set("fileName", attachment.fileName);
    attachments.call<void>("push", each);
  }
  val object = val::object();
  object.set("recipients", recipients);
  object.set("subject", mail.subject);
  object.set("body", mail.body);
  object.set("isHtml", mail.isHtml);
  object.set("attachments", attachments);
  const int number = pending_.keep([finished = std::move(finished)](int answer) {
    if (finished) finished(static_cast<MailResult>(answer), "");
  });
  page_.call<void>("composeMail", object, number);
}

void PageSharing::composeMessage(const std::string& body, MessageFinished finished) {
  const int number = pending_.keep([finished = std::move(finished)](int answer) {
    if (finished) finished(static_cast<MessageResult>(answer));
  });
  page_.call<void>("composeMessage", body, number);
}

}  // namespace veyla
