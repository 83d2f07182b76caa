// The results list with labels, deletion and sharing, and the charts.
import { readFileSync } from "node:fs";

import type { Locator } from "playwright-core";
import { expect, it } from "vitest";

import { type Entry, storedHistory, type Visit, type Visitor, visitPage } from "./browser";

/** 5 March 2024, 14:07:21 UTC. */
const march = 1709647641;
const day = 86_400;

const entries: readonly Entry[] = [
  { hr: 61.4, spo2: 0, date: march - 2 * day },
  { hr: 0, spo2: 97.4, date: march - day, labels: [3] },
  { hr: 71.6, spo2: 98.5, date: march, labels: [0, 1] },
];

async function openResults(history = entries, visitor: Visitor = {}): Promise<Visit> {
  const visit = await visitPage({ ...visitor, stored: storedHistory(history) });
  await visit.open("results");
  return visit;
}

function chooser(visit: Visit): Locator {
  return visit.page.getByRole("dialog", { name: "Labels" });
}

function inToolbar(visit: Visit, name: string): Locator {
  return visit.page.getByRole("toolbar").getByRole("button", { name });
}

function rowTexts(visit: Visit): Promise<string[][]> {
  return visit.page
    .locator(".result")
    .evaluateAll((rows) =>
      rows.map((row) => [...row.children].map((each) => each.textContent.replace(/\s/gu, " "))),
    );
}

it("shows entries and their labels, and stores every tap", async () => {
  const visit = await openResults();
  const { page } = visit;
  const row = ["Mar 4, 2024, 2:07 PM", "--", "97%"];
  expect((await rowTexts(visit))[1]).toEqual([...row, "Training (Before)"]);
  // The bar and the list behind cannot be reached while it is open.
  const expectReach = async (isReached: boolean): Promise<void> => {
    for (const control of [visit.button("Edit"), page.locator("ion-item button").nth(1)]) {
      const takesFocus = (): Promise<boolean> =>
        control.evaluate((element: HTMLElement) => {
          element.focus();
          return element.matches(":focus");
        });
      await expect.poll(takesFocus).toBe(isReached);
    }
  };
  const checked = chooser(visit).locator('[aria-checked="true"]');
  const open = async (): Promise<void> => {
    await page.locator(".result").nth(1).click();
    await visit.still();
    await expectReach(false);
  };
  await open();
  expect(await checked.allTextContents()).toEqual(["Training (Before)"]);
  for (const [tap, shown] of Object.entries({ None: [], Resting: ["Resting"] })) {
    await chooser(visit).getByText(tap, { exact: true }).click();
    expect(await checked.allTextContents()).toEqual(shown);
    expect((await visit.values())[1]?.labels.indexOf(true)).toBe(shown.length - 1);
  }
  await chooser(visit).getByText("Close").click();
  await expectReach(true);
  expect((await rowTexts(visit))[1]).toEqual([...row, "Resting"]);
  // A phone's Back closes it, too.
  await open();
  await page.goBack();
  await expectReach(true);
});

it("takes rows away from the chooser, by a swipe and by the selection", async () => {
  const visit = await openResults(
    Array.from({ length: 4 }, (_, index) => ({ hr: 60 + index, spo2: 0, date: march + index })),
  );
  const { page } = visit;
  const rates = async (): Promise<string> =>
    (await page.locator(".heartrate").allTextContents()).map((text) => text.slice(0, 2)).join(" ");
  await page.locator(".result").nth(1).click();
  await chooser(visit).getByText("Delete").click();
  await expect.poll(rates).toBe("63 61 60");
  await visit.still();

  const { y = 0 } = (await page.locator("ion-item-sliding").nth(1).boundingBox()) ?? {};
  await visit.moveFingers([
    { x: 340, y: y + 25 },
    { x: 200, y: y + 25 },
  ]);
  const option = page.locator("ion-item-option").nth(1);
  await option.waitFor({ state: "visible" });
  await visit.inspect("results-swiped");
  await option.click();
  await expect.poll(rates).toBe("63 60");
  await visit.still();
  await page.getByText("1 measurement deleted").waitFor();
  await visit.inspect("results-undo");
  await visit.tap("Undo");
  await expect.poll(rates).toBe("63 61 60");

  await visit.tap("Edit");
  await visit.tap("All");
  await inToolbar(visit, "Delete").click();
  await page.getByText("No measurements yet").waitFor();
});

it("selects all and none, and shares the selection as it is asked to", async () => {
  const visit = await openResults();
  const { page } = visit;
  const checked = page.locator(".checked");
  await visit.tap("Edit");
  await visit.tap("All");
  expect(await checked.count()).toBe(3);
  await visit.inspect("results-editing");
  await visit.tap("None");
  await expect.poll(() => page.locator(".results-toolbar[inert]").count()).toBe(1);
  for (const row of [2, 0]) await page.locator(".result").nth(row).click();
  expect(await visit.button(/^Selected .*Mar [35]/).count()).toBe(2);

  // Whoever cancels the choice is offered the file as well.
  await inToolbar(visit, "Share").click();
  await visit.inspect("share");
  await visit.tap("Cancel");
  const [download] = await Promise.all([page.waitForEvent("download"), visit.tap(/^Save veyla/)]);
  expect(download.suggestedFilename()).toMatch(/^veyla-data-\d{8}\.csv$/);
  const lines = "Date,Heart Rate,Saturation\n2024-03-05 14:07:21,72,98\n2024-03-03 14:07:21,61,0";
  expect(readFileSync(await download.path(), "latin1")).toBe(lines);
  await visit.tap("Cancel");
  await visit.heading("New mail").waitFor({ state: "detached" });

  const send = async (kind: string, way: string): Promise<void> => {
    await inToolbar(visit, "Share").click();
    await visit.tap(kind);
    await visit.tap(way);
  };
  await send("Email (text)", "Open mail app");
  // A link's address follows its text.
  const body = new URL((await visit.addresses()).at(-1) ?? "").searchParams.get("body");
  const end = `iTunes link (https://veyla.example/app).\n\n${lines}`;
  expect(body?.endsWith(end.replaceAll("\n", "\r\n"))).toBe(true);
  // A mail program's address takes no files.
  await Promise.all([page.waitForEvent("download"), send("Email (csv)", "Open mail app")]);

  // Browsers without a window system have no sheet of the phone's own programs.
  const shared = await page.evaluateHandle(() => {
    const all: unknown[] = [];
    const share = async ({ title, files: [file] = [] }: ShareData): Promise<void> => {
      // The user turns back from the first one, and the third is too much.
      const place = all.push([title, file?.type, await file?.text()]);
      if (place === 1) throw new DOMException("", "AbortError");
      if (place === 3) throw new Error("too large");
    };
    Object.assign(navigator, { canShare: () => true, share });
    return all;
  });
  await send("Email (csv)", "Share …");
  await visit.tap("Share …");
  await send("Email (csv)", "Share …");
  await visit.heading("New mail").waitFor({ state: "detached" });
  expect(await shared.jsonValue()).toEqual(Array(3).fill(["Veyla data", "text/csv", lines]));
  expect(visit.log.filter((line) => line.startsWith("Mail")).join()).toBe(
    "Mail cancelled,Mail saved,Mail saved,Mail sent,Mail sent failure: too large",
  );
});

it("lists a long history as far as it is scrolled", async () => {
  const visit = await openResults(Array<Entry>(3000).fill({ hr: 60, spo2: 97, date: march }));
  const rows = visit.page.locator(".result");
  const first = await rows.count();
  expect(first).toBeGreaterThan(20);
  expect(first).toBeLessThan(200);
  await rows.last().scrollIntoViewIfNeeded();
  await expect.poll(() => rows.count()).toBeGreaterThan(first);
});

it("charts daily means by period and label, both at one time, to be dragged and zoomed", async () => {
  const now = Math.floor(Date.now() / 1000);
  // The oldest day has an SpO2 alone, the last one two of both.
  const days = Array.from({ length: 30 }, (_, index) => ({
    hr: index === 0 ? 0 : 60 + index,
    spo2: 97,
    date: now - (29 - index) * day,
    labels: [index % 2],
  }));
  const history = [...days, { hr: 92, spo2: 97, date: now, labels: [1] }];
  const visit = await openResults(history, { viewport: { width: 320, height: 568 } });
  const { page } = visit;
  const first = page.locator(".line-chart .plot").first();
  const told = (): Promise<string | null> => first.getAttribute("aria-label");
  await visit.tap("Chart");
  const lastDays = /^heartrate.*: 88, .*: 90\.5$/;
  await expect.poll(told).toMatch(lastDays);
  await visit.settled();
  const plots = page.locator(".line-chart .u-over");
  const pictures = async (): Promise<string[]> => {
    await visit.still();
    return page
      .locator(".line-chart canvas")
      .evaluateAll((all) => (all as HTMLCanvasElement[]).map((each) => each.toDataURL()));
  };
  /** Both, for they show one time. */
  const expectOthersThan = (before: string[]): Promise<void> =>
    expect
      .poll(async () => (await pictures()).filter((each, chart) => each === before[chart]))
      .toEqual([]);

  // A day's value, by keys and by a tap.
  const summary = page.locator(".summary").first();
  expect(await summary.textContent()).toBe("Heart rateMean86.283 – 90.5");
  await first.press("ArrowRight");
  await first.press("ArrowLeft");
  expect(await summary.textContent()).toMatch(/^Heart rate\d.*\D88$/);
  await plots.first().tap({ position: { x: 2, y: 40 } });
  await expect.poll(() => summary.textContent()).toMatch(/83$/);

  const week = await pictures();
  await page
    .locator("ion-segment-button")
    .getByText("Month", { exact: true })
    .click({ force: true });
  await expectOthersThan(week);
  await expect.poll(told).toMatch(lastDays);
  const month = await pictures();
  const plot = await plots.first().boundingBox();
  if (!plot) throw new Error("no chart");
  const at = (x: number): { x: number; y: number } => ({ x: plot.x + x, y: plot.y + 50 });
  await visit.moveFingers([at(80), at(50)], [at(140), at(170)]);
  await expectOthersThan(month);
  await visit.inspect("charts-zoomed");
  const close = await pictures();
  await visit.moveFingers([at(180), at(150)]);
  await expectOthersThan(close);

  // By a key: a tap that follows a drag too soon belongs to it.
  await visit.button("Choose Label").press("Enter");
  await page.getByRole("dialog", { name: "Choose label" }).waitFor();
  await visit.inspect("charts-labels");
  await visit.tap("Training (Before)");
  await page.getByText("Not enough heartrate data").waitFor();
  await page.getByText("Not enough SpO2 data").waitFor();
  await visit.tap("Measure now");
  await visit.button("START").waitFor();
});
