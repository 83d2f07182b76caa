#include "platform/linux/mail_draft.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace veyla {
namespace {

using testing::HasSubstr;

/// The draft with line feeds alone at the ends of its lines, which must all be those of mails, and
/// "=" for the boundary between its parts.
std::string draftOf(const Mail& mail) {
  setenv("TZ", "UTC", 1);
  // 2024-03-05 14:07:00 and a part of a second.
  std::string draft = mailDraft(mail, {"", "me@example.org"}, Date{1709647620.75});
  const auto removeAll = [&](const std::string& text) {
    for (std::size_t at = 0; (at = draft.find(text, at)) != draft.npos;) {
      draft.erase(at, text.size());
    }
  };
  const std::string marked = "boundary=\"=";
  const std::size_t start = draft.find(marked) + marked.size();
  removeAll(draft.substr(start, draft.find('"', start) - start));
  EXPECT_EQ(std::count(draft.begin(), draft.end(), '\n'),
            std::count(draft.begin(), draft.end(), '\r'));
  removeAll("\r");
  return draft;
}

TEST(MailDraftTest, AMailsPartsAreWrittenSoThatTheyAreReadBackAsTheyWere) {
  Mail mail;
  mail.recipients = {"support@veyla.example", "second@veyla.example"};
  mail.subject = "Veyla data: Frühsport";
  mail.isHtml = true;
  mail.body = "<p>Größe &amp; mehr. " + std::string(60, 'x') + "</p>";
  // Bytes that a text's encoding would change.
  mail.attachments = {{"Date\n\r\n=3D .\n.\nFrom here", "text/csv", "ä ö.csv"}};
  EXPECT_EQ(draftOf(mail), R"(Date: Tue, 05 Mar 2024 14:07:00 +0000
From: me@example.org
Subject: Veyla data: =?UTF-8?B?RnLDvGhzcG9ydA==?=
To: support@veyla.example, second@veyla.example
X-Unsent: 1
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary="="

--=
Content-Type: text/html; charset=utf-8
Content-Transfer-Encoding: quoted-printable

<p>Gr=C3=B6=C3=9Fe &amp; mehr. xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx=
xxxxxxxxxxxxxxxx</p>
--=
Content-Type: text/csv; charset=utf-8; name*=iso-8859-1''%E4%20%F6.csv
Content-Transfer-Encoding: base64
Content-Disposition: attachment; filename*=iso-8859-1''%E4%20%F6.csv

RGF0ZQoNCj0zRCAuCi4KRnJvbSBoZXJl

--=--
)");
}

TEST(MailDraftTest, TheSenderIsTheUserWithTheNameAsMailsSpellIt) {
  for (const auto& [text, written] :
       {std::pair{"zoe@example.org", "zoe@example.org"},
        {"Zo\u00eb M\u00fcller <zoe@example.org>, other@example.org",
         "=?iso-8859-1?b?Wm/rIE38bGxlcg==?= <zoe@example.org>"},
        {"\"Zoe, M.\" <zoe@example.org>", "\"Zoe, M.\" <zoe@example.org>"}}) {
    setenv("EMAIL", text, 1);
    EXPECT_THAT(mailDraft({}, mailSender(), {}),
                HasSubstr("From: " + std::string(written) + "\r\n"));
  }
  setenv("EMAIL", "<", 1);
  EXPECT_NE(mailSender().address.find('@'), std::string::npos) << "the user at this machine";
}

}  // namespace
}  // namespace veyla
