// Plays the drawings that the core writes down on a Canvas 2D.

/** A drawing of the core: commands with their arguments, and the texts among these. */
export interface Drawing {
  readonly numbers: Float64Array;
  readonly texts: readonly string[];
}

/** Changes a colour on its way to the canvas, components in 0 to 1. */
export type Recolor = (red: number, green: number, blue: number, alpha: number) => string;

// In the order in which the core numbers them.
const commands = [
  "save",
  "restore",
  "translate",
  "rotate",
  "scale",
  "multiplyAlpha",
  "beginPath",
  "moveTo",
  "lineTo",
  "arc",
  "arcNegative",
  "closePath",
  "fill",
  "stroke",
  "clip",
  "drawText",
] as const;
const paints = ["color", "linearGradient", "radialGradient"] as const;
const caps: readonly CanvasLineCap[] = ["butt", "round"];
const joins: readonly CanvasLineJoin[] = ["miter", "round"];
const aligns: readonly CanvasTextAlign[] = ["left", "center", "right"];

export const fontFamily = '-apple-system, "Inter", Roboto, "Helvetica Neue", Arial, sans-serif';

function cssFont(size: number, weight: number): string {
  return `${weight} ${size}px ${fontFamily}`;
}

function css(red: number, green: number, blue: number, alpha: number): string {
  return `rgb(${red * 255} ${green * 255} ${blue * 255} / ${alpha})`;
}

export const plainColors: Recolor = css;

/** For a dark ground: what has no hue changes from ink to chalk, colours stay. */
export const darkColors: Recolor = (red, green, blue, alpha) => {
  const hue = Math.max(red, green, blue) - Math.min(red, green, blue);
  if (hue > 0.1) return css(red, green, blue, alpha);
  const chalk = 0.94 - 0.88 * ((red + green + blue) / 3);
  return css(chalk, chalk, chalk, alpha < 1 ? Math.min(1, alpha * 1.3) : 1);
};

const measuring = document.createElement("canvas").getContext("2d");

/** How far a text moves on, and how far its ink reaches above and below the baseline. */
export function measureText(
  text: string,
  size: number,
  weight: number,
): { width: number; ascent: number; descent: number } {
  if (!measuring) return { width: 0, ascent: 0, descent: 0 };
  measuring.font = cssFont(size, weight);
  const metrics = measuring.measureText(text);
  return {
    width: metrics.width,
    ascent: metrics.actualBoundingBoxAscent,
    descent: metrics.actualBoundingBoxDescent,
  };
}

/** Plays one drawing; the context keeps its state. */
export function play(
  context: CanvasRenderingContext2D,
  { numbers, texts }: Drawing,
  recolor: Recolor,
): void {
  let place = 0;
  const next = (): number => numbers[place++] ?? 0;
  const color = (): string => recolor(next(), next(), next(), next());
  const addStops = (gradient: CanvasGradient): CanvasGradient => {
    for (let left = next(); left > 0; --left) gradient.addColorStop(next(), color());
    return gradient;
  };
  const paint = (): string | CanvasGradient => {
    const kind = paints[next()];
    if (kind === "color") return color();
    if (kind === "linearGradient") {
      return addStops(context.createLinearGradient(next(), next(), next(), next()));
    }
    const [x, y, radius] = [next(), next(), next()];
    return addStops(context.createRadialGradient(x, y, 0, x, y, radius));
  };

  context.save();
  while (place < numbers.length) {
    switch (commands[next()]) {
      case "save":
        context.save();
        break;
      case "restore":
        context.restore();
        break;
      case "translate":
        context.translate(next(), next());
        break;
      case "rotate":
        context.rotate(next());
        break;
      case "scale":
        context.scale(next(), next());
        break;
      case "multiplyAlpha":
        context.globalAlpha *= next();
        break;
      case "beginPath":
        context.beginPath();
        break;
      case "moveTo":
        context.moveTo(next(), next());
        break;
      case "lineTo":
        context.lineTo(next(), next());
        break;
      case "arc":
        context.arc(next(), next(), next(), next(), next());
        break;
      case "arcNegative":
        context.arc(next(), next(), next(), next(), next(), true);
        break;
      case "closePath":
        context.closePath();
        break;
      case "fill":
        context.fillStyle = paint();
        context.fill();
        break;
      case "stroke":
        context.lineWidth = next();
        context.lineCap = caps[next()] ?? "butt";
        context.lineJoin = joins[next()] ?? "miter";
        context.strokeStyle = color();
        context.stroke();
        break;
      case "clip":
        context.clip();
        break;
      case "drawText": {
        const text = texts[next()] ?? "";
        const [x, y, align, size, weight] = [next(), next(), next(), next(), next()];
        context.font = cssFont(size, weight);
        context.textAlign = aligns[align] ?? "left";
        context.fillStyle = color();
        context.fillText(text, x, y);
        break;
      }
    }
  }
  context.restore();
}
