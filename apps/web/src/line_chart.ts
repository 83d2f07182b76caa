// One line chart over time, drawn by uPlot as the core configures it. It pans and zooms under the
// fingers, each direction by itself.
import "uplot/dist/uPlot.min.css";

import uPlot from "uplot";

import { darkColors } from "../../../platform/web/canvas";
import { make } from "./dom";
import type { ChartAxisSettings, ChartSettings, LineData } from "./page";

interface Range {
  readonly min: number;
  readonly max: number;
}

interface View {
  readonly x: Range;
  readonly y: Range;
}

const dark = window.matchMedia("(prefers-color-scheme: dark)");

// uPlot numbers the sides clockwise from the top; its names for them exist as types alone.
// eslint-disable-next-line @typescript-eslint/no-unsafe-enum-assignment
const rightSide: uPlot.Axis.Side = 1;
/** The closest look, as a part of the whole. */
const closest = 1 / 40;
/** Labels of the time axis are at least this far apart, in points. */
const labelWidth = 48;
/** Seven days stand side by side on a phone. */
const timeFontSize = 10;
const secondsPerHalfDay = 43_200;
/** Of what the core leaves to the chart. */
const ownColor = "rgb(96 96 102 / 1)";

/** A colour of the core's for the ground that the page has now. */
function adapted(color: string | null): string {
  if (color === null) return adapted(ownColor);
  if (!dark.matches) return color;
  const [red = 0, green = 0, blue = 0, alpha = 1] = (color.match(/[\d.]+/g) ?? []).map(Number);
  return darkColors(red / 255, green / 255, blue / 255, alpha);
}

/** A line's colour, bright enough for the ground that the page has now. */
function lineColor(color: string): string {
  return dark.matches ? `color-mix(in srgb, ${color} 60%, white)` : color;
}

function within(range: Range, whole: Range): Range {
  const span = Math.min(range.max - range.min, whole.max - whole.min);
  const min = Math.min(Math.max(range.min, whole.min), whole.max - span);
  return { min, max: min + span };
}

/** Zoomed by a factor about a place, 0 to 1 along the range. */
function zoomed(range: Range, factor: number, place: number, whole: Range): Range {
  const least = (whole.max - whole.min) * closest;
  const span = Math.max((range.max - range.min) / factor, least);
  const fixed = range.min + (range.max - range.min) * place;
  return within({ min: fixed - span * place, max: fixed + span * (1 - place) }, whole);
}

export class LineChartView {
  readonly element: HTMLElement;
  private readonly plotHolder = make("div.plot");
  private readonly noData = make("p.no-data");
  private readonly legend = make("p.legend");
  private settings: ChartSettings | undefined;
  private data: LineData | undefined;
  private granularity = 0;
  private plot: uPlot | undefined;
  private view: View | undefined;
  private readonly fingers = new Map<number, PointerEvent>();

  /** `axisText` asks for what stands at a value of an axis. */
  constructor(private readonly axisText: (axis: "x" | "right", value: number) => string) {
    this.element = make("figure.line-chart", {}, this.plotHolder, this.noData, this.legend);
    new ResizeObserver(() => {
      this.resize();
    }).observe(this.plotHolder);
    dark.addEventListener("change", () => {
      this.rebuild();
    });
    this.followFingers();
  }

  configure(settings: ChartSettings): void {
    this.settings = settings;
    this.noData.textContent = settings.noDataText;
  }

  clear(): void {
    this.data = undefined;
    this.rebuild();
  }

  setGranularity(seconds: number): void {
    this.granularity = seconds;
  }

  setData(data: LineData): void {
    // The core's own memory, which it uses again.
    this.data = { ...data, x: data.x.slice(), y: data.y.slice() };
    this.rebuild();
  }

  private rebuild(): void {
    this.plot?.destroy();
    this.plot = undefined;
    this.view = undefined;
    const { data, settings } = this;
    const hasPoints = data !== undefined && data.x.length > 0;
    this.noData.hidden = hasPoints;
    this.legend.hidden = !hasPoints || settings?.legendEnabled !== true;
    this.plotHolder.removeAttribute("role");
    if (!hasPoints || !settings) return;
    this.legend.replaceChildren(make("span.legend-line"), data.label);
    this.legend.style.setProperty("--line", lineColor(data.color));
    this.plotHolder.setAttribute("role", "img");
    this.plotHolder.setAttribute("aria-label", this.description(data));
    this.view = this.whole();
    if (this.plotHolder.clientWidth === 0) return;
    this.plot = new uPlot(this.options(settings, data), [data.x, data.y], this.plotHolder);
    this.showView();
  }

  /** What a screen reader says: the line's name, and its last points. */
  private description(data: LineData): string {
    const points = [...data.x].map(
      (x, index) => `${this.axisText("x", x)}: ${this.axisText("right", data.y[index] ?? 0)}`,
    );
    return `${data.label}. ${points.slice(-7).join(", ")}`;
  }

  private whole(): View {
    const x = this.data?.x ?? new Float64Array();
    const [first = 0, last = 0] = [x.at(0), x.at(-1)];
    // A single point stands in the middle of its day.
    const around = first === last ? secondsPerHalfDay : 0;
    const axis = this.settings?.rightAxis;
    return {
      x: { min: first - around, max: last + around },
      y: { min: axis?.minimum ?? 0, max: axis?.maximum ?? 100 },
    };
  }

  private options(settings: ChartSettings, data: LineData): uPlot.Options {
    const { viewPortOffsets, rightAxis, xAxis } = settings;
    const font = '11px -apple-system, "Inter", Roboto, "Helvetica Neue", Arial, sans-serif';
    const axisOf = (axis: ChartAxisSettings): uPlot.Axis => ({
      show: axis.enabled,
      font,
      stroke: axis.drawsLabels ? adapted(axis.labelColor) : "transparent",
      border: { show: axis.drawsAxisLine, stroke: adapted(axis.axisLineColor), width: 1 },
      ticks: { show: false },
      grid: {
        show: axis.drawsGridLines,
        stroke: `color-mix(in srgb, ${adapted(axis.gridColor)} 30%, transparent)`,
        dash: [...axis.gridLineDash],
        width: 1,
      },
    });
    return {
      width: this.plotHolder.clientWidth,
      height: this.plotHolder.clientHeight,
      padding: [viewPortOffsets.top, 0, 0, viewPortOffsets.left],
      legend: { show: false },
      cursor: { show: false },
      scales: {
        x: { time: false, range: () => this.visible("x") },
        y: { range: () => this.visible("y") },
      },
      axes: [
        {
          ...axisOf(xAxis),
          size: viewPortOffsets.bottom,
          gap: 8,
          splits: () => this.timesAtAxis(),
          values: (_plot, times) => times.map(() => ""),
        },
        {
          ...axisOf(rightAxis),
          side: rightSide,
          size: viewPortOffsets.right,
          gap: 8,
          splits: () => this.valuesAtAxis(),
          values: (_plot, values) => values.map((value) => this.axisText("right", value)),
        },
      ],
      series: [
        {},
        {
          stroke: lineColor(data.color),
          width: data.lineWidth,
          fill: data.fillColor,
          points: {
            show: data.drawsCircles,
            size: 2 * data.circleRadius,
            width: 2,
            stroke: lineColor(data.circleColor),
            fill: adapted(data.circleHoleColor),
          },
        },
      ],
      hooks: {
        drawClear: [
          (plot): void => {
            if (!settings.drawsGridBackground) return;
            plot.ctx.fillStyle = adapted(settings.gridBackgroundColor);
            plot.ctx.fillRect(plot.bbox.left, plot.bbox.top, plot.bbox.width, plot.bbox.height);
          },
        ],
        draw: [
          (plot): void => {
            this.drawTimes(plot, xAxis, font);
          },
        ],
      },
    };
  }

  private visible(direction: "x" | "y"): uPlot.Range.MinMax {
    const { min, max } = (this.view ?? this.whole())[direction];
    return [min, max];
  }

  /** From one end of the whole range to the other, and between these where there is room. */
  private valuesAtAxis(): number[] {
    const { y: whole } = this.whole();
    const { y: shown } = this.view ?? this.whole();
    let step = (whole.max - whole.min) / 5;
    while ((shown.max - shown.min) / step < 3) step /= 2;
    const first = Math.ceil((shown.min - whole.min) / step - 1e-9);
    const last = Math.floor((shown.max - whole.min) / step + 1e-9);
    return Array.from(
      { length: last - first + 1 },
      (_, index) => whole.min + (first + index) * step,
    );
  }

  /** No closer than the granularity, where it says anything, and than the labels are wide. */
  private timesAtAxis(): number[] {
    const { x: whole } = this.whole();
    const { x: shown } = this.view ?? this.whole();
    const labels = Math.max(1, Math.floor(this.plotHolder.clientWidth / labelWidth));
    const least = (shown.max - shown.min) / Math.min(6, labels);
    const granularity = Number.isFinite(this.granularity) ? this.granularity : 0;
    const step = granularity > 0 ? granularity * Math.ceil(least / granularity - 1e-9) : least;
    const times: number[] = [];
    const start = granularity > 0 ? whole.min : (shown.min + shown.max) / 2;
    const first = start + Math.ceil((shown.min - start) / step - 1e-9) * step;
    for (let time = first; time <= shown.max + 1e-6 && step > 0; time += step) times.push(time);
    return times;
  }

  /** The first and the last label do not reach beyond the chart. */
  private drawTimes(plot: uPlot, axis: ChartAxisSettings, font: string): void {
    if (!axis.drawsLabels) return;
    const { ctx, bbox } = plot;
    const density = window.devicePixelRatio;
    ctx.save();
    ctx.font = font.replace("11px", `${timeFontSize * density}px`);
    ctx.fillStyle = adapted(axis.labelColor);
    ctx.textAlign = "center";
    ctx.textBaseline = "top";
    let free = -Infinity;
    for (const time of this.timesAtAxis()) {
      const text = this.axisText("x", time);
      const half = ctx.measureText(text).width / 2;
      let x = plot.valToPos(time, "x", true);
      if (axis.keepsEndLabelsInside) {
        x = Math.min(Math.max(x, bbox.left + half), bbox.left + bbox.width - half);
      }
      if (x - half < free) continue;
      free = x + half + 2 * density;
      ctx.fillText(text, x, bbox.top + bbox.height + 8 * density);
    }
    ctx.restore();
  }

  private resize(): void {
    const { clientWidth: width, clientHeight: height } = this.plotHolder;
    if (width === 0 || height === 0) return;
    if (this.plot) this.plot.setSize({ width, height });
    else this.rebuild();
  }

  private showView(): void {
    const { plot, view } = this;
    if (!plot || !view) return;
    plot.batch(() => {
      plot.setScale("x", view.x);
      plot.setScale("y", view.y);
    });
    // Up and down scrolls the page until there is something to pan to.
    const whole = this.whole();
    const isWhole = view.y.max - view.y.min >= whole.y.max - whole.y.min;
    this.plotHolder.style.touchAction = isWhole ? "pan-y" : "none";
  }

  private followFingers(): void {
    const holder = this.plotHolder;
    holder.addEventListener("pointerdown", (event) => {
      holder.setPointerCapture(event.pointerId);
      this.fingers.set(event.pointerId, event);
    });
    const lift = (event: PointerEvent): void => {
      this.fingers.delete(event.pointerId);
    };
    holder.addEventListener("pointerup", lift);
    holder.addEventListener("pointercancel", lift);
    holder.addEventListener("pointermove", (event) => {
      const before = this.fingers.get(event.pointerId);
      if (!before || !this.settings) return;
      const other = [...this.fingers.values()].find((each) => each.pointerId !== event.pointerId);
      if (other && this.settings.scaleEnabled) this.zoomBetween(before, event, other);
      else if (!other && this.settings.dragEnabled) this.panFrom(before, event);
      this.fingers.set(event.pointerId, event);
    });
    holder.addEventListener(
      "wheel",
      (event) => {
        if (!this.settings?.scaleEnabled || !(event.ctrlKey || event.shiftKey)) return;
        event.preventDefault();
        this.zoomAt(event.clientX, event.clientY, Math.exp(-event.deltaY / 300), 1);
      },
      { passive: false },
    );
    holder.addEventListener("dblclick", () => {
      this.view = this.whole();
      this.showView();
    });
  }

  private panFrom(before: PointerEvent, now: PointerEvent): void {
    const { plot, view } = this;
    if (!plot || !view) return;
    const whole = this.whole();
    const box = plot.over.getBoundingClientRect();
    const x = ((before.clientX - now.clientX) / box.width) * (view.x.max - view.x.min);
    const y = ((now.clientY - before.clientY) / box.height) * (view.y.max - view.y.min);
    this.view = {
      x: within({ min: view.x.min + x, max: view.x.max + x }, whole.x),
      y: within({ min: view.y.min + y, max: view.y.max + y }, whole.y),
    };
    this.showView();
  }

  private zoomBetween(before: PointerEvent, now: PointerEvent, other: PointerEvent): void {
    // Fingers above each other tell nothing about the other direction.
    const least = 24;
    const factor = (from: number, to: number): number =>
      Math.abs(from) < least || Math.abs(to) < least ? 1 : Math.abs(to) / Math.abs(from);
    this.zoomAt(
      (now.clientX + other.clientX) / 2,
      (now.clientY + other.clientY) / 2,
      factor(before.clientX - other.clientX, now.clientX - other.clientX),
      factor(before.clientY - other.clientY, now.clientY - other.clientY),
    );
  }

  private zoomAt(clientX: number, clientY: number, factorX: number, factorY: number): void {
    const { plot, view } = this;
    if (!plot || !view) return;
    const whole = this.whole();
    const box = plot.over.getBoundingClientRect();
    const placeX = (clientX - box.left) / box.width;
    const placeY = 1 - (clientY - box.top) / box.height;
    this.view = {
      x: zoomed(view.x, factorX, placeX, whole.x),
      y: zoomed(view.y, factorY, placeY, whole.y),
    };
    this.showView();
  }
}
