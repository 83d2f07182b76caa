// The charts screen, loaded when it is first opened.
import { defineCustomElement as label } from "@ionic/core/components/ion-label.js";
import { defineCustomElement as segment } from "@ionic/core/components/ion-segment.js";
import { defineCustomElement as segmentButton } from "@ionic/core/components/ion-segment-button.js";

import type { WebApp } from "./core";
import { make, makeCustom } from "./dom";
import { ElementViews } from "./element_views";
import { LineChartView, SharedTime } from "./line_chart";
import type { ChartName } from "./page";
import { subPage } from "./text_pages";

export class ChartsScreen {
  readonly page: HTMLElement;

  constructor(core: WebApp) {
    for (const define of [label, segment, segmentButton]) define();
    const time = new SharedTime();
    const lineChart = (name: ChartName): LineChartView =>
      new LineChartView(time, (axis, value) => core.chartAxisText(name, axis, value));
    const charts: Readonly<Record<ChartName, LineChartView>> = {
      heartrate: lineChart("heartrate"),
      spo2: lineChart("spo2"),
    };

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
    const elements = new Map<string, HTMLElement>([
      ["buttonLabels", normal],
      ["buttonLabelsHighlighted", highlighted],
    ]);
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
        charts.heartrate.element,
        charts.spo2.element,
      ),
    );
    this.page.addEventListener("ionViewWillEnter", () => {
      core.chartsWillAppear();
    });
    core.chartsDidLoad(
      {
        configure(name, settings) {
          charts[name].configure(settings);
        },
        clear(name) {
          charts[name].clear();
        },
        setData(name, data) {
          charts[name].setData(data);
        },
        setGranularity(name, seconds) {
          charts[name].setGranularity(seconds);
        },
      },
      new ElementViews(elements),
    );
  }
}
