// The way of everything measured into a file, and back from one.
import type { WebApp } from "./core";
import { make, makeCustom } from "./dom";
import { saveAsFile } from "./files";

/** Rows for the options, and the line below them that says what came of a tap. */
export function backupRows(core: WebApp): HTMLElement[] {
  const note = make("p.note", { role: "status" });
  const row = (title: string, subTitle: string, tapped: () => void): HTMLElement => {
    const label = makeCustom("ion-label", {}, make("h3", {}, title), make("p", {}, subTitle));
    const cell = makeCustom("ion-item", { button: "true", detail: "false" }, label);
    cell.addEventListener("click", tapped);
    return cell;
  };
  const chosen = make("input", { type: "file", accept: ".json,application/json" });
  chosen.addEventListener("change", () => {
    const file = chosen.files?.[0];
    // The same file may be chosen again.
    chosen.value = "";
    if (!file) return;
    void file.text().then(
      (text) => {
        note.textContent = core.restore(text);
        note.scrollIntoView({ block: "nearest" });
      },
      () => {
        note.textContent = "Nothing restored: this file cannot be read; choose it again.";
      },
    );
  });
  const backUp = row("Back up", "All measurements with their labels, as a file", () => {
    const backup = core.backUp();
    note.textContent = backup.note;
    const day = new Date().toISOString().slice(0, 10);
    if (backup.text !== "") saveAsFile(`veyla-backup-${day}.json`, "application/json", backup.text);
  });
  const restore = row("Restore", "Adds what is missing here from such a file", () => {
    chosen.click();
  });
  return [makeCustom("ion-list", { inset: "true" }, backUp, restore), note];
}
