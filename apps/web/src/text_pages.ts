// Screens that are texts: a page with a bar that leads back, and what stands on it.
import "./list_components";

import type { TextPage, WebApp } from "./core";
import { make, makeCustom } from "./dom";

/** A page to be pushed onto the measuring screen. */
export function subPage(title: string, ...content: readonly HTMLElement[]): HTMLElement {
  const back = makeCustom("ion-back-button", { "default-href": "#", text: "Back" });
  const holder = makeCustom("ion-content");
  holder.append(make("div", {}, ...content));
  return make(
    "div.ion-page",
    {},
    makeCustom(
      "ion-header",
      {},
      makeCustom(
        "ion-toolbar",
        {},
        makeCustom("ion-buttons", { slot: "start" }, back),
        makeCustom("ion-title", {}, title),
      ),
    ),
    holder,
  );
}

/** A page to read, with what belongs below it. */
export function textPage(text: TextPage, ...below: readonly HTMLElement[]): HTMLElement {
  const sections = text.sections.map(({ heading, text: paragraph }) =>
    make("section", {}, make("h2", {}, heading), make("p", {}, paragraph)),
  );
  // With the focus on it, a keyboard scrolls it.
  return subPage(text.title, make("article.text", { tabindex: "0" }, ...sections), ...below);
}

export function faqPage(core: WebApp): HTMLElement {
  const entries = core
    .faqs()
    .map(({ question, answer }) =>
      makeCustom(
        "ion-accordion",
        {},
        makeCustom("ion-item", { slot: "header" }, makeCustom("ion-label", {}, question)),
        make("div.answer", { slot: "content" }, make("p", {}, answer)),
      ),
    );
  return subPage("FAQ", makeCustom("ion-accordion-group", {}, ...entries));
}
