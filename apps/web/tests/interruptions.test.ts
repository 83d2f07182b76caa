// Everything that keeps a measurement from its result.
import { afterAll, beforeAll, describe, expect, it } from "vitest";

import { acquainted, PhoneBrowser, recording, type Visit } from "./browser";
import { inspect } from "./inspect";

const instruction = "Tap START to begin - don't cover camera";

async function expectIdle(visit: Visit): Promise<void> {
  await visit.page.getByRole("button", { name: "START" }).waitFor();
  await expect.poll(() => visit.element("labelGrey").textContent()).toBe(instruction);
  await expect.poll(() => visit.element("labelHeartrate").textContent()).toBe("--");
  expect(await visit.stored("values")).toBeNull();
}

/** Whether the page holds a camera, which phones show to their owners. */
function holdsCamera(visit: Visit): Promise<boolean> {
  return visit.page.evaluate(() => document.querySelector("video")?.srcObject != null);
}

/** What the camera's track is told, as when another program takes the camera. */
async function tellCamera(visit: Visit, event: "ended" | "mute" | "unmute"): Promise<void> {
  await visit.page.evaluate((type) => {
    const stream = document.querySelector("video")?.srcObject as MediaStream;
    for (const track of stream.getVideoTracks()) track.dispatchEvent(new Event(type));
  }, event);
}

/** The locks that are asked for from now on. */
async function countWakeLocks(visit: Visit): Promise<() => Promise<string[]>> {
  await visit.page.evaluate(() => {
    const locks: string[] = [];
    Object.assign(window, { locks });
    navigator.wakeLock.request = (type = "screen"): Promise<WakeLockSentinel> => {
      locks.push(type);
      return Promise.reject(new Error("low battery"));
    };
  });
  return () => visit.page.evaluate(() => (window as unknown as { locks: string[] }).locks);
}

/** Which of START and STOP can be seen and tapped. */
function buttons(visit: Visit): Promise<string[]> {
  return visit.page.evaluate(() =>
    ["beginButton", "stopButton"].flatMap((name) => {
      const button = document.querySelector<HTMLElement>(`[data-element="${name}"]`);
      if (!button) throw new Error(`no ${name}`);
      const { x, y, width, height } = button.getBoundingClientRect();
      const isSeen = getComputedStyle(button).opacity === "1";
      const isHit = document.elementFromPoint(x + width / 2, y + height / 2) === button;
      if (isSeen !== isHit || isSeen === button.inert) return [`half of ${name}`];
      return isSeen ? [button.textContent] : [];
    }),
  );
}

/** Waits until one of them stands alone and nothing moves, and looks whether that stays so. */
async function expectButton(visit: Visit, name: "START" | "STOP", when: string): Promise<void> {
  await expect.poll(() => buttons(visit), { message: when, timeout: 10_000 }).toEqual([name]);
  await visit.still();
  expect(await buttons(visit), when).toEqual([name]);
}

type Moment =
  | { readonly goes: "beginButton" | "stopButton" | "viewCenter" }
  | { readonly logged: "Done Both" }
  | "now";

/** Has the page do something at a moment that no test from outside would meet. */
function atMoment(
  visit: Visit,
  moment: Moment,
  delay: number,
  action: "hide and show" | "STOP" | "STOP twice",
): Promise<void> {
  return visit.page.evaluate(
    ({ moment, delay, action }) =>
      new Promise<void>((resolve) => {
        const element = (name: string): HTMLElement => {
          const found = document.querySelector<HTMLElement>(`[data-element="${name}"]`);
          if (!found) throw new Error(`no ${name}`);
          return found;
        };
        const show = (visible: boolean): void => {
          const state = visible ? "visible" : "hidden";
          Object.defineProperty(document, "visibilityState", { value: state, configurable: true });
          document.dispatchEvent(new Event("visibilitychange"));
        };
        const act = (): void => {
          if (action === "hide and show") show(false);
          else element("stopButton").click();
          if (action === "STOP") {
            resolve();
            return;
          }
          setTimeout(() => {
            if (action === "hide and show") show(true);
            else element("stopButton").click();
            resolve();
          }, 10);
        };
        const due = (): void => {
          if (delay === 0) act();
          else setTimeout(act, delay);
        };
        if (moment === "now") {
          due();
        } else if ("goes" in moment) {
          const view = element(moment.goes);
          new MutationObserver((_, observer) => {
            if (view.style.opacity !== "0") return;
            observer.disconnect();
            due();
          }).observe(view, { attributeFilter: ["style"] });
        } else {
          const info = console.info.bind(console);
          console.info = (line: string): void => {
            info(line);
            if (line !== moment.logged) return;
            console.info = info;
            due();
          };
        }
      }),
    { moment, delay, action },
  );
}

describe("with a camera and a torch", () => {
  let phone: PhoneBrowser;
  beforeAll(async () => {
    phone = await PhoneBrowser.open({ camera: recording("72") });
  });
  afterAll(() => phone.close());

  it("STOP during the countdown ends it", async () => {
    const visit = await phone.visit({ stored: acquainted });
    const stopped = atMoment(visit, { goes: "beginButton" }, 500, "STOP");
    await visit.start();
    await visit.alert("Starting ...").waitFor();
    await stopped;
    await expectIdle(visit);
    expect(await visit.torch()).not.toContain(true);
    expect(await holdsCamera(visit)).toBe(false);
    // Its end is not the next one's.
    await visit.startMeasuring();
    expect(await visit.torch()).toEqual([true]);
  });

  it("one of START and STOP stays, whatever falls into their coming and going", async () => {
    const visit = await phone.visit({ stored: acquainted });
    // Each begins with a tap on the START that the one before has left.
    for (const delay of [0, 100, 200]) {
      const interrupted = atMoment(visit, { goes: "beginButton" }, delay, "hide and show");
      await visit.start();
      await interrupted;
      await expectButton(visit, "START", `hidden ${delay} ms after START fades`);
    }
    for (const delay of [0, 100, 200]) {
      await visit.start();
      await expectButton(visit, "STOP", "counting down");
      const interrupted = atMoment(visit, { goes: "stopButton" }, delay, "hide and show");
      await visit.stop();
      await interrupted;
      await expectButton(visit, "START", `hidden ${delay} ms after STOP acts`);
    }
    await visit.start();
    await expectButton(visit, "STOP", "counting down");
    await atMoment(visit, "now", 0, "STOP twice");
    await expectButton(visit, "START", "after STOP twice");
  });

  it("STOP has its say while the curve comes, and none once the result is there", async () => {
    const visit = await phone.visit({ stored: acquainted });
    const early = atMoment(visit, { goes: "viewCenter" }, 100, "STOP");
    await visit.start();
    await early;
    await expectButton(visit, "START", "STOP while the curve comes");
    expect(await visit.element("viewLastMeasurements").isVisible()).toBe(true);
    expect(await visit.element("chartFourierView").isVisible()).toBe(false);
    expect(await visit.stored("values")).toBeNull();

    const late = atMoment(visit, { logged: "Done Both" }, 0, "STOP");
    await visit.start();
    await late;
    await expectButton(visit, "START", "STOP just before the end");
    expect(await visit.element("labelRed").textContent()).toBe("FINISHED");
    expect(await visit.element("labelHeartrate").textContent()).not.toBe("--");
    expect(await visit.stored("values")).not.toBeNull();
  });

  it.each([
    { how: "as such", torch: true as const },
    { how: "as a list", torch: "listed" as const },
  ])("STOP ends it, the next START begins anew, with a torch told $how", async ({ torch }) => {
    const visit = await phone.visit({ stored: acquainted, torch });
    for (let round = 0; round < 2; ++round) {
      await visit.startMeasuring();
      expect(await holdsCamera(visit)).toBe(true);
      await visit.stop();
      await expectIdle(visit);
      expect(await holdsCamera(visit)).toBe(false);
    }
    expect(await visit.torch()).toEqual([true, false, true, false]);
  });

  it("a page that goes to the background stops, and comes back as it began", async () => {
    const visit = await phone.visit({ stored: acquainted });
    const locks = await countWakeLocks(visit);
    await visit.startMeasuring();
    await visit.setInFront(false);
    expect(await holdsCamera(visit)).toBe(false);
    expect(visit.log.slice(-4)).toContain("AppDelegate didEnterBackground");
    // What was shown stays until the page is back.
    expect(await visit.element("labelRed").textContent()).toBe("Analyzing - hold steady ...");
    await visit.setInFront(true);
    await expectIdle(visit);
    expect(visit.log.slice(-2)).toEqual([
      "AppDelegate willEnterForeground",
      "AppDelegate didBecomeActive",
    ]);
    // The browser lets the screen dim behind the page's back.
    expect(await locks()).toEqual(["screen"]);
  });

  it("a camera that is taken away ends it, and is told", async () => {
    const visit = await phone.visit({ stored: acquainted });
    const expectLost = async (): Promise<void> => {
      await visit.alert("Camera lost").waitFor();
      await expect.poll(() => holdsCamera(visit)).toBe(false);
    };
    await visit.startMeasuring();
    await tellCamera(visit, "ended");
    await expectLost();
    await inspect(visit, "alert-camera-lost");
    await visit.page.getByRole("button", { name: "Done" }).click();
    await expectIdle(visit);

    // A moment's silence is none of it.
    await visit.startMeasuring();
    await tellCamera(visit, "mute");
    await tellCamera(visit, "unmute");
    await visit.page.waitForTimeout(1500);
    expect(await holdsCamera(visit)).toBe(true);
    expect(await visit.alert("Camera lost").count()).toBe(0);
    await tellCamera(visit, "mute");
    await expectLost();
    await visit.page.getByRole("button", { name: "Done" }).click();
    await expectIdle(visit);

    // Nor does it matter that STOP was tapped at the same moment.
    await visit.startMeasuring();
    const stopped = visit.element("stopButton").evaluate((button: HTMLElement) => {
      button.click();
    });
    await Promise.all([stopped, tellCamera(visit, "ended")]);
    await expectLost();
    await visit.page.getByRole("button", { name: "Done" }).click();
    await expectButton(visit, "START", "STOP and the camera's loss");
  });

  it("nothing ticked is nothing to run", async () => {
    const visit = await phone.visit({ stored: acquainted });
    const heartrate = visit.page.getByRole("checkbox", { name: "Measure heart rate" });
    const spo2 = visit.page.getByRole("checkbox", { name: "Measure oxygen saturation" });
    await heartrate.click();
    await spo2.click();
    expect(await heartrate.getAttribute("aria-checked")).toBe("false");
    await visit.start();
    await visit.alert("Nothing to run").waitFor();
    await inspect(visit, "alert-nothing-to-run");
    // A tap beside it closes it, as its button would.
    await visit.page.touchscreen.tap(20, 20);
    await visit.alert("Nothing to run").waitFor({ state: "detached" });
    expect(await holdsCamera(visit)).toBe(false);
  });

  it.each([
    { where: "at START" },
    { where: "where the browser lists no cameras", lacks: "list of cameras" as const },
  ])("a camera without a torch is told $where", async ({ lacks }) => {
    const visit = await phone.visit({ stored: acquainted, torch: false, lacks });
    await visit.start();
    await visit.alert("Torch not found or not supported by this device.").waitFor();
    await visit.alert("Error").waitFor();
    await visit.page.getByRole("button", { name: "Done" }).click();
    await inspect(visit, "alert-no-torch");
    await visit.page.getByRole("button", { name: "OK" }).click();
    expect(await holdsCamera(visit)).toBe(false);
    await visit.stop();
    await expectIdle(visit);
  });

  it.each(["refused", "ignored"] as const)("a torch whose light is %s is told", async (torch) => {
    const visit = await phone.visit({ stored: acquainted, torch });
    await visit.startMeasuring();
    await visit.alert("Torch not found or not supported by this device.").waitFor();
    await visit.page.getByRole("button", { name: "OK" }).click();
    await visit.stop();
    await expectIdle(visit);
    expect(await visit.torch()).toEqual([]);
  });

  it("swipes lead to the other screens, which end the measurement", async () => {
    const visit = await phone.visit({ stored: acquainted });
    await visit.startMeasuring();
    await visit.swipe("right");
    await visit.page.getByRole("button", { name: "Edit" }).waitFor();
    await expect.poll(() => holdsCamera(visit)).toBe(false);
    await visit.settled();
    await visit.page.getByRole("button", { name: "Close" }).click();
    await expectIdle(visit);
  });
});

it.each([
  { where: "at START" },
  { where: "where the browser tells nothing before", lacks: "camera permission" as const },
  { where: "on an iPhone", userAgent: "Mozilla/5.0 (iPhone; CPU iPhone OS 17_5 like Mac OS X)" },
])("a refused camera is told $where", async ({ lacks, userAgent }) => {
  const phone = await PhoneBrowser.open({ camera: "refused" });
  const visit = await phone.visit({
    stored: acquainted,
    lacks,
    ...(userAgent !== undefined && { userAgent }),
  });
  await visit.start();
  await visit.alert("No Camera Access").waitFor();
  // Other phones have no such Settings App as the text speaks of.
  const told = await visit.alert("No Camera Access").textContent();
  expect(told?.includes("In this browser: tap")).toBe(userAgent === undefined);
  await inspect(visit, "alert-no-camera-access");
  await visit.page.getByRole("button", { name: "Done" }).click();
  await expectIdle(visit);
  // A refusal, not a question that is still open.
  expect(visit.log).toContain("No camera....");
  await phone.close();
});

it("an address without HTTPS is told, for it gets no camera", async () => {
  const phone = await PhoneBrowser.open({ camera: recording("72") });
  const visit = await phone.visit({ stored: acquainted, host: "veyla.test" });
  await visit.page.getByRole("alertdialog", { name: "No camera at this address" }).waitFor();
  await inspect(visit, "notice-no-https");
  await visit.page.getByRole("button", { name: "Close" }).click();
  await visit.start();
  await visit.alert("No Camera Access").waitFor();
  await phone.close();
});

it("a browser that is too old is told, and one that does not load the core", async () => {
  const phone = await PhoneBrowser.open({ camera: recording("72") });
  const old = await phone.visit({ stored: acquainted, lacks: "video frames" });
  await old.page.getByRole("alertdialog", { name: "This browser cannot measure" }).waitFor();
  await inspect(old, "notice-old-browser");
  await old.page.getByRole("button", { name: "Close" }).click();
  await old.start();
  await old.alert("Camera not found").waitFor();

  const failed = await phone.visit({ stored: acquainted, lacks: "the core" });
  await failed.page.getByRole("alertdialog", { name: "Veyla does not start" }).waitFor();
  await inspect(failed, "notice-no-start");
  expect(failed.problems.splice(0).join()).toContain("the page does not start");
  await phone.close();
});

it("a phone without a camera is told", async () => {
  const phone = await PhoneBrowser.open({ camera: "none" });
  const visit = await phone.visit({ stored: acquainted });
  await visit.start();
  await visit.alert("Error").waitFor();
  await visit.page.getByRole("button", { name: "Done" }).click();
  await visit.alert("Camera not found").waitFor();
  await visit.page.getByRole("button", { name: "OK" }).click();
  await phone.close();
});
