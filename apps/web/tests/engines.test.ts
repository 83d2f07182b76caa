// The page in the browser engines by which no other test comes.
import { expect, it } from "vitest";

import { acquainted, storedHistory } from "./browser";
import { engines, visitBy } from "./engines";

it.concurrent.for(engines)(
  "a finger is measured, kept and found again: %s",
  async (engine, test) => {
    const visit = await visitBy({ engine, stored: {} }, test);
    await visit.sees("Step 1: Calibrate");
    await visit.picture("intro");
    await visit.tap("Skip");
    await visit.sees("INTENDED USE");
    await visit.tap("Done");
    await visit.tap("Allow");
    await visit.tap("START");
    await visit.sees("Analyzing - hold steady ...");
    await visit.sees("FINISHED");
    await visit.picture("finished");
    const [entry] = await visit.values();
    expect(Math.abs((entry?.hr ?? NaN) - 72)).toBeLessThan(2);
    expect(await visit.lights()).toEqual([true, false]);

    await visit.tap("Results");
    await visit.sees(`${entry?.hr.toFixed(0)} bpm`);
    await visit.tap(".result");
    await visit.tap("Resting");
    await visit.tap(".chooser .close");
    expect((await visit.values())[0]?.labels[0]).toBe(true);
    await visit.tap("Chart");
    await visit.sees("heartrate (data points are averaged for each day)");
    await visit.picture("charts");
    await visit.tap("Back");
    await visit.tap("Close");
    await visit.tap("Options");
    await visit.sees("Send feedback");
    await visit.picture("options");

    await visit.loseNetwork();
    await visit.reload();
    await visit.sees(entry?.hr.toFixed(0) ?? "");
    await visit.tap("Results");
    await visit.tap("Chart");
    await visit.sees("heartrate (data points are averaged for each day)");
  },
);

it.concurrent.for(engines)(
  "small, large, at night and without a camera or light: %s",
  async (engine, test) => {
    const stored = storedHistory([{ hr: 60, spo2: 97, date: Date.now() / 1000, labels: [0] }]);
    const visit = await visitBy({ engine, night: true, stored }, test);
    await visit.sees("Tap START");
    expect(await visit.beyond(320, 568)).toEqual([]);
    await visit.picture("small-night");
    expect(
      await visit.ask(() => [
        getComputedStyle(document.body).backgroundColor,
        matchMedia("(prefers-reduced-motion: reduce)").matches,
      ]),
    ).toEqual(["rgb(13, 13, 15)", true]);
    for (const [tapped, text] of [
      ["", "Tap START"],
      ["Results", "60 bpm"],
      ["Chart", "heartrate (data points are averaged for each day)"],
      ["Back", "60 bpm"],
      ["Close", "Tap START"],
      ["Options", "Send feedback"],
    ] as const) {
      if (tapped) await visit.tap(tapped);
      expect(await visit.faults(text), tapped).toEqual([]);
      await visit.picture(`night-${text.slice(0, 5)}`);
    }
    await visit.tap("Close");
    expect(await visit.beyond(430, 932)).toEqual([]);
    await visit.ask(() => {
      document.documentElement.style.setProperty("font-size", "26px", "important");
    });
    expect(await visit.beyond(390, 844)).toEqual([]);
    await visit.picture("large-letters");
    for (const [camera, told] of [
      ["refused", "No Camera Access"],
      ["dark", "Torch"],
      ["none", "Camera not found"],
    ] as const) {
      await visit.bring(camera);
      await visit.sees("Tap START");
      await visit.tap("START");
      await visit.sees(told);
      await visit.picture(`camera-${camera}`);
    }
    await visit.bring("unlit");
    await visit.tap("START");
    await visit.sees("No light reaches this lens");
    await visit.picture("camera-unlit");
    await visit.tap("Next camera");
    await visit.sees("Finger in place");
    await visit.ask(() => {
      (window as unknown as { switchLens(): void }).switchLens();
    });
    await visit.sees("The phone changed its lens: hold still");
  },
);

it("the engine's own camera gets to its frames, with its torch lit and put out", async (test) => {
  const visit = await visitBy({ engine: "webkit", camera: "own", stored: acquainted }, test);
  await visit.tap("START");
  await visit.sees("Analyzing - hold steady ...");
  expect(await visit.lights()).toEqual([true]);
  await visit.tap("STOP");
  await visit.sees("Tap START");
  expect(await visit.lights()).toEqual([true, false]);
  await visit.tap("START");
  await visit.sees("Analyzing - hold steady ...");
  await visit.until(() => window.lights.length === 3);
  // What the user has granted serves both.
  expect(await visit.ask(() => (window as unknown as { asks(): number }).asks())).toBe(1);
});
