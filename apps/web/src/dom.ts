// Small helpers for making elements.

type Content = Node | string;

/** An element with classes, attributes and content, such as `make("p.note", {}, "text")`. */
export function make<Name extends keyof HTMLElementTagNameMap>(
  description: Name | `${Name}.${string}`,
  attributes: Readonly<Record<string, string>> = {},
  ...content: readonly Content[]
): HTMLElementTagNameMap[Name] {
  const [name, ...classes] = description.split(".") as [Name, ...string[]];
  const element = document.createElement(name);
  element.classList.add(...classes);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...content);
  return element;
}

/** A custom element, which is no part of TypeScript's own list. */
export function makeCustom(
  name: string,
  attributes: Readonly<Record<string, string>> = {},
  ...content: readonly Content[]
): HTMLElement {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...content);
  return element;
}

/** What stands in a sheet. It takes the focus when the sheet opens: no button looks chosen by then. */
export function sheetCard(...content: readonly Content[]): HTMLElement {
  return make("div.sheet-card", { tabindex: "-1" }, ...content);
}

/** What has the focus, within whatever component it stands. */
function focused(): HTMLElement | undefined {
  let element = document.activeElement;
  while (element?.shadowRoot?.activeElement) element = element.shadowRoot.activeElement;
  return element instanceof HTMLElement && element !== document.body ? element : undefined;
}

const openers = new WeakMap<HTMLDialogElement, HTMLElement>();
/** What is to have the focus when a dialog over it has gone. */
const waiting = new WeakMap<Element, HTMLElement>();

/**
 * Shows a modal dialog, at whose end the focus returns to what opened it. Browsers do so themselves, but
 * not to what opened a dialog that is gone, as a sheet is when the mail that it led to is closed.
 */
export function showModal(dialog: HTMLDialogElement): void {
  let opener = focused();
  const before = opener?.closest("dialog");
  if (before) opener = openers.get(before) ?? opener;
  if (opener) openers.set(dialog, opener);
  dialog.addEventListener(
    "close",
    () => {
      const next = waiting.get(dialog) ?? (focused() ? undefined : opener);
      next?.focus({ preventScroll: true });
    },
    { once: true },
  );
  dialog.showModal();
}

/** Gives an element the focus, as soon as nothing stands over it. */
export function giveFocus(element: HTMLElement): void {
  const front = [...document.querySelectorAll("dialog:modal")].at(-1);
  if (!front || front.contains(element)) element.focus();
  else waiting.set(front, element);
}

/** A button with a text. */
export function textButton(
  description: "button" | `button.${string}`,
  text: string,
  tapped: () => void,
): HTMLButtonElement {
  const button = make(description, { type: "button" }, text);
  button.addEventListener("click", tapped);
  return button;
}

/** Of iPhones and iPads; these say that they are Macintoshes, which have no touch screen. */
export function isIos(): boolean {
  const { userAgent, maxTouchPoints } = window.navigator;
  return (
    /iPhone|iPad|iPod/.test(userAgent) || (userAgent.includes("Macintosh") && maxTouchPoints > 1)
  );
}

/** Whether motion is to be avoided, because it makes the user ill. */
export const calmer = window.matchMedia("(prefers-reduced-motion: reduce)");

/** A picture beside a text, which says the same. */
export function icon(picture: string, className: string): HTMLElement {
  const element = makeCustom("ion-icon", { class: className, "aria-hidden": "true" });
  Object.assign(element, { icon: picture });
  return element;
}

/** The buttons at the foot of a sheet: the first is what most people want. */
export function sheetButtons(...buttons: readonly HTMLElement[]): HTMLElement {
  buttons[0]?.classList.add("primary");
  return make("div.sheet-buttons", {}, ...buttons);
}

/** A button with a picture alone; `label` is read out. */
export function iconButton(icon: string, label: string, tapped: () => void): HTMLElement {
  const picture = makeCustom("ion-icon", { slot: "icon-only", "aria-hidden": "true" });
  Object.assign(picture, { icon });
  const button = makeCustom("ion-button", { "aria-label": label }, picture);
  button.addEventListener("click", tapped);
  return button;
}
