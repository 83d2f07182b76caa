// The core as the page sees it: what it may be told and asked. It answers through the page's own
// objects, see `Page`.
import createVeyla from "veyla-core";

import type { Drawing } from "../../../platform/web/canvas";
import type { ChartName, ChartViews, DisplayViews, OptionsViews, Page, ResultsViews } from "./page";

export interface IntroPage {
  readonly title: string;
  readonly subTitle: string;
  readonly image: string;
}

export interface FaqEntry {
  readonly question: string;
  readonly answer: string;
}

export interface ResultCell {
  readonly date: string;
  readonly heartrate: string;
  readonly spo2: string;
  readonly labels: string;
}

export interface ChooserCell {
  readonly labelName: string;
  readonly isChecked: boolean;
  /** The row has controls in place of a label. */
  readonly isControls: boolean;
}

export interface OptionsRow {
  readonly title: string;
  readonly subTitle: string;
  readonly page: string;
  readonly isEmail: boolean;
}

export interface TextPage {
  readonly title: string;
  readonly sections: readonly { readonly heading: string; readonly text: string }[];
}

export interface WebApp {
  launch(): void;
  enterBackground(): void;
  enterForeground(): void;
  terminate(): void;
  settle(pending: number, answer: number): void;

  frameBuffer(width: number, height: number): Uint8Array;
  takeFrame(time: number, missed: number): void;
  torchRefused(): void;
  cameraLost(): void;

  tapAlertButton(id: number, button: number): void;
  tapAlertClose(id: number): void;
  tapAlertOutside(id: number): void;
  typeInAlert(id: number, text: string): void;

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

  // Screens that begin anew each time they are loaded, with views of their own.

  chartsDidLoad(charts: ChartViews, display: DisplayViews): void;
  chartsWillAppear(): void;
  chartPeriodTitles(): string[];
  tapSegmentPeriod(index: number): void;
  tapButtonLabels(): void;
  chartAxisText(chart: ChartName, axis: "x" | "right", value: number): string;

  resultsDidLoad(views: ResultsViews): void;
  resultsWillAppear(): void;
  resultsWillDisappear(): void;
  resultsCount(): number;
  resultsCell(row: number): ResultCell;
  resultsSwipeAction(): { title: string; background: string };
  isResultSelected(row: number): boolean;
  selectResult(row: number): void;
  deselectResult(row: number): void;
  tapSwipeAction(row: number): void;
  tapResultsLeftButton(): void;
  tapResultsEditButton(): void;
  resultsTouchesBegan(): void;
  clickTrash(): void;
  clickShare(): void;
  showChart(): void;
  chooserRowCount(): number;
  chooserCell(row: number): ChooserCell;
  tapLabel(row: number): void;
  tapDeleteRow(): void;
  closeLabels(): void;

  optionsDidLoad(views: OptionsViews): void;
  optionsWillAppear(): void;
  optionsClose(): void;
  optionsRows(): OptionsRow[][];
  optionsSelectRow(section: number, row: number): void;
  optionsAccessoryButtonTapped(): void;
  rateMyApp(): void;
  textPage(name: string): TextPage | null;

  isHealthRecordAllowed(name: string): boolean;
  allowHealthRecord(name: string, allowed: boolean): void;

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
