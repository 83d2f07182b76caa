// Everything that keeps a measurement from its result.
import { expect, it } from "vitest";

import { type Visit, visitPage, type Visitor } from "./browser";

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
  const visit = await visitPage();
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

it.each<Visitor>([{ torch: false }, { torch: "broken" }])(
  "a light that does not come on is told: %o",
  async (visitor) => {
    const visit = await visitPage(visitor);
    await visit.tap("START");
    await visit.alert("Torch not found or not supported by this device.").waitFor();
    if (visitor.torch === false) await visit.inspect("alert-no-torch");
    // What follows from it comes when it has been read.
    expect(await visit.page.getByRole("alertdialog").count()).toBe(1);
    await visit.tap("OK");
    if (visitor.torch === false) await visit.alert("Error").getByText("Done").click();
    await visit.tap("STOP");
    await expectIdle(visit);
    expect(await visit.torch()).toEqual([]);
  },
);

it.each<Visitor>([{}, { userAgent: "Mozilla/5.0 (iPhone; CPU iPhone OS 17_5 like Mac OS X)" }])(
  "a refused camera is told: %o",
  async (visitor) => {
    const visit = await visitPage({ ...visitor, camera: "refused" });
    await visit.tap("START");
    const alert = visit.alert("No Camera Access");
    await alert.waitFor();
    // Other phones have no such Settings App as the text speaks of.
    const help = await alert.getByText("In this browser: tap").count();
    expect(help).toBe(visitor.userAgent === undefined ? 1 : 0);
    await visit.inspect("alert-no-camera-access");
    await visit.tap("Done");
    await expectIdle(visit);
    // A refusal, not a question that is still open.
    expect(visit.log).toContain("No camera....");
  },
);

it.each<[Visitor, notice: string, alert?: string]>([
  // Browsers give no camera to such an address.
  [{ host: "veyla.test" }, "No camera at this address", "No Camera Access"],
  [{ lacks: "video frames" }, "This browser cannot measure", "Camera not found"],
  [{ lacks: "storage" }, "Not saved"],
  [{ lacks: "the core" }, "Veyla does not start"],
])("what cannot be is told: %o", async (visitor, notice, alert) => {
  const visit = await visitPage(visitor);
  await visit.alert(notice).waitFor();
  await visit.inspect(`notice-${notice}`);
  if (alert !== undefined) {
    await visit.tap("Close");
    await visit.tap("START");
    await visit.alert(alert).waitFor();
  }
  if (visitor.lacks === "the core")
    expect(visit.problems.splice(0).join()).toContain("the page does not start");
});

it("a part that does not come is told", async () => {
  const visit = await visitPage();
  await visit.page.route("**/results*.js", (route) => route.abort());
  await visit.tap("Results");
  await visit.alert("This page does not open").waitFor();
  expect(visit.problems.splice(0).join()).toContain("a page does not open");
});
