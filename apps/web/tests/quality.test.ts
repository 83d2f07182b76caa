// Speed, size, use without a network, and use by everybody.
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

import { afterAll, beforeAll, describe, expect, it } from "vitest";

import { expectAccessible } from "./accessible";
import { acquainted, PhoneBrowser, recording } from "./browser";

const build = fileURLToPath(new URL("../../../build/", import.meta.url));

let phone: PhoneBrowser;
beforeAll(async () => {
  phone = await PhoneBrowser.open({ camera: recording("72") });
});
afterAll(() => phone.close());

function percentile(values: readonly number[], part: number): number {
  const sorted = [...values].sort((left, right) => left - right);
  return sorted[Math.floor(part * (sorted.length - 1))] ?? NaN;
}

it("a frame takes little of the main thread's time", async () => {
  const visit = await phone.visit({ stored: acquainted, query: "?timing" });
  const { page } = visit;
  await visit.startMeasuring();
  await page.evaluate(() => {
    const tasks: number[] = [];
    Object.assign(window, { longTasks: tasks });
    new PerformanceObserver((list) => {
      for (const { duration } of list.getEntries()) tasks.push(Math.round(duration));
    }).observe({ type: "longtask" });
    window.veylaFrameTimes?.splice(0);
  });
  // Past the first values, so that estimates and all drawings are among what is measured.
  await page.waitForTimeout(13_000);
  const [times, longTasks] = await page.evaluate(
    () =>
      [
        window.veylaFrameTimes ?? [],
        (window as unknown as { longTasks: number[] }).longTasks,
      ] as const,
  );
  const figures = {
    frames: times.length,
    medianMilliseconds: percentile(times, 0.5),
    percentile95Milliseconds: percentile(times, 0.95),
    longTasks,
  };
  writeFileSync(`${build}web-frame-times.json`, `${JSON.stringify(figures)}\n`);
  console.log("frames on the main thread:", JSON.stringify(figures));
  expect(times.length).toBeGreaterThan(150);
  expect(figures.medianMilliseconds).toBeLessThan(4);
  expect(visit.problems).toEqual([]);
});

it("the first screen is a small download, and charts come when they are opened", async () => {
  const visit = await phone.visit({ stored: acquainted });
  const own = await visit.page.evaluate(() =>
    performance.getEntriesByType("resource").map(({ name }) => new URL(name).pathname),
  );
  const site = `${build}site`;
  const files = ["/index.html", ...own].filter((file) => file !== "/service-worker.js");
  // What the service worker fetches for later comes after the screen is there.
  const first = files.filter((file) => !/charts|results|options|uplot|icon-/.test(file));
  const bytes = first.reduce((sum, file) => sum + gzipSync(readFileSync(site + file)).length, 0);
  console.log(`first screen: ${first.length} files, ${Math.round(bytes / 1024)} KB compressed`);
  expect(bytes).toBeLessThan(600 * 1024);
  expect(readdirSync(`${site}/assets`).some((name) => name.startsWith("charts"))).toBe(true);
});

it("works without a network after the first visit", async () => {
  const visit = await phone.visit({ stored: acquainted });
  const { page, context } = visit;
  await page.evaluate(async () => {
    await navigator.serviceWorker.ready;
    // The worker is active when everything is kept.
    while (!navigator.serviceWorker.controller) await new Promise((done) => setTimeout(done, 50));
  });
  await context.setOffline(true);
  await page.reload();
  await page.locator(".measuring-grid").waitFor();
  await visit.startMeasuring();
  await visit.stop();
  await visit.swipe("right");
  await page.getByRole("button", { name: "Chart" }).waitFor();
  await visit.settled();
  await page.getByRole("button", { name: "Chart" }).click();
  await page.getByText("Not enough SpO2 data").waitFor();
  expect(visit.problems).toEqual([]);
});

describe("every size, light and dark, is usable", () => {
  const looks = [
    { name: "small", viewport: { width: 320, height: 568 }, colorScheme: "light" },
    { name: "dark", viewport: { width: 390, height: 844 }, colorScheme: "dark" },
    { name: "large", viewport: { width: 430, height: 932 }, colorScheme: "light" },
    { name: "landscape", viewport: { width: 844, height: 390 }, colorScheme: "light" },
  ] as const;
  for (const { name, ...look } of looks) {
    it(name, async () => {
      const visit = await phone.visit({ stored: acquainted, reducedMotion: "reduce", ...look });
      await visit.page.waitForTimeout(500);
      await visit.picture(`look-${name}`);
      const fits = await visit.page.evaluate(() => {
        const grid = document.querySelector(".measuring-grid");
        const start = document.querySelector('[data-element="beginButton"]');
        const box = start?.getBoundingClientRect();
        return (
          document.documentElement.scrollWidth <= window.innerWidth &&
          (grid?.scrollWidth ?? Infinity) <= window.innerWidth &&
          (box?.bottom ?? Infinity) <= window.innerHeight
        );
      });
      expect(fits).toBe(true);
      await expectAccessible(visit, name);
      expect(visit.problems).toEqual([]);
    });
  }
});

it("with large texts everything can be reached", async () => {
  const visit = await phone.visit({ stored: acquainted });
  await visit.page.addStyleTag({ content: "html { font-size: 26px !important }" });
  await visit.page.waitForTimeout(300);
  await visit.page.getByRole("button", { name: "START" }).scrollIntoViewIfNeeded();
  await visit.picture("look-large-text");
  expect(
    await visit.page.evaluate(() => document.documentElement.scrollWidth <= window.innerWidth),
  ).toBe(true);
});

it("introduction, notice and alerts have names for screen readers", async () => {
  const visit = await phone.visit();
  const { page } = visit;
  await page.getByRole("heading", { name: "Step 1: Calibrate" }).waitFor();
  await expectAccessible(visit, "introduction");
  await page.getByRole("button", { name: "Skip" }).click();
  await visit.alert("INTENDED USE").waitFor();
  await page.waitForTimeout(400);
  await expectAccessible(visit, "notice");
  await page.getByRole("button", { name: "Done" }).click();
  await page.getByRole("heading", { name: "Health records" }).waitFor();
  await page.waitForTimeout(400);
  await expectAccessible(visit, "health records");
});
