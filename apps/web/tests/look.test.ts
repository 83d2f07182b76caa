// What the core decides about looks is what the phone shows: each number, colour and text is compared
// with what the core itself says.
import { expect, it } from "vitest";

import type { AccessoryButton, AlertShown, Appearance, ChartSettings } from "../src/page";
import { storedHistory, type Visit, visitPage } from "./browser";
import { coreAlone, listener, type Said } from "./core_alone";

const history = storedHistory([{ hr: 60, spo2: 97, date: Math.floor(Date.now() / 1000) }]);

/** Properties of an element as they are shown, of one of its parts where `part` names it. */
function shown(visit: Visit, selector: string, names: string, part?: string): Promise<string[]> {
  return visit.page
    .locator(selector)
    .first()
    .evaluate(
      (element, [asked, pseudo]) => {
        const style = getComputedStyle(element, pseudo);
        return asked.split(" ").map((name) => style.getPropertyValue(name));
      },
      [names, part] as const,
    );
}

/** Of what a widget has drawn: how much of its canvas is covered, and how bright that is, 0 to 1. */
function inkOf(visit: Visit, widget: string): Promise<{ covered: number; bright: number }> {
  return visit.element(widget).evaluate((element) => {
    const { width, height } = element as HTMLCanvasElement;
    const context = (element as HTMLCanvasElement).getContext("2d");
    const pixels = new Uint32Array(context?.getImageData(0, 0, width, height).data.buffer ?? []);
    const covered = [...pixels].filter((pixel) => pixel >>> 24 > 128);
    const green = covered.reduce((sum, pixel) => sum + ((pixel >>> 8) & 255) / 255, 0);
    return { covered: covered.length / pixels.length, bright: green / covered.length };
  });
}

it("shows what the core says", async () => {
  const said: Said[] = [];
  const last = (name: string): readonly unknown[] =>
    said.findLast((each) => each.name === name)?.values ?? [];
  const core = await coreAlone(said, history);
  core.launch();
  const [appearance] = last("setAppearance") as [Appearance];
  const visit = await visitPage({ stored: history });
  const { page } = visit;
  const expectColor = async (selector: string, name: string, color: string): Promise<void> => {
    // As the browser tells it.
    const told = await page.evaluate(
      (text) => Object.assign(new Option().style, { color: text }).color,
      color,
    );
    expect(await shown(visit, selector, name), `${selector} ${name}`).toEqual([told]);
  };

  // The measuring screen, by day and by night, and the introduction.
  const captions = Object.values(core.captions() as unknown as Record<string, string>);
  const texts = await page.locator(".measuring :is(h2, .unit, .round)").allTextContents();
  expect(texts.sort()).toEqual(captions.sort());
  await expectColor(".measuring ion-title", "color", appearance.navigationBarTitle);
  const day = await inkOf(visit, "gaugeHR");
  expect(day).not.toEqual(await inkOf(visit, "gaugeSpo2"));
  expect((await inkOf(visit, "circleprogressSpo2")).covered).toBeGreaterThan(0.3);
  await page.emulateMedia({ colorScheme: "dark" });
  await visit.still();
  expect((await inkOf(visit, "gaugeHR")).bright).toBeGreaterThan(day.bright + 0.2);
  await page.emulateMedia({ colorScheme: "light" });
  await visit.open("options");
  await page.getByText("Introduction", { exact: true }).click();
  await visit.still();
  await expectColor(".dots", "background-color", appearance.pageIndicatorBackground);
  await expectColor(".dot.current", "background-color", core.intro().currentDotColor());
  await expectColor(".dot:not(.current)", "background-color", appearance.pageIndicatorDot);
  await visit.tap("Skip");

  // The options.
  const options = core.options(listener(said));
  options.viewDidLoad();
  const [, edit] = last("setAccessoryButton") as [string, AccessoryButton];
  const button = "font-weight font-size background-image";
  const [weight, size, image] = await shown(visit, ".accessory", button);
  expect(image).toContain("gradient");
  expect(await page.locator(".accessory").textContent()).toBe(edit.title);
  await expectColor(".accessory", "color", edit.titleColor);
  await expectColor(".accessory", "background-color", edit.background);
  expect(`${weight} ${size}`).toBe(edit.font);
  await expectColor(".options .bar-button", "color", appearance.navigationBarTint);
  options.accessoryButtonTapped();
  const [, alert] = last("show") as [number, AlertShown];
  await visit.tap(edit.title);
  const { show, hide, background } = alert.style;
  const dialog = `.alert.show-${show}.hide-${hide}.${background}`;
  expect(await shown(visit, dialog, "backdrop-filter", "::backdrop")).toEqual([
    expect.stringContaining(background),
  ]);
  expect(await shown(visit, dialog, "--from")).toEqual(["60vh"]);
  await expectColor(`${dialog} .badge`, "background-color", alert.color);
  await expectColor(`${dialog} .badge`, "color", alert.iconTint);
  await visit.tap("Cancel");
  await visit.tap("Close");
  await visit.settled();

  // The results.
  await visit.open("results");
  const height = async (selector: string): Promise<number> =>
    (await page.locator(selector).first().boundingBox())?.height ?? NaN;
  const listHeight = await height(".results ion-content");
  const results = core.results(listener(said, { listHeight: () => listHeight }));
  results.viewDidLoad();
  const look = results.look();
  expect(await height(".results-list ion-item")).toBe(look.listRowHeight);
  await page.locator(".result").click();
  await visit.still();
  expect(await height(".label-row")).toBe(look.chooserRowHeight);
  expect(await height(".control-row")).toBe(look.chooserRowHeight);
  const corners = await shown(visit, ".chooser", "border-radius");
  expect(corners).toEqual([`${look.chooserCornerRadius}px`]);
  await expectColor(".dim", "background-color", look.dimColor);
  await expectColor(".label-row ion-icon", "color", appearance.tableCellTint);
  await page.locator(".chooser .close").click();
  const swipe = await shown(visit, "ion-item-option", "--background");
  expect(swipe).toEqual([results.swipeAction().background]);
  await visit.tap("Edit");
  await page.locator(".result").click();
  results.tapEditButton();
  results.didSelectRow(0, 0);
  const [upward, shorter] = last("slideToolbar") as [number, number];
  await expect.poll(() => height(".results ion-content")).toBe(shorter);
  expect(await height(".results-toolbar")).toBe(upward);
  await visit.tap("Done");
  await expect.poll(() => height(".results ion-content")).toBe(listHeight);

  // The charts.
  const views = { display: listener(said), heartrate: listener(said), spo2: listener(said) };
  const charts = core.charts(views);
  charts.viewDidLoad();
  charts.viewWillAppear();
  const [settings] = last("configure") as [ChartSettings];
  await visit.tap("Chart");
  await page.locator(`.legend-mark.${settings.legendForm}`).first().waitFor();
  const indicator = "ion-segment-button [part=indicator-background]";
  await expectColor(indicator, "border-color", appearance.segmentedControlTint);
});
