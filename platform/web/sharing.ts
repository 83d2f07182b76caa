// Mails, messages and addresses handed on to whatever the phone has for them.

export interface SharedMail {
  readonly recipients: readonly string[];
  readonly subject: string;
  readonly body: string;
  readonly isHtml: boolean;
  readonly attachments: readonly SharedFile[];
  /** Of what is tapped in the composer. */
  readonly tint: string;
  /** Null for the composer's own. */
  readonly titleColor: string | null;
}

export interface SharedFile {
  readonly data: string;
  readonly mimeType: string;
  readonly fileName: string;
}

// In the order in which the core numbers them.
export const mailResults = ["cancelled", "saved", "sent", "failed"] as const;
export type MailResult = (typeof mailResults)[number];

/** The text of an HTML body: links as their texts with their addresses behind them. */
export function plainText(html: string): string {
  const { body } = new DOMParser().parseFromString(html, "text/html");
  for (const link of body.querySelectorAll("a")) {
    link.append(` (${link.getAttribute("href") ?? ""})`);
  }
  for (const lineBreak of body.querySelectorAll("br")) lineBreak.replaceWith("\n");
  const paragraphs = [...body.querySelectorAll("p")].map((each) => each.textContent);
  return paragraphs.length > 0 ? paragraphs.join("\n\n") : body.textContent;
}

export function bodyText(mail: SharedMail): string {
  return mail.isHtml ? plainText(mail.body) : mail.body;
}

/** The address that opens the phone's mail program with the mail, but for what is attached. */
export function mailAddress(mail: SharedMail): string {
  const fields = new Map([
    ["subject", mail.subject],
    // Lines of mails end in both.
    ["body", bodyText(mail).replaceAll("\n", "\r\n")],
  ]);
  const query = [...fields].map(([name, text]) => `${name}=${encodeURIComponent(text)}`).join("&");
  return `mailto:${mail.recipients.map(encodeURIComponent).join(",")}?${query}`;
}

export function messageAddress(body: string): string {
  return `sms:?&body=${encodeURIComponent(body)}`;
}

export function filesOf(mail: SharedMail): File[] {
  return mail.attachments.map(
    ({ data, fileName, mimeType }) => new File([data], fileName, { type: mimeType }),
  );
}

/** Whether the phone offers to send the mail's text and files with another program. */
export function canShare(mail: SharedMail): boolean {
  return "canShare" in navigator && navigator.canShare(sharedData(mail));
}

/** What became of the mail, and why where it failed. */
export async function share(mail: SharedMail): Promise<[MailResult, string]> {
  try {
    await navigator.share(sharedData(mail));
    return ["sent", ""];
  } catch (error) {
    if (error instanceof DOMException && error.name === "AbortError") return ["cancelled", ""];
    return ["failed", error instanceof Error ? error.message : String(error)];
  }
}

function sharedData(mail: SharedMail): ShareData {
  const files = filesOf(mail);
  return {
    title: mail.subject,
    text: bodyText(mail),
    ...(files.length > 0 && { files }),
  };
}

/** Follows an address as a tap on a link to it does. */
export function openAddress(address: string): void {
  const link = document.createElement("a");
  link.href = address;
  // Pages open beside this one; what belongs to another program leaves this one as it is.
  if (/^https?:/.test(address)) {
    link.target = "_blank";
    link.rel = "noopener noreferrer";
  }
  link.click();
}
