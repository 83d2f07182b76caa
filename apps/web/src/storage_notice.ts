// Tells what could not be stored or read, and what to do about it.
import type { WebApp } from "./core";
import { make, sheetCard } from "./dom";
import { saveAsFile } from "./files";

/** `damagedKey` names an item that cannot be read; it is empty for anything else. */
export function showStorageProblem(core: () => WebApp, damagedKey: string, line: string): void {
  // Several changes that fail together have one reason.
  const shown = [...document.querySelectorAll("dialog.storage p")];
  if (shown.some(({ textContent }) => textContent === line)) return;
  const dialog = make("dialog.sheet.storage", {
    role: "alertdialog",
    "aria-labelledby": "storage-title",
  });
  const close = (): void => {
    dialog.close();
    dialog.remove();
  };
  const button = (text: string, tapped: () => void): HTMLButtonElement => {
    const made = make("button", { type: "button" }, text);
    made.addEventListener("click", tapped);
    return made;
  };
  const buttons =
    damagedKey === ""
      ? []
      : [
          button("Save a copy", () => {
            const text = core().rawStoredText(damagedKey) ?? "";
            saveAsFile(`veyla-${damagedKey}.txt`, "text/plain", text);
          }),
          button("Set it aside", () => {
            core().setStoredTextAside(damagedKey);
            close();
          }),
        ];
  dialog.append(
    sheetCard(
      make("h2", { id: "storage-title" }, damagedKey === "" ? "Not saved" : "Damaged data"),
      make("p", {}, line),
      ...buttons,
      button("Close", close),
    ),
  );
  document.body.append(dialog);
  dialog.showModal();
}
