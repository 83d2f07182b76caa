// Taps that come faster than the page can follow them.
import type { Locator } from "playwright-core";
import { afterAll, beforeAll, describe, expect, it } from "vitest";

import { acquainted, PhoneBrowser, recording, type Visit } from "./browser";

let phone: PhoneBrowser;
beforeAll(async () => {
  phone = await PhoneBrowser.open({ camera: recording("72") });
});
afterAll(() => phone.close());

interface Watched {
  /** How many streams are being opened, have been opened, and are open. */
  readonly opening: number;
  readonly opened: number;
  readonly open: number;
  readonly alerts: readonly string[];
}

/** Watches the alerts that come and the camera's streams, which open a moment later than asked. */
async function watch(visit: Visit): Promise<void> {
  await visit.page.evaluate(() => {
    const tracks: MediaStreamTrack[] = [];
    const alerts: string[] = [];
    let opening = 0;
    const devices = navigator.mediaDevices;
    const own = devices.getUserMedia.bind(devices);
    devices.getUserMedia = async (constraints): Promise<MediaStream> => {
      ++opening;
      // As a phone's camera does.
      await new Promise((done) => setTimeout(done, 150));
      const stream = await own(constraints).finally(() => --opening);
      tracks.push(...stream.getVideoTracks());
      return stream;
    };
    new MutationObserver((changes) => {
      for (const node of changes.flatMap(({ addedNodes }) => [...addedNodes])) {
        if (node instanceof HTMLDialogElement)
          alerts.push(node.querySelector("h2")?.textContent ?? "");
      }
    }).observe(document.body, { childList: true });
    const watched = (): Watched => ({
      opening,
      opened: tracks.length,
      open: tracks.filter(({ readyState }) => readyState === "live").length,
      alerts,
    });
    const forget = (): void => {
      tracks.splice(0);
      alerts.splice(0);
    };
    Object.assign(window, { watched, forget });
  });
}

function watched(visit: Visit): Promise<Watched> {
  return visit.page.evaluate(() => (window as unknown as { watched(): Watched }).watched());
}

/** Two taps at one place, `spacing` milliseconds apart, whatever lies there by then. */
async function tapTwice(visit: Visit, on: Locator, spacing: number): Promise<void> {
  const { x = 0, y = 0, width = 0, height = 0 } = (await on.boundingBox()) ?? {};
  await visit.page.evaluate(
    async ([left, top, wait]) => {
      const tap = (): void => {
        (document.elementFromPoint(left, top) as HTMLElement | null)?.click();
      };
      tap();
      await new Promise((done) => setTimeout(done, wait));
      tap();
    },
    [x + width / 2, y + height / 2, spacing] as const,
  );
}

it("START twice opens one camera and counts down once", async () => {
  const visit = await phone.visit({ stored: acquainted });
  await watch(visit);
  for (let spacing = 0; spacing <= 400; spacing += 10) {
    await visit.page.locator('[data-element="beginButton"]:not([inert])').waitFor();
    await visit.still();
    await visit.page.evaluate(() => {
      (window as unknown as { forget(): void }).forget();
    });
    await tapTwice(visit, visit.element("beginButton"), spacing);
    await visit.page.locator('[data-element="stopButton"]:not([inert])').waitFor();
    await visit.still();
    expect(await watched(visit), `${spacing} ms`).toEqual({
      opening: 0,
      opened: 1,
      open: 1,
      alerts: ["Starting ..."],
    });
    await visit.stop();
  }
}, 300_000);

it("START looks tapped until something has come of it", async () => {
  const visit = await phone.visit({ stored: acquainted });
  const button = visit.element("beginButton");
  const isBusy = (): Promise<string | null> => button.getAttribute("aria-busy");
  await watch(visit);
  await visit.settled();
  const atOnce = await button.evaluate((tapped: HTMLElement) => {
    tapped.click();
    return tapped.ariaBusy;
  });
  expect(atOnce).toBe("true");
  await visit.alert("Starting ...").waitFor();
  expect(await isBusy()).toBeNull();
});

it.each([0, 100, 200, 300])(
  "two taps on START, %i ms apart, do not close what the first one told",
  async (spacing) => {
    const visit = await phone.visit({ stored: acquainted });
    for (const name of ["Measure heart rate", "Measure oxygen saturation"]) {
      await visit.page.getByRole("checkbox", { name }).click();
    }
    await visit.still();
    await tapTwice(visit, visit.element("beginButton"), spacing);
    await visit.still();
    const alert = visit.alert("Nothing to run");
    expect(await alert.isVisible()).toBe(true);
    expect(await visit.element("beginButton").getAttribute("aria-busy")).toBeNull();
    await visit.page.locator(".alert:not(.unseen)").waitFor();
    await visit.page.touchscreen.tap(20, 20);
    await alert.waitFor({ state: "detached" });
  },
);

describe("a page opens once", () => {
  const results = (visit: Visit): Locator => visit.page.getByRole("button", { name: "Results" });
  const pages = (visit: Visit): Promise<number> =>
    visit.page.locator("ion-nav > .ion-page").count();
  const ways: readonly {
    readonly by: string;
    readonly open: (visit: Visit) => Promise<unknown>;
  }[] = [
    ...[0, 50, 100, 200, 400].map((spacing) => ({
      by: `two taps, ${spacing} ms apart`,
      open: (visit: Visit) => tapTwice(visit, results(visit), spacing),
    })),
    ...(["right", "left"] as const).map((second) => ({
      by: `a swipe to the right and one to the ${second}`,
      open: (visit: Visit) => visit.swipe("right").then(() => visit.swipe(second)),
    })),
  ];
  it.each(ways)("by $by", async ({ open }) => {
    const visit = await phone.visit({ stored: acquainted });
    await visit.settled();
    await open(visit);
    await expect.poll(() => pages(visit)).toBeGreaterThan(1);
    await visit.settled();
    expect(await pages(visit)).toBe(2);
  });

  it("and closes once, and ends what was counting down", async () => {
    const visit = await phone.visit({ stored: acquainted });
    await watch(visit);
    await visit.start();
    await visit.alert("Starting ...").waitFor();
    await tapTwice(visit, results(visit), 50);
    await visit.page.getByRole("button", { name: "Edit" }).waitFor();
    await visit.settled();
    expect(await visit.alert("Starting ...").count()).toBe(0);
    expect((await watched(visit)).open).toBe(0);
    await tapTwice(visit, visit.page.getByRole("button", { name: "Close" }), 100);
    await expect.poll(() => pages(visit)).toBe(1);
    await visit.settled();
    await visit.page.getByRole("button", { name: "START" }).waitFor();
  });
});
