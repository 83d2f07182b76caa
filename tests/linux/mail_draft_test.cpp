#include "platform/linux/mail_draft.h"

#include <gmime/gmime.h>
#include <gmock/gmock.h>

#include <memory>

namespace veyla {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr Date afternoon{1709647620.75};  // 2024-03-05 14:07:00 UTC

struct Unref {
  void operator()(GMimeMessage* message) const { g_object_unref(message); }
};
using Message = std::unique_ptr<GMimeMessage, Unref>;

/// Reads a draft as a mail program does.
Message parsed(const std::string& draft) {
  GMimeStream* stream = g_mime_stream_mem_new_with_buffer(draft.data(), draft.size());
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  g_object_unref(stream);
  Message message(g_mime_parser_construct_message(parser, nullptr));
  g_object_unref(parser);
  return message;
}

std::string contentsOf(GMimeObject* part) {
  GMimeStream* stream = g_mime_stream_mem_new();
  g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(GMIME_PART(part)), stream);
  const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream));
  const std::string text(reinterpret_cast<const char*>(bytes->data), bytes->len);
  g_object_unref(stream);
  return text;
}

std::string typeOf(GMimeObject* part) {
  GMimeContentType* type = g_mime_object_get_content_type(part);
  const char* charset = g_mime_content_type_get_parameter(type, "charset");
  char* name = g_mime_content_type_get_mime_type(type);
  const std::string found = std::string(name) + (charset ? std::string("; ") + charset : "");
  g_free(name);
  return found;
}

Mail longMail() {
  Mail mail;
  mail.subject = "Veyla data: Messwerte für Frühsport, 測定値";
  mail.isHtml = true;
  mail.body = "<p>Größe &amp; mehr. " + std::string(3000, 'x') + "</p>";
  // Bytes that a text's encoding would change.
  mail.attachments = {{"Date,Heart Rate\n\r\n\t=3D .\n.\nFrom here", "text/csv", "veyla-data.csv"},
                      {std::string("\0\xff\x80", 3), "odd", "ä ö.bin"}};
  return mail;
}

TEST(MailDraftTest, AMailProgramReadsBackWhatWasComposed) {
  const Mail mail = longMail();
  const Message message = parsed(mailDraft(mail, "me@example.org", afternoon));
  ASSERT_TRUE(message);
  EXPECT_EQ(g_mime_message_get_subject(message.get()), mail.subject);
  EXPECT_EQ(g_date_time_to_unix(g_mime_message_get_date(message.get())), 1709647620);
  GMimeObject* contents = g_mime_message_get_mime_part(message.get());
  EXPECT_EQ(typeOf(contents), "multipart/mixed");
  auto* parts = reinterpret_cast<GMimeMultipart*>(contents);
  ASSERT_EQ(g_mime_multipart_get_count(parts), 3);

  GMimeObject* body = g_mime_multipart_get_part(parts, 0);
  EXPECT_EQ(typeOf(body), "text/html; utf-8");
  EXPECT_EQ(contentsOf(body), mail.body);
  GMimeObject* csv = g_mime_multipart_get_part(parts, 1);
  EXPECT_EQ(typeOf(csv), "text/csv; utf-8");
  EXPECT_EQ(contentsOf(csv), mail.attachments[0].data);
  EXPECT_STREQ(g_mime_part_get_filename(GMIME_PART(csv)), "veyla-data.csv");
  EXPECT_STREQ(g_mime_object_get_disposition(csv), "attachment");
  GMimeObject* odd = g_mime_multipart_get_part(parts, 2);
  EXPECT_EQ(typeOf(odd), "application/octet-stream");
  EXPECT_EQ(contentsOf(odd), mail.attachments[1].data);
  EXPECT_STREQ(g_mime_part_get_filename(GMIME_PART(odd)), "ä ö.bin");
}

TEST(MailDraftTest, APlainMailIsOnePartToItsRecipients) {
  Mail mail;
  mail.recipients = {"support@veyla.example", "second@veyla.example"};
  mail.subject = "Veyla Support";
  mail.body = "\n\n\nModel: iPhone 6S";
  const std::string draft = mailDraft(mail, "me@example.org", afternoon);
  EXPECT_THAT(draft, HasSubstr("To: support@veyla.example, second@veyla.example\r\n"));
  const Message message = parsed(draft);
  GMimeObject* body = g_mime_message_get_mime_part(message.get());
  EXPECT_EQ(typeOf(body), "text/plain; utf-8");
  EXPECT_EQ(contentsOf(body), "\r\n\r\n\r\nModel: iPhone 6S\r\n")
      << "a message ends with its last line";
}

TEST(MailDraftTest, LinesHaveTheFormOfMails) {
  const std::string draft = mailDraft(longMail(), "me@example.org", afternoon);
  for (std::size_t start = 0; start < draft.size();) {
    const std::size_t end = draft.find('\n', start);
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(draft[end - 1], '\r');
    EXPECT_LE(end - start, 79U) << draft.substr(start, end - start);
    start = end + 1;
  }
  EXPECT_TRUE(std::all_of(draft.begin(), draft.end(),
                          [](char c) { return static_cast<signed char>(c) > 0; }));
  EXPECT_THAT(draft, HasSubstr("X-Unsent: 1\r\n"));
  EXPECT_THAT(draft, HasSubstr("From: me@example.org\r\n"));
}

}  // namespace
}  // namespace veyla
