// Speed, size, and use without a network.
import { readFileSync, writeFileSync } from "node:fs";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

import { expect, it } from "vitest";

import { type Visit, visitPage } from "./browser";
import { followMainThread, type Spent } from "./main_thread";

const build = fileURLToPath(new URL("../../../build/", import.meta.url));

function percentile(values: readonly number[], part: number): number {
  const sorted = [...values].sort((left, right) => left - right);
  return sorted[Math.floor(part * (sorted.length - 1))] ?? NaN;
}

function rounded(milliseconds: number): number {
  return Math.round(milliseconds * 100) / 100;
}

it("a frame takes little of the main thread's time, and nothing blocks it", async () => {
  const visit = await visitPage({ query: "?timing" });
  const { page } = visit;
  await visit.startMeasuring();
  let times: readonly number[] = [];
  const { tasks, calls } = await followMainThread(visit, async () => {
    await page.evaluate(() => window.veylaFrameTimes?.splice(0));
    // To the end, so that estimates, all drawings and the saving are among what is measured.
    await page.getByText("FINISHED").waitFor({ timeout: 60_000 });
    times = await page.evaluate(() => window.veylaFrameTimes ?? []);
  });

  const processor = (all: readonly Spent[]): number =>
    all.reduce((sum, { processor }) => sum + processor, 0) / times.length;
  const figures = {
    frames: times.length,
    // From the camera to the last redraw, as the clock on the wall tells it.
    elapsedMedian: rounded(percentile(times, 0.5)),
    elapsed95: rounded(percentile(times, 0.95)),
    // The same and everything else that the page's code did, and with all that the browser added.
    processorOfCode: rounded(processor(calls)),
    processorOfAll: rounded(processor(tasks)),
    longestTaskProcessor: rounded(Math.max(...tasks.map(({ processor }) => processor))),
    longestTaskElapsed: rounded(Math.max(...tasks.map(({ elapsed }) => elapsed))),
  };
  writeFileSync(`${build}web-frame-times.json`, `${JSON.stringify(figures)}\n`);
  console.log("milliseconds of the main thread, a frame:", JSON.stringify(figures));
  expect(times.length).toBeGreaterThan(150);
  expect(tasks.length).toBeGreaterThan(times.length);
  expect(figures.processorOfCode).toBeLessThan(4);
  expect(figures.longestTaskProcessor).toBeLessThan(50);
});

/** The files that the page itself has asked for, without what is kept for later. */
async function filesLoaded(visit: Visit): Promise<string[]> {
  const paths = await visit.page.evaluate(() =>
    performance.getEntriesByType("resource").map(({ name }) => new URL(name).pathname),
  );
  return ["/index.html", ...new Set(paths)];
}

function compressed(files: readonly string[]): number {
  const site = `${build}site`;
  return files.reduce((sum, file) => sum + gzipSync(readFileSync(site + file)).length, 0);
}

it("the first screen is a small download, and charts come when they are opened", async () => {
  const visit = await visitPage();
  await visit.settled();
  const first = await filesLoaded(visit);
  await visit.open("results");
  const before = await filesLoaded(visit);
  await visit.tap("Chart");
  await visit.page.getByText("Not enough SpO2 data").waitFor();
  const charts = (await filesLoaded(visit)).filter((file) => !before.includes(file));

  const [bytes, later] = [compressed(first), compressed(charts)];
  console.log(
    `compressed: the first screen ${Math.round(bytes / 1024)} KB in ${first.length} files, ` +
      `charts ${Math.round(later / 1024)} KB in ${charts.length}`,
  );
  expect(first.some((file) => file.endsWith(".wasm"))).toBe(true);
  expect(bytes).toBeLessThan(600 * 1024);
  expect(later).toBeGreaterThan(20 * 1024);
});

/** When the worker has cleared away what it takes for old, and everything is kept. */
async function workerReady({ page }: Visit): Promise<void> {
  await page.waitForFunction(() => navigator.serviceWorker.controller !== null);
}

it("leaves another copy on the same host what it keeps", async () => {
  const visit = await visitPage();
  const { page } = visit;
  const keptNames = (): Promise<string[]> => page.evaluate(() => caches.keys());
  await workerReady(visit);
  // The next visit installs it anew.
  await page.evaluate(async () => {
    for (const path of ["/", "/copy/"]) await caches.open(`veyla ${path} before`);
    await (await navigator.serviceWorker.getRegistration())?.unregister();
  });
  expect(await keptNames()).toContain("veyla / before");
  await page.reload();
  await expect.poll(keptNames, { timeout: 20_000 }).not.toContain("veyla / before");
  expect(await keptNames()).toContain("veyla /copy/ before");
});

it("installs, and works without a network after the first visit", async () => {
  const visit = await visitPage();
  const { page, context } = visit;
  const session = await context.newCDPSession(page);
  const { installabilityErrors } = await session.send("Page.getInstallabilityErrors");
  // A visit of the tests is a private one.
  expect(installabilityErrors.map(({ errorId }) => errorId)).toEqual(["in-incognito"]);
  await workerReady(visit);
  await context.setOffline(true);
  await page.reload();
  await visit.settled();
  await visit.startMeasuring();
  await visit.open("results");
  await visit.tap("Chart");
  await page.getByText("Not enough SpO2 data").waitFor();
});
