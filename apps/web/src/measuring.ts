// The measuring screen.
import {
  cameraReverse,
  checkmarkCircle,
  fingerPrint,
  handLeft,
  helpCircle,
  list,
  optionsOutline,
  pricetagOutline,
  pulse,
  sunny,
} from "ionicons/icons";

import type { Captions, WebApp } from "./core";
import { calmer, icon, iconButton, make, makeCustom, textButton } from "./dom";
import { ElementViews } from "./element_views";
import { fingerPicture } from "./illustrations";
import type { DisplayViews, EndingViews } from "./page";
import { followSwipes } from "./swipes";
import { Widget } from "./widget";

/** By the core's names of what is seen of the finger or the lens, or of why there is no value. */
const fingerIcons: Readonly<Record<string, string>> = {
  noFinger: fingerPrint,
  tooBright: sunny,
  moving: handLeft,
  weak: pulse,
  good: checkmarkCircle,
  unlit: cameraReverse,
  switched: cameraReverse,
  noValue: helpCircle,
};

/** Said in turn while there is nothing to see yet. */
const hints = [
  "Rest your hand on a table",
  "Press lightly, or the pulse stops",
  "Sit still and breathe calmly",
];

const markedCheckbox = "checkbox_marked.png";

interface ValueNames {
  readonly caption: "heartrate" | "spo2";
  /** As a screen reader says it. */
  readonly spoken: string;
  readonly unit: "heartrateUnit" | "spo2Unit";
  readonly panel: string;
  readonly gauge: string;
  readonly ring: string;
  readonly value: string;
  readonly measuring: string;
  readonly checkbox: string;
  readonly last: string;
}

const heartrate: ValueNames = {
  caption: "heartrate",
  spoken: "Heart rate",
  unit: "heartrateUnit",
  panel: "viewGaugeHeartrate",
  gauge: "gaugeHR",
  ring: "circleprogressHeartrate",
  value: "labelHeartrate",
  measuring: "labelMeasuringHeartrate",
  checkbox: "buttonCheckboxHeartrate",
  last: "labelLastHeartrate",
};

const spo2: ValueNames = {
  caption: "spo2",
  spoken: "Oxygen saturation",
  unit: "spo2Unit",
  panel: "viewGaugeSpo2",
  gauge: "gaugeSpo2",
  ring: "circleprogressSpo2",
  value: "labelSpo2",
  measuring: "labelMeasuringSpo2",
  checkbox: "buttonCheckboxSpo2",
  last: "labelLastSpo2",
};

export class MeasuringScreen {
  readonly page = make("div.ion-page.measuring");
  readonly views: DisplayViews;
  /** Milliseconds that a widget took to draw, for whoever measures. */
  drawn: (milliseconds: number) => void = () => undefined;

  private readonly elements = new Map<string, HTMLElement>();
  private readonly captions = new Map<HTMLElement, keyof Captions>();
  private readonly widgets = new Map<string, Widget>();
  private readonly title = makeCustom("ion-title");
  private readonly fingerIcon = makeCustom("ion-icon", { "aria-hidden": "true" });
  private readonly fingerChip = make(
    "p.finger",
    { "data-state": "" },
    this.fingerIcon,
    this.named("labelFinger", make("span", { "aria-live": "polite" })),
    this.nextCamera(),
  );
  private readonly starved = make("p.starved", { "aria-live": "polite", "data-state": "" });
  /** Says what comes to stand in the centre while that is hidden, and would not be read out there. */
  private readonly readOut = make("p.read-out", { role: "status" });
  private result = "";
  private doubted = "";
  /** The user has asked to label what was just measured. */
  private wantsLabel = false;
  private readonly begin = make("button.round.begin", { type: "button" });
  /** How a measurement ends is seen, said and felt. */
  readonly ending: EndingViews = {
    measurementBegan: () => {
      this.page.classList.remove("has-finished");
      this.page.classList.add("under-way");
      this.result = "";
      this.sayResult();
    },
    measurementEnded: (end) => {
      this.page.classList.remove("under-way");
      if (end === "finished") {
        this.page.classList.add("has-finished");
        const values = [heartrate, spo2].map((names) => {
          const value = this.elements.get(names.value)?.textContent ?? "";
          const unit = names === spo2 ? "per cent" : "beats per minute";
          return /\d/.test(value) ? `${names.spoken} ${value} ${unit}.` : "";
        });
        this.result = values.join(" ");
        this.sayResult();
      }
      if (end === "" || calmer.matches || !("vibrate" in navigator)) return;
      navigator.vibrate(end === "finished" ? 60 : [40, 80, 40]);
    },
  };

  /** `core` is asked for when something is tapped or drawn. */
  constructor(private readonly core: () => WebApp) {
    this.views = new ElementViews(
      this.elements,
      (pending, answer) => {
        this.core().settle(pending, answer);
      },
      (element) => this.widgets.get(element)?.setNeedsDisplay(),
      (view, image) => {
        if (view === this.elements.get("labelFinger")) this.showFinger(image);
        else view.setAttribute("aria-checked", String(image === markedCheckbox));
      },
    );
    const content = makeCustom("ion-content", { "scroll-y": "true", fullscreen: "false" });
    content.append(
      make(
        "div.measuring-grid",
        {},
        make("div.dials", {}, this.valueHalf(heartrate), this.valueHalf(spo2)),
        this.center(),
        this.lines(),
        this.buttons(),
      ),
    );
    this.page.append(this.navigationBar(), content);
    followSwipes(content, {
      left: () => {
        this.core().measuring().swipeLeft();
      },
      right: () => {
        this.core().measuring().swipeRight();
      },
    });
  }

  /** START has led to something that shows. */
  answered(): void {
    this.begin.ariaBusy = null;
  }

  setTitle(title: string): void {
    this.title.textContent = title;
  }

  /** The core's captions, as soon as it is there. */
  showCaptions(captions: Captions): void {
    for (const [view, name] of this.captions) view.textContent = captions[name];
  }

  private captioned<View extends HTMLElement>(name: keyof Captions, view: View): View {
    this.captions.set(view, name);
    return view;
  }

  private nextCamera(): HTMLElement {
    const button = this.captioned(
      "nextCamera",
      textButton("button.next-camera", "", () => {
        this.core().measuring().nextCameraButtonPush();
      }),
    );
    button.toggleAttribute("data-hidden", true);
    return this.named("buttonNextCamera", button);
  }

  private named<View extends HTMLElement>(name: string, view: View): View {
    view.dataset["element"] = name;
    this.elements.set(name, view);
    return view;
  }

  /** `margin` is for what reaches over the widget's edge, in points. */
  private widget(name: string, margin = 0): HTMLElement {
    const widget = new Widget(
      (width, height) => this.core().draw(name, width, height),
      (milliseconds) => {
        this.drawn(milliseconds);
      },
      margin,
    );
    this.widgets.set(name, widget);
    return widget.canvas;
  }

  private navigationBar(): HTMLElement {
    const results = iconButton(list, "Results", () => {
      this.core().measuring().swipeRight();
    });
    const options = iconButton(optionsOutline, "Options", () => {
      this.core().measuring().swipeLeft();
    });
    return this.named(
      "navBar",
      makeCustom(
        "ion-header",
        {},
        makeCustom(
          "ion-toolbar",
          {},
          makeCustom("ion-buttons", { slot: "start" }, results),
          this.title,
          makeCustom("ion-buttons", { slot: "end" }, options),
        ),
      ),
    );
  }

  private valueHalf(names: ValueNames): HTMLElement {
    const checkbox = this.named(
      names.checkbox,
      make("button.checkbox", {
        type: "button",
        role: "checkbox",
        "aria-checked": "true",
        "aria-label": `Measure ${names.spoken.toLowerCase()}`,
      }),
    );
    const value = this.named(names.value, make("span.value"));
    const dial = this.named(
      names.panel,
      make(
        "div.dial",
        {},
        this.named(names.gauge, this.widget(names.gauge)),
        make("div.ring", {}, this.named(names.ring, this.widget(names.ring)), value),
      ),
    );
    // One control for fingers; others have the box itself.
    const row = make(
      "div.caption-row",
      {},
      checkbox,
      this.named(names.measuring, this.captioned(names.caption, make("h2.caption"))),
    );
    row.addEventListener("click", () => {
      if (checkbox.inert) return;
      if (names === heartrate) this.core().measuring().buttonCheckboxHeartrateTapped();
      else this.core().measuring().buttonCheckboxSpo2Tapped();
    });
    return make("section.value-half", { "aria-label": names.spoken }, row, dial);
  }

  private center(): HTMLElement {
    const lastValue = (names: ValueNames): HTMLElement =>
      make(
        "p.last-value",
        { role: "group", "aria-label": `Last ${names.spoken.toLowerCase()}` },
        this.named(names.last, make("span.number")),
        this.captioned(names.unit, make("span.unit")),
      );
    // Why a value may not be relied on; empty ones take no room.
    const doubts = make(
      "div.doubts",
      {},
      this.named("labelDoubtHeartrate", make("p.doubt")),
      this.named("labelDoubtSpo2", make("p.doubt")),
    );
    new MutationObserver(() => {
      this.doubted = [...doubts.children].map((each) => each.textContent).join(" ");
      this.sayResult();
    }).observe(doubts, { subtree: true, childList: true });
    const last = this.named(
      "viewLastMeasurements",
      make(
        "div.last-measurements",
        {},
        this.captioned("lastMeasurement", make("h2.heading")),
        make("div.last-values", {}, lastValue(heartrate), lastValue(spo2)),
        doubts,
      ),
    );
    const chart = this.named(
      "chartFourierView",
      make(
        "div.pulse",
        {},
        this.captioned("pulse", make("h2.heading")),
        make("div.curve", {}, this.widget("chartFourierView", 2)),
      ),
    );
    const center = make("section.center", {}, this.liveValues(), last, chart, this.wait());
    return this.named("viewCenter", center);
  }

  /** The values as they come, to be read at arm's length; in the rings they are read out. */
  private liveValues(): HTMLElement {
    const live = make("div.live.last-values", { "aria-hidden": "true" });
    for (const names of [heartrate, spo2]) {
      const number = make("span.number");
      live.append(make("p.live-value", {}, number, this.captioned(names.unit, make("span.unit"))));
      const value = this.elements.get(names.value);
      if (!value) continue;
      new MutationObserver(() => {
        number.textContent = value.textContent;
        live.classList.toggle("has-values", /\d/.test(live.textContent));
      }).observe(value, { subtree: true, childList: true });
    }
    return live;
  }

  /** Until the curve comes. */
  private wait(): HTMLElement {
    const bar = make("div.wait-bar", {}, make("i"));
    const turns = make("div.wait-hints", {}, ...hints.map((hint) => make("p", {}, hint)));
    return make("div.wait", { "aria-hidden": "true" }, fingerPicture(), bar, turns);
  }

  private sayResult(): void {
    this.readOut.textContent = `${this.result} ${this.doubted}`.trim();
  }

  private lines(): HTMLElement {
    return make(
      "div.lines",
      {},
      make("div.told", {}, this.fingerChip, this.starved),
      this.readOut,
      this.named("labelRed", make("p.status", { role: "status" })),
      this.named("labelGrey", make("p.instruction", { "aria-live": "polite" })),
    );
  }

  /** From the end of a measurement to its labels in one tap. */
  private labelButton(): HTMLElement {
    const button = textButton("button.label-result", "Label", () => {
      this.wantsLabel = true;
      this.core().measuring().swipeRight();
    });
    button.ariaLabel = "Label this measurement";
    button.prepend(icon(pricetagOutline, "tag"));
    return button;
  }

  /** Whether the results that open now are to open with the labels of the newest one. */
  takeLabelWish(): boolean {
    const wanted = this.wantsLabel;
    this.wantsLabel = false;
    return wanted;
  }

  /** `state` is the core's name of it; empty for nothing to say. */
  private showFinger(state: string): void {
    this.fingerChip.dataset["state"] = state;
    Object.assign(this.fingerIcon, { icon: fingerIcons[state] });
  }

  /** In place of what was seen of the finger while frames came. */
  showStarved(isStarved: boolean): void {
    this.starved.dataset["state"] = isStarved ? "starved" : "";
    this.starved.textContent = isStarved
      ? "No pictures come from the camera. Is the phone saving its battery?"
      : "";
  }

  private buttons(): HTMLElement {
    const begin = this.named("beginButton", this.captioned("start", this.begin));
    begin.addEventListener("click", () => {
      // The camera takes its time to open.
      begin.ariaBusy = "true";
      const measuring = this.core().measuring();
      const seconds = measuring.secondsUntilCurve();
      this.page.style.setProperty("--wait", `${seconds}s`);
      this.page.classList.toggle("without-curve", seconds === 0);
      measuring.beginButtonPush();
    });
    const stop = this.named(
      "stopButton",
      this.captioned("stop", make("button.round.stop", { type: "button" })),
    );
    stop.addEventListener("click", () => {
      this.core().measuring().stopButtonPush();
    });
    return make("div.buttons", {}, begin, stop, this.labelButton());
  }
}
