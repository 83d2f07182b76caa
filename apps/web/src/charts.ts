// The charts screen, loaded when it is first opened.
import "./charts.css";

import { defineCustomElement as label } from "@ionic/core/components/ion-label.js";
import { defineCustomElement as segment } from "@ionic/core/components/ion-segment.js";
import { defineCustomElement as segmentButton } from "@ionic/core/components/ion-segment-button.js";

import { chevronDown } from "ionicons/icons";

import { followPage, type WebApp } from "./core";
import { icon, make, makeCustom, textButton } from "./dom";
import { ElementViews } from "./element_views";
import { LineChartView, SharedTime } from "./line_chart";
import { subPage } from "./text_pages";

export class ChartsScreen {
  readonly page: HTMLElement;

  /** `measureNow` leads back to the measuring screen. */
  constructor(app: WebApp, measureNow: () => void) {
    for (const define of [label, segment, segmentButton]) define();
    const time = new SharedTime();
    const names = app.captions();
    const heartrate = new LineChartView(time, names.heartrate, (axis, value) =>
      core.heartrateAxisText(axis, value),
    );
    const spo2 = new LineChartView(time, names.spo2, (axis, value) =>
      core.spo2AxisText(axis, value),
    );
    const normal = make("span.normal");
    const highlighted = make("span.highlighted", { "aria-hidden": "true" });
    const elements = new Map<string, HTMLElement>([
      ["buttonLabels", normal],
      ["buttonLabelsHighlighted", highlighted],
    ]);
    const display = new ElementViews(elements, (pending, answer) => {
      app.settle(pending, answer);
    });
    const core = app.charts({ display, heartrate, spo2 });

    const periods = makeCustom("ion-segment", { value: "0", "aria-label": "Period" });
    core.periodTitles().forEach((title, index) => {
      const text = makeCustom("ion-label", {}, title);
      periods.append(makeCustom("ion-segment-button", { value: String(index) }, text));
    });
    periods.addEventListener("ionChange", (event) => {
      core.tapSegmentPeriod(Number((event as CustomEvent<{ value: string }>).detail.value));
    });
    const labels = make(
      "button.choose-label",
      { type: "button" },
      normal,
      highlighted,
      icon(chevronDown, "unfold"),
    );
    labels.addEventListener("click", () => {
      core.tapButtonLabels();
    });
    this.page = subPage(
      "Charts",
      make(
        "div.charts",
        {},
        make("div.chart-choices", {}, periods, labels),
        heartrate.element,
        spo2.element,
        textButton("button.measure-now", "Measure now", measureNow),
      ),
    );
    followPage(this.page, core);
    this.page.addEventListener("ionViewWillUnload", () => {
      heartrate.close();
      spo2.close();
    });
  }
}
