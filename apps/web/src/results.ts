// The results screen: the history, its labels, deletion and sharing.
import "./list_components";

import { defineCustomElement as itemOption } from "@ionic/core/components/ion-item-option.js";
import { defineCustomElement as itemOptions } from "@ionic/core/components/ion-item-options.js";
import { defineCustomElement as itemSliding } from "@ionic/core/components/ion-item-sliding.js";
import {
  checkmark,
  ellipseOutline,
  checkmarkCircle,
  shareOutline,
  trashOutline,
} from "ionicons/icons";

import {
  chooserTag,
  followPage,
  type HistoryTableViewCell,
  listTag,
  type ResultsViewController,
  type TableCell,
  type WebApp,
} from "./core";
import { calmer, iconButton, make, makeCustom, textButton } from "./dom";
import { homeCard } from "./home_card";
import { emptyState } from "./illustrations";
import type { ResultsViews } from "./page";

/** Rows that are made at a time: a long history is made as far as somebody scrolls. */
const rowsAtOnce = 40;

interface SlidingElement extends HTMLElement {
  close(): Promise<void>;
}

export class ResultsScreen implements ResultsViews {
  readonly page: HTMLElement;

  private readonly core: ResultsViewController;
  private readonly list = makeCustom("ion-list", { class: "results-list" });
  private readonly content = makeCustom("ion-content");
  private readonly empty: HTMLElement;
  private readonly more = make("div.more", { "aria-hidden": "true" });
  private readonly left = textButton("button.bar-button", "", () => {
    this.core.tapLeftButton();
  });
  private readonly right = [
    textButton("button.bar-button", "", () => {
      this.core.tapEditButton();
    }),
    textButton("button.bar-button", "", () => {
      this.core.showChart();
    }),
  ] as const;
  private readonly dim = make("div.dim");
  private readonly chooser = make("div.chooser", {
    role: "dialog",
    "aria-label": "Labels",
    "aria-modal": "true",
  });
  /** Read out when it comes. */
  private readonly undoText = make("span", { role: "status" });
  private readonly undo = make(
    "div.undo",
    {},
    this.undoText,
    textButton("button.bar-button", "Undo", () => {
      this.core.tapUndo();
    }),
  );
  private readonly header: HTMLElement;
  private readonly toolbar: HTMLElement;
  private readonly rows: HTMLElement[] = [];
  private editing = false;
  private chosen: number | undefined;

  /** `labelsNewest` opens the labels of the newest entry over it. */
  constructor(app: WebApp, labelsNewest = false) {
    for (const define of [itemSliding, itemOptions, itemOption]) define();
    const core = app.results(this);
    this.core = core;
    this.empty = emptyState("No measurements yet", () => {
      core.tapLeftButton();
    });
    this.dim.addEventListener("click", () => {
      core.touchesBegan();
    });
    this.chooser.addEventListener("keydown", (event) => {
      if (event.key === "Escape") core.clickCloseResultsLabelsView();
    });
    this.chooser.addEventListener("cancel", () => {
      core.clickCloseResultsLabelsView();
    });
    this.toolbar = make(
      "div.results-toolbar",
      { role: "toolbar", "aria-label": "Selected measurements" },
      iconButton(trashOutline, "Delete", () => {
        core.clickTrash();
      }),
      iconButton(shareOutline, "Share", () => {
        core.clickShare();
      }),
    );
    this.toolbar.inert = true;

    const card = homeCard(app);
    this.content.append(make("div", {}, ...(card ? [card] : []), this.empty, this.list, this.more));
    this.header = makeCustom(
      "ion-header",
      {},
      makeCustom(
        "ion-toolbar",
        {},
        makeCustom("ion-buttons", { slot: "start" }, this.left),
        makeCustom("ion-title", {}, "Results"),
        makeCustom("ion-buttons", { slot: "end" }, this.right[1], this.right[0]),
      ),
    );
    this.page = make(
      "div.ion-page.results",
      {},
      this.header,
      this.content,
      this.toolbar,
      this.undo,
      this.dim,
      this.chooser,
    );
    this.withdrawUndo();
    this.setOpacity("dimView", 0, 0);
    this.setOpacity("resultsTableViewForLabels", 0, 0);
    new IntersectionObserver((entries) => {
      if (entries.some((entry) => entry.isIntersecting)) this.addRows();
    }).observe(this.more);
    const { listRowHeight, chooserRowHeight, chooserCornerRadius, dimColor } = core.look();
    const { style } = this.page;
    style.setProperty("--row-height", String(listRowHeight));
    style.setProperty("--chooser-row-height", String(chooserRowHeight));
    style.setProperty("--chooser-radius", `${chooserCornerRadius}px`);
    style.setProperty("--dim", dimColor);
    // The height that the core knows is that of the screen as it was.
    window.addEventListener("resize", this.freeList);
    followPage(this.page, core, () => {
      this.addRows();
      this.showWhetherEmpty();
    });
    if (labelsNewest) {
      this.page.addEventListener("ionViewDidEnter", this.chooseNewest, { once: true });
    }
    this.page.addEventListener("ionViewWillUnload", () => {
      window.removeEventListener("resize", this.freeList);
    });
  }

  // What the core does to the views.

  setLeftButton(title: string): void {
    this.left.textContent = title;
  }

  setRightButtons(titles: readonly string[]): void {
    this.right.forEach((button, index) => {
      button.textContent = titles[index] ?? "";
    });
  }

  /** Without what lies below the screen's safe area. */
  listHeight(): number {
    const inset = parseFloat(getComputedStyle(this.toolbar).paddingBottom);
    return Math.round(this.content.clientHeight - inset);
  }

  setEditing(_editing: boolean, animated: boolean): void {
    this.editing = this.core.editingStyle() === "multipleSelection";
    this.list.classList.toggle("editing", this.editing);
    for (const row of this.rows) {
      row.toggleAttribute("disabled", this.editing);
      this.setChecked(row, false, animated);
    }
  }

  setSelected(row: number, selected: boolean, animated: boolean): void {
    const element = this.rows[row];
    if (element) this.setChecked(element, selected, animated);
  }

  deleteRows(rows: readonly number[], animation: "none" | "fade"): void {
    // From below, so that the numbers above stay what they are.
    for (const row of [...rows].sort((left, right) => right - left)) {
      const [element] = this.rows.splice(row, 1);
      if (!element) continue;
      if (animation === "fade") this.fadeOut(element);
      else element.remove();
    }
    this.addRows();
    this.showWhetherEmpty();
  }

  offerUndo(text: string): void {
    this.undo.inert = false;
    this.undoText.textContent = text;
  }

  withdrawUndo(): void {
    this.undo.inert = true;
    this.undoText.textContent = "";
  }

  reloadRows(): void {
    for (const row of this.rows.splice(0)) row.remove();
    this.addRows();
    this.showWhetherEmpty();
  }

  reloadChooser(): void {
    const rows = [...Array(this.core.numberOfRows(chooserTag)).keys()].map((row) => {
      const cell = this.core.chooserCell(row);
      return cell.reuseIdentifier === "labelsButtons"
        ? this.controlRow()
        : this.labelRow(row, cell);
    });
    this.chooser.replaceChildren(...rows);
    this.chooser.querySelector("button")?.focus({ preventScroll: true });
  }

  setCheckMark(chooserRow: number, shown: boolean): void {
    this.chooser.children[chooserRow]?.setAttribute("aria-checked", String(shown));
  }

  setOpacity(element: string, opacity: number, seconds: number): void {
    const view = element === "dimView" ? this.dim : this.chooser;
    view.style.transition = `opacity ${seconds}s`;
    // The state before takes effect first, or there would be nothing to fade from.
    view.getBoundingClientRect();
    view.style.opacity = String(opacity);
    view.inert = opacity === 0;
    // Nothing behind the chooser can be reached while it is there.
    for (const behind of [this.header, this.content]) behind.inert = !this.chooser.inert;
    view.style.pointerEvents = opacity === 0 ? "none" : "";
    // At once means before there is anything to leave.
    if (opacity === 0 && seconds > 0) this.leaveChooser();
  }

  slideToolbar(upward: number, listHeight: number, seconds: number): void {
    const shown = upward > 0;
    const { style } = this.content;
    this.freeList();
    style.maxHeight = `${this.content.clientHeight}px`;
    // The height before takes effect first, or there would be nothing to change from.
    this.content.getBoundingClientRect();
    style.transition = `max-height ${seconds}s`;
    if (shown) style.maxHeight = `${listHeight}px`;
    else this.freeList();
    this.page.style.setProperty("--toolbar-height", `${Math.abs(upward)}px`);
    this.toolbar.style.transition = `margin-bottom ${seconds}s`;
    this.toolbar.classList.toggle("shown", shown);
    this.toolbar.inert = !shown;
  }

  private readonly chooseNewest = (): void => {
    if (this.rows.length === 0) return;
    this.chosen = 0;
    this.core.didSelectRow(0, listTag);
  };

  private readonly freeList = (): void => {
    this.content.style.maxHeight = "";
  };

  // Rows.

  private addRows(): void {
    const count = this.core.numberOfRows(listTag);
    const end = Math.min(count, this.rows.length + rowsAtOnce);
    while (this.rows.length < end) {
      const row = this.makeRow();
      this.fill(row, this.core.listCell(this.rows.length));
      if (this.editing) {
        row.setAttribute("disabled", "");
        this.setChecked(row, this.core.isSelected(this.rows.length));
      }
      this.rows.push(row);
      this.list.append(row);
    }
    this.more.hidden = this.rows.length >= count;
  }

  private showWhetherEmpty(): void {
    this.empty.hidden = this.core.numberOfRows(listTag) > 0;
  }

  private makeRow(): SlidingElement {
    const option = makeCustom("ion-item-option", { expandable: "true" });
    const swipe = this.core.swipeAction();
    option.textContent = swipe.title;
    option.style.setProperty("--background", swipe.background);
    // Part of what is read out of a row, while it is shown.
    const circle = makeCustom("ion-icon", { slot: "start", class: "circle", role: "img" });
    const item = makeCustom(
      "ion-item",
      { button: "true", detail: "false" },
      circle,
      make(
        "div.result",
        {},
        make("span.date"),
        make("span.heartrate"),
        make("span.spo2"),
        make("span.labels"),
      ),
    );
    const row = makeCustom("ion-item-sliding", {}, item) as SlidingElement;
    // A list has items alone, for those who have it read out.
    const options = makeCustom("ion-item-options", { side: "end", role: "listitem" }, option);
    row.append(options);
    item.addEventListener("click", () => {
      this.tap(row);
    });
    const remove = (): void => {
      void row.close();
      this.core.tapSwipeAction(this.rows.indexOf(row));
    };
    option.addEventListener("click", remove);
    options.addEventListener("ionSwipe", remove);
    return row;
  }

  private fill(row: HTMLElement, cell: HistoryTableViewCell): void {
    const set = (name: string, text: string): void => {
      const view = row.querySelector(`.${name}`);
      if (view) view.textContent = text;
    };
    set("date", cell.dateLabel);
    set("heartrate", cell.heartrateLabel);
    set("spo2", cell.spo2Label);
    row
      .querySelector(".labels")
      ?.replaceChildren(
        ...cell.labelNames.split(", ").flatMap((name) => (name ? [make("span", {}, name)] : [])),
      );
  }

  private tap(row: HTMLElement): void {
    const index = this.rows.indexOf(row);
    if (index < 0) return;
    if (!this.editing) {
      this.chosen = index;
      this.core.didSelectRow(index, listTag);
      return;
    }
    if (this.core.isSelected(index)) this.core.didDeselectRow(index);
    else this.core.didSelectRow(index, listTag);
    this.setChecked(row, this.core.isSelected(index));
  }

  private setChecked(row: HTMLElement, checked: boolean, animated = false): void {
    row.classList.toggle("checked", checked);
    row.classList.toggle("animated", animated);
    const circle = row.querySelector<HTMLElement & { icon?: string }>(".circle");
    if (circle) circle.icon = checked ? checkmarkCircle : ellipseOutline;
    circle?.setAttribute("aria-label", checked ? "Selected" : "Not selected");
  }

  private fadeOut(row: HTMLElement): void {
    const height = `${row.clientHeight}px`;
    const leaving = row.animate(
      calmer.matches
        ? { opacity: [1, 0] }
        : [
            { opacity: 1, height },
            { opacity: 0, height: "0px" },
          ],
      { duration: 250, easing: "ease-out" },
    );
    leaving.onfinish = (): void => {
      row.remove();
    };
  }

  // The label chooser.

  private labelRow(row: number, cell: TableCell): HTMLElement {
    const mark = makeCustom("ion-icon", { "aria-hidden": "true" });
    Object.assign(mark, { icon: checkmark });
    const button = make(
      "button.label-row",
      { type: "button", role: "checkbox", "aria-checked": String(cell.isChecked) },
      make("span", {}, cell.labelName),
      mark,
    );
    button.addEventListener("click", () => {
      this.core.didSelectRow(row, chooserTag);
    });
    return button;
  }

  /** The row that was covered is drawn anew and takes the focus; where it was deleted, the next one. */
  private leaveChooser(): void {
    if (this.chosen === undefined) return;
    const index = Math.min(this.chosen, this.rows.length - 1);
    this.chosen = undefined;
    const row = this.rows[index];
    if (row) this.fill(row, this.core.listCell(index));
    const control = row?.querySelector("ion-item")?.shadowRoot?.querySelector("button");
    (control ?? this.right[0]).focus({ preventScroll: true });
  }

  private controlRow(): HTMLElement {
    return make(
      "div.control-row",
      {},
      textButton("button.none", "None", () => {
        this.core.tapNoLabels();
      }),
      textButton("button.delete", "Delete", () => {
        this.core.tapDeleteRow();
      }),
      textButton("button.close", "Close", () => {
        this.core.clickCloseResultsLabelsView();
      }),
    );
  }
}
