// The README's pictures of the phone app: a recorded finger is measured in the built page, and listed and charted
// behind a made-up month. Wants the recording as a video, and the folder that the pictures go to.
import { chromium } from "playwright-core";

import { addTorch, serveSite } from "../tests/site";

const [video = "", folder = ""] = process.argv.slice(2);
const day = 86_400;
const today = Math.floor(Date.now() / 1000);
const history = Array.from({ length: 30 }, (_, index) => ({
  hr: 66 + 7 * Math.sin(index) + 3 * Math.sin(2.7 * index),
  spo2: 97.5 + Math.cos(index),
  date: { $date: today - (30 - index) * day - 977 * index },
  labels: Array.from({ length: 7 }, (_, label) => label === (index * 5) % 7 && index % 3 !== 1),
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
  await page.getByRole("button", { name: "START" }).click();
  await page.waitForFunction(
    () => {
      const values = [...document.querySelectorAll(".live-value .number")];
      const curve = document.querySelector('[data-element="chartFourierView"]');
      return (
        values.every(({ textContent }) => /\d/.test(textContent)) &&
        curve?.checkVisibility({ visibilityProperty: true })
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
