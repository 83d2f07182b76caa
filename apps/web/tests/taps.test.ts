// Taps that come faster than the page can follow them.
import type { JSHandle, Locator } from "playwright-core";
import { expect, it } from "vitest";

import { type Visit, visitPage } from "./browser";

interface Watched {
  /** Of the camera's streams: how many are being opened, and which have been. */
  opening: number;
  readonly tracks: MediaStreamTrack[];
  readonly alerts: string[];
}

/** Watches the alerts that come and the camera's streams, which open a moment later than asked. */
function watch(visit: Visit): Promise<JSHandle<Watched>> {
  return visit.page.evaluateHandle(() => {
    const watched: Watched = { opening: 0, tracks: [], alerts: [] };
    const devices = navigator.mediaDevices;
    const own = devices.getUserMedia.bind(devices);
    devices.getUserMedia = async (constraints): Promise<MediaStream> => {
      ++watched.opening;
      // As a phone's camera does.
      await new Promise((done) => setTimeout(done, 150));
      const stream = await own(constraints).finally(() => --watched.opening);
      watched.tracks.push(...stream.getVideoTracks());
      return stream;
    };
    new MutationObserver((changes) => {
      for (const node of changes.flatMap(({ addedNodes }) => [...addedNodes])) {
        if (node instanceof HTMLDialogElement)
          watched.alerts.push(node.querySelector("h2")?.textContent ?? "");
      }
    }).observe(document.body, { childList: true });
    return watched;
  });
}

/** What was seen since this was asked for last. */
function seen(watched: JSHandle<Watched>): Promise<object> {
  return watched.evaluate(({ opening, tracks, alerts }) => ({
    opening,
    tracks: tracks.splice(0).map(({ readyState }) => readyState),
    alerts: alerts.splice(0),
  }));
}

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
  const once = { opening: 0, tracks: ["live"], alerts: ["Starting ..."] };
  // Most of it is waiting: four phones at once.
  const phone = async (first: number): Promise<void> => {
    const visit = await visitPage();
    const watched = await watch(visit);
    for (let spacing = first; spacing <= 400; spacing += 40) {
      await visit.page.locator('[data-element="beginButton"]:not([inert])').waitFor();
      await visit.still();
      const begin = visit.element("beginButton");
      expect(await tapTwice(visit, begin, spacing)).toBe(true);
      await visit.page.locator('[data-element="stopButton"]:not([inert])').waitFor();
      await visit.still();
      expect(await seen(watched), `${spacing} ms`).toEqual(once);
      expect(await begin.getAttribute("aria-busy")).toBeNull();
      await visit.tap("STOP");
    }
  };
  await Promise.all([0, 10, 20, 30].map(phone));
}, 300_000);

it("two taps on START do not close what the first one told", async () => {
  const visit = await visitPage();
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
  const visit = await visitPage();
  const pages = (): Promise<number> => visit.page.locator("ion-nav > .ion-page").count();
  await visit.settled();
  for (const second of [0, 50, 100, 200, 400, "right", "left"] as const) {
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

it("a page that opens ends what was counting down", async () => {
  const visit = await visitPage();
  const watched = await watch(visit);
  await visit.tap("START");
  await visit.alert("Starting ...").waitFor();
  await tapTwice(visit, visit.button("Results"), 50);
  await visit.button("Edit").waitFor();
  await visit.settled();
  expect(await visit.alert("Starting ...").count()).toBe(0);
  expect(await seen(watched)).toMatchObject({ tracks: ["ended"] });
  await visit.tap("Close");
  await visit.button("START").waitFor();
});
