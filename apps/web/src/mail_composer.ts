// The mail that is about to be sent, with the ways that a browser has to send it.
import {
  bodyText,
  canShare,
  mailAddress,
  type MailResult,
  mailResults,
  messageAddress,
  openAddress,
  share,
  type SharedMail,
} from "../../../platform/web/sharing";
import { adapted } from "./colors";
import { make, sheetButtons, sheetCard, showModal, textButton } from "./dom";
import { saveAsFile } from "./files";

export class MailComposer {
  /** Why the last mail failed, if it did. */
  failure = "";
  private dialog: HTMLDialogElement | undefined;

  /** `settle` hands the results on to the core. */
  constructor(private readonly settle: (pending: number, answer: number) => void) {}

  composeMail(mail: SharedMail, pending: number): void {
    this.dismissMail();
    const finish = (result: MailResult, reason = ""): void => {
      this.failure = reason;
      this.settle(pending, mailResults.indexOf(result));
    };
    const dialog = make("dialog.sheet.composer", { "aria-labelledby": "composer-title" });
    const fields = make("dl.mail-fields");
    if (mail.recipients.length > 0) {
      fields.append(make("dt", {}, "To"), make("dd", {}, mail.recipients.join(", ")));
    }
    fields.append(make("dt", {}, "Subject"), make("dd", {}, mail.subject));
    const files = mail.attachments.map((file) =>
      textButton("button.attachment", `Save ${file.fileName}`, () => {
        saveAsFile(file.fileName, file.mimeType, file.data);
      }),
    );
    const title = make("h2", { id: "composer-title" }, "New mail");
    title.style.color = mail.titleColor === null ? "" : adapted(mail.titleColor);
    const buttons = [
      textButton("button", "Open mail app", () => {
        // A mail program's address takes no files: they are saved, to be attached there.
        for (const file of mail.attachments) saveAsFile(file.fileName, file.mimeType, file.data);
        openAddress(mailAddress(mail));
        finish("saved");
      }),
      textButton("button.cancel", "Cancel", () => {
        finish("cancelled");
      }),
    ];
    // The phone's own way is the main one, where there is one.
    if (canShare(mail)) {
      const shareButton = textButton("button", "Share …", () => {
        void share(mail).then(([result, reason]) => {
          // Whoever turns back may want another way.
          if (result !== "cancelled") finish(result, reason);
        });
      });
      buttons.unshift(shareButton);
    }
    const card = sheetCard(
      title,
      fields,
      make("pre.mail-body", { tabindex: "0", "aria-label": "Text" }, bodyText(mail)),
      ...files,
      sheetButtons(...buttons),
    );
    card.style.setProperty("--bar-tint", adapted(mail.tint));
    dialog.append(card);
    dialog.addEventListener("cancel", (event) => {
      event.preventDefault();
      finish("cancelled");
    });
    document.body.append(dialog);
    this.dialog = dialog;
    showModal(dialog);
  }

  dismissMail(): void {
    this.dialog?.close();
    this.dialog?.remove();
    this.dialog = undefined;
  }

  composeMessage(body: string, pending: number): void {
    openAddress(messageAddress(body));
    const sent = 1;
    this.settle(pending, sent);
  }
}
