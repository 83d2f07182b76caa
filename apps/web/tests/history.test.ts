// The results list with labels, deletion and sharing, and the charts.
import { readFileSync } from "node:fs";

import { afterAll, beforeAll, expect, it } from "vitest";

import { PhoneBrowser, recording, type Visit, type Visitor } from "./browser";
import { inspect } from "./inspect";
import { type Entry, storedHistory } from "./stored_history";

let phone: PhoneBrowser;
beforeAll(async () => {
  phone = await PhoneBrowser.open({ camera: recording("72") });
});
afterAll(() => phone.close());

/** 5 March 2024, 14:07:21 UTC. */
const march = 1709647641;
const day = 86_400;

const entries: readonly Entry[] = [
  { hr: 61.4, spo2: 0, date: march - 2 * day },
  { hr: 0, spo2: 97.4, date: march - day, labels: [3] },
  { hr: 71.6, spo2: 98.5, date: march, labels: [0, 1] },
];

async function openResults(history = entries, visitor: Visitor = {}): Promise<Visit> {
  const visit = await phone.visit({ ...visitor, stored: storedHistory(history) });
  await visit.swipe("right");
  await visit.page.getByRole("button", { name: "Edit" }).waitFor();
  await visit.settled();
  return visit;
}

function chooser(visit: Visit): ReturnType<Visit["page"]["locator"]> {
  return visit.page.getByRole("dialog", { name: "Labels" });
}

/** The label flags of an entry. */
async function labelsOf(visit: Visit, entry: number): Promise<number[]> {
  const stored = JSON.parse((await visit.stored("values")) ?? "[]") as { labels: boolean[] }[];
  return stored[entry]?.labels.flatMap((flag, label) => (flag ? [label] : [])) ?? [];
}

function rowTexts(visit: Visit): Promise<string[][]> {
  return visit.page
    .locator(".result")
    .evaluateAll((rows) => rows.map((row) => [...row.children].map((each) => each.textContent)));
}

it("shows entries and their labels, and stores every tap", async () => {
  const visit = await openResults();
  const { page } = visit;
  const row = async (index: number): Promise<string[]> =>
    ((await rowTexts(visit))[index] ?? []).map((text) => text.replace(/\s/gu, " "));
  expect(await row(1)).toEqual(["Mar 4, 2024, 2:07 PM", "--", "97%", "Training (Before)"]);
  await inspect(visit, "results");
  const label = (name: string): ReturnType<typeof page.getByRole> =>
    page.getByRole("checkbox", { name, exact: true });
  await page.locator(".result").nth(1).click();
  await label("Training (After)").waitFor();
  await inspect(visit, "labels");
  // The bar and the list behind cannot be reached, until it closes.
  const takesFocus = (behind: ReturnType<typeof page.locator>): Promise<boolean> =>
    behind.evaluate((control) => {
      (control as HTMLElement).focus();
      return control.matches(":focus");
    });
  const behind = [
    page.getByRole("button", { name: "Edit" }),
    page.locator("ion-item button").nth(1),
  ];
  for (const control of behind) expect(await takesFocus(control)).toBe(false);

  const marks = (): Promise<(string | null)[]> =>
    chooser(visit)
      .getByRole("checkbox")
      .evaluateAll((all) =>
        all.flatMap((each) =>
          each.getAttribute("aria-checked") === "true" ? [each.textContent] : [],
        ),
      );
  expect(await marks()).toEqual(["Training (Before)"]);
  await label("Training (After)").click();
  expect(await marks()).toEqual(["Training (After)"]);
  await chooser(visit).getByRole("button", { name: "None" }).click();
  expect(await marks()).toEqual([]);
  expect(await labelsOf(visit, 1)).toEqual([]);
  await label("Resting").click();
  expect(await labelsOf(visit, 1)).toEqual([0]);
  await chooser(visit).getByRole("button", { name: "Close" }).click();
  for (const control of behind) await expect.poll(() => takesFocus(control)).toBe(true);
  expect((await row(1))[3]).toBe("Resting");
  // A phone's Back closes it, too.
  await page.locator(".result").nth(1).click();
  await label("Training (After)").waitFor();
  await page.goBack();
  for (const control of behind) await expect.poll(() => takesFocus(control)).toBe(true);
});

it("takes rows away from the chooser, by a swipe and by the selection", async () => {
  const visit = await openResults();
  const { page } = visit;
  const count = async (): Promise<number> => (await rowTexts(visit)).length;
  await page.locator(".result").nth(0).click();
  await chooser(visit).getByRole("button", { name: "Delete" }).click();
  await expect.poll(count).toBe(2);
  await visit.still();

  const row = await page.locator("ion-item-sliding").first().boundingBox();
  await visit.drag({ x: 340, y: (row?.y ?? 0) + 25 }, { x: 200, y: (row?.y ?? 0) + 25 });
  const option = page.locator("ion-item-option").first();
  await option.waitFor({ state: "visible" });
  await inspect(visit, "results-swiped");
  await option.click();
  await expect.poll(count).toBe(1);
  await visit.still();
  await page.getByRole("button", { name: "Edit" }).click();
  await page.locator(".result").first().click();
  await page.getByRole("toolbar").getByRole("button", { name: "Delete" }).click();
  await page.getByText("No measurements yet").waitFor();
  expect(await visit.stored("values")).toBe("[]");
  // Out of editing again.
  await page.getByRole("button", { name: "Edit" }).waitFor();
});

it("selects all and none, and shares the selection as it is asked to", async () => {
  const visit = await openResults();
  const { page } = visit;
  const selected = (): Promise<number> => page.locator("ion-item-sliding.checked").count();
  const toolbar = page.locator(".results-toolbar");
  await page.getByRole("button", { name: "Edit" }).click();
  await page.getByRole("button", { name: "All", exact: true }).click();
  expect(await selected()).toBe(3);
  await inspect(visit, "results-editing");
  await page.getByRole("button", { name: "None", exact: true }).click();
  expect(await selected()).toBe(0);
  await expect.poll(() => toolbar.evaluate((bar) => (bar as HTMLElement).inert)).toBe(true);

  await page.locator(".result").nth(2).click();
  await page.locator(".result").nth(0).click();
  const readOut = (name: RegExp): Promise<number> => page.getByRole("button", { name }).count();
  expect(await readOut(/^Selected .*Mar [35]/)).toBe(2);
  expect(await readOut(/^Not selected .*Mar 4/)).toBe(1);
  const lines = "Date,Heart Rate,Saturation\n2024-03-05 14:07:21,72,98\n2024-03-03 14:07:21,61,0";

  // Whoever cancels the choice is offered the file as well.
  await page.getByRole("toolbar").getByRole("button", { name: "Share" }).click();
  await visit.still();
  await inspect(visit, "share");
  await page.getByRole("button", { name: "Cancel", exact: true }).click();
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("button", { name: /^Save veyla-data-/ }).click(),
  ]);
  expect(download.suggestedFilename()).toMatch(/^veyla-data-\d{8}\.csv$/);
  expect(readFileSync(await download.path()).toString("latin1")).toBe(lines);
  await inspect(visit, "mail");
  await page.getByRole("button", { name: "Cancel", exact: true }).click();
  await page.getByRole("heading", { name: "New mail" }).waitFor({ state: "detached" });

  await page.getByRole("toolbar").getByRole("button", { name: "Share" }).click();
  await page.getByRole("button", { name: "Email (text)" }).click();
  await page.getByRole("button", { name: "Open mail app" }).click();
  const address = (await visit.addresses()).at(-1) ?? "";
  expect(address).toMatch(/^mailto:\?/);
  // A link's address follows its text.
  const body = new URL(address).searchParams.get("body") ?? "";
  expect(body).toMatch(/iTunes link \(https:\/\/veyla\.example\/app\)\.\r\n\r\nDate,/);
  expect(body.endsWith(lines.replaceAll("\n", "\r\n"))).toBe(true);
  expect(visit.log).toContain("Mail cancelled");
});

it("hands the mail on to the phone's own programs where the browser can", async () => {
  const visit = await openResults();
  const { page } = visit;
  // Browsers without a window system have no such sheet.
  await page.evaluate(() => {
    const shared: unknown[] = [];
    Object.assign(window, { shared });
    const share = async ({ title, text, files = [] }: ShareData): Promise<void> => {
      const [file] = files;
      shared.push({ title, text, file: [file?.name, file?.type, await file?.text()] });
    };
    Object.assign(navigator, { canShare: () => true, share });
  });
  await page.getByRole("button", { name: "Edit" }).click();
  await page.locator(".result").nth(1).click();
  const shareMail = async (): Promise<void> => {
    await page.getByRole("toolbar").getByRole("button", { name: "Share" }).click();
    await page.getByRole("button", { name: "Email (csv)" }).click();
    await page.getByRole("button", { name: "Share …" }).click();
    await page.getByRole("heading", { name: "New mail" }).waitFor({ state: "detached" });
  };
  await shareMail();
  const csv = "Date,Heart Rate,Saturation\n2024-03-04 14:07:21,0,97";
  expect(await page.evaluate(() => (window as unknown as { shared: unknown[] }).shared)).toEqual([
    {
      title: "Veyla data",
      text: expect.stringContaining("measured with the Veyla app") as string,
      file: [expect.stringMatching(/^veyla-data-.*csv$/) as string, "text/csv", csv],
    },
  ]);
  expect(visit.log).toContain("Mail sent");

  await page.evaluate(() => {
    Object.assign(navigator, { share: () => Promise.reject(new Error("too large")) });
  });
  await shareMail();
  expect(visit.log).toContain("Mail sent failure: too large");
});

it("lists a long history as far as it is scrolled", async () => {
  const long = Array.from({ length: 3000 }, (_, index) => ({
    hr: 60 + (index % 30),
    spo2: 97,
    date: march + index * 3600,
  }));
  const visit = await openResults(long);
  const first = (await rowTexts(visit)).length;
  expect(first).toBeGreaterThan(20);
  expect(first).toBeLessThan(200);
  await visit.page.locator(".results ion-content").evaluate(async (content) => {
    const scroller = await (
      content as HTMLElement & { getScrollElement(): Promise<HTMLElement> }
    ).getScrollElement();
    scroller.scrollTop = scroller.scrollHeight;
  });
  await expect.poll(async () => (await rowTexts(visit)).length).toBeGreaterThan(first);
});

type Written = Readonly<Record<string, number>>;

/** Follows what is written on canvases; tells a chart's dates, and how far from the left they stand. */
async function followDates(visit: Visit): Promise<(chart: number) => Promise<Written>> {
  await visit.page.evaluate(() => {
    const written = new Map<unknown, Record<string, number>>();
    Object.assign(window, { written });
    const context = CanvasRenderingContext2D.prototype;
    const { clearRect, fillText } = context as unknown as Record<
      "clearRect" | "fillText",
      (this: CanvasRenderingContext2D, ...all: unknown[]) => void
    >;
    context.clearRect = function (...all): void {
      written.set(this.canvas, {});
      clearRect.apply(this, all);
    };
    context.fillText = function (text, x, y): void {
      const texts = written.get(this.canvas);
      if (texts) texts[text] = x / window.devicePixelRatio;
      fillText.call(this, text, x, y);
    };
  });
  return async (chart) => {
    await visit.still();
    const texts = await visit.page.evaluate((index) => {
      const { written } = window as unknown as { written: Map<unknown, Record<string, number>> };
      return written.get(document.querySelectorAll(".line-chart canvas")[index]) ?? {};
    }, chart);
    return Object.fromEntries(Object.entries(texts).filter(([text]) => /[A-Z]/.test(text)));
  };
}

function entryOf(
  hr: number,
  date: number,
): { hr: number; spo2: number; date: number; labels: number[] } {
  return { hr, spo2: 97, date, labels: [0] };
}

/** How a date days ago is written. */
function dayAgo(now: number, ago: number): string {
  return new Date((now - ago * day) * 1000)
    .toLocaleDateString("en-GB", { day: "2-digit", month: "short", timeZone: "UTC" })
    .replace("Sept", "Sep");
}

it("dates the charts' days, of both charts together", async () => {
  const now = Math.floor(Date.now() / 1000);
  // The oldest day has an SpO2 alone.
  const month = Array.from({ length: 30 }, (_, ago) => ({
    hr: ago === 29 ? 0 : 60 + ago,
    spo2: 97,
    date: now - ago * day,
  })).reverse();
  const visit = await openResults(month, { viewport: { width: 320, height: 568 } });
  const { page } = visit;
  await page.getByRole("button", { name: "Chart" }).click();
  await page.getByRole("img", { name: /^spo2/ }).waitFor();
  await visit.settled();
  const datesOf = await followDates(visit);
  const days = (...agos: number[]): string[] => agos.map((ago) => dayAgo(now, ago));

  await page.locator("ion-segment-button", { hasText: /^Month/ }).click();
  await expect.poll(async () => Object.keys(await datesOf(1))).toEqual(days(29, 24, 19, 14, 9, 4));
  const places = await datesOf(1);
  expect(await datesOf(0)).toEqual(places);
  // Each stands below its day's points: none is pushed aside for the chart's edges.
  const plot = await page.locator(".line-chart .u-over").first().boundingBox();
  const all = await page.locator(".line-chart .plot").first().boundingBox();
  const dayWidth = (plot?.width ?? 0) / 29;
  Object.values(places).forEach((x, index) => {
    const point = (plot?.x ?? 0) - (all?.x ?? 0) + 5 * index * dayWidth;
    expect(Math.abs(x - point), String(index)).toBeLessThan(4);
  });

  // A closer look at one of them is one at both.
  const at = (x: number): { x: number; y: number } => ({
    x: (plot?.x ?? 0) + x,
    y: (plot?.y ?? 0) + 50,
  });
  await visit.pinch([at(100), at(130)], [at(20), at(210)]);
  const close = await datesOf(0);
  expect(close).not.toEqual(places);
  expect(await datesOf(1)).toEqual(close);
  // Where labels as far apart as these must be would tell too little, the time shown is told.
  await visit.pinch([at(100), at(110)], [at(0), at(230)]);
  await expect
    .poll(async () => Object.keys(await datesOf(1)).at(-1))
    .toMatch(/^\d\d [A-Z][a-z]+ – \d\d [A-Z][a-z]+$/);
});

it("charts daily means by period and label, to be dragged and zoomed", async () => {
  const now = Math.floor(Date.now() / 1000);
  const month = Array.from({ length: 30 }, (_, index) => ({
    hr: 62 + 12 * Math.sin(index / 3) + (index % 4),
    spo2: 96.5 + 1.5 * Math.cos(index / 4),
    date: now - (29 - index) * day,
    labels: index % 2 === 0 ? [0] : [1],
  }));
  month.splice(-2, 2, entryOf(66.5, now - day), entryOf(80, now), entryOf(82, now));
  const visit = await openResults(month);
  const { page } = visit;
  await page.getByRole("button", { name: "Chart" }).click();
  const charts = page.locator(".line-chart .plot");
  await expect.poll(() => charts.first().getAttribute("aria-label")).toContain("heartrate");
  await visit.settled();
  await visit.picture("charts-week");
  const week = (await charts.first().getAttribute("aria-label")) ?? "";
  // The mean of the day's two, and the day before's one.
  expect(week).toMatch(new RegExp(`, ${dayAgo(now, 1)}: 66\\.5, ${dayAgo(now, 0)}: 81$`));

  await page.locator("ion-segment-button", { hasText: "3 Months" }).click();
  await inspect(visit, "charts-3-months");
  const whole = await charts.first().screenshot();
  const box = await charts.first().boundingBox();
  const at = (x: number): { x: number; y: number } => ({
    x: (box?.x ?? 0) + x,
    y: (box?.y ?? 0) + (box?.height ?? 0) / 2,
  });
  // Nothing to drag to, until a closer look leaves something out.
  await visit.drag(at(250), at(100));
  expect((await charts.first().screenshot()).equals(whole)).toBe(true);
  await visit.pinch([at(150), at(200)], [at(60), at(300)]);
  const close = await charts.first().screenshot();
  expect(close.equals(whole)).toBe(false);
  await visit.picture("charts-zoomed");
  await visit.drag(at(250), at(100));
  expect((await charts.first().screenshot()).equals(close)).toBe(false);

  // A tap that follows a drag too soon belongs to it.
  await page.waitForTimeout(600);
  await page.getByRole("button", { name: "Choose Label" }).click();
  await page.getByRole("dialog", { name: "Choose label" }).waitFor();
  await inspect(visit, "charts-labels");
  await page.getByRole("button", { name: "Training (Before)" }).click();
  await page.getByText("Not enough heartrate data").waitFor();
  await page.getByText("Not enough SpO2 data").waitFor();
  await page.getByRole("button", { name: "Training (Before)" }).click();
  await page.getByRole("button", { name: "None", exact: true }).click();
  await page.getByRole("button", { name: "Choose Label" }).waitFor();
  await page.locator("ion-segment-button", { hasText: "Week" }).click();
  await expect.poll(() => charts.first().getAttribute("aria-label")).toBe(week);
});
