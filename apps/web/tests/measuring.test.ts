// From the first visit to a result, with a real camera path from getUserMedia to the stored entry.
import { afterAll, beforeAll, describe, expect, it } from "vitest";

import { acquainted, PhoneBrowser, recording, type Visit } from "./browser";
import { inspect } from "./inspect";

const finished = { timeout: 60_000 };

interface StoredEntry {
  hr: number;
  spo2: number;
  date: { $date: number };
  labels: boolean[];
}

async function expectFifteenASecond(visit: Visit, during: () => Promise<void>): Promise<void> {
  const begin = await visit.framesTaken();
  await during();
  const end = await visit.framesTaken();
  const rate = (end.frames - begin.frames) / (end.seconds - begin.seconds);
  // A frame more or less at either end.
  expect(Math.abs(rate - 15), JSON.stringify({ begin, end })).toBeLessThan(0.6);
}

describe("a finger at 72 beats per minute", () => {
  let phone: PhoneBrowser;
  beforeAll(async () => {
    phone = await PhoneBrowser.open({ camera: recording("72") });
  });
  afterAll(() => phone.close());

  it("is measured at the first visit, after introduction and notice", async () => {
    const visit = await phone.visit();
    const { page } = visit;

    // The introduction, page by page.
    const next = page.getByRole("button", { name: "Next page" });
    for (const title of ["Step 1: Calibrate", "Step 2: Ready", "Step 3: Wait", "Step 4: Done"]) {
      await page.getByRole("heading", { name: title }).waitFor();
      await inspect(visit, `intro-${title.slice(5, 6)}`);
      if (await next.isEnabled()) await next.click();
    }
    // It stays, however often somebody asks to leave it.
    for (let times = 0; times < 3; ++times) await page.keyboard.press("Escape");
    expect(await page.getByRole("heading", { name: "Step 4: Done" }).isVisible()).toBe(true);
    expect(await page.getByRole("button", { name: "Skip" }).count()).toBe(0);
    await page.getByRole("button", { name: "Done" }).click();
    await visit.alert("INTENDED USE").waitFor();
    expect(await visit.alert("INTENDED USE").textContent()).toContain(
      "NOT INTENDED FOR MEDICAL USE",
    );
    await inspect(visit, "notice");
    await visit.alert("INTENDED USE").getByRole("button", { name: "Done" }).click();
    await page.getByRole("heading", { name: "Health records" }).waitFor();
    await inspect(visit, "health");
    await page.getByRole("button", { name: "Allow", exact: true }).click();

    await expect.poll(() => visit.element("labelGrey").textContent()).toContain("Tap START");
    await inspect(visit, "measuring-initial");
    // No picture in between: taking one keeps frames from being taken.
    const measurements = await visit.measure();
    await inspect(visit, "measuring-finished");

    const entries = JSON.parse((await visit.stored("values")) ?? "[]") as StoredEntry[];
    expect(entries).toHaveLength(measurements);
    const entry = entries.at(-1);
    const told = JSON.stringify(await visit.report());
    expect(Math.abs((entry?.hr ?? 0) - 72), told).toBeLessThanOrEqual(2);
    expect(entry?.spo2).toBeGreaterThan(95);
    expect(entry?.labels).toEqual(Array(7).fill(false));
    const shown = entry?.hr.toFixed(0);
    expect(await visit.element("labelLastHeartrate").textContent()).toBe(shown);
    expect(await visit.element("labelLastSpo2").textContent()).toBe(entry?.spo2.toFixed(0));
    expect(await visit.torch()).toEqual(Array(measurements).fill([true, false]).flat());

    // One health record a value.
    const records = await page.evaluate(
      () =>
        new Promise<string[]>((resolve) => {
          const opening = indexedDB.open("veyla-health");
          opening.onsuccess = (): void => {
            const all = opening.result
              .transaction("observations")
              .objectStore("observations")
              .getAll();
            all.onsuccess = (): void => {
              resolve(all.result as string[]);
            };
          };
        }),
    );
    const codes = records.map(
      (line) => (JSON.parse(line) as { code: { coding: { code: string }[] } }).code.coding[0]?.code,
    );
    const perMeasurement = (code: string): string[] => Array<string>(measurements).fill(code);
    expect(codes.sort()).toEqual(["2708-6", "8867-4"].flatMap(perMeasurement));

    // The second visit skips the introduction and remembers the values, which the list shows as well.
    await page.reload();
    await expect.poll(() => visit.element("labelLastHeartrate").textContent()).toBe(shown);
    expect(await page.getByRole("heading", { name: "Step 1: Calibrate" }).count()).toBe(0);
    await visit.settled();
    await visit.swipe("right");
    const row = page.locator(".result").first();
    await row.waitFor();
    expect(await page.locator(".result").count()).toBe(measurements);
    expect(await row.locator(".heartrate").textContent()).toBe(`${shown} bpm`);
    expect(await row.locator(".spo2").textContent()).toBe(`${entry?.spo2.toFixed(0)}%`);
  });

  it.each([
    { clock: "its own time", videoTime: "runs" },
    { clock: "its exposures where its own time stands still", videoTime: "stands" },
  ] as const)("takes 15 frames of each second of a video by $clock", async ({ videoTime }) => {
    const visit = await phone.visit({ stored: acquainted, videoTime });
    await visit.startMeasuring();
    await expectFifteenASecond(visit, () => visit.page.waitForTimeout(4000));
  });

  it("takes each frame once, however often it was started before", async () => {
    const visit = await phone.visit({ stored: acquainted });
    for (let round = 0; round < 2; ++round) {
      await visit.startMeasuring();
      await visit.stop();
      await visit.page.getByRole("button", { name: "START" }).waitFor();
    }
    await visit.startMeasuring();
    const begin = await visit.framesTaken();
    await visit.page.waitForTimeout(3000);
    const end = await visit.framesTaken();
    const rate = (end.handed - begin.handed) / (end.seconds - begin.seconds);
    expect(rate).toBeGreaterThan(20);
    expect(rate).toBeLessThan(32);
  });

  it("fills a stall of its frames for 0.3 s, and counts what is missing beyond as drops", async () => {
    const visit = await phone.visit({ stored: acquainted });
    await visit.startMeasuring();
    for (const stall of [200, 1000, 3000]) {
      await visit.page.evaluate((milliseconds) => {
        const end = performance.now() + milliseconds;
        while (performance.now() < end);
      }, stall);
      const { handed } = await visit.framesTaken();
      await expect
        .poll(async () => (await visit.framesTaken()).handed, { timeout: 10_000 })
        .toBeGreaterThan(handed + 10);
    }
    await visit.stop();
    const { frames, framedrops, seconds } = await visit.report();
    const { gaps } = await visit.framesTaken();
    const told = JSON.stringify({ frames, framedrops, seconds, gaps });
    // Of a gap's ticks the last is the next frame's own, and four are filled.
    const missing = gaps.map((gap) => Math.max(0, gap * 15 - 5)).reduce((sum, each) => sum + each);
    expect(missing, told).toBeGreaterThan(45);
    expect(Math.abs(framedrops - missing), told).toBeLessThanOrEqual(gaps.length);
    expect(Math.abs((frames + framedrops) / seconds - 15), told).toBeLessThan(0.6);
  });

  it("reports its frames and logs what the camera cannot do", async () => {
    const visit = await phone.visit({ stored: acquainted });
    await visit.start();
    await visit.alert("Starting ...").waitFor();
    await inspect(visit, "measuring-countdown");
    const curve = visit.element("chartFourierView");
    const isShown = (view: Element): boolean => {
      return view.checkVisibility({ opacityProperty: true, visibilityProperty: true });
    };
    await expect.poll(() => curve.evaluate(isShown), finished).toBe(true);
    await inspect(visit, "measuring-running");
    await visit.page.getByText("FINISHED").waitFor(finished);
    expect((await visit.report()).frames).toBeGreaterThan(200);
    expect(visit.log).toContain("Device does not support whitebalance: 0");
    expect(visit.log).toContain("Device does not support autoFocusRangeRestriction: 1");
    expect(visit.log).toContain(
      "Device does not support automaticallyEnablesLowLightBoostWhenAvailable: 0",
    );
  });
});

describe("a finger at 96 beats per minute", () => {
  it("is measured without the saturation where only the heart rate is ticked", async () => {
    const phone = await PhoneBrowser.open({ camera: recording("96") });
    const visit = await phone.visit({ stored: acquainted });
    await visit.page.getByRole("checkbox", { name: "Measure oxygen saturation" }).click();
    const measurements = await visit.measure();

    const entries = JSON.parse((await visit.stored("values")) ?? "[]") as StoredEntry[];
    expect(entries).toHaveLength(measurements);
    expect(Math.abs((entries.at(-1)?.hr ?? 0) - 96)).toBeLessThanOrEqual(2);
    expect(entries.at(-1)?.spo2).toBe(0);
    await phone.close();
  });
});

describe("a finger that gives low values", () => {
  it("ends with an alert that leads to the FAQ, and saves nothing", async () => {
    const phone = await PhoneBrowser.open({ camera: recording("low") });
    const visit = await phone.visit({ stored: acquainted });
    await visit.start();
    await visit.alert("Got problems?").waitFor(finished);
    await inspect(visit, "alert-got-problems");
    await visit.page.getByRole("button", { name: "Read FAQ" }).click();
    await visit.page.locator("ion-accordion").first().waitFor();
    await inspect(visit, "faq");
    expect(await visit.stored("values")).toBeNull();
    await phone.close();
  });
});

describe("a camera that sees next to no blue", () => {
  it("has its saturation told to mean nothing", async () => {
    const phone = await PhoneBrowser.open({ camera: recording("dark-blue") });
    const visit = await phone.visit({ stored: acquainted });
    await visit.start();
    await visit.element("labelFinger").filter({ hasText: "Finger in place" }).waitFor(finished);
    await visit
      .element("labelDoubtSpo2")
      .filter({ hasText: "Unsure: this camera sees next to no blue light" })
      .waitFor(finished);
    await inspect(visit, "doubt-no-blue");
    await visit.page.emulateMedia({ colorScheme: "dark" });
    await inspect(visit, "doubt-no-blue-night");
    await phone.close();
  });
});

describe("a finger that comes late, leaves, and is too bright for a while", () => {
  it("is told in words and pictures, and what comes of it is marked", async () => {
    const phone = await PhoneBrowser.open({ camera: recording("absent") });
    const visit = await phone.visit({ stored: acquainted });
    const { page } = visit;
    const words = visit.element("labelFinger");
    // Read out from the first word on: what is hidden when it gets its text is not.
    expect(await words.getAttribute("aria-live")).toBe("polite");
    const isRead = (element: Element): boolean =>
      element.checkVisibility({ visibilityProperty: true });
    expect(await words.evaluate(isRead)).toBe(true);

    const icons = new Map<string, string>();
    const expectTold = async (state: string, text: string): Promise<void> => {
      const chip = page.locator(`.finger[data-state="${state}"]`);
      await chip.waitFor({ timeout: 15_000 });
      expect(await words.textContent()).toBe(text);
      const icon = chip.locator("ion-icon svg");
      const others = [...icons].filter(([other]) => other !== state).map(([, svg]) => svg);
      await expect.poll(async () => others.includes(await icon.innerHTML())).toBe(false);
      icons.set(state, await icon.innerHTML());
    };
    await visit.startMeasuring();
    await expectTold("noFinger", "Move your finger over lens and light");
    // No frame is wanted while there is no finger.
    await inspect(visit, "finger-absent");
    await expectTold("good", "Finger in place");
    await expectTold("noFinger", "Move your finger over lens and light");
    await page.emulateMedia({ colorScheme: "dark" });
    await expectTold("tooBright", "Press more lightly");
    await inspect(visit, "finger-too-bright-night");
    expect(await visit.stored("values")).toBeNull();
    await expectTold("good", "Finger in place");

    await page.getByText("FINISHED").waitFor(finished);
    await page.locator('.finger[data-state=""]').waitFor({ state: "attached" });
    expect(await words.textContent()).toBe("");
    expect(await visit.element("labelDoubtHeartrate").textContent()).toContain(
      "Unsure: no finger was seen for part of the time.",
    );
    const readOut = page.getByRole("status").filter({ hasText: "Unsure: no finger" });
    expect(await readOut.count()).toBe(1);
    await inspect(visit, "doubt-absent-night");
    await page.emulateMedia({ colorScheme: "light" });
    await inspect(visit, "doubt-absent");
    await phone.close();
  });
});
