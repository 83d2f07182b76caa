// From the first visit to a result, with a real camera path from getUserMedia to the stored entry.
import { afterAll, beforeAll, describe, expect, it } from "vitest";

import { acquainted, PhoneBrowser, recording } from "./browser";

const finished = { timeout: 60_000 };

interface StoredEntry {
  hr: number;
  spo2: number;
  date: { $date: number };
  labels: boolean[];
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
      await page.waitForTimeout(700);
      await visit.picture(`intro-${title.slice(5, 6)}`);
      if (await next.isEnabled()) await next.click();
    }
    await page.getByRole("button", { name: "Skip" }).click();
    await visit.alert("INTENDED USE").waitFor();
    expect(await visit.alert("INTENDED USE").textContent()).toContain(
      "NOT INTENDED FOR MEDICAL USE",
    );
    await visit.picture("notice");
    await page.getByRole("button", { name: "Done" }).click();
    await page.getByRole("heading", { name: "Health records" }).waitFor();
    await visit.picture("health");
    await page.getByRole("button", { name: "Allow", exact: true }).click();

    await expect.poll(() => visit.element("labelGrey").textContent()).toContain("Tap START");
    await visit.picture("measuring-initial");
    await visit.start();
    await visit.alert("Starting ...").waitFor();
    await page.waitForTimeout(700);
    await visit.picture("measuring-countdown");
    await page.getByText("Analyzing - hold steady ...").waitFor();
    expect(await visit.torch()).toEqual([true]);
    await page.waitForTimeout(14_500);
    await visit.picture("measuring-running");
    await page.getByText("FINISHED").waitFor(finished);
    await page.waitForTimeout(1500);
    await visit.picture("measuring-finished");

    const entries = JSON.parse((await visit.stored("values")) ?? "[]") as StoredEntry[];
    expect(entries).toHaveLength(1);
    const [entry] = entries;
    const told = JSON.stringify(await visit.report());
    expect(Math.abs((entry?.hr ?? 0) - 72), told).toBeLessThanOrEqual(2);
    expect(entry?.spo2).toBeGreaterThan(95);
    expect(entry?.labels).toEqual(Array(7).fill(false));
    const shown = entry?.hr.toFixed(0);
    expect(await visit.element("labelLastHeartrate").textContent()).toBe(shown);
    expect(await visit.element("labelLastSpo2").textContent()).toBe(entry?.spo2.toFixed(0));
    expect((await visit.torch()).at(-1)).toBe(false);

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
    expect(codes.sort()).toEqual(["2708-6", "8867-4"]);

    // The second visit skips the introduction and remembers the values.
    await page.reload();
    await expect.poll(() => visit.element("labelLastHeartrate").textContent()).toBe(shown);
    expect(await page.getByRole("heading", { name: "Step 1: Calibrate" }).count()).toBe(0);
    expect(visit.problems).toEqual([]);
  });

  it("delivers its frames at the rate of the video and logs what the camera cannot do", async () => {
    const visit = await phone.visit({ stored: acquainted });
    await visit.startMeasuring();
    await visit.page.waitForTimeout(5000);
    await visit.stop();

    const { fps, framedrops } = await visit.report();
    expect(Math.abs(fps - 15), `${framedrops} frames dropped`).toBeLessThan(0.6);
    expect(visit.log).toContain("Device does not support whitebalance: 0");
    expect(visit.log).toContain("Device does not support autoFocusRangeRestriction: 1");
    expect(visit.log).toContain(
      "Device does not support automaticallyEnablesLowLightBoostWhenAvailable: 0",
    );
    expect(visit.problems).toEqual([]);
  });
});

describe("a finger at 96 beats per minute", () => {
  it("is measured without the saturation where only the heart rate is ticked", async () => {
    const phone = await PhoneBrowser.open({ camera: recording("96") });
    const visit = await phone.visit({ stored: acquainted });
    await visit.page.getByRole("checkbox", { name: "Measure oxygen saturation" }).click();
    await visit.start();
    await visit.page.getByText("FINISHED").waitFor(finished);

    const entries = JSON.parse((await visit.stored("values")) ?? "[]") as StoredEntry[];
    expect(entries).toHaveLength(1);
    expect(Math.abs((entries[0]?.hr ?? 0) - 96)).toBeLessThanOrEqual(2);
    expect(entries[0]?.spo2).toBe(0);
    expect(visit.problems).toEqual([]);
    await phone.close();
  });
});

describe("a finger that gives low values", () => {
  it("ends with an alert that leads to the FAQ, and saves nothing", async () => {
    const phone = await PhoneBrowser.open({ camera: recording("low") });
    const visit = await phone.visit({ stored: acquainted });
    await visit.start();
    await visit.alert("Got problems?").waitFor(finished);
    await visit.picture("alert-got-problems");
    await visit.page.getByRole("button", { name: "Read FAQ" }).click();
    await visit.page.locator("ion-accordion").first().waitFor();
    await visit.page.waitForTimeout(800);
    await visit.picture("faq");
    expect(await visit.stored("values")).toBeNull();
    expect(visit.problems).toEqual([]);
    await phone.close();
  });
});
