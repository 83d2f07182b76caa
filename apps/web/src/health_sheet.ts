// Asks which health records may be kept, as a system's own sheet would.
import "./list_components";

import { make, makeCustom, sheetButtons, sheetCard, showModal } from "./dom";

/** The kinds of records, under the names that the core knows them by. */
export const healthRecordTexts: Readonly<Record<string, string>> = {
  heartRate: "Heart rate",
  oxygenSaturation: "Oxygen saturation",
};

/** A bit for each name that is allowed, in their order; negative when there was no answer. */
export function askForHealthRecords(names: readonly string[]): Promise<number> {
  return new Promise((resolve) => {
    const toggles = names.map((name) => {
      const toggle = makeCustom(
        "ion-toggle",
        { justify: "space-between" },
        healthRecordTexts[name] ?? name,
      );
      Object.assign(toggle, { checked: true });
      return toggle as HTMLElement & { checked: boolean };
    });
    const dialog = make("dialog.sheet", { "aria-labelledby": "health-title" });
    const finish = (answer: number): void => {
      dialog.close();
      dialog.remove();
      resolve(answer);
    };
    const allow = make("button", { type: "button" }, "Allow");
    allow.addEventListener("click", () => {
      finish(toggles.reduce((bits, toggle, index) => bits | (Number(toggle.checked) << index), 0));
    });
    const deny = make("button", { type: "button" }, "Don’t allow");
    deny.addEventListener("click", () => {
      finish(0);
    });
    dialog.addEventListener("cancel", (event) => {
      event.preventDefault();
      finish(-1);
    });
    dialog.append(
      sheetCard(
        make("h2", { id: "health-title" }, "Health records"),
        make(
          "p",
          {},
          "Veyla can keep each measurement as a health record. The records stay on this phone; save them as a file from the options.",
        ),
        makeCustom(
          "ion-list",
          { inset: "true" },
          ...toggles.map((toggle) => makeCustom("ion-item", {}, toggle)),
        ),
        sheetButtons(allow, deny),
      ),
    );
    document.body.append(dialog);
    showModal(dialog);
  });
}
