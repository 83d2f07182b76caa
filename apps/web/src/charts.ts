// The charts screen, loaded when it is first opened.
import { defineCustomElement as label } from "@ionic/core/components/ion-label.js";
import { defineCustomElement as segment } from "@ionic/core/components/ion-segment.js";
import { defineCustomElement as segmentButton } from "@ionic/core/components/ion-segment-button.js";

import type { WebApp } from "./core";
import { make, makeCustom } from "./dom";
import { LineChartView } from "./line_chart";
import type { ChartName } from "./page";
import { subPage } from "./text_pages";

export class ChartsScreen {
  readonly page: HTMLElement;
  private readonly charts: Readonly<Record<ChartName, LineChartView>>;

  /** Puts the elements that the core drives among `elements`. */
  constructor(core: WebApp, elements: Map<string, HTMLElement>) {
    for (const define of [label, segment, segmentButton]) define();
    const lineChart = (name: ChartName): LineChartView =>
      new LineChartView((axis, value) => core.chartAxisText(name, axis, value));
    this.charts = { heartrate: lineChart("heartrate"), spo2: lineChart("spo2") };

    const periods = makeCustom("ion-segment", { value: "0", "aria-label": "Period" });
    core.chartPeriodTitles().forEach((title, index) => {
      const text = makeCustom("ion-label", {}, title);
      periods.append(makeCustom("ion-segment-button", { value: String(index) }, text));
    });
    periods.addEventListener("ionChange", (event) => {
      core.tapSegmentPeriod(Number((event as CustomEvent<{ value: string }>).detail.value));
    });
    const normal = make("span.normal", {}, "Choose Label");
    const highlighted = make("span.highlighted", { "aria-hidden": "true" }, "Choose label");
    elements.set("buttonLabels", normal);
    elements.set("buttonLabelsHighlighted", highlighted);
    const labels = make("button.choose-label", { type: "button" }, normal, highlighted);
    labels.addEventListener("click", () => {
      core.tapButtonLabels();
    });
    this.page = subPage(
      "Charts",
      make(
        "div.charts",
        {},
        make("div.chart-choices", {}, periods, labels),
        this.charts.heartrate.element,
        this.charts.spo2.element,
      ),
    );
    this.page.addEventListener("ionViewWillEnter", () => {
      core.chartsWillAppear();
    });
  }

  view(name: ChartName): LineChartView {
    return this.charts[name];
  }
}
