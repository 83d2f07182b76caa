// Line charts over time, drawn by uPlot as the core configures them. They pan and zoom under the
// fingers, each direction by itself; charts that stand over each other show the same time.
import "uplot/dist/uPlot.min.css";

import uPlot from "uplot";

import { fontFamily } from "../../../platform/web/canvas";
import { adapted, dark } from "./colors";
import type { AxisName } from "./core";
import { make } from "./dom";
import { curvePicture } from "./illustrations";
import type { ChartAxisSettings, ChartSettings, ChartViews, LineData } from "./page";

interface Range {
  readonly min: number;
  readonly max: number;
}

// uPlot numbers the sides clockwise from the top; its names for them exist as types alone.
/* eslint-disable @typescript-eslint/no-unsafe-enum-assignment */
const sides: Readonly<Record<"top" | "right" | "bottom" | "left", uPlot.Axis.Side>> = {
  top: 0,
  right: 1,
  bottom: 2,
  left: 3,
};
/* eslint-enable @typescript-eslint/no-unsafe-enum-assignment */
/** The closest look, as a part of the whole. */
const closest = 1 / 40;
const secondsPerDay = 86_400;
/** Points are a day apart: a closer look in time could find none. */
const shortestTime = 2 * secondsPerDay;
/** Labels of the time axis are at least this far apart, in points. */
const labelWidth = 48;
/** Of labels whose font the core leaves to the chart; seven days stand side by side on a phone. */
const ownFont = "400 11px";
const ownTimeFont = "400 10px";
/** A finger that moved less, in points, has tapped. */
const tapReach = 8;
/** Of steps that come out a hair too long or too short. */
const tolerance = 1e-6;
/** Of what the core leaves to the chart. */
const ownColor = "rgb(96 96 102 / 1)";

function colorOf(color: string | null): string {
  return adapted(color ?? ownColor);
}

/** How much larger than usual the user wants texts. */
function textScale(): number {
  return parseFloat(getComputedStyle(document.documentElement).fontSize) / 16;
}

/** In the page's family; `density` is for what is drawn in the screen's own pixels. */
function cssFont(font: string | null, density = 1): string {
  const [weight = "", size = ""] = (font ?? ownFont).split(" ");
  // Whole: the chart library reads no fractions.
  return `${weight} ${Math.round(parseFloat(size) * textScale() * density)}px ${fontFamily}`;
}

/** A line's colour, bright enough for the ground that the page has now. */
function lineColor(color: string): string {
  return dark.matches ? `color-mix(in srgb, ${color} 60%, white)` : color;
}

/** The colour of the area below a line. */
function filled({ drawsFilled, fillColor, fillAlpha }: LineData): string {
  return `color-mix(in srgb, ${fillColor} ${drawsFilled ? 100 * fillAlpha : 0}%, transparent)`;
}

function within(range: Range, whole: Range): Range {
  const span = Math.min(range.max - range.min, whole.max - whole.min);
  const min = Math.min(Math.max(range.min, whole.min), whole.max - span);
  return { min, max: min + span };
}

function lengthOf(range: Range): number {
  return range.max - range.min;
}

function limits({ min, max }: Range): uPlot.Range.MinMax {
  return [min, max];
}

/** Moved by a part of its length. */
function moved(range: Range, part: number, whole: Range): Range {
  const way = part * lengthOf(range);
  return within({ min: range.min + way, max: range.max + way }, whole);
}

/** Zoomed by a factor about a place, 0 to 1 along the range, to no less than a length. */
function zoomed(range: Range, factor: number, place: number, whole: Range, least = 0): Range {
  const span = Math.max(lengthOf(range) / factor, lengthOf(whole) * closest, least);
  const fixed = range.min + lengthOf(range) * place;
  return within({ min: fixed - span * place, max: fixed + span * (1 - place) }, whole);
}

/** The time that charts show together: all of their points, or what is looked at more closely. */
export class SharedTime {
  private readonly charts: LineChartView[] = [];
  private closeUp: Range | undefined;

  add(chart: LineChartView): void {
    this.charts.push(chart);
  }

  /** The first point's time, from which the days are counted. */
  get start(): number {
    return Math.min(...this.charts.map(({ firstTime }) => firstTime));
  }

  get whole(): Range {
    const min = this.start;
    const max = Math.max(...this.charts.map(({ lastTime }) => lastTime));
    // A single point stands in the middle of its day.
    const around = min === max ? secondsPerDay / 2 : 0;
    return { min: min - around, max: max + around };
  }

  get shown(): Range {
    return this.closeUp ?? this.whole;
  }

  show(range: Range): void {
    this.closeUp = range;
    for (const chart of this.charts) chart.showView();
  }

  showWhole(): void {
    this.closeUp = undefined;
    for (const chart of this.charts) chart.showView();
  }
}

export class LineChartView implements ChartViews {
  readonly element: HTMLElement;
  private readonly plotHolder = make("div.plot");
  private readonly noDataText = make("p");
  private readonly noData = make("div.no-data", {}, curvePicture(), this.noDataText);
  private readonly summary = make("div.summary");
  private readonly legend = make("p.legend");
  private settings: ChartSettings | undefined;
  private data: LineData | undefined;
  private granularity = 0;
  private plot: uPlot | undefined;
  /** Of the values; the whole where there is none. */
  private closeUp: Range | undefined;
  /** The point whose value is told, by its place. */
  private chosen: number | undefined;
  private readonly fingers = new Map<number, PointerEvent>();

  /** `name` stands above it; `axisText` asks for what stands at a value of an axis. */
  constructor(
    private readonly time: SharedTime,
    private readonly name: string,
    private readonly axisText: (axis: AxisName, value: number) => string,
  ) {
    time.add(this);
    const parts = [this.summary, this.plotHolder, this.noData, this.legend];
    this.element = make("figure.line-chart", {}, ...parts);
    new ResizeObserver(() => {
      this.resize();
    }).observe(this.plotHolder);
    dark.addEventListener("change", this.rebuild);
    this.followFingers();
    this.followKeys();
  }

  /** To be called when its page has gone, which what it listens to would hold. */
  close(): void {
    dark.removeEventListener("change", this.rebuild);
    this.plot?.destroy();
  }

  /** Infinity without points. */
  get firstTime(): number {
    return this.data?.entries.at(0)?.x ?? Infinity;
  }

  /** -Infinity without points. */
  get lastTime(): number {
    return this.data?.entries.at(-1)?.x ?? -Infinity;
  }

  configure(settings: ChartSettings): void {
    this.settings = settings;
    this.noDataText.textContent = settings.noDataText;
  }

  clear(): void {
    this.data = undefined;
    this.rebuild();
  }

  setGranularity(seconds: number): void {
    this.granularity = seconds;
  }

  setData(data: LineData): void {
    this.data = data;
    this.rebuild();
  }

  private readonly rebuild = (): void => {
    this.plot?.destroy();
    this.plot = undefined;
    this.closeUp = undefined;
    this.chosen = undefined;
    const { data, settings } = this;
    const hasPoints = data !== undefined && data.entries.length > 0;
    this.noData.hidden = hasPoints;
    this.legend.hidden = !hasPoints || settings?.legendEnabled !== true;
    this.summary.hidden = !hasPoints;
    this.plotHolder.removeAttribute("role");
    this.plotHolder.removeAttribute("tabindex");
    if (!hasPoints || !settings) return;
    this.legend.replaceChildren(make(`span.legend-mark.${settings.legendForm}`), data.label);
    this.legend.style.setProperty("--line", lineColor(data.color));
    this.plotHolder.setAttribute("role", "slider");
    this.plotHolder.setAttribute("tabindex", "0");
    this.plotHolder.setAttribute("aria-label", this.description(data));
    this.plotHolder.setAttribute("aria-valuemin", "1");
    this.plotHolder.setAttribute("aria-valuemax", String(data.entries.length));
    this.tell(undefined);
    if (this.plotHolder.clientWidth > 0) {
      const columns: uPlot.AlignedData = [
        data.entries.map(({ x }) => x),
        data.entries.map(({ y }) => y),
      ];
      this.plot = new uPlot(this.options(settings, data), columns, this.plotHolder);
    }
    // The other charts' time is this one's, too.
    this.time.showWhole();
  };

  showView(): void {
    const { plot } = this;
    if (!plot) return;
    plot.batch(() => {
      plot.setScale("x", this.time.shown);
      plot.setScale("y", this.shownValues());
    });
    // Up and down scrolls the page until there is something to pan to.
    this.plotHolder.style.touchAction = this.closeUp ? "none" : "pan-y";
  }

  /** Tells the value of a point; without one, the mean of all and between which they lie. */
  private tell(point: number | undefined): void {
    const { data } = this;
    if (!data) return;
    const text = (value: number): string => this.axisText(data.axisDependency, value);
    this.chosen = point;
    const entry = point === undefined ? undefined : data.entries[point];
    const { mean, minimum, maximum } = data.summary;
    const range = `${text(minimum)} – ${text(maximum)}`;
    const [what, value, beside] = entry
      ? [this.axisText("x", entry.x), text(entry.y), ""]
      : ["Mean", text(mean), range];
    this.summary.replaceChildren(
      make("h2.summary-name", {}, this.name),
      make("span.summary-what", {}, what),
      make("strong", {}, value),
      make("span.summary-what", {}, beside),
    );
    this.plotHolder.setAttribute("aria-valuenow", String((point ?? data.entries.length - 1) + 1));
    this.plotHolder.setAttribute("aria-valuetext", `${what} ${value} ${beside}`.trim());
    this.plot?.redraw(false);
  }

  private followKeys(): void {
    const ways: Readonly<Record<string, number>> = { ArrowLeft: -1, ArrowRight: 1 };
    this.plotHolder.addEventListener("keydown", (event) => {
      const way = ways[event.key];
      const last = (this.data?.entries.length ?? 0) - 1;
      if (way === undefined || last < 0) return;
      event.preventDefault();
      const next = this.chosen === undefined ? last : this.chosen + way;
      this.tell(Math.min(Math.max(next, 0), last));
    });
  }

  /** A tap on the chosen point gives it up. */
  private tapAt(clientX: number): void {
    const { plot } = this;
    if (!plot) return;
    const point = plot.posToIdx(clientX - plot.over.getBoundingClientRect().left);
    this.tell(point === this.chosen ? undefined : point);
  }

  private drawChosen(plot: uPlot, data: LineData): void {
    const entry = this.chosen === undefined ? undefined : data.entries[this.chosen];
    if (!entry) return;
    const { ctx, bbox } = plot;
    const x = plot.valToPos(entry.x, "x", true);
    ctx.save();
    ctx.strokeStyle = ctx.fillStyle = lineColor(data.color);
    ctx.lineWidth = window.devicePixelRatio;
    ctx.beginPath();
    ctx.moveTo(x, bbox.top);
    ctx.lineTo(x, bbox.top + bbox.height);
    ctx.stroke();
    ctx.beginPath();
    const radius = (data.circleRadius + 1) * window.devicePixelRatio;
    ctx.arc(x, plot.valToPos(entry.y, "y", true), radius, 0, 2 * Math.PI);
    ctx.fill();
    ctx.restore();
  }

  /** What a screen reader says: the line's name, and its last points. */
  private description(data: LineData): string {
    const points = data.entries
      .slice(-7)
      .map(({ x, y }) => `${this.axisText("x", x)}: ${this.axisText(data.axisDependency, y)}`);
    return `${data.label}. ${points.join(", ")}`;
  }

  /** Of the axis that the line is bound to; both stand at its values. */
  private wholeValues(): Range {
    const isLeft = this.data?.axisDependency === "left";
    const axis = isLeft ? this.settings?.leftAxis : this.settings?.rightAxis;
    return { min: axis?.minimum ?? 0, max: axis?.maximum ?? 100 };
  }

  private shownValues(): Range {
    return this.closeUp ?? this.wholeValues();
  }

  private options(settings: ChartSettings, data: LineData): uPlot.Options {
    const { viewPortOffsets: room, leftAxis, rightAxis, xAxis } = settings;
    const axisOf = (axis: ChartAxisSettings): uPlot.Axis => ({
      show: axis.enabled,
      font: cssFont(axis.labelFont),
      stroke: axis.drawsLabels ? colorOf(axis.labelColor) : "transparent",
      border: { show: axis.drawsAxisLine, stroke: colorOf(axis.axisLineColor), width: 1 },
      ticks: { show: false },
      gap: 8,
      grid: {
        show: axis.drawsGridLines,
        stroke: `color-mix(in srgb, ${colorOf(axis.gridColor)} 30%, transparent)`,
        dash: axis.gridLineDash ? [axis.gridLineDash.on, axis.gridLineDash.off] : [],
        width: 1,
      },
    });
    const valueAxis = (name: "left" | "right", axis: ChartAxisSettings): uPlot.Axis => ({
      ...axisOf(axis),
      scale: "y",
      side: sides[name],
      // Room for letters of the usual size; larger ones are not cut off.
      size: room[name] * (axis.drawsLabels ? Math.max(1, textScale()) : 1),
      splits: () => this.valuesAtAxis(axis.drawsTopLabel),
      values: (_plot, values) => values.map((value) => this.axisText(name, value)),
    });
    const [above, below] = xAxis.labelsBelow ? [room.top, 0] : [0, room.bottom];
    return {
      width: this.plotHolder.clientWidth,
      height: this.plotHolder.clientHeight,
      padding: [above, rightAxis.enabled ? 0 : room.right, below, leftAxis.enabled ? 0 : room.left],
      legend: { show: false },
      cursor: { show: false },
      scales: {
        x: { time: false, range: () => limits(this.time.shown) },
        y: { range: () => limits(this.shownValues()) },
      },
      axes: [
        {
          ...axisOf(xAxis),
          side: xAxis.labelsBelow ? sides.bottom : sides.top,
          size: xAxis.labelsBelow ? room.bottom : room.top,
          splits: () => this.timesAtAxis(),
          values: (_plot, times) => times.map(() => ""),
        },
        valueAxis("left", leftAxis),
        valueAxis("right", rightAxis),
      ],
      series: [
        {},
        {
          stroke: lineColor(data.color),
          width: data.lineWidth,
          fill: filled(data),
          ...(data.cubic && uPlot.paths.spline && { paths: uPlot.paths.spline() }),
          points: {
            show: data.drawsCircles,
            size: 2 * data.circleRadius,
            width: 2,
            stroke: lineColor(data.circleColor),
            fill: adapted(data.drawsCircleHoles ? data.circleHoleColor : data.circleColor),
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
            this.drawTimes(plot, xAxis);
            this.drawChosen(plot, data);
            this.drawTexts(plot, settings, data);
          },
        ],
      },
    };
  }

  /** From one end of the whole range to the other, and between these where there is room. */
  private valuesAtAxis(withTop: boolean): number[] {
    const whole = this.wholeValues();
    const shown = this.shownValues();
    let step = (whole.max - whole.min) / 5;
    while ((shown.max - shown.min) / step < 3) step /= 2;
    const first = Math.ceil((shown.min - whole.min) / step - 1e-9);
    const last = Math.floor((shown.max - whole.min) / step + 1e-9);
    return Array.from(
      { length: last - first + 1 },
      (_, index) => whole.min + (first + index) * step,
    ).filter((value) => withTop || value < whole.max);
  }

  /**
   * Where labels may stand: at the points' times, whole days after the first one's, no closer than the
   * granularity, where it says anything, and than the labels are wide.
   */
  private timesAtAxis(): number[] {
    const { start, shown } = this.time;
    const room = this.plotHolder.clientWidth / (labelWidth * textScale());
    const labels = Math.max(1, Math.floor(room));
    const isHeeded = this.settings?.xAxis.hasGranularity && Number.isFinite(this.granularity);
    const granularity = isHeeded ? this.granularity : 0;
    const least = Math.max(granularity, lengthOf(shown) / labels);
    const step = Math.max(1, Math.ceil(least / secondsPerDay - tolerance)) * secondsPerDay;
    const first = Math.ceil((shown.min - start) / step - tolerance);
    const last = Math.floor((shown.max - start) / step + tolerance);
    return Array.from({ length: last - first + 1 }, (_, index) => start + (first + index) * step);
  }

  private drawTimes(plot: uPlot, axis: ChartAxisSettings): void {
    if (!axis.drawsLabels) return;
    const { ctx, bbox } = plot;
    const density = window.devicePixelRatio;
    const gap = 2 * density;
    ctx.save();
    ctx.font = cssFont(axis.labelFont ?? ownTimeFont, density);
    ctx.fillStyle = colorOf(axis.labelColor);
    ctx.textAlign = axis.centersLabels ? "center" : "left";
    ctx.textBaseline = axis.labelsBelow ? "top" : "bottom";
    const line = bbox.top + (axis.labelsBelow ? bbox.height + 8 * density : -8 * density);
    let free = -Infinity;
    const times = this.timesAtAxis();
    for (const time of times) {
      const text = this.axisText("x", time);
      const { width } = ctx.measureText(text);
      const before = axis.centersLabels ? width / 2 : 0;
      let left = plot.valToPos(time, "x", true) - before;
      if (axis.keepsEndLabelsInside) {
        left = Math.min(Math.max(left, gap), ctx.canvas.width - gap - width);
      }
      if (left < free) continue;
      free = left + width + gap;
      ctx.fillText(text, left + before, line);
    }
    // A single label does not tell how long a time is shown.
    if (times.length < 2) {
      ctx.fillStyle = colorOf(null);
      ctx.textAlign = "center";
      const next = line + times.length * 14 * density;
      ctx.fillText(this.daysShown().join(" – "), bbox.left + bbox.width / 2, next);
    }
    ctx.restore();
  }

  /** The description in the corner, and the values above their points. */
  private drawTexts(plot: uPlot, settings: ChartSettings, data: LineData): void {
    const { ctx, bbox } = plot;
    const density = window.devicePixelRatio;
    ctx.save();
    ctx.font = cssFont(null, density);
    ctx.fillStyle = adapted(settings.descriptionColor);
    ctx.textAlign = "right";
    ctx.textBaseline = "bottom";
    ctx.fillText(settings.descriptionText, bbox.left + bbox.width, bbox.top + bbox.height);
    ctx.font = cssFont(data.valueFont, density);
    ctx.textAlign = "center";
    for (const { x, y } of data.drawsValues ? data.entries : []) {
      const above = plot.valToPos(y, "y", true) - (data.circleRadius + 2) * density;
      ctx.fillText(this.axisText(data.axisDependency, y), plot.valToPos(x, "x", true), above);
    }
    ctx.restore();
  }

  /** The first and the last day whose points are in sight. */
  private daysShown(): string[] {
    const { start, shown } = this.time;
    const first = Math.ceil((shown.min - start) / secondsPerDay - tolerance);
    const last = Math.floor((shown.max - start) / secondsPerDay + tolerance);
    const days = last > first ? [first, last] : [];
    return days.map((day) => this.axisText("x", start + day * secondsPerDay));
  }

  private resize(): void {
    const { clientWidth: width, clientHeight: height } = this.plotHolder;
    if (width === 0 || height === 0) return;
    if (this.plot) this.plot.setSize({ width, height });
    else this.rebuild();
  }

  private followFingers(): void {
    const holder = this.plotHolder;
    /** Where a finger came down that has done nothing but rest there. */
    let rested: PointerEvent | undefined;
    holder.addEventListener("pointerdown", (event) => {
      holder.setPointerCapture(event.pointerId);
      this.fingers.set(event.pointerId, event);
      rested = this.fingers.size === 1 ? event : undefined;
    });
    const lift = (event: PointerEvent): void => {
      this.fingers.delete(event.pointerId);
    };
    holder.addEventListener("pointerup", (event) => {
      lift(event);
      if (rested?.pointerId !== event.pointerId) return;
      const way = Math.hypot(event.clientX - rested.clientX, event.clientY - rested.clientY);
      if (way < tapReach) this.tapAt(event.clientX);
    });
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
      this.closeUp = undefined;
      this.time.showWhole();
    });
  }

  private panFrom(before: PointerEvent, now: PointerEvent): void {
    if (!this.plot) return;
    const { width, height } = this.plot.over.getBoundingClientRect();
    const [right, down] = [now.clientX - before.clientX, now.clientY - before.clientY];
    this.look(
      moved(this.time.shown, -right / width, this.time.whole),
      moved(this.shownValues(), down / height, this.wholeValues()),
    );
  }

  private zoomBetween(before: PointerEvent, now: PointerEvent, other: PointerEvent): void {
    // Fingers above each other tell nothing about the other direction.
    const least = 24;
    const factor = (from: number, to: number): number =>
      Math.abs(from) < least || Math.abs(to) < least ? 1 : Math.abs(to) / Math.abs(from);
    const [fromX, toX] = [before.clientX - other.clientX, now.clientX - other.clientX];
    const [fromY, toY] = [before.clientY - other.clientY, now.clientY - other.clientY];
    const both = factor(Math.hypot(fromX, fromY), Math.hypot(toX, toY));
    const isOne = this.settings?.pinchZoomEnabled === true;
    this.zoomAt(
      (now.clientX + other.clientX) / 2,
      (now.clientY + other.clientY) / 2,
      isOne ? both : factor(fromX, toX),
      isOne ? both : factor(fromY, toY),
    );
  }

  private zoomAt(clientX: number, clientY: number, factorX: number, factorY: number): void {
    if (!this.plot) return;
    const box = this.plot.over.getBoundingClientRect();
    const placeX = (clientX - box.left) / box.width;
    const placeY = 1 - (clientY - box.top) / box.height;
    this.look(
      zoomed(this.time.shown, factorX, placeX, this.time.whole, shortestTime),
      zoomed(this.shownValues(), factorY, placeY, this.wholeValues()),
    );
  }

  private look(time: Range, values: Range): void {
    const isPart = lengthOf(values) < lengthOf(this.wholeValues()) * (1 - tolerance);
    this.closeUp = isPart ? values : undefined;
    this.time.show(time);
  }
}
