// What the user decides about health records, and the records as a file.
import { healthFile } from "../../../platform/web/health_file";
import type { WebApp } from "./core";
import { make, makeCustom } from "./dom";
import { saveAsFile } from "./files";
import { healthRecordTexts } from "./health_sheet";

export function healthControls(core: WebApp): HTMLElement {
  const toggles = Object.entries(healthRecordTexts).map(([name, text]) => {
    const toggle = makeCustom("ion-toggle", { justify: "space-between" }, text);
    Object.assign(toggle, { checked: core.isHealthRecordAllowed(name) });
    toggle.addEventListener("ionChange", (event) => {
      core.allowHealthRecord(name, (event as CustomEvent<{ checked: boolean }>).detail.checked);
    });
    return makeCustom("ion-item", {}, toggle);
  });
  const note = make("p.note", { role: "status" });
  const save = make("button.primary", { type: "button" }, "Save records as a file");
  save.addEventListener("click", () => {
    void healthFile
      .text()
      .then((lines) => {
        note.textContent = lines === "" ? "There are no records yet." : "";
        if (lines !== "") saveAsFile("veyla-health.ndjson", "application/fhir+ndjson", lines);
      })
      .catch(() => {
        note.textContent = "This browser does not give the page its records.";
      });
  });
  return make(
    "div.health-controls",
    {},
    makeCustom("ion-list", { inset: "true" }, ...toggles),
    save,
    note,
  );
}
