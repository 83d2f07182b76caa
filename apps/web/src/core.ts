// The core as the page sees it: what it may be told and asked, under the core's own names. It answers
// through the page's own objects, see `Page`.
import createVeyla from "veyla-core";

import type { Drawing } from "../../../platform/web/canvas";
import type { ChartsViews, OptionsViews, Page, ResultsViews } from "./page";

/** A screen that lasts as long as its page. */
interface Screen {
  viewDidLoad(): void;
  viewWillAppear(): void;
  viewWillDisappear?(): void;
  delete(): void;
}

/** Tells a screen what becomes of its page; `loaded` follows its loading. */
export function followPage(
  page: HTMLElement,
  screen: Screen,
  loaded: () => void = () => undefined,
): void {
  let isLoaded = false;
  page.addEventListener("ionViewWillEnter", () => {
    // Before it has no size.
    if (!isLoaded) {
      isLoaded = true;
      screen.viewDidLoad();
      loaded();
    }
    screen.viewWillAppear();
  });
  page.addEventListener("ionViewWillLeave", () => {
    screen.viewWillDisappear?.();
  });
  page.addEventListener("ionViewWillUnload", () => {
    screen.delete();
  });
}

export interface Alerts {
  tapButton(id: number, button: number): void;
  tapClose(id: number): void;
  tapOutside(id: number): void;
  typeInField(id: number, text: string): void;
}

export interface MainViewController {
  viewWillAppear(): void;
  viewDidAppear(): void;
  viewWillDisappear(): void;
  beginButtonPush(): void;
  secondsUntilCurve(): number;
  stopButtonPush(): void;
  nextCameraButtonPush(): void;
  buttonCheckboxHeartrateTapped(): void;
  buttonCheckboxSpo2Tapped(): void;
  swipeLeft(): void;
  swipeRight(): void;
}

export interface IntroViewController {
  viewDidLoad(): void;
  swipeleft(): void;
  swiperight(): void;
  buttonSkipTapped(): void;
  titles(): string[];
  subTitles(): string[];
  images(): string[];
  currentPage(): number;
  indicatedPage(): number;
  currentDotColor(): string;
}

export type AxisName = "left" | "right" | "x";

export interface ChartResultsViewController extends Screen {
  periodTitles(): string[];
  tapSegmentPeriod(index: number): void;
  tapButtonLabels(): void;
  heartrateAxisText(axis: AxisName, value: number): string;
  spo2AxisText(axis: AxisName, value: number): string;
}

export interface HistoryTableViewCell {
  readonly dateLabel: string;
  readonly heartrateLabel: string;
  readonly spo2Label: string;
  readonly labelNames: string;
}

export interface TableCell {
  readonly reuseIdentifier: "labelCell" | "labelsButtons";
  readonly labelName: string;
  readonly isChecked: boolean;
}

export const listTag = 0;
export const chooserTag = 1;

export interface ResultsViewController extends Screen {
  look(): ResultsLook;
  numberOfRows(tag: number): number;
  editingStyle(): "swipeToDelete" | "multipleSelection";
  listCell(row: number): HistoryTableViewCell;
  chooserCell(row: number): TableCell;
  swipeAction(): { readonly title: string; readonly background: string };
  isSelected(row: number): boolean;
  didSelectRow(row: number, tag: number): void;
  didDeselectRow(row: number): void;
  showChart(): void;
  tapLeftButton(): void;
  tapEditButton(): void;
  touchesBegan(): void;
  clickCloseResultsLabelsView(): void;
  tapDeleteRow(): void;
  tapNoLabels(): void;
  tapSwipeAction(row: number): void;
  clickTrash(): void;
  tapUndo(): void;
  clickShare(): void;
}

export interface ResultsLook {
  readonly listRowHeight: number;
  readonly chooserRowHeight: number;
  readonly chooserCornerRadius: number;
  readonly dimColor: string;
}

export interface OptionsRow {
  readonly title: string;
  readonly subTitle: string;
  readonly page: string;
  readonly isEmail: boolean;
}

export interface TableViewController extends Screen {
  rows(): OptionsRow[][];
  buttonCloseTap(): void;
  didSelectRow(section: number, row: number): void;
  accessoryButtonTapped(): void;
}

/** What stands on the measuring screen whatever is measured. */
export interface Captions {
  readonly heartrate: string;
  readonly heartrateUnit: string;
  readonly spo2: string;
  readonly spo2Unit: string;
  readonly lastMeasurement: string;
  readonly pulse: string;
  readonly start: string;
  readonly stop: string;
  readonly nextCamera: string;
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
  takeFrame(time: number): void;
  torchRefused(): void;
  cameraLost(): void;

  alerts(): Alerts;
  chooseSheetAction(action: number): void;

  measuring(): MainViewController;
  draw(element: string, width: number, height: number): Drawing;

  intro(): IntroViewController;
  charts(views: ChartsViews): ChartResultsViewController;
  results(views: ResultsViews): ResultsViewController;
  options(views: OptionsViews): TableViewController;
  rateMyApp(): void;
  page(name: string): TextPage | null;
  captions(): Captions;
  faqs(): { readonly question: string; readonly answer: string }[];

  isHealthRecordAllowed(name: string): boolean;
  allowHealthRecord(name: string, allowed: boolean): void;

  rawStoredText(key: string): string | null;
  backUp(): { readonly text: string; readonly note: string };
  restore(text: string): string;
  setStoredTextAside(key: string): void;
  offersHomeScreen(): boolean;
  answerHomeScreen(): void;
}

interface CoreModule {
  WebApp: new (page: Page) => WebApp;
}

export async function loadCore(page: Page): Promise<WebApp> {
  const core = (await createVeyla()) as CoreModule;
  return new core.WebApp(page);
}
