// The introduction: a full-screen dialog over whatever is shown.
import { chevronBack } from "ionicons/icons";

import type { IntroViewController, WebApp } from "./core";
import { iconButton, make, showModal, textButton } from "./dom";
import { ElementViews } from "./element_views";
import { illustration } from "./illustrations";
import type { DisplayViews } from "./page";
import { followSwipes } from "./swipes";

export class IntroScreen {
  readonly views: DisplayViews;

  private readonly dialog = make("dialog.intro", {
    "aria-labelledby": "intro-title",
    closedby: "none",
    tabindex: "-1",
  });
  private readonly dots = make("div.dots", { role: "img" });
  private readonly title = make("h1", { id: "intro-title" });
  private readonly image = make("div.illustration");
  private readonly subTitle = make("p.instruction");
  private readonly back: HTMLElement;
  private readonly next = textButton("button.onward", "Next", () => {
    this.swipe("left");
  });
  private readonly skip = make("button.skip", { type: "button" });
  private shown = false;

  constructor(private readonly app: () => WebApp) {
    this.views = new ElementViews(
      new Map<string, HTMLElement>([
        ["labelTitle", this.title],
        ["image", this.image],
        ["labelSubTitle", this.subTitle],
      ]),
      (pending, answer) => {
        this.app().settle(pending, answer);
      },
      undefined,
      (_element, image) => {
        this.showImage(image);
      },
    );
    this.back = iconButton(chevronBack, "Previous page", () => {
      this.swipe("right");
    });
    this.skip.addEventListener("click", () => {
      this.core.buttonSkipTapped();
    });
    this.dialog.append(
      make(
        "div.intro-page",
        {},
        make(
          "div.intro-content",
          { "aria-live": "polite", tabindex: "0" },
          this.title,
          this.image,
          this.subTitle,
        ),
        make("div.intro-foot", {}, this.back, this.dots),
        make("div.intro-buttons", {}, this.next, this.skip),
      ),
    );
    followSwipes(this.dialog, {
      left: () => {
        this.swipe("left");
      },
      right: () => {
        this.swipe("right");
      },
    });
    this.dialog.addEventListener("keydown", (event) => {
      if (event.key === "ArrowLeft") this.swipe("right");
      if (event.key === "ArrowRight") this.swipe("left");
    });
    // It ends through its skip control alone.
    this.dialog.addEventListener("cancel", (event) => {
      event.preventDefault();
    });
    // Browsers close it all the same where they are asked to twice.
    this.dialog.addEventListener("close", () => {
      if (this.shown && !this.dialog.open) this.open();
    });
  }

  private get core(): IntroViewController {
    return this.app().intro();
  }

  get isOpen(): boolean {
    return this.shown;
  }

  show(): void {
    if (this.shown) return;
    this.shown = true;
    const { core } = this;
    core.viewDidLoad();
    const [titles, subTitles, images] = [core.titles(), core.subTitles(), core.images()];
    this.title.textContent = titles[0] ?? "";
    this.subTitle.textContent = subTitles[0] ?? "";
    this.showImage(images[0] ?? "");
    this.dots.replaceChildren(...titles.map(() => make("span.dot")));
    this.showPosition();
    document.body.append(this.dialog);
    this.open();
  }

  private open(): void {
    showModal(this.dialog);
    // Nothing within it looks chosen before a key is used.
    this.dialog.focus();
  }

  async dismiss(): Promise<void> {
    const leaving = this.dialog.animate([{ opacity: 1 }, { opacity: 0 }], { duration: 250 });
    await leaving.finished.catch(() => undefined);
    this.shown = false;
    this.dialog.close();
    this.dialog.remove();
  }

  private swipe(direction: "left" | "right"): void {
    if (direction === "left") this.core.swipeleft();
    else this.core.swiperight();
    this.showPosition();
  }

  private showPosition(): void {
    const { core } = this;
    const dots = [...this.dots.children] as HTMLElement[];
    const [current, indicated] = [core.currentPage(), Math.max(0, core.indicatedPage())];
    dots.forEach((dot, index) => {
      dot.classList.toggle("current", index === indicated);
      dot.style.background = index === indicated ? core.currentDotColor() : "";
    });
    this.dots.setAttribute("aria-label", `Page ${indicated + 1} of ${dots.length}`);
    this.back.toggleAttribute("disabled", current === 0);
    const isLast = current === dots.length - 1;
    this.next.hidden = isLast;
    this.skip.classList.toggle("onward", isLast);
    this.skip.textContent = isLast ? "Done" : "Skip";
  }

  private showImage(name: string): void {
    this.image.innerHTML = illustration(name);
  }
}
