#include "platform/linux/mail_draft.h"

#include <gmime/gmime.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace veyla {

namespace {

constexpr const char* charset = "utf-8";

struct Unref {
  template <class T>
  void operator()(T* object) const {
    g_object_unref(object);
  }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

void initializeOnce() {
  static const bool initialized = (g_mime_init(), true);
  static_cast<void>(initialized);
}

Owned<GMimePart> partOf(const std::string& type, const std::string& subtype,
                        const std::string& data, GMimeContentEncoding encoding) {
  Owned<GMimePart> part(g_mime_part_new_with_type(type.c_str(), subtype.c_str()));
  const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(data.data(), data.size()));
  const Owned<GMimeDataWrapper> content(
      g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
  g_mime_part_set_content(part.get(), content.get());
  g_mime_part_set_content_encoding(part.get(), encoding);
  if (type == "text") {
    g_mime_object_set_content_type_parameter(GMIME_OBJECT(part.get()), "charset", charset);
  }
  return part;
}

/// Its lines may be longer than mails allow, which the encoding folds.
Owned<GMimePart> bodyOf(const Mail& mail) {
  return partOf("text", mail.isHtml ? "html" : "plain", mail.body,
                GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
}

Owned<GMimePart> partOf(const MailAttachment& attachment) {
  const std::size_t slash = attachment.mimeType.find('/');
  const bool isWhole = slash != std::string::npos;
  Owned<GMimePart> part = partOf(isWhole ? attachment.mimeType.substr(0, slash) : "application",
                                 isWhole ? attachment.mimeType.substr(slash + 1) : "octet-stream",
                                 attachment.data, GMIME_CONTENT_ENCODING_BASE64);
  g_mime_object_set_disposition(GMIME_OBJECT(part.get()), GMIME_DISPOSITION_ATTACHMENT);
  g_mime_part_set_filename(part.get(), attachment.fileName.c_str());
  return part;
}

Owned<GMimeObject> contentsOf(const Mail& mail) {
  if (mail.attachments.empty()) return Owned<GMimeObject>(GMIME_OBJECT(bodyOf(mail).release()));
  GMimeMultipart* parts = g_mime_multipart_new_with_subtype("mixed");
  g_mime_multipart_add(parts, GMIME_OBJECT(bodyOf(mail).get()));
  for (const MailAttachment& attachment : mail.attachments) {
    g_mime_multipart_add(parts, GMIME_OBJECT(partOf(attachment).get()));
  }
  return Owned<GMimeObject>(GMIME_OBJECT(parts));
}

}  // namespace

namespace {

/// One address of ASCII letters without a name, as mails write it down unencoded.
bool isPlainAddress(const std::string& text) {
  const auto isPlain = [](char c) { return c > ' ' && c <= '~' && c != '<' && c != ','; };
  const std::size_t at = text.find('@');
  return std::all_of(text.begin(), text.end(), isPlain) && at != 0 && at != std::string::npos &&
         at == text.rfind('@') && at + 1 < text.size();
}

}  // namespace

Sender mailSender() {
  if (const char* text = std::getenv("EMAIL")) {
    initializeOnce();
    const Owned<InternetAddressList> list(internet_address_list_parse(nullptr, text));
    InternetAddress* first = list ? internet_address_list_get_address(list.get(), 0) : nullptr;
    if (INTERNET_ADDRESS_IS_MAILBOX(first)) {
      std::string address = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(first));
      const char* name = internet_address_get_name(first);
      if (isPlainAddress(address)) return {name ? name : "", address};
    }
  }
  const passwd* user = getpwuid(getuid());
  std::array<char, HOST_NAME_MAX + 1> host{};
  const bool isNamed = gethostname(host.data(), host.size() - 1) == 0 && host.front() != 0;
  return {"", std::string(user && user->pw_name ? user->pw_name : "user") + "@" +
                  (isNamed ? host.data() : "localhost")};
}

std::string mailDraft(const Mail& mail, const Sender& sender, Date date) {
  initializeOnce();
  const Owned<GMimeMessage> message(g_mime_message_new(TRUE));
  GMimeObject* headers = GMIME_OBJECT(message.get());
  // What makes mail programs open the file as a mail to be sent and not as one that came.
  g_mime_object_set_header(headers, "X-Unsent", "1", nullptr);
  g_mime_message_add_mailbox(message.get(), GMIME_ADDRESS_TYPE_FROM,
                             sender.name.empty() ? nullptr : sender.name.c_str(),
                             sender.address.c_str());
  g_mime_message_set_subject(message.get(), mail.subject.c_str(), charset);
  for (const std::string& recipient : mail.recipients) {
    g_mime_message_add_mailbox(message.get(), GMIME_ADDRESS_TYPE_TO, nullptr, recipient.c_str());
  }
  const auto seconds = static_cast<std::int64_t>(std::floor(date.secondsSince1970));
  if (GDateTime* time = g_date_time_new_from_unix_local(seconds)) {
    g_mime_message_set_date(message.get(), time);
    g_date_time_unref(time);
  }
  g_mime_message_set_mime_part(message.get(), contentsOf(mail).get());

  const std::unique_ptr<GMimeFormatOptions, decltype(&g_mime_format_options_free)> options(
      g_mime_format_options_new(), g_mime_format_options_free);
  g_mime_format_options_set_newline_format(options.get(), GMIME_NEWLINE_FORMAT_DOS);
  const Owned<GMimeStream> written(g_mime_stream_mem_new());
  g_mime_object_write_to_stream(headers, options.get(), written.get());
  const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(written.get()));
  // An empty array has no bytes to point to.
  if (bytes->len == 0) return {};
  return std::string(bytes->data, bytes->data + bytes->len);
}

/// Of what is linked with this; the program has one that opens the module.
const Mails& mails() { return *veylaGmimeMails(); }

}  // namespace veyla

const veyla::Mails* veylaGmimeMails() {
  static const veyla::Mails mails{veyla::mailDraft, veyla::mailSender};
  return &mails;
}
