// What the core finds in the page: an object for each service, its operations under the names that
// the bindings in platform/web call.
import type { measureText } from "../../../platform/web/canvas";
import type { SharedMail } from "../../../platform/web/sharing";
import type { StoredChange } from "../../../platform/web/storage";
import type { browserText } from "../../../platform/web/text";

export interface Pose {
  readonly opacity: number;
  readonly scale: number;
  readonly x: number;
  readonly y: number;
}

export interface DisplayViews {
  setText(element: string, text: string): void;
  setFont(element: string, weight: number, size: number): void;
  setImage(element: string, image: string): void;
  setOpacity(element: string, opacity: number): void;
  setHidden(element: string, hidden: boolean): void;
  setShimmering(element: string, shimmering: boolean): void;
  animate(
    element: string,
    seconds: number,
    poses: readonly Pose[],
    endsVisible: boolean,
    pending: number,
  ): void;
  setNeedsDisplay(element: string): void;
}

export interface EndingViews {
  measurementBegan(): void;
  /** Failed: in a way that the user did not want; empty where it was the user's own. */
  measurementEnded(end: "finished" | "failed" | ""): void;
}

export interface AlertField {
  readonly placeholder: string;
  readonly text: string;
  readonly keyboard: "text" | "email";
  readonly autocapitalizes: boolean;
  readonly autocorrects: boolean;
}

type AlertMotion = "pop" | "downward" | "upward";

export interface AlertStyle {
  readonly show: AlertMotion;
  readonly hide: AlertMotion;
  readonly background: "shadow" | "blur";
}

export interface AlertShown {
  readonly kind: "plain" | "warning" | "error" | "waiting" | "notice" | "edit";
  readonly title: string;
  readonly subtitle: string;
  readonly buttons: readonly string[];
  readonly closeButton: string | null;
  /** Seconds after which it goes by itself; null for never. */
  readonly duration: number | null;
  readonly textField: AlertField | null;
  readonly color: string;
  readonly iconTint: string;
  readonly style: AlertStyle;
}

export interface Appearance {
  readonly tableCellTint: string;
  readonly navigationBarTint: string;
  readonly navigationBarTitle: string;
  readonly navigationBarImage: string;
  readonly pageIndicatorDot: string;
  readonly pageIndicatorCurrentDot: string;
  readonly pageIndicatorBackground: string;
  readonly segmentedControlTint: string;
}

export interface ScreenViews {
  performTransition(name: string): void;
  showIntro(): void;
  dismissIntro(pending: number): void;
  showFaq(): void;
  /** Takes the screen in front away. */
  dismissScreen(): void;
  showRatingPrompt(): void;
  setTitle(title: string): void;
  setBackSwipeEnabled(enabled: boolean): void;
  setIdleTimerDisabled(disabled: boolean): void;
  setAppearance(appearance: Appearance): void;
  setNavigationBarTint(tint: string | null): void;
}

export interface CameraViews {
  authorization(): string;
  request(pending: number): void;
  open(pending: number): void;
  close(): void;
  isOpen(): boolean;
  hasNext(): boolean;
  useNext(): void;
  hasTorch(): boolean;
  isTorchLit(): boolean;
  setTorch(lit: boolean): void;
  supports(name: string, mode: string): boolean;
  mode(name: string): string;
  setModes(modes: Readonly<Record<string, string>>): void;
  zoom(): number;
  play(): void;
  pause(): void;
}

export interface SheetShown {
  readonly title: string | null;
  readonly message: string | null;
  readonly tint: string | null;
  readonly actions: readonly { readonly title: string; readonly style: "standard" | "cancel" }[];
}

export interface ChartAxisSettings {
  readonly enabled: boolean;
  readonly minimum: number | null;
  readonly maximum: number | null;
  readonly drawsGridLines: boolean;
  /** Points drawn and left out. */
  readonly gridLineDash: { readonly on: number; readonly off: number } | null;
  readonly drawsAxisLine: boolean;
  readonly drawsLabels: boolean;
  readonly drawsTopLabel: boolean;
  readonly centersLabels: boolean;
  readonly labelsBelow: boolean;
  readonly keepsEndLabelsInside: boolean;
  readonly hasGranularity: boolean;
  /** Null for the chart's own. */
  readonly gridColor: string | null;
  readonly axisLineColor: string | null;
  readonly labelColor: string | null;
  /** Weight and size. */
  readonly labelFont: string | null;
}

export interface ChartSettings {
  readonly descriptionText: string;
  readonly descriptionColor: string;
  readonly noDataText: string;
  readonly scaleEnabled: boolean;
  readonly dragEnabled: boolean;
  readonly pinchZoomEnabled: boolean;
  readonly viewPortOffsets: {
    readonly left: number;
    readonly top: number;
    readonly right: number;
    readonly bottom: number;
  };
  readonly drawsGridBackground: boolean;
  readonly gridBackgroundColor: string;
  readonly legendEnabled: boolean;
  readonly legendForm: "square" | "circle" | "line";
  readonly leftAxis: ChartAxisSettings;
  readonly rightAxis: ChartAxisSettings;
  readonly xAxis: ChartAxisSettings;
}

export interface LineData {
  /** At seconds since 1970, ascending. */
  readonly entries: readonly { readonly x: number; readonly y: number }[];
  readonly summary: { readonly mean: number; readonly minimum: number; readonly maximum: number };
  readonly label: string;
  readonly axisDependency: "left" | "right";
  readonly color: string;
  readonly lineWidth: number;
  readonly cubic: boolean;
  readonly drawsCircles: boolean;
  readonly circleRadius: number;
  readonly circleColor: string;
  readonly drawsCircleHoles: boolean;
  readonly circleHoleColor: string;
  readonly drawsValues: boolean;
  readonly valueFont: string;
  readonly drawsFilled: boolean;
  readonly fillColor: string;
  readonly fillAlpha: number;
}

export interface ChartViews {
  configure(settings: ChartSettings): void;
  clear(): void;
  setData(data: LineData): void;
  setGranularity(seconds: number): void;
}

export interface ChartsViews {
  readonly display: DisplayViews;
  readonly heartrate: ChartViews;
  readonly spo2: ChartViews;
}

export interface ResultsViews {
  setLeftButton(title: string): void;
  setRightButtons(titles: readonly string[]): void;
  listHeight(): number;
  setEditing(editing: boolean, animated: boolean): void;
  setSelected(row: number, selected: boolean, animated: boolean): void;
  deleteRows(rows: readonly number[], animation: "none" | "fade"): void;
  offerUndo(text: string): void;
  withdrawUndo(): void;
  reloadRows(): void;
  reloadChooser(): void;
  setCheckMark(chooserRow: number, shown: boolean): void;
  setOpacity(element: string, opacity: number, seconds: number): void;
  slideToolbar(upward: number, listHeight: number, seconds: number): void;
}

export interface AccessoryButton {
  readonly backgroundImage: string;
  readonly title: string;
  readonly titleColor: string;
  /** Weight and size. */
  readonly font: string;
  readonly background: string;
}

export interface OptionsViews {
  setText(element: string, text: string): void;
  setAccessoryButton(cell: string, button: AccessoryButton): void;
}

export interface SharingViews {
  composeMail(mail: SharedMail, pending: number): void;
  mailFailure(): string;
  dismissMail(): void;
  composeMessage(body: string, pending: number): void;
  open(address: string): void;
}

export interface AlertViews {
  show(id: number, alert: AlertShown): void;
  hide(id: number): void;
  setFieldText(id: number, text: string): void;
  focusField(id: number): void;
}

export interface Page {
  readonly log: { readonly enabled: boolean; line(text: string): void };
  readonly device: { readonly hardwareModel: string; readonly systemVersion: string };
  readonly storage: {
    read(key: string): string | null;
    write(changes: readonly StoredChange[]): string;
    failed(damagedKey: string, line: string): void;
  };
  readonly text: typeof browserText;
  readonly health: {
    ask(names: readonly string[], pending: number): void;
    append(line: string, pending: number): void;
  };
  readonly camera: CameraViews;
  readonly canvas: { readonly measureText: typeof measureText };
  readonly screens: ScreenViews;
  readonly alerts: AlertViews;
  readonly measuring: DisplayViews;
  readonly ending: EndingViews;
  readonly intro: DisplayViews;
  readonly actionSheet: { present(sheet: SheetShown): void; dismiss(): void };
  readonly sharing: SharingViews;
}
