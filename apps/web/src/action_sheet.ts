// The core's sheets of actions.
import { make, sheetCard, showModal, textButton } from "./dom";
import type { SheetShown } from "./page";

export class ActionSheets {
  private dialog: HTMLDialogElement | undefined;

  /** `choose` is told the number of the action that was tapped. */
  constructor(private readonly choose: (action: number) => void) {}

  present(sheet: SheetShown): void {
    this.dismiss();
    const dialog = make("dialog.sheet.actions", { "aria-label": sheet.title ?? "Actions" });
    const card = sheetCard();
    for (const text of [sheet.title, sheet.message]) {
      if (text) card.append(make("p.sheet-title", {}, text));
    }
    const cancel = make("div.sheet-card.cancel");
    sheet.actions.forEach(({ title, style }, index) => {
      const button = make("button", { type: "button" }, title);
      if (sheet.tint) button.style.setProperty("--tint", sheet.tint);
      button.addEventListener("click", () => {
        this.choose(index);
      });
      (style === "cancel" ? cancel : card).append(button);
    });
    // A tap beside it, or Escape, stands for the action that cancels, where there is one.
    const cancelIndex = sheet.actions.findIndex(({ style }) => style === "cancel");
    const leave = (): void => {
      if (cancelIndex >= 0) this.choose(cancelIndex);
      else this.dismiss();
    };
    // Always in sight, below what scrolls.
    if (cancelIndex < 0) cancel.append(textButton("button", "Cancel", leave));
    dialog.append(card, cancel);
    dialog.addEventListener("click", (event) => {
      if (event.target === dialog) leave();
    });
    dialog.addEventListener("cancel", (event) => {
      event.preventDefault();
      leave();
    });
    document.body.append(dialog);
    this.dialog = dialog;
    showModal(dialog);
  }

  dismiss(): void {
    this.dialog?.close();
    this.dialog?.remove();
    this.dialog = undefined;
  }
}
