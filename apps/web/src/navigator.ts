// Pages over the measuring screen, and which of them is in front.
import { makeCustom } from "./dom";

interface NavElement extends HTMLElement {
  swipeGesture?: boolean;
  setRoot(page: HTMLElement): Promise<boolean>;
  push(page: HTMLElement): Promise<boolean>;
  pop(): Promise<boolean>;
}

export class Navigator {
  private readonly nav = makeCustom("ion-nav") as NavElement;
  private pushing: Promise<unknown> = Promise.resolve();

  async start(root: HTMLElement, app: HTMLElement): Promise<void> {
    app.append(this.nav);
    await customElements.whenDefined("ion-nav");
    await this.nav.setRoot(root);
  }

  /** One after the other: a second tap must not open a page twice at once. */
  push(page: HTMLElement): void {
    this.pushing = this.pushing.then(() => this.nav.push(page));
  }

  /** The same with a page that must be loaded first. */
  pushLoaded(load: () => Promise<HTMLElement>): void {
    this.pushing = this.pushing.then(async () => this.nav.push(await load()));
  }

  pop(): void {
    this.pushing = this.pushing.then(() => this.nav.pop());
  }

  setBackSwipeEnabled(enabled: boolean): void {
    this.nav.swipeGesture = enabled;
  }
}
