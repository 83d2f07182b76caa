#include "platform/web/page_sharing.h"

#include "platform/web/page_fields.h"

namespace veyla {

EMSCRIPTEN_BINDINGS(page_sharing) {
  VEYLA_VALUE(MailAttachment, data, mimeType, fileName);
  VEYLA_VALUE(Mail, recipients, subject, body, isHtml, attachments, tint, titleColor);
}

void PageSharing::composeMail(const Mail& mail, MailFinished finished) {
  const int number = pending_.keep([page = page_, finished = std::move(finished)](int answer) {
    if (finished) finished(static_cast<MailResult>(answer), page.call<std::string>("mailFailure"));
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
