// The README's pictures of the phone app: a recorded finger's heart rate is measured in the built page, and listed and
// charted behind others that were measured of recordings. Wants the finger as a video, the table of those others as
// `veyla measure --csv` writes it, and the folder that the pictures go to.
import { readFileSync } from "node:fs";

import { chromium } from "playwright-core";

import { addTorch, serveSite } from "../tests/site";

const [video = "", table = "", folder = ""] = process.argv.slice(2);
const [head = "", ...rows] = readFileSync(table, "utf8").trim().split(/\r?\n/);
const columns = head.split(",");
const measured = rows.map((row) => {
  const fields = row.split(",");
  return Object.fromEntries(columns.map((column, index) => [column, fields[index] ?? ""]));
});
const recordings = [...new Set(measured.map(({ input }) => input))];
// Recordings tell no day: theirs are spread over the month before today, a morning each.
const today = new Date().setUTCHours(0, 0, 0, 0) / 1000;
const dateOf = (input = "", start = ""): number =>
  today -
  (recordings.length - recordings.indexOf(input)) * 2 * 86_400 +
  7 * 3600 +
  Number(start) * 97;
// As a user would: what is marked as unsure is measured again, not kept. The adults were at rest.
const history = measured
  .filter(({ outcome, doubts }) => outcome === "finished" && doubts === "")
  .map(({ input, start, heartrate }) => ({
    hr: Number(heartrate),
    spo2: 0,
    date: { $date: dateOf(input, start) },
    labels: Array.from({ length: 7 }, (_, label) => label === 0),
  }));

const server = await serveSite();
const browser = await chromium.launch({
  executablePath: process.env["CHROMIUM"] ?? "/usr/bin/chromium",
  args: [
    "--disable-gpu",
    "--use-fake-device-for-media-stream",
    "--use-fake-ui-for-media-stream",
    `--use-file-for-fake-video-capture=${video}`,
  ],
});
try {
  const context = await browser.newContext({
    viewport: { width: 390, height: 844 },
    deviceScaleFactor: 2,
    hasTouch: true,
    isMobile: true,
    permissions: ["camera"],
  });
  await context.addInitScript((values) => {
    Object.assign(window, { lights: [] });
    Object.assign(localStorage, {
      "veyla/pleaseNoteShown": "true",
      "veyla/healthPermissions": '{"heartRate":true,"oxygenSaturation":true}',
      "veyla/homeScreenAnswered": "true",
      "veyla/values": values,
    });
  }, JSON.stringify(history));
  await context.addInitScript(addTorch, true);
  const page = await context.newPage();
  const take = async (name: string): Promise<void> => {
    for (const colorScheme of ["light", "dark"] as const) {
      await page.emulateMedia({ colorScheme });
      // Colours take a moment to change, in components whose animations nobody tells.
      await page.waitForTimeout(500);
      await page.screenshot({ path: `${folder}/phone_${name}_${colorScheme}.png` });
    }
    await page.emulateMedia({ colorScheme: "light" });
  };
  /** When the screen in front covers all others. */
  const settled = async (): Promise<void> => {
    await page.waitForFunction(() =>
      [...document.querySelectorAll("ion-nav > .ion-page")]
        .slice(0, -1)
        .every(({ classList }) => classList.contains("ion-page-hidden")),
    );
  };
  await page.goto(server.resolvedUrls?.local[0] ?? "");
  // No recording brings an oxygen value that the app would not mark as unsure.
  await page.getByRole("checkbox", { name: "Measure oxygen saturation" }).click();
  await page.getByRole("button", { name: "START" }).click();
  await page.waitForFunction(
    () => {
      const value = document.querySelector(".live-value .number");
      const curve = document.querySelector('[data-element="chartFourierView"]');
      return (
        /\d/.test(value?.textContent ?? "") && curve?.checkVisibility({ visibilityProperty: true })
      );
    },
    undefined,
    { timeout: 90_000 },
  );
  await take("measuring");
  await page.getByText("FINISHED").waitFor({ timeout: 90_000 });
  await take("finished");
  await page.getByRole("button", { name: "Results" }).click();
  await page.locator(".results .result").first().waitFor();
  await settled();
  await take("results");
  await page.getByRole("button", { name: "Chart", exact: true }).click();
  await settled();
  await page.getByText("Month", { exact: true }).click({ force: true });
  await page.locator(".segment-button-checked").getByText("Month").waitFor();
  await take("charts");
} finally {
  await browser.close();
  await server.close();
}
