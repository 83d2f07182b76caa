// The core's alerts as modal dialogs. They forward every tap; what it does is the core's to say.
import {
  alertCircle,
  closeCircle,
  informationCircle,
  mail,
  megaphone,
  warning,
} from "ionicons/icons";

import type { WebApp } from "./core";
import { giveFocus, icon, make, showModal } from "./dom";
import { fingerPicture } from "./illustrations";
import type { AlertField, AlertShown } from "./page";

const icons: Readonly<Record<AlertShown["kind"], string>> = {
  plain: informationCircle,
  warning,
  error: closeCircle,
  waiting: alertCircle,
  edit: mail,
  notice: megaphone,
};

/**
 * Milliseconds within which the second tap of a double tap falls. Meant for what stood there before, it
 * must not answer an alert that nobody has seen.
 */
const doubleTap = 350;

export class AlertDialogs {
  private readonly open = new Map<number, HTMLDialogElement>();
  /** Those that come when the one in front has been read; what a field's text is told comes over it. */
  private readonly next = new Map<number, () => void>();
  private front: number | undefined;

  /** Stands below the text of the next alert: what the page knows of its browser. */
  note: string | undefined;
  /** Called when an alert is shown. */
  shown: () => void = () => undefined;

  constructor(private readonly core: () => WebApp) {}

  show(id: number, alert: AlertShown): void {
    const { note } = this;
    this.note = undefined;
    if (alert.kind === "waiting") {
      this.build(id, alert, note).show();
    } else {
      this.next.set(id, () => {
        if (!alert.textField) this.front = id;
        this.ask(this.build(id, alert, note));
      });
      this.showNext();
    }
    this.shown();
  }

  private showNext(): void {
    const [first] = this.next;
    if (this.front !== undefined || !first) return;
    const [id, show] = first;
    this.next.delete(id);
    show();
  }

  private ask(dialog: HTMLDialogElement): void {
    showModal(dialog);
    dialog.classList.add("unseen");
    setTimeout(() => {
      dialog.classList.remove("unseen");
    }, doubleTap);
  }

  private build(id: number, alert: AlertShown, noteText: string | undefined): HTMLDialogElement {
    const title = make("h2", { id: `alert-title-${id}` }, alert.title);
    const subtitle = make("p", { id: `alert-text-${id}` }, alert.subtitle);
    const note =
      noteText === undefined ? [] : [make("p.note", { id: `alert-note-${id}` }, noteText)];
    const { show, hide, background } = alert.style;
    const look = `show-${show}.hide-${hide}.${background}` as const;
    const dialog = make(`dialog.alert.${alert.kind}.${look}`, {
      role: "alertdialog",
      "aria-labelledby": title.id,
      "aria-describedby": [subtitle, ...note].map((text) => text.id).join(" "),
    });
    dialog.style.setProperty("--alert-color", alert.color);
    dialog.style.setProperty("--alert-icon", alert.iconTint);
    dialog.style.setProperty("--duration", `${alert.duration ?? 0}s`);
    const buttons = alert.buttons.map((text, index) =>
      this.button(text, () => {
        this.core().alerts().tapButton(id, index);
      }),
    );
    if (alert.closeButton !== null) {
      buttons.push(
        this.button(alert.closeButton, () => {
          this.core().alerts().tapClose(id);
        }),
      );
    }
    for (const other of buttons.slice(1)) other.classList.add("quiet");
    const card = make("div.alert-card", { tabindex: "-1" }, this.badge(alert), title);
    if (alert.kind === "waiting") card.append(fingerPicture());
    if (alert.subtitle) card.append(subtitle);
    card.append(...note);
    if (alert.textField) card.append(this.field(id, alert.textField));
    card.append(make("div.alert-buttons", {}, ...buttons));
    dialog.append(card);
    dialog.addEventListener("click", (event) => {
      if (event.target === dialog) this.core().alerts().tapOutside(id);
    });
    // The Escape key stands for the close button; the core knows whether there is one.
    dialog.addEventListener("cancel", (event) => {
      event.preventDefault();
      this.core().alerts().tapClose(id);
    });
    document.body.append(dialog);
    this.open.set(id, dialog);
    return dialog;
  }

  hide(id: number): void {
    this.next.delete(id);
    const dialog = this.open.get(id);
    if (!dialog) return;
    this.open.delete(id);
    dialog.classList.add("leaving");
    dialog.ariaHidden = "true";
    dialog.close();
    // Kept until it has faded.
    setTimeout(() => {
      dialog.remove();
    }, 300);
    if (this.front !== id) return;
    this.front = undefined;
    this.showNext();
  }

  setFieldText(id: number, text: string): void {
    const field = this.open.get(id)?.querySelector("input");
    if (field) field.value = text;
  }

  focusField(id: number): void {
    const field = this.open.get(id)?.querySelector("input");
    if (field) giveFocus(field);
  }

  private field(id: number, { placeholder, text, ...field }: AlertField): HTMLInputElement {
    const input = make("input", {
      type: field.keyboard,
      inputmode: field.keyboard,
      autocomplete: field.keyboard === "email" ? "email" : "off",
      autocapitalize: field.autocapitalizes ? "sentences" : "none",
      autocorrect: field.autocorrects ? "on" : "off",
      spellcheck: String(field.autocorrects),
      placeholder,
      "aria-label": placeholder,
    });
    input.value = text;
    input.addEventListener("input", () => {
      this.core().alerts().typeInField(id, input.value);
    });
    return input;
  }

  private badge(alert: AlertShown): HTMLElement {
    if (alert.kind !== "waiting") return make("div.badge", {}, icon(icons[alert.kind], "kind"));
    const badge = make("div.badge.waiting", { "aria-hidden": "true" });
    badge.innerHTML =
      '<svg viewBox="0 0 72 72"><circle cx="36" cy="36" r="24" pathLength="1"/></svg>';
    return badge;
  }

  private button(text: string, tapped: () => void): HTMLButtonElement {
    const button = make("button", { type: "button" }, text);
    button.addEventListener("click", tapped);
    return button;
  }
}
