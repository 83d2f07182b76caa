// Speed, size, and use without a network.
import { readFileSync, writeFileSync } from "node:fs";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

import { expect, it } from "vitest";

import { type Visit, visitPage } from "./browser";

const build = fileURLToPath(new URL("../../../build/", import.meta.url));

function percentile(values: readonly number[], part: number): number {
  const sorted = [...values].sort((left, right) => left - right);
  return sorted[Math.floor(part * (sorted.length - 1))] ?? NaN;
}

interface TraceEvent {
  readonly name: string;
  readonly pid: number;
  readonly tid: number;
  readonly args: { readonly name?: string };
  /** Microseconds of the thread's own processor time: neighbours on the same machine do not count. */
  readonly tdur?: number;
}

/** Milliseconds of processor time of what the page's main thread does meanwhile, by its name. */
async function followMainThread(
  { context, page }: Visit,
  during: () => Promise<void>,
): Promise<(name: string) => number[]> {
  const session = await context.newCDPSession(page);
  const events: TraceEvent[] = [];
  session.on("Tracing.dataCollected", ({ value }) => {
    events.push(...(value as unknown as TraceEvent[]));
  });
  await session.send("Tracing.start", {
    transferMode: "ReportEvents",
    traceConfig: { includedCategories: ["toplevel", "devtools.timeline"] },
  });
  await during();
  const complete = new Promise((done) => session.once("Tracing.tracingComplete", done));
  await session.send("Tracing.end");
  await complete;
  const threads = events.filter(({ args }) => args.name === "CrRendererMain");
  return (name) =>
    events
      .filter((event) => event.name === name)
      .filter(({ pid, tid }) => threads.some((each) => each.pid === pid && each.tid === tid))
      // What ran already when this began, or still when it ended, has no time of its own.
      .flatMap(({ tdur }) => (tdur === undefined ? [] : [tdur / 1000]));
}

it("a frame takes little of the main thread's time, and nothing blocks it", async () => {
  const visit = await visitPage({ query: "?timing" });
  const { page } = visit;
  await visit.startMeasuring();
  await page.evaluate(() => window.veylaFrameTimes?.splice(0));
  // To the end, so that estimates, all drawings and the saving are among what is measured.
  const spent = await followMainThread(visit, () =>
    page.getByText("FINISHED").waitFor({ timeout: 60_000 }),
  );
  const times = await page.evaluate(() => window.veylaFrameTimes ?? []);
  const aFrame = (all: readonly number[]): number =>
    all.reduce((sum, each) => sum + each, 0) / times.length;
  const tasks = spent("ThreadControllerImpl::RunTask");
  const figures = {
    frames: times.length,
    // From the camera to the last redraw, as the clock on the wall tells it.
    elapsedMedian: percentile(times, 0.5),
    elapsed95: percentile(times, 0.95),
    // The same and everything else that the page's code did, and with all that the browser added.
    processorOfCode: aFrame(spent("FunctionCall")),
    processorOfAll: aFrame(tasks),
    longestTaskProcessor: Math.max(...tasks),
  };
  writeFileSync(`${build}web-frame-times.json`, `${JSON.stringify(figures)}\n`);
  console.log("milliseconds of the main thread, a frame:", JSON.stringify(figures));
  expect(figures.frames).toBeGreaterThan(150);
  expect(tasks.length).toBeGreaterThan(figures.frames);
  expect(figures.processorOfCode).toBeLessThan(4);
  expect(figures.longestTaskProcessor).toBeLessThan(50);
});

it("the first screen is a small download, and charts come when they are opened", async () => {
  const visit = await visitPage();
  /** Kilobytes, compressed, of what the page itself has asked for by now. */
  const loaded = async (): Promise<number> => {
    const paths = await visit.page.evaluate(() =>
      performance.getEntriesByType("resource").map(({ name }) => new URL(name).pathname),
    );
    const sizes = ["/index.html", ...new Set(paths)].map(
      (file) => gzipSync(readFileSync(`${build}site${file}`)).length / 1024,
    );
    return sizes.reduce((sum, size) => sum + size);
  };
  await visit.settled();
  const first = await loaded();
  await visit.open("results");
  const before = await loaded();
  await visit.tap("Chart");
  await visit.page.getByText("Not enough SpO2 data").waitFor();
  const charts = (await loaded()) - before;
  console.log(`compressed KB: the first screen ${first.toFixed()}, charts ${charts.toFixed()}`);
  // Not less: the core is part of it.
  expect(first).toBeGreaterThan(200);
  expect(first).toBeLessThan(600);
  expect(charts).toBeGreaterThan(20);
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
