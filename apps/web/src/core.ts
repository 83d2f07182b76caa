// The core as the page sees it: what it may be told and asked. It answers through the page's own
// objects, see `Page`.
import createVeyla from "veyla-core";

import type { Drawing } from "../../../platform/web/canvas";
import type { ChartName, Page } from "./page";

export interface IntroPage {
  readonly title: string;
  readonly subTitle: string;
  readonly image: string;
}

export interface FaqEntry {
  readonly question: string;
  readonly answer: string;
}

export interface WebApp {
  launch(): void;
  enterBackground(): void;
  enterForeground(): void;
  terminate(): void;
  settle(pending: number, answer: number): void;

  frameBuffer(width: number, height: number): Uint8Array;
  takeFrame(time: number, missed: number): void;

  tapAlertButton(id: number, button: number): void;
  tapAlertClose(id: number): void;
  tapAlertOutside(id: number): void;

  measuringWillAppear(): void;
  measuringDidAppear(): void;
  measuringWillDisappear(): void;
  beginButtonPush(): void;
  stopButtonPush(): void;
  buttonCheckboxHeartrateTapped(): void;
  buttonCheckboxSpo2Tapped(): void;
  swipeLeft(): void;
  swipeRight(): void;
  draw(element: string, width: number, height: number): Drawing;

  introPages(): IntroPage[];
  introPosition(): { currentPage: number; indicatedPage: number; currentDotColor: string };
  introSwipeLeft(): void;
  introSwipeRight(): void;
  introSkip(): void;

  chooseSheetAction(action: number): void;

  chartsDidLoad(): void;
  chartsWillAppear(): void;
  chartPeriodTitles(): string[];
  tapSegmentPeriod(index: number): void;
  tapButtonLabels(): void;
  chartAxisText(chart: ChartName, axis: "x" | "right", value: number): string;

  faqs(): FaqEntry[];

  rawStoredText(key: string): string | null;
  setStoredTextAside(key: string): void;
}

interface CoreModule {
  WebApp: new (page: Page) => WebApp;
}

export async function loadCore(page: Page): Promise<WebApp> {
  const core = (await createVeyla()) as CoreModule;
  return new core.WebApp(page);
}
