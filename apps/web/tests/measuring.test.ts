// From the first visit to a result, with a real camera path from getUserMedia to the stored entry.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { moving, type Visit, visitPage } from "./browser";

const finished = { timeout: 60_000 };

/** Of what is read or tapped on the measuring screen, what lies over something else, and of what is tapped, what is
 * out of sight: on small phones, too, that stand or lie. */
async function overlaps({ page }: Visit): Promise<string[]> {
  const usual = page.viewportSize() ?? { width: 390, height: 844 };
  const found: string[] = [];
  const small = [
    { width: 320, height: 568 },
    { width: 568, height: 320 },
  ];
  for (const viewport of [...small, { width: 844, height: 390 }, usual]) {
    await page.setViewportSize(viewport);
    const pairs = await page.evaluate(() => {
      const kinds = "h2, p:not(.read-out), .round, .dial, .curve, .wait-bar, .wait-picture";
      const seen = { opacityProperty: true, visibilityProperty: true };
      const parts = [...document.querySelectorAll(`.measuring-grid :is(${kinds})`)]
        .filter((each) => each.checkVisibility(seen) && !each.matches(".wait-hints > p + p"))
        .map((each) => ({ name: each.className, box: each.getBoundingClientRect() }));
      return parts.flatMap(({ name, box: a }, index) => [
        ...(name.startsWith("round") && a.bottom > innerHeight ? [`${name} out of sight`] : []),
        ...parts.slice(index + 1).flatMap(({ name: other, box: b }) => {
          const isBeside = a.right < b.left + 1 || b.right < a.left + 1;
          return isBeside || a.bottom < b.top + 1 || b.bottom < a.top + 1
            ? []
            : [`${name} on ${other}`];
        }),
      ]);
    });
    found.push(...pairs.map((pair) => `${viewport.width}: ${pair}`));
  }
  return found;
}

it("a finger is measured at the first visit, after introduction and notice", async () => {
  const visit = await visitPage({ ...moving, stored: {} });
  const { page } = visit;

  // What was there to be read while the core loaded stands where the introduction says it.
  await visit.heading("Step 1: Calibrate").waitFor();
  const beginnings = await page.evaluate(async () => {
    const html = await (await fetch("./")).text();
    const first = new DOMParser()
      .parseFromString(html, "text/html")
      .querySelector("div.first-paint");
    if (first) document.body.append(first);
    const said = [first, document.querySelector(".intro")].map((beginning) =>
      ["h1", "svg, img", "p"].map((part) => {
        const element = beginning?.querySelector(part);
        const {
          x = NaN,
          y = NaN,
          width = NaN,
          height = NaN,
        } = element?.getBoundingClientRect() ?? {};
        return [part.startsWith("svg") || element?.textContent, x + width / 2, y + height / 2];
      }),
    );
    first?.remove();
    return said;
  });
  expect(beginnings[0]).toEqual(beginnings[1]);

  // The introduction, page by page: whole on the smallest phone, and nothing jumps from one to the next.
  const usual = { width: 390, height: 844 };
  const places = new Set<string>();
  for (const title of ["Step 1: Calibrate", "Step 2: Ready", "Step 3: Wait", "Step 4: Done"]) {
    await visit.heading(title).waitFor();
    await visit.inspect(`intro-${title.slice(5, 6)}`);
    await page.setViewportSize({ width: 320, height: 568 });
    const place = await page.locator(".intro").evaluate((intro) => {
      const [content, ...parts] = [
        ".intro-content",
        "h1",
        ".illustration",
        ".onward:not([hidden])",
      ].map((each) => intro.querySelector(each));
      const hidden = (content?.scrollHeight ?? NaN) - (content?.clientHeight ?? NaN);
      return [hidden, ...parts.map((part) => part?.getBoundingClientRect().top)].join();
    });
    places.add(place);
    await page.setViewportSize(usual);
    if (await visit.button("Next").isVisible()) await visit.tap("Next");
  }
  expect([...places]).toEqual([expect.stringMatching(/^0,/)]);
  // It stays, whoever asks to leave it.
  await page.keyboard.press("Escape");
  expect(await visit.button("Skip").count()).toBe(0);
  await visit.tap("Done");
  await visit.alert("INTENDED USE").getByText("NOT INTENDED FOR MEDICAL USE").waitFor();
  await visit.inspect("notice");
  await visit.alert("INTENDED USE").getByText("Done").click();
  await visit.heading("Health records").waitFor();
  await visit.inspect("health");
  await page.locator("dialog ion-toggle").first().click();
  await visit.tap("Allow");

  await expect.poll(() => visit.element("labelGrey").textContent()).toContain("Tap START");
  await visit.inspect("measuring-initial");
  // Caption and box are one control.
  const box = page.getByRole("checkbox", { name: "Measure heart rate" });
  for (const checked of ["false", "true"]) {
    await page.locator(".caption").first().click({ force: true });
    expect(await box.getAttribute("aria-checked")).toBe(checked);
  }
  // No picture in between: taking one keeps frames from being taken.
  await visit.startMeasuring();
  const bar = page.locator(".wait-bar > i");
  await bar.waitFor();
  expect(await bar.evaluate((view) => getComputedStyle(view).animationDuration)).toBe("12s");
  const live = page.locator(".live-value .number");
  await expect.poll(() => live.first().textContent(), finished).toMatch(/^\d\d$/);
  expect(await live.first().evaluate((view) => getComputedStyle(view).fontSize)).toBe("44px");
  expect(await overlaps(visit)).toEqual([]);
  await visit.element("chartFourierView").waitFor(finished);
  expect(await page.locator(".wait-bar").isVisible()).toBe(false);
  await page.getByText("FINISHED").waitFor(finished);
  expect(await live.first().isVisible()).toBe(false);
  const ring = page.locator(".ring").first();
  expect(await ring.evaluate((view) => getComputedStyle(view).animationName)).toBe("swell");
  const said = /Heart rate \d\d beats per minute. Oxygen saturation \d\d per cent./;
  await page.getByRole("status").filter({ hasText: said }).waitFor();
  await visit.inspect("measuring-finished");

  const [{ hr, spo2 } = { hr: NaN, spo2: NaN }] = await visit.values();
  // A machine that has much else to do shows the finger slower than it is.
  expect(Math.abs(hr - 72)).toBeLessThan(8);
  expect(spo2).toBeGreaterThan(95);
  expect(await visit.torch()).toEqual([true, false]);
  expect(await page.evaluate(() => window.shakes)).toEqual([60]);

  const shown = [hr, spo2].map((value) => value.toFixed(0));
  expect(await page.locator(".last-value .number").allTextContents()).toEqual(shown);

  // One tap leads to its labels.
  await visit.tap("Label this measurement");
  await page.getByRole("checkbox", { name: "Resting" }).click();
  await page.locator(".chooser .close").click();
  await page.locator(".results .bar-button").first().click();
  await visit.settled();

  // A health record of each value that is allowed to become one.
  await visit.tap("Options");
  await page.getByText("Health records", { exact: true }).click();
  const save = visit.tap("Save records as a file");
  const [download] = await Promise.all([page.waitForEvent("download"), save]);
  const record = JSON.parse(readFileSync(await download.path(), "utf8")) as object;
  expect(record).toMatchObject({ code: { coding: [{ code: "2708-6" }, {}] } });
});

it("a finger that comes late, leaves and is too bright is told of, and doubted", async () => {
  const visit = await visitPage({ ...moving, camera: "absent" });
  const { page } = visit;
  const words = visit.element("labelFinger");
  // Read out from the first word on: what is hidden when it gets its text is not.
  expect(await words.getAttribute("aria-live")).toBe("polite");
  expect(await words.evaluate((each) => each.checkVisibility({ visibilityProperty: true }))).toBe(
    true,
  );
  /** What is told, in its order: the state and its words. */
  const told = await page.locator("p.finger").evaluateHandle((chip: HTMLElement) => {
    const all = { words: "" };
    new MutationObserver(() => {
      all.words += ` ${chip.dataset["state"]} ${chip.textContent}`;
    }).observe(chip, { subtree: true, childList: true, attributeFilter: ["data-state"] });
    return all;
  });
  await page.emulateMedia({ colorScheme: "dark" });
  await visit.startMeasuring();
  await page.locator('.finger[data-state="noFinger"]').waitFor();
  expect(await overlaps(visit)).toEqual([]);
  await visit.element("chartFourierView").waitFor();
  // No frame is wanted while there is no finger.
  await visit.inspect("finger-absent-night");
  expect(await overlaps(visit)).toEqual([]);
  await page.getByText("FINISHED").waitFor(finished);
  const { words: all } = await told.jsonValue();
  const absent = "noFinger Move your finger over lens and light";
  const good = "good Finger in place";
  expect(all).toMatch(
    RegExp(`${absent}.*${good}.*${absent}.*tooBright Press more lightly.*${good}`),
  );

  await page.locator('.finger[data-state=""]').waitFor({ state: "attached" });
  const doubt = "Unsure: no finger was seen for part of the time.";
  expect(await words.textContent()).toBe("");
  expect(await visit.element("labelDoubtHeartrate").textContent()).toContain(doubt);
  expect(await visit.element("labelDoubtSpo2").textContent()).toContain(
    "Unsure: this camera sees next to no pulse in blue light",
  );
  expect(await page.getByRole("status").filter({ hasText: doubt }).count()).toBe(1);
  await visit.inspect("doubt-absent-night");
  expect(await overlaps(visit)).toEqual([]);
  await page.emulateMedia({ colorScheme: "light" });
  await visit.inspect("doubt-absent");
});
