// The colours and images that the core gives the standard controls.
import { adapted, dark } from "./colors";
import type { Appearance } from "./page";

const images: Readonly<Record<string, string>> = {
  "topbar.png": "linear-gradient(var(--bar-top), var(--accent))",
};

const style = document.documentElement.style;
let given: Appearance | undefined;

function show(): void {
  if (!given) return;
  style.setProperty("--cell-tint", given.tableCellTint);
  style.setProperty("--bar-title", given.navigationBarTitle);
  style.setProperty("--bar-image", images[given.navigationBarImage] ?? "none");
  style.setProperty("--page-dot", adapted(given.pageIndicatorDot));
  style.setProperty("--page-current-dot", adapted(given.pageIndicatorCurrentDot));
  style.setProperty("--page-dots-ground", adapted(given.pageIndicatorBackground));
  style.setProperty("--segment-tint", given.segmentedControlTint);
}

export function setAppearance(appearance: Appearance): void {
  given = appearance;
  show();
  setNavigationBarTint(appearance.navigationBarTint);
}

/** Null for the page's own. */
export function setNavigationBarTint(tint: string | null): void {
  style.setProperty("--bar-tint", tint);
}

dark.addEventListener("change", show);
