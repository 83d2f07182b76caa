// The options screen, and the pages that its rows lead to.
import "./list_components";

import { backupRows } from "./backup_rows";
import { followPage, type OptionsRow, type TableViewController, type WebApp } from "./core";
import { make, makeCustom, textButton } from "./dom";
import type { AccessoryButton, OptionsViews } from "./page";
import { textPage } from "./text_pages";

const images: Readonly<Record<string, string>> = {
  "emaileditbutton.png": "linear-gradient(var(--accent), var(--accent))",
};

export class OptionsScreen implements OptionsViews {
  readonly page: HTMLElement;
  private readonly core: TableViewController;
  private readonly elements = new Map<string, HTMLElement>();

  /** `open` shows another page; `healthControls` stand on the page about health records. */
  constructor(
    private readonly app: WebApp,
    private readonly open: (page: HTMLElement) => void,
    private readonly healthControls: () => HTMLElement,
  ) {
    const core = app.options(this);
    this.core = core;
    const close = textButton("button.bar-button", "Close", () => {
      core.buttonCloseTap();
    });
    const lists = core
      .rows()
      .map((rows, section) =>
        makeCustom(
          "ion-list",
          { inset: "true" },
          ...rows.map((row, index) => this.row(row, section, index)),
        ),
      );
    const content = makeCustom("ion-content", { class: "grouped" });
    content.append(make("div", {}, ...lists, ...backupRows(app)));
    this.page = make(
      "div.ion-page.options",
      {},
      makeCustom(
        "ion-header",
        {},
        makeCustom(
          "ion-toolbar",
          {},
          makeCustom("ion-buttons", { slot: "start" }, close),
          makeCustom("ion-title", {}, "Options"),
        ),
      ),
      content,
    );
    followPage(this.page, core);
  }

  setText(element: string, text: string): void {
    const view = this.elements.get(element);
    if (view) view.textContent = text;
  }

  setAccessoryButton(cell: string, button: AccessoryButton): void {
    const made = textButton("button.accessory", button.title, () => {
      this.core.accessoryButtonTapped();
    });
    made.slot = "end";
    made.style.color = button.titleColor;
    made.style.font = `${button.font} var(--ion-font-family)`;
    made.style.background = `${images[button.backgroundImage] ?? ""} ${button.background}`;
    this.elements.get(cell)?.append(made);
  }

  private row(row: OptionsRow, section: number, index: number): HTMLElement {
    const title = make("h3", {}, row.title);
    const subTitle = make("p", {}, row.subTitle);
    const text = makeCustom("ion-label", {}, title, subTitle);
    if (row.isEmail) {
      const cell = makeCustom("ion-item", {}, text);
      this.elements.set("cellEmail", cell);
      this.elements.set("labelEmailTitle", title);
      this.elements.set("labelEmailSubTitle", subTitle);
      return cell;
    }
    const cell = makeCustom("ion-item", { button: "true" }, text);
    cell.addEventListener("click", () => {
      this.core.didSelectRow(section, index);
      if (row.page === "") return;
      const page = this.app.page(row.page);
      if (!page) return;
      const controls = row.page === "HealthHowTo" ? [this.healthControls()] : [];
      this.open(textPage(page, ...controls));
    });
    return cell;
  }
}
