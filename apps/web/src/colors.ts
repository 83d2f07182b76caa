// The core's colours, which are meant for a light ground, on the ground that the page has now.
import { darkColors } from "../../../platform/web/canvas";

export const dark = window.matchMedia("(prefers-color-scheme: dark)");

export function adapted(color: string): string {
  if (!dark.matches) return color;
  const [red = 0, green = 0, blue = 0, alpha = 1] = (color.match(/[\d.]+/g) ?? []).map(Number);
  return darkColors(red / 255, green / 255, blue / 255, alpha);
}
