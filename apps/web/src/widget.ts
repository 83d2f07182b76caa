// A canvas on which one of the core's widgets draws itself, as crisp as the screen is.
import { darkColors, type Drawing, plainColors, play } from "../../../platform/web/canvas";

const dark = window.matchMedia("(prefers-color-scheme: dark)");

export class Widget {
  readonly canvas = document.createElement("canvas");
  private width = 0;
  private height = 0;
  private frame: number | undefined;

  /** `draw` asks the core for the drawing at a size in points. */
  constructor(
    private readonly draw: (width: number, height: number) => Drawing,
    private readonly drawn: (milliseconds: number) => void = () => undefined,
    private readonly margin = 0,
  ) {
    this.canvas.setAttribute("aria-hidden", "true");
    new ResizeObserver(([entry]) => {
      if (!entry) return;
      this.width = entry.contentRect.width;
      this.height = entry.contentRect.height;
      this.setNeedsDisplay();
    }).observe(this.canvas);
    dark.addEventListener("change", () => {
      this.setNeedsDisplay();
    });
  }

  /** However often it is asked for, it draws once a frame of the screen. */
  setNeedsDisplay(): void {
    this.frame ??= requestAnimationFrame(() => {
      this.frame = undefined;
      const start = performance.now();
      this.redraw();
      this.drawn(performance.now() - start);
    });
  }

  private redraw(): void {
    const context = this.canvas.getContext("2d");
    if (!context || this.width === 0 || this.height === 0) return;
    const density = window.devicePixelRatio;
    const width = Math.round(this.width * density);
    const height = Math.round(this.height * density);
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
    }
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, width, height);
    context.setTransform(density, 0, 0, density, this.margin * density, this.margin * density);
    const drawing = this.draw(this.width - 2 * this.margin, this.height - 2 * this.margin);
    play(context, drawing, dark.matches ? darkColors : plainColors);
  }
}
