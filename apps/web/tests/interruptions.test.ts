// Everything that keeps a measurement from its result.
import { expect, it } from "vitest";

import { moving, storedHistory, type Visit, visitPage, type Visitor } from "./browser";

const instruction = "Tap START to begin - don't cover camera";

async function expectIdle(visit: Visit): Promise<void> {
  await visit.button("START").waitFor();
  await expect.poll(() => visit.element("labelGrey").textContent()).toBe(instruction);
  await expect.poll(() => visit.element("labelHeartrate").textContent()).toBe("--");
  expect(await visit.stored("values")).toBeNull();
  // Phones show to their owners who holds it.
  expect(await holdsCamera(visit)).toBe(false);
}

function holdsCamera(visit: Visit): Promise<boolean> {
  return visit.page.evaluate(() => document.querySelector("video")?.srcObject != null);
}

it("STOP, the background and leaving the screen end it, and the next START begins anew", async () => {
  const visit = await visitPage();
  const locks = await visit.page.evaluateHandle(() => {
    const asked: string[] = [];
    navigator.wakeLock.request = (type = "screen"): Promise<WakeLockSentinel> => {
      asked.push(type);
      return Promise.reject(new Error("low battery"));
    };
    return asked;
  });
  const setInFront = (inFront: boolean): Promise<void> =>
    visit.page.evaluate((is) => {
      window.setInFront(is);
    }, inFront);
  await visit.startMeasuring();
  expect(await holdsCamera(visit)).toBe(true);
  await visit.tap("STOP");
  await expectIdle(visit);
  await visit.startMeasuring();
  await setInFront(false);
  expect(await holdsCamera(visit)).toBe(false);
  // What was shown stays until the page is back.
  expect(await visit.element("labelRed").textContent()).toBe("Analyzing - hold steady ...");
  await setInFront(true);
  await expectIdle(visit);
  expect(await visit.torch()).toEqual([true, false, true, false]);
  // The browser lets the screen dim behind the page's back.
  expect(await locks.jsonValue()).toEqual(["screen"]);

  await visit.tap("START");
  await visit.alert("Starting ...").waitFor();
  await visit.button("Results").evaluate((button: HTMLElement) => {
    button.click();
  });
  await visit.button("Edit").waitFor();
  await visit.settled();
  expect(await visit.alert("Starting ...").count()).toBe(0);
  await visit.tap("Close");
  await expectIdle(visit);
});

it("a camera that is taken away ends it, and is told", async () => {
  const visit = await visitPage(moving);
  await visit.startMeasuring();
  await visit.page.evaluate(() => {
    const stream = document.querySelector("video")?.srcObject as MediaStream;
    stream.getVideoTracks()[0]?.dispatchEvent(new Event("ended"));
  });
  await visit.alert("Camera lost").waitFor();
  expect(await visit.page.evaluate(() => window.shakes)).toEqual([[40, 80, 40]]);
  await visit.inspect("alert-camera-lost");
  await visit.tap("Done");
  await expectIdle(visit);
});

it.each<[Visitor, way: string]>([
  [{ torch: false }, "gives pages no light"],
  [{ torch: "broken" }, "did not come on"],
])("a light that does not come on is told: %o", async (visitor, way) => {
  const visit = await visitPage(visitor);
  await visit.tap("START");
  const alert = visit.alert("Torch not found or not supported by this device.");
  await alert.getByText(way).waitFor();
  if (visitor.torch === false) await visit.inspect("alert-no-torch");
  // What follows from it comes when it has been read.
  expect(await visit.page.getByRole("alertdialog").count()).toBe(1);
  await visit.tap("OK");
  if (visitor.torch === false) await visit.alert("Error").getByText("Done").click();
  await visit.tap("STOP");
  await expectIdle(visit);
  expect(await visit.torch()).toEqual([]);
});

it.each<[Visitor, way: RegExp]>([
  [{}, /^In this browser: tap the symbol/],
  [
    { userAgent: "Mozilla/5.0 (iPhone; CPU iPhone OS 17_5 like Mac OS X)" },
    /^Veyla is a page here.* in the Settings App choose the browser's own name/,
  ],
])("a refused camera is told: %o", async (visitor, way) => {
  const visit = await visitPage({ ...visitor, camera: "refused" });
  await visit.tap("START");
  await visit.alert("No Camera Access").getByText(way).waitFor();
  await visit.inspect("alert-no-camera-access");
  await visit.tap("Done");
  await expectIdle(visit);
  // A refusal, not a question that is still open.
  expect(visit.log).toContain("No camera....");
});

it("a camera that does not open is told, each cause with its own way out", async () => {
  const visit = await visitPage();
  for (const [error, way, state = "granted"] of [
    ["NotReadableError", /^Another app or tab has the camera/],
    ["AbortError", /^Another app or tab has the camera/],
    ["NotFoundError", /^This browser sees no camera/],
    ["OverconstrainedError", /^The camera that was used is gone/],
    ["SecurityError", /^The page around this one/],
    ["InvalidStateError", /\(InvalidStateError\)/],
    ["NotAllowedError", /the phone's settings choose the browser/],
    ["NotAllowedError", /^Tap START once more/, "prompt"],
  ] as const) {
    await visit.page.evaluate(
      ({ name, told }) => {
        // Some browsers' constraint errors are no instances of `Error`.
        const reason = name.startsWith("Over") ? { name } : new DOMException("", name);
        Object.assign(navigator.permissions, { query: () => Promise.resolve({ state: told }) });
        // eslint-disable-next-line @typescript-eslint/prefer-promise-reject-errors
        Object.assign(navigator.mediaDevices, { getUserMedia: () => Promise.reject(reason) });
      },
      { name: error, told: state },
    );
    await visit.tap("START");
    const alert = visit.alert(state === "granted" ? "Camera not found" : "No Camera Access");
    await alert.getByText(way).waitFor();
    await alert.getByRole("button").click();
    if (state === "granted") {
      const next = visit.alert("Error");
      await next.waitFor();
      // Said once.
      expect(await next.getByText(way).count()).toBe(0);
      await visit.tap("Done");
      await visit.tap("STOP");
    }
    await expectIdle(visit);
  }
});

it.each<[Visitor, notice: string, alert?: string, way?: string]>([
  // Browsers give no camera to such an address.
  [{ host: "veyla.test" }, "No camera at this address", "No Camera Access", "https://"],
  [{ lacks: "video frames" }, "This browser cannot measure", "Camera not found", "up to date"],
  [{ lacks: "storage" }, "Not saved"],
  [{ lacks: "the core" }, "Veyla does not start"],
])("what cannot be is told: %o", async (visitor, notice, alert, way = "") => {
  const visit = await visitPage(visitor);
  await visit.alert(notice).waitFor();
  await visit.inspect(`notice-${notice}`);
  if (alert !== undefined) {
    await visit.tap("Close");
    await visit.tap("START");
    await visit.alert(alert).getByText(way).waitFor();
  }
  if (visitor.lacks === "the core")
    expect(visit.problems.splice(0).join()).toContain("the page does not start");
});

it("languages that the browser refuses are told, and the next one is written in", async () => {
  const stored = storedHistory([{ hr: 60, spo2: 97, date: 1.7e9 }]);
  const visit = await visitPage({ lacks: "languages", stored });
  await visit.page.getByText('refuses to write in "c", "en_US.utf8"').waitFor();
  await visit.inspect("notice-languages");
  await visit.tap("Close");
  await visit.open("results");
  await visit.page.getByText("14.11.2023, 22:13").waitFor();
  await visit.tap("Chart");
  await visit.page.locator(".charts").waitFor();
});

it("a part that does not come is told", async () => {
  const visit = await visitPage();
  await visit.page.route("**/results*.js", (route) => route.abort());
  await visit.tap("Results");
  await visit.alert("This page does not open").waitFor();
  expect(visit.problems.splice(0).join()).toContain("a page does not open");
});
