// Every screen at every size, by day and by night, with large letters and with as little motion as asked
// for.
import { afterAll, beforeAll, describe, expect, it } from "vitest";

import { acquainted, PhoneBrowser, recording, type Visit, type Visitor } from "./browser";
import { inspect } from "./inspect";
import { storedHistory } from "./stored_history";

let phone: PhoneBrowser;
beforeAll(async () => {
  phone = await PhoneBrowser.open({ camera: recording("72") });
});
afterAll(() => phone.close());

/** Of what can be tapped or read, what cannot be brought onto the screen or is cut off. */
function outOfReach(visit: Visit): Promise<string[]> {
  return visit.page.evaluate(() => {
    const problems: string[] = [];
    if (document.documentElement.scrollWidth > window.innerWidth) problems.push("the page is wide");
    const controls =
      "button, ion-button, ion-back-button, ion-item, ion-toggle, ion-segment-button, ion-label";
    const pages = [...document.querySelectorAll("ion-nav > .ion-page:not(.ion-page-hidden)")];
    const dialogs = [...document.querySelectorAll("dialog[open]")];
    const fronts = dialogs.length > 0 ? dialogs.slice(-1) : pages.slice(-1);
    for (const front of fronts) {
      for (const control of front.querySelectorAll<HTMLElement>(`${controls}, h1, h2, p, span`)) {
        if (
          control.closest("[inert]") ||
          !control.checkVisibility({ opacityProperty: true, visibilityProperty: true })
        )
          continue;
        const name = `${control.localName} "${control.textContent.trim()}"`;
        control.scrollIntoView({ block: "nearest" });
        const box = control.getBoundingClientRect();
        if (box.width === 0) continue;
        const isInside =
          box.left > -1 &&
          box.top > -1 &&
          box.right < window.innerWidth + 1 &&
          box.bottom < window.innerHeight + 1;
        if (!isInside) problems.push(`${name} lies beyond the screen`);
        const { overflowX } = getComputedStyle(control);
        if (overflowX !== "visible" && control.scrollWidth > control.clientWidth + 1) {
          problems.push(`${name} is cut off`);
        }
      }
    }
    return problems;
  });
}

const now = Math.floor(Date.now() / 1000);
const history = Array.from({ length: 12 }, (_, index) => ({
  hr: 64 + 9 * Math.sin(index),
  spo2: 97 + Math.cos(index),
  date: now - (12 - index) * 50_000,
  labels: index % 3 === 0 ? [0, 3, 5] : [],
}));

describe("every screen is usable", () => {
  const looks: readonly (Visitor & { readonly name: string; readonly letters?: number })[] = [
    { name: "small", viewport: { width: 320, height: 568 } },
    { name: "dark", colorScheme: "dark" },
    { name: "large", viewport: { width: 430, height: 932 } },
    { name: "landscape", viewport: { width: 844, height: 390 } },
    { name: "small-landscape-dark", viewport: { width: 568, height: 320 }, colorScheme: "dark" },
    { name: "large-letters", letters: 26 },
  ];
  it.each(looks)("$name", async ({ name, letters, ...look }) => {
    const visit = await phone.visit({
      stored: storedHistory(history),
      reducedMotion: "reduce",
      ...look,
    });
    const { page } = visit;
    if (letters !== undefined) {
      await page.addStyleTag({ content: `html { font-size: ${letters}px !important }` });
    }
    const check = async (screen: string): Promise<void> => {
      await visit.settled();
      await inspect(visit, `look-${name}-${screen}`);
      expect(await outOfReach(visit), screen).toEqual([]);
    };
    const back = async (button: string, place: "first" | "last" = "last"): Promise<void> => {
      await page.getByRole("button", { name: button, exact: true })[place]().click();
      await visit.settled();
    };
    // Without scrolling: it becomes STOP, which a finger on the camera must find at once.
    const start = await page.getByRole("button", { name: "START" }).boundingBox();
    const { height } = page.viewportSize() ?? { height: 0 };
    expect((start?.y ?? Infinity) + (start?.height ?? 0)).toBeLessThanOrEqual(height);
    await check("measuring");

    await page.getByRole("button", { name: "Results" }).click();
    await page.getByRole("button", { name: "Edit" }).waitFor();
    await check("results");
    await page.locator(".result").first().click();
    await page.getByRole("checkbox", { name: "Resting" }).waitFor();
    await check("labels");
    await back("Close");
    await page.getByRole("button", { name: "Chart" }).click();
    await page.getByRole("img", { name: /^spo2/ }).waitFor();
    await check("charts");
    await back("Back");
    // The bar's, not the label chooser's.
    await back("Close", "first");

    await page.getByRole("button", { name: "Options" }).click();
    await page.getByText("Send feedback").waitFor();
    await check("options");
    await page.getByText("Health records", { exact: true }).click();
    await page.getByRole("button", { name: "Save records as a file" }).waitFor();
    await check("health");
    await back("Back");
    await page.getByText("Send feedback").click();
    await page.getByRole("heading", { name: "New mail" }).waitFor();
    await check("mail");
    await back("Cancel");
    await page.getByRole("button", { name: "EDIT" }).click();
    await visit.alert("Email").waitFor();
    await visit.still();
    const card = await page.locator(".alert-card").boundingBox();
    for (const name of ["Save", "Cancel"]) {
      const button = await page.getByRole("button", { name, exact: true }).boundingBox();
      // Not cut off by the card's edge, without scrolling.
      const below = (card?.y ?? 0) + (card?.height ?? 0);
      expect((button?.y ?? Infinity) + (button?.height ?? 0), name).toBeLessThanOrEqual(below);
    }
    await check("email");
    await back("Cancel");
    await page.getByText("Introduction", { exact: true }).click();
    await page.getByRole("heading", { name: "Step 1: Calibrate" }).waitFor();
    await check("introduction");
  });
});

it("gives the focus back to what opened a sheet", async () => {
  const visit = await phone.visit({ stored: storedHistory(history), reducedMotion: "reduce" });
  const { page } = visit;
  const open = async (control: ReturnType<typeof page.locator>): Promise<void> => {
    await control.focus();
    await page.keyboard.press("Enter");
    await expect.poll(() => hasFocus(control)).toBe(false);
  };
  const hasFocus = (control: ReturnType<typeof page.locator>): Promise<boolean> =>
    control.evaluate((element) => element.matches(":focus"));
  const expectFocus = (control: ReturnType<typeof page.locator>): Promise<void> =>
    expect.poll(() => hasFocus(control)).toBe(true);

  await page.getByRole("button", { name: "Results" }).click();
  await page.getByRole("button", { name: "Edit" }).waitFor();
  await visit.settled();
  const rows = page.locator("ion-item button");
  await open(rows.nth(2));
  await page.keyboard.press("Escape");
  await expectFocus(rows.nth(2));
  // The next row comes to where one is deleted.
  const next = (await page.locator(".result").nth(3).textContent()) ?? "";
  await open(rows.nth(2));
  await page.getByRole("dialog", { name: "Labels" }).getByText("Delete").press("Enter");
  await expect.poll(() => page.locator(".result").nth(2).textContent()).toBe(next);
  await expectFocus(rows.nth(2));

  await page.getByRole("button", { name: "Edit" }).click();
  await page.locator(".result").first().click();
  const share = page.getByRole("toolbar").getByRole("button", { name: "Share" });
  await open(share);
  await page.getByRole("button", { name: "Email (text)" }).press("Enter");
  await page.getByRole("heading", { name: "New mail" }).waitFor();
  await page.keyboard.press("Escape");
  await page.getByRole("heading", { name: "New mail" }).waitFor({ state: "detached" });
  await expectFocus(share);

  await page.getByRole("button", { name: "Chart" }).click();
  const labels = page.getByRole("button", { name: "Choose Label" });
  await labels.waitFor();
  await visit.settled();
  await open(labels);
  await page.getByRole("button", { name: "None", exact: true }).last().press("Enter");
  await expectFocus(labels);
});

/** What the animations change that are running while something goes on. */
async function animated(visit: Visit, during: () => Promise<void>): Promise<Set<string>> {
  await visit.page.evaluate(() => {
    const changed = new Set<string>();
    Object.assign(window, { changed });
    const look = (): void => {
      for (const { effect } of document.getAnimations()) {
        for (const frame of (effect as KeyframeEffect).getKeyframes()) {
          for (const property of Object.keys(frame)) changed.add(property);
        }
      }
      requestAnimationFrame(look);
    };
    look();
  });
  await during();
  return new Set(
    await visit.page.evaluate(() => [...(window as unknown as { changed: Set<string> }).changed]),
  );
}

it("nothing moves for those whom motion makes ill", async () => {
  const motions = ["transform", "translate", "scale", "rotate", "marginTop", "height"];
  for (const reducedMotion of ["reduce", "no-preference"] as const) {
    const visit = await phone.visit({ stored: acquainted, reducedMotion });
    const properties = await animated(visit, async () => {
      await visit.startMeasuring();
      await visit.stop();
      await visit.page.getByRole("button", { name: "START" }).waitFor();
      await visit.swipe("left");
      await visit.page.getByText("Introduction", { exact: true }).click();
      await visit.page.getByRole("button", { name: "Next page" }).click();
      await visit.page.getByRole("heading", { name: "Step 2: Ready" }).waitFor();
    });
    const moving = motions.filter((motion) => properties.has(motion));
    if (reducedMotion === "reduce") expect(moving).toEqual([]);
    else expect(moving).toEqual(expect.arrayContaining(["transform", "rotate"]));
    expect(properties).toContain("opacity");
  }
});
