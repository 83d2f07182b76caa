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

async function storedEntries(visit: Visit): Promise<{ hr: number; labels: boolean[] }[]> {
  return JSON.parse((await visit.stored("values")) ?? "[]") as { hr: number; labels: boolean[] }[];
}

async function labelsOf(visit: Visit, entry: number): Promise<number[]> {
  const labels = (await storedEntries(visit))[entry]?.labels ?? [];
  return labels.flatMap((flag, label) => (flag ? [label] : []));
}

function rowTexts(visit: Visit): Promise<string[][]> {
  return visit.page
    .locator(".result")
    .evaluateAll((rows) => rows.map((row) => [...row.children].map((each) => each.textContent)));
}

it("lists the history newest first, in the texts of the core", async () => {
  const visit = await openResults();
  const texts = (await rowTexts(visit)).map((row) => row.map((text) => text.replace(/\s/gu, " ")));
  expect(texts).toEqual([
    ["Mar 5, 2024, 2:07 PM", "72 bpm", "98%", "Resting, Active"],
    ["Mar 4, 2024, 2:07 PM", "--", "97%", "Training (Before)"],
    ["Mar 3, 2024, 2:07 PM", "61 bpm", "--", ""],
  ]);
  await inspect(visit, "results");
});

it("keeps labels that exclude each other apart, and stores every tap", async () => {
  const visit = await openResults();
  const { page } = visit;
  const label = (name: string): ReturnType<typeof page.getByRole> =>
    page.getByRole("checkbox", { name, exact: true });
  await page.locator(".result").nth(1).click();
  await label("Training (After)").waitFor();
  expect(await label("Training (Before)").getAttribute("aria-checked")).toBe("true");
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

  await label("Training (After)").click();
  expect(await labelsOf(visit, 1)).toEqual([4]);
  expect(await label("Training (Before)").getAttribute("aria-checked")).toBe("false");
  await label("Sleep (Before)").click();
  await label("Resting").click();
  expect(await labelsOf(visit, 1)).toEqual([0, 4, 5]);
  await label("Sleep (After)").click();
  expect(await labelsOf(visit, 1)).toEqual([0, 4, 6]);
  await label("Training (Before)").click();
  expect(await labelsOf(visit, 1)).toEqual([0, 3, 6]);
  // The other entries keep theirs.
  expect(await labelsOf(visit, 2)).toEqual([0, 1]);

  await chooser(visit).getByRole("button", { name: "Close" }).click();
  for (const control of behind) await expect.poll(() => takesFocus(control)).toBe(true);
  await expect
    .poll(async () => (await rowTexts(visit))[1]?.[3])
    .toBe("Resting, Training (Before), Sleep (After)");
  // A phone's Back closes it, too.
  await page.locator(".result").nth(1).click();
  await label("Training (After)").waitFor();
  await page.goBack();
  for (const control of behind) await expect.poll(() => takesFocus(control)).toBe(true);
});

it("deletes from the chooser, by a swipe and by the selection", async () => {
  const visit = await openResults();
  const { page } = visit;
  const heartrates = async (): Promise<number[]> =>
    (await storedEntries(visit)).map(({ hr }) => hr);

  await page.locator(".result").nth(0).click();
  await chooser(visit).getByRole("button", { name: "Delete" }).click();
  await expect.poll(heartrates).toEqual([61.4, 0]);
  await expect.poll(async () => (await rowTexts(visit)).length).toBe(2);
  await visit.still();

  const row = await page.locator("ion-item-sliding").first().boundingBox();
  await visit.drag({ x: 340, y: (row?.y ?? 0) + 25 }, { x: 200, y: (row?.y ?? 0) + 25 });
  const option = page.locator("ion-item-option").first();
  await option.waitFor({ state: "visible" });
  await inspect(visit, "results-swiped");
  await option.click();
  await expect.poll(heartrates).toEqual([61.4]);
  await expect.poll(async () => (await rowTexts(visit)).length).toBe(1);
  await visit.still();
  await page.getByRole("button", { name: "Edit" }).click();
  await page.locator(".result").first().click();
  await page.getByRole("toolbar").getByRole("button", { name: "Delete" }).click();
  await expect.poll(() => visit.stored("values")).toBe("[]");
  await page.getByText("No measurements yet").waitFor();
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

  // The newest and the oldest.
  await page.locator(".result").nth(2).click();
  await page.locator(".result").nth(0).click();
  const readOut = (name: RegExp): Promise<number> => page.getByRole("button", { name }).count();
  expect(await readOut(/^Selected .*Mar [35]/)).toBe(2);
  expect(await readOut(/^Not selected .*Mar 4/)).toBe(1);
  const lines = "Date,Heart Rate,Saturation\n2024-03-05 14:07:21,72,98\n2024-03-03 14:07:21,61,0";

  for (const choice of ["Email (csv)", "Cancel"]) {
    await page.getByRole("toolbar").getByRole("button", { name: "Share" }).click();
    await visit.still();
    if (choice === "Cancel") await inspect(visit, "share");
    await page.getByRole("button", { name: choice, exact: true }).click();
    const [download] = await Promise.all([
      page.waitForEvent("download"),
      page.getByRole("button", { name: /^Save veyla-data-/ }).click(),
    ]);
    const today = new Date().toISOString().slice(0, 10).replaceAll("-", "");
    expect(download.suggestedFilename()).toBe(`veyla-data-${today}.csv`);
    expect(readFileSync(await download.path()).toString("latin1")).toBe(lines);
    if (choice === "Cancel") await inspect(visit, "mail");
    await page.getByRole("button", { name: "Cancel", exact: true }).click();
    await page.getByRole("heading", { name: "New mail" }).waitFor({ state: "detached" });
  }

  await page.getByRole("toolbar").getByRole("button", { name: "Share" }).click();
  await page.getByRole("button", { name: "Email (text)" }).click();
  await page.getByRole("button", { name: "Open mail app" }).click();
  const address = (await visit.addresses()).at(-1) ?? "";
  const query = new URL(address).searchParams;
  expect(address).toMatch(/^mailto:\?/);
  expect(query.get("subject")).toBe("Veyla data");
  const text =
    "The heart rate and saturation data have been measured with the Veyla app. It can be " +
    `downloaded on the App Store: iTunes link (https://veyla.example/app).\n\n${lines}`;
  expect(query.get("body")).toBe(text.replaceAll("\n", "\r\n"));
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
  await page.getByRole("toolbar").getByRole("button", { name: "Share" }).click();
  await page.getByRole("button", { name: "Email (csv)" }).click();
  await page.getByRole("button", { name: "Share …" }).click();
  await page.getByRole("heading", { name: "New mail" }).waitFor({ state: "detached" });
  const today = new Date().toISOString().slice(0, 10).replaceAll("-", "");
  const csv = "Date,Heart Rate,Saturation\n2024-03-04 14:07:21,0,97";
  expect(await page.evaluate(() => (window as unknown as { shared: unknown[] }).shared)).toEqual([
    {
      title: "Veyla data",
      text: expect.stringContaining("measured with the Veyla app") as string,
      file: [`veyla-data-${today}.csv`, "text/csv", csv],
    },
  ]);
  expect(visit.log).toContain("Mail sent");
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
