// What the core finds in the page: an object for each service, its operations under the names that
// the bindings in platform/web call.
import type { measureText } from "../../../platform/web/canvas";
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
  animate(element: string, seconds: number, poses: readonly Pose[], endsVisible: boolean): void;
  setNeedsDisplay(element: string): void;
}

export interface AlertShown {
  readonly id: number;
  readonly kind: "plain" | "warning" | "error" | "waiting" | "notice";
  readonly title: string;
  readonly subtitle: string;
  readonly buttons: readonly string[];
  readonly closeButton: string | null;
  readonly duration: number | null;
  readonly color: string;
  readonly iconTint: string;
}

export interface Colors {
  readonly tableCellTint: string;
  readonly navigationBarTint: string;
  readonly navigationBarTitle: string;
  readonly pageIndicatorDot: string;
  readonly pageIndicatorCurrentDot: string;
  readonly segmentedControlTint: string;
}

export interface ScreenViews {
  performTransition(name: string): void;
  showIntro(): void;
  dismissIntro(pending: number): void;
  showFaq(): void;
  showRemoteReleaseNotes(): void;
  showRatingPrompt(): void;
  setTitle(title: string): void;
  setBackSwipeEnabled(enabled: boolean): void;
  setIdleTimerDisabled(disabled: boolean): void;
  setAppearance(colors: Colors): void;
}

export interface CameraViews {
  authorization(): string;
  request(pending: number): void;
  open(pending: number): void;
  close(): void;
  hasTrack(): boolean;
  hasTorch(): boolean;
  supports(name: string, mode: string): boolean;
  setting(name: string): string | number | null;
  apply(constraints: Record<string, string | boolean>): void;
  play(): void;
  pause(): void;
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
  readonly alerts: { show(alert: AlertShown): void; hide(id: number): void };
  readonly measuring: DisplayViews;
  readonly intro: DisplayViews;
}
