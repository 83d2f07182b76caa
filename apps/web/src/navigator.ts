// Pages over the measuring screen, and which of them is in front. The browser's history has an entry for
// each, so that a phone's Back leads back through them before it leaves the application.
import { makeCustom } from "./dom";

interface NavElement extends HTMLElement {
  swipeGesture?: boolean;
  setRoot(page: HTMLElement): Promise<boolean>;
  push(page: HTMLElement): Promise<boolean>;
  pop(): Promise<boolean>;
  popTo(index: number): Promise<boolean>;
  getLength(): Promise<number>;
}

/** Milliseconds for a step in the browser's history, which it may refuse without a word. */
const longestStep = 500;

/** How many pages lie over the first one where the browser's history stands. */
function recordedDepth(): number {
  return (window.history.state as { readonly depth?: number } | null)?.depth ?? 0;
}

async function stepBack(entries: number): Promise<void> {
  await new Promise((done) => {
    window.addEventListener("popstate", done, { once: true });
    setTimeout(done, longestStep);
    window.history.go(-entries);
  });
}

/** Leaves what stands over the page in front, where there is anything, as the Escape key would. */
function leaveDialog(): boolean {
  const modal = 'dialog:modal, [aria-modal="true"]:not([inert])';
  const dialog = [...document.querySelectorAll(modal)].at(-1);
  if (!dialog) return false;
  const goesOn = dialog.dispatchEvent(new Event("cancel", { cancelable: true }));
  if (goesOn && dialog instanceof HTMLDialogElement) dialog.close();
  return true;
}

export class Navigator {
  private readonly nav = makeCustom("ion-nav") as NavElement;
  /** One after the other. */
  private steps: Promise<unknown> = Promise.resolve();
  /** Ways that a tap has led and that are not done yet. */
  private readonly underWay = new Set<"in" | "out">();

  /** `missing` is called when a page could not be loaded. */
  constructor(private readonly missing: () => void) {}

  async start(root: HTMLElement, app: HTMLElement): Promise<void> {
    app.append(this.nav);
    await customElements.whenDefined("ion-nav");
    await this.nav.setRoot(root);
    // A page that was loaded again begins anew.
    this.then(() => this.record());
    this.nav.addEventListener("ionNavDidChange", () => {
      this.then(() => this.record());
    });
    window.addEventListener("popstate", () => {
      this.then(() => this.follow());
    });
  }

  push(page: HTMLElement): void {
    this.go("in", () => this.nav.push(page));
  }

  /** The same with a page that must be loaded first. */
  pushLoaded(load: () => Promise<HTMLElement>): void {
    this.go("in", async () => {
      const page = await load().catch((error: unknown) => {
        this.missing();
        throw error;
      });
      return this.nav.push(page);
    });
  }

  pop(): void {
    this.go("out", () => this.nav.pop());
  }

  /** Through all of the pages that lie over the first one. */
  popToFirst(): void {
    this.go("out", () => this.nav.popTo(0));
  }

  setBackSwipeEnabled(enabled: boolean): void {
    this.nav.swipeGesture = enabled;
  }

  /** Once: while it loads or slides, another tap falls on a screen that is leaving, and leads nowhere. */
  private go(way: "in" | "out", step: () => Promise<unknown>): void {
    if (this.underWay.has(way)) return;
    this.underWay.add(way);
    this.then(() =>
      step().finally(() => {
        this.underWay.delete(way);
      }),
    );
  }

  private then(step: () => Promise<unknown>): void {
    this.steps = this.steps.then(step).catch((error: unknown) => {
      console.error("a page does not open", error);
    });
  }

  private async depth(): Promise<number> {
    return (await this.nav.getLength()) - 1;
  }

  /** Brings the browser's history to where the pages are. */
  private async record(): Promise<void> {
    const depth = await this.depth();
    const recorded = recordedDepth();
    for (let next = recorded + 1; next <= depth; ++next) {
      window.history.pushState({ depth: next }, "");
    }
    if (recorded > depth) await stepBack(recorded - depth);
  }

  /** Brings the pages to where the browser's history is; there is no way forward to one that has gone. */
  private async follow(): Promise<void> {
    const recorded = recordedDepth();
    if ((await this.depth()) > recorded && !leaveDialog()) await this.nav.popTo(recorded);
    else await this.record();
  }
}
