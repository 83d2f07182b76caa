// Taps that come faster than the page can follow them.
import type { Locator } from "playwright-core";
import { expect, it } from "vitest";

import { moving, type Visit, visitPage } from "./browser";

/**
 * Two taps at one place, `spacing` milliseconds apart, whatever lies there by then. Tells whether the first
 * one showed at once.
 */
async function tapTwice(visit: Visit, on: Locator, spacing: number): Promise<boolean> {
  const { x = 0, y = 0, width = 0, height = 0 } = (await on.boundingBox()) ?? {};
  return visit.page.evaluate(
    async ([left, top, wait]) => {
      const tap = (): boolean => {
        const element = document.elementFromPoint(left, top) as HTMLElement | null;
        element?.click();
        return element?.ariaBusy === "true";
      };
      const isBusy = tap();
      await new Promise((done) => setTimeout(done, wait));
      tap();
      return isBusy;
    },
    [x + width / 2, y + height / 2, spacing] as const,
  );
}

it("START twice looks tapped at once, opens one camera and counts down once", async () => {
  const visit = await visitPage(moving);
  const opened = await visit.page.evaluateHandle(() => {
    const tracks: MediaStreamTrack[] = [];
    const devices = navigator.mediaDevices;
    const own = devices.getUserMedia.bind(devices);
    devices.getUserMedia = async (constraints): Promise<MediaStream> => {
      // As a phone's camera does.
      await new Promise((done) => setTimeout(done, 150));
      const stream = await own(constraints);
      tracks.push(...stream.getVideoTracks());
      return stream;
    };
    return tracks;
  });
  for (let spacing = 0; spacing <= 400; spacing += 40) {
    await visit.page.locator('[data-element="beginButton"]:not([inert])').waitFor();
    await visit.still();
    const begin = visit.element("beginButton");
    expect(await tapTwice(visit, begin, spacing)).toBe(true);
    await visit.page.locator('[data-element="stopButton"]:not([inert])').waitFor();
    await visit.still();
    expect(await visit.page.locator("dialog").allTextContents(), `${spacing} ms`).toEqual([
      expect.stringContaining("Starting ..."),
    ]);
    const ring = visit.page.locator(".badge.waiting circle");
    expect(await ring.evaluate((each) => getComputedStyle(each).animation)).toMatch(
      /^2s .*close-ring/,
    );
    expect(visit.log.splice(0).filter((line) => line === "Tapped Begin")).toHaveLength(1);
    const states = await opened.evaluate((all) => all.splice(0).map((each) => each.readyState));
    expect(states, `${spacing} ms`).toEqual(["live"]);
    expect(await begin.getAttribute("aria-busy")).toBeNull();
    await visit.tap("STOP");
  }
});

it("two taps on START do not close what the first one told", async () => {
  const visit = await visitPage(moving);
  for (const name of ["Measure heart rate", "Measure oxygen saturation"]) {
    await visit.page.getByRole("checkbox", { name }).click();
  }
  const alert = visit.alert("Nothing to run");
  for (const spacing of [0, 100, 200, 300]) {
    await visit.still();
    await tapTwice(visit, visit.element("beginButton"), spacing);
    await visit.still();
    expect(await alert.isVisible(), `${spacing} ms`).toBe(true);
    expect(await visit.element("beginButton").getAttribute("aria-busy")).toBeNull();
    await visit.page.locator(".alert:not(.unseen)").waitFor();
    if (spacing === 0) await visit.inspect("alert-nothing-to-run");
    // A tap beside it closes it, as its button would.
    await visit.page.touchscreen.tap(20, 20);
    await alert.waitFor({ state: "detached" });
  }
});

it("a page opens once and closes once, whatever is tapped or swiped in between", async () => {
  const visit = await visitPage(moving);
  const pages = (): Promise<number> => visit.page.locator("ion-nav > .ion-page").count();
  await visit.settled();
  for (const second of [0, 50, 100, "right", "left"] as const) {
    if (typeof second === "number") {
      await tapTwice(visit, visit.button("Results"), second);
    } else {
      await visit.swipe("right");
      await visit.swipe(second);
    }
    await expect.poll(pages).toBeGreaterThan(1);
    await visit.settled();
    expect(await pages(), String(second)).toBe(2);
    await tapTwice(visit, visit.button("Close"), 100);
    await expect.poll(pages).toBe(1);
    await visit.settled();
  }
});
