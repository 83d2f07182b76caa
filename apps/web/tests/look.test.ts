// What the core decides about looks, as the phone shows it.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { moving, storedHistory, type Visit, visitPage } from "./browser";

/** By an element and one of its properties, such as ".dim color". */
async function expectShown(visit: Visit, styles: Readonly<Record<string, string>>): Promise<void> {
  const shown = Object.keys(styles).map(async (each) => {
    const [, selector = "", property = ""] = /^(.*) (\S+)$/.exec(each) ?? [];
    const element = visit.page.locator(selector).first();
    const read = (view: Element, name: string): string =>
      getComputedStyle(view).getPropertyValue(name);
    return [each, await element.evaluate(read, property)] as const;
  });
  expect(Object.fromEntries(await Promise.all(shown))).toEqual(styles);
}

/** Of what a widget has drawn: how much of its canvas is covered, and how bright that is, 0 to 1. */
function inkOf(visit: Visit, widget: string): Promise<{ covered: number; bright: number }> {
  return visit.element(widget).evaluate((element) => {
    const { width, height } = element as HTMLCanvasElement;
    const context = (element as HTMLCanvasElement).getContext("2d");
    const pixels = new Uint32Array(context?.getImageData(0, 0, width, height).data.buffer ?? []);
    const covered = [...pixels].filter((pixel) => pixel >>> 24 > 128);
    const green = covered.reduce((sum, pixel) => sum + ((pixel >>> 8) & 255) / 255, 0);
    return { covered: covered.length / pixels.length, bright: green / covered.length };
  });
}

const white = "#fff";
/**
 * Not the dials' rims and the rings' tracks, which tell nothing: ticks, numbers and the filled part do.
 * By the least contrast: what stands on which ground, by the names of the page's colours. */
const contrasts: readonly (readonly [least: number, front: string, ...grounds: string[]])[] = [
  [4.5, "ink", "ground", "panel", "chip", "group", "raised", "raised-control"],
  [4.5, "soft-ink", "ground", "panel", "group", "group-ground", "raised"],
  [4.5, "accent-text", "ground", "panel", "group", "raised"],
  [4.5, white, "accent", "stop", "bar-top", "control"],
  [3, "edge", "ground", "panel", "group", "raised", "raised-control"],
  [3, "control", "ground", "panel", "group", "raised"],
  [3, "stop", "ground"],
  [3, "good", "ground", "panel"],
  // The other dots, by their edge, and the one that is current.
  [3, "page-current-dot", "page-dots-ground"],
  [3, "edge", "page-dots-ground"],
];

/** Those of them that stand out less, each with its contrast. */
function faint(rows: typeof contrasts): string[] {
  const probe = document.body.appendChild(document.createElement("i"));
  const luminance = (color: string): number => {
    probe.style.color = color.startsWith("#") ? color : `var(--${color})`;
    const parts = getComputedStyle(probe).color.match(/[\d.]+/g) ?? [];
    const [red = NaN, green = NaN, blue = NaN] = parts.map((part) => {
      const value = Number(part) / 255;
      return value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  };
  const contrast = (one: string, other: string): number => {
    const [dark = NaN, bright = NaN] = [luminance(one), luminance(other)].sort((a, b) => a - b);
    return (bright + 0.05) / (dark + 0.05);
  };
  return rows.flatMap(([least, front, ...grounds]) =>
    grounds
      .filter((ground) => !(contrast(front, ground) >= least))
      .map((ground) => `${front} on ${ground}: ${contrast(front, ground).toFixed(2)}`),
  );
}

it.each(["light", "dark"] as const)("texts and controls stand out, %s", async (colorScheme) => {
  const { page } = await visitPage({ colorScheme });
  expect(await page.evaluate(faint, contrasts)).toEqual([]);
});

it("distances and letters are of one scale", () => {
  const styles = ["styles", "charts", "lists"]
    .map((name) => readFileSync(new URL(`../src/${name}.css`, import.meta.url), "utf8"))
    .join("");
  const own = /(gap|padding|margin|font-size)[a-z-]*:[^;]*\d(px|r?em)\b[^;]*/g;
  // Those of a picture within a line of text go with its letters.
  expect((styles.match(own) ?? []).filter((each) => !/[\d.]+em/.test(each))).toEqual([]);
});

it("shows what the core says", async () => {
  const now = Math.floor(Date.now() / 1000);
  const stored = storedHistory([{ hr: 100, spo2: 100, date: now, labels: [0, 1, 2, 3, 5] }]);
  const visit = await visitPage({ ...moving, stored, viewport: { width: 320, height: 568 } });
  const { page } = visit;
  const pureWhite = "rgb(255, 255, 255)";
  const red = "rgb(255, 0, 0)";

  // The measuring screen, by day and by night, and the introduction.
  const texts = await page.locator(".measuring :is(h2, .unit, .round)").allTextContents();
  expect(texts.join()).toBe("Heart rate,SpO₂,BPM,%,Last measurement,BPM,%,Pulse,START,STOP");
  await expectShown(visit, { ".measuring ion-title color": pureWhite });
  const day = await inkOf(visit, "gaugeHR");
  expect(day).not.toEqual(await inkOf(visit, "gaugeSpo2"));
  expect((await inkOf(visit, "circleprogressSpo2")).covered).toBeGreaterThan(0.3);
  await page.emulateMedia({ colorScheme: "dark" });
  await visit.still();
  expect((await inkOf(visit, "gaugeHR")).bright).toBeGreaterThan(day.bright + 0.2);
  await page.emulateMedia({ colorScheme: "light" });
  await visit.open("options");
  await page.getByText("Introduction", { exact: true }).click();
  await visit.still();
  await expectShown(visit, {
    ".dots background-color": pureWhite,
    ".dot.current background-color": "rgb(200, 2, 0)",
    ".dot:not(.current) background-color": "rgb(170, 170, 170)",
  });
  await visit.tap("Skip");

  await visit.tap("Close");
  await visit.settled();

  // The results, with the chooser and the toolbar, for which the list makes way.
  await visit.open("results");
  await expectShown(visit, {
    ".results-list ion-item height": "50px",
    "ion-item-option --background": "rgb(255 0 0 / 1)",
  });
  await page.locator(".result").click();
  await visit.still();
  await expectShown(visit, {
    ".label-row height": "40px",
    ".chooser border-radius": "15px",
    ".dim background-color": "rgba(0, 0, 0, 0.5)",
    ".label-row ion-icon color": red,
  });
  await page.locator(".chooser .close").click();
  const content = page.locator(".results ion-content");
  const listHeight = async (): Promise<number> => (await content.boundingBox())?.height ?? NaN;
  const whole = await listHeight();
  await visit.tap("Edit");
  await page.locator(".result").click();
  await expect.poll(listHeight).toBe(whole - 44);
  await visit.tap("Done");

  // The charts.
  await visit.tap("Chart");
  await page.locator(".legend-mark.line").first().waitFor();
  await expectShown(visit, {
    "ion-segment-button [part=indicator-background] border-top-color": red,
  });
});
