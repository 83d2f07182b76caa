// Every screen at every size, by day and by night, with large letters and with as little motion as asked
// for.
import type { Locator } from "playwright-core";
import { expect, it } from "vitest";

import { storedHistory, type Visit, type Visitor, visitPage } from "./browser";

/** Of what can be tapped or read, what cannot be brought onto the screen or is cut off. */
function outOfReach(visit: Visit): Promise<string[]> {
  return visit.page.evaluate(() => {
    const isWide = document.documentElement.scrollWidth > window.innerWidth;
    const front =
      [...document.querySelectorAll("dialog[open]")].at(-1) ??
      [...document.querySelectorAll("ion-nav > .ion-page:not(.ion-page-hidden)")].at(-1);
    const controls =
      "button, ion-button, ion-back-button, ion-item, ion-toggle, ion-segment-button, ion-label";
    const problems = [...(front?.querySelectorAll(`${controls}, h1, h2, p, span`) ?? [])].flatMap(
      (control) => {
        const isSeen = control.checkVisibility({ opacityProperty: true, visibilityProperty: true });
        if (!isSeen || control.closest("[inert]")) return [];
        control.scrollIntoView({ block: "nearest" });
        const { left, top, right, bottom, width } = control.getBoundingClientRect();
        if (width === 0) return [];
        const isInside =
          left > -1 && top > -1 && right < window.innerWidth + 1 && bottom < window.innerHeight + 1;
        const isCut =
          getComputedStyle(control).overflowX !== "visible" &&
          control.scrollWidth > control.clientWidth + 1;
        return isInside && !isCut ? [] : [`${control.localName} "${control.textContent.trim()}"`];
      },
    );
    for (const title of front?.querySelectorAll("ion-title") ?? []) {
      const shown = title.shadowRoot?.querySelector(".toolbar-title");
      if (!shown || shown.scrollWidth > shown.clientWidth) problems.push("a title is cut off");
      const words = document.createRange();
      words.selectNodeContents(title);
      const { left, right } = words.getBoundingClientRect();
      for (const control of title.closest("ion-toolbar")?.querySelectorAll(controls) ?? []) {
        const box = control.getBoundingClientRect();
        const isUnder = box.width > 0 && box.left < right && left < box.right;
        if (isUnder) problems.push(`title "${title.textContent}" under "${control.textContent}"`);
      }
    }
    return isWide ? ["the page is wide", ...problems] : problems;
  });
}

/** Of what the keyboard gets to, which is a control and more, what has no ring around it, or one that is cut off. */
async function ringless({ page }: Visit): Promise<string[]> {
  const wholes = new Map<string, boolean>();
  for (;;) {
    await page.keyboard.press("Tab");
    const [name, isWhole] = await page.evaluate(() => {
      let focused = document.activeElement;
      while (focused?.shadowRoot?.activeElement) focused = focused.shadowRoot.activeElement;
      // A switch's is around its row.
      const row = focused?.matches("ion-toggle") ? focused.parentElement?.shadowRoot : undefined;
      const ringed = row?.querySelector("[part~=native]") ?? focused ?? document.body;
      const { outlineStyle, outlineWidth, outlineOffset } = getComputedStyle(ringed);
      const reach = parseFloat(outlineWidth) + parseFloat(outlineOffset) - 1;
      const ring = ringed.getBoundingClientRect();
      const isCut = (around: Element): boolean => {
        const { left, top, right, bottom } = around.getBoundingClientRect();
        const isTooLong = ring.height > bottom - top;
        return (
          ring.left - reach < left ||
          ring.right + reach > right ||
          (!isTooLong && (ring.top - reach < top || ring.bottom + reach > bottom))
        );
      };
      let isWhole = outlineStyle === "solid" && parseFloat(outlineWidth) >= 3;
      for (let each: Element | null | undefined = ringed; each;) {
        const root = each.getRootNode();
        each =
          each.assignedSlot ??
          each.parentElement ??
          (root instanceof ShadowRoot ? root.host : null);
        if (each && getComputedStyle(each).overflow !== "visible") isWhole &&= !isCut(each);
      }
      const said = focused?.ariaLabel ?? focused?.textContent ?? "";
      return [
        `${ring.x} ${ring.y} ${focused?.localName} ${said}`,
        isWhole || ringed === document.body,
      ];
    });
    if (wholes.has(name)) break;
    wholes.set(name, isWhole);
  }
  if (wholes.size < 2) return ["nothing that the keyboard gets to"];
  return [...wholes].flatMap(([name, isWhole]) => (isWhole ? [] : [name]));
}

const history = Array.from({ length: 12 }, (_, index) => ({
  hr: 64 + 9 * Math.sin(index),
  spo2: 97 + Math.cos(index),
  date: Math.floor(Date.now() / 1000) - (12 - index) * 50_000,
  labels: index % 3 === 0 ? [0, 3, 5] : [],
}));

interface Look extends Visitor {
  readonly name: string;
  readonly letters?: number;
  /** Judged by axe-core as well: by day and by night where there is least room. */
  readonly isJudged?: boolean;
}

it.each<Look>([
  { name: "small", viewport: { width: 320, height: 568 }, isJudged: true },
  { name: "large-dark", viewport: { width: 430, height: 932 }, colorScheme: "dark" },
  { name: "landscape", viewport: { width: 844, height: 390 } },
  {
    name: "small-landscape-dark",
    viewport: { width: 568, height: 320 },
    colorScheme: "dark",
    isJudged: true,
  },
  { name: "large-letters", letters: 26, viewport: { width: 320, height: 568 } },
])("every screen is usable: $name", async ({ name, letters, isJudged, ...look }) => {
  const visit = await visitPage({
    stored: storedHistory(history),
    ...look,
  });
  const { page } = visit;
  if (letters !== undefined)
    await page.addStyleTag({ content: `html { font-size: ${letters}px !important }` });
  const check = async (screen: string, part: Locator): Promise<void> => {
    await part.waitFor();
    await visit.settled();
    await visit.picture(`look-${name}-${screen}`);
    if (isJudged) await visit.judge(screen);
    expect(await outOfReach(visit), screen).toEqual([]);
    if (name === "landscape") expect(await ringless(visit), screen).toEqual([]);
  };
  const bottomOf = (place: Locator): Promise<number> =>
    place.evaluate((element) => element.getBoundingClientRect().bottom);
  // Without scrolling: it becomes STOP, which a finger on the camera must find at once.
  const bottom = page.viewportSize()?.height;
  expect(await bottomOf(visit.button("START"))).toBeLessThanOrEqual(bottom ?? 0);
  await check("measuring", visit.button("START"));

  await visit.tap("Results");
  await check("results", visit.button("Edit"));
  await visit.tap("Edit");
  await page.locator(".result").first().click();
  await check("editing", visit.button("Delete"));
  await visit.tap("Done");
  await page.locator(".result").first().click();
  await check("labels", page.getByRole("checkbox", { name: "Resting" }));
  await page.locator(".chooser .close").click();
  await visit.tap("Chart");
  await check("charts", page.getByRole("slider", { name: /^spo2/ }));
  const isNumberWhole = ([plot]: Element[]): boolean => {
    const context = plot?.querySelector("canvas")?.getContext("2d");
    const box = plot?.querySelector(".u-over")?.getBoundingClientRect();
    // The library measures in the screen's pixels.
    if (!plot || !context || !box) return false;
    const room = plot.getBoundingClientRect().right - box.right;
    context.font = `${(11 * parseFloat(getComputedStyle(document.documentElement).fontSize)) / 16}px Inter`;
    return context.measureText("150").width + 8 <= room;
  };
  expect(await page.locator(".plot").evaluateAll(isNumberWhole)).toBe(true);
  await page.locator(".choose-label").click();
  await check("label choice", visit.button("Cancel"));
  await visit.tap("Cancel");
  await visit.tap("Back");
  await visit.settled();
  await page.locator(".results .bar-button").first().click();
  await visit.settled();

  await visit.tap("Options");
  await check("options", page.getByText("Send feedback"));
  for (const [row, part] of [
    ["Health records", visit.button("Save records as a file")],
    ["Terms", page.locator("article.text h2").first()],
    ["Questions and answers", page.locator("ion-accordion").first()],
  ] as const) {
    await page.getByText(row, { exact: true }).click();
    await check(row, part);
    await visit.tap("Back");
    await visit.settled();
  }
  await page.getByText("Send feedback").click();
  await check("mail", visit.heading("New mail"));
  await visit.tap("Cancel");
  await visit.tap("EDIT");
  await visit.still();
  const card = await bottomOf(page.locator(".alert-card"));
  // Not cut off by the card's edge, without scrolling.
  for (const button of ["Save", "Cancel"])
    expect(await bottomOf(visit.button(button)), button).toBeLessThanOrEqual(card);
  await check("email", visit.alert("Email"));
  await visit.tap("Cancel");
  await page.getByText("Introduction", { exact: true }).click();
  await check("introduction", visit.heading("Step 1: Calibrate"));
});

it("gives the focus back to what opened a sheet", async () => {
  const visit = await visitPage({ stored: storedHistory(history) });
  const { page } = visit;
  const expectFocus = (control: Locator, isFocused = true): Promise<void> =>
    expect.poll(() => control.evaluate((element) => element.matches(":focus"))).toBe(isFocused);
  const open = async (control: Locator): Promise<void> => {
    await control.press("Enter");
    await expectFocus(control, false);
  };
  await visit.open("results");
  const row = page.locator("ion-item button").nth(2);
  await open(row);
  await page.keyboard.press("Escape");
  await expectFocus(row);
  // The next row comes to where one is deleted.
  const next = (await page.locator(".result").nth(3).textContent()) ?? "";
  await open(row);
  await page.locator(".chooser .delete").press("Enter");
  await expect.poll(() => page.locator(".result").nth(2).textContent()).toBe(next);
  await expectFocus(row);
});

it("nothing moves for those whom motion makes ill", async () => {
  const visit = await visitPage({ reducedMotion: "reduce" });
  const { page } = visit;
  /** What the animations change that run from now on. */
  const changed = await page.evaluateHandle(() => {
    const properties = new Set<string>();
    const look = (): void => {
      for (const { effect } of document.getAnimations()) {
        for (const frame of (effect as KeyframeEffect).getKeyframes())
          for (const property of Object.keys(frame)) properties.add(property);
      }
      requestAnimationFrame(look);
    };
    look();
    return properties;
  });
  await visit.startMeasuring();
  await visit.tap("STOP");
  await visit.button("START").waitFor();
  await visit.open("options");
  await page.getByText("Introduction", { exact: true }).click();
  await visit.tap("Next");
  await visit.heading("Step 2: Ready").waitFor();
  await visit.tap("Skip");
  const properties = await changed.evaluate((all) => [...all]);
  expect(properties).toContain("opacity");
  const motions = ["height", "marginTop", "rotate", "scale", "transform", "translate"];
  expect(motions.filter((motion) => properties.includes(motion))).toEqual([]);
});
