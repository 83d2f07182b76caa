#include "platform/web/page_sharing.h"

#include <emscripten/bind.h>

#include "platform/web/page_types.h"

namespace veyla {

EMSCRIPTEN_BINDINGS(page_sharing) {
  emscripten::value_object<MailAttachment>("MailAttachment")
      .field("data", &MailAttachment::data)
      .field("mimeType", &MailAttachment::mimeType)
      .field("fileName", &MailAttachment::fileName);
  emscripten::value_object<Mail>("Mail")
      .field("recipients", &Mail::recipients)
      .field("subject", &Mail::subject)
      .field("body", &Mail::body)
      .field("isHtml", &Mail::isHtml)
      .field("attachments", &Mail::attachments);
}

void PageSharing::composeMail(const Mail& mail, MailFinished finished) {
  const int number = pending_.keep([finished = std::move(finished)](int answer) {
    if (finished) finished(static_cast<MailResult>(answer), "");
  });
  page_.call<void>("composeMail", mail, number);
}

void PageSharing::composeMessage(const std::string& body, MessageFinished finished) {
  const int number = pending_.keep([finished = std::move(finished)](int answer) {
    if (finished) finished(static_cast<MessageResult>(answer));
  });
  page_.call<void>("composeMessage", body, number);
}

}  // namespace veyla
