// What the core decides about looks is what the phone shows: each number, colour and text is compared
// with what the core itself says.
import { afterAll, beforeAll, expect, it } from "vitest";

import type { AlertShown, Appearance, AccessoryButton, ChartSettings } from "../src/page";
import { PhoneBrowser, recording, type Visit } from "./browser";
import { coreAlone, listener, type Said } from "./core_alone";
import { storedHistory } from "./stored_history";

let phone: PhoneBrowser;
beforeAll(async () => {
  phone = await PhoneBrowser.open({ camera: recording("72") });
});
afterAll(() => phone.close());

const history = storedHistory([{ hr: 60, spo2: 97, date: Math.floor(Date.now() / 1000) }]);

/** The properties of an element as they are shown, of one of its parts where `part` names it. */
function shown<Name extends string>(
  visit: Visit,
  selector: string,
  names: readonly Name[],
  part?: string,
): Promise<Record<Name, string>> {
  return visit.page
    .locator(selector)
    .first()
    .evaluate(
      (element, [asked, pseudo]) => {
        const style = getComputedStyle(element, pseudo);
        const entries = asked.map((name) => [name, style.getPropertyValue(name)]);
        return Object.fromEntries(entries) as Record<Name, string>;
      },
      [names, part] as const,
    );
}

/** A colour as the browser tells it. */
function css(color: string): string {
  const [red = "", green = "", blue = "", alpha = "1"] = color.match(/[\d.]+/g) ?? [];
  const isOpaque = Number(alpha) === 1;
  const parts = [red, green, blue, ...(isOpaque ? [] : [alpha])];
  return `${isOpaque ? "rgb" : "rgba"}(${parts.join(", ")})`;
}

it("shows what the core says", async () => {
  const said: Said[] = [];
  const last = (name: string): readonly unknown[] =>
    said.findLast((each) => each.name === name)?.values ?? [];
  const core = await coreAlone(said, history);
  core.launch();
  const [appearance] = last("setAppearance") as [Appearance];
  const visit = await phone.visit({ stored: history });
  const { page } = visit;

  // The measuring screen and the introduction.
  const captions = Object.values(core.captions() as unknown as Record<string, string>);
  const texts = await page.locator(".measuring :is(h2, .unit, .round)").allTextContents();
  expect(texts.sort()).toEqual(captions.sort());
  expect((await shown(visit, ".measuring ion-title", ["color"])).color).toBe(
    css(appearance.navigationBarTitle),
  );
  await visit.swipe("left");
  await page.getByText("Introduction", { exact: true }).click();
  await visit.still();
  const dots = { ground: await shown(visit, ".dots", ["background-color"]) };
  expect(dots.ground["background-color"]).toBe(css(appearance.pageIndicatorBackground));
  expect((await shown(visit, ".dot.current", ["background-color"]))["background-color"]).toBe(
    css(core.intro().currentDotColor()),
  );
  expect((await shown(visit, ".dot:not(.current)", ["background-color"]))["background-color"]).toBe(
    css(appearance.pageIndicatorDot),
  );
  await page.locator(".skip").click();

  // The options.
  const options = core.options(listener(said));
  options.viewDidLoad();
  const [, edit] = last("setAccessoryButton") as [string, AccessoryButton];
  const button = ["color", "background-color", "background-image", "font-weight", "font-size"];
  const { "background-image": image, ...others } = await shown(visit, ".accessory", button);
  expect(image).toContain("gradient");
  expect(await page.locator(".accessory").textContent()).toBe(edit.title);
  expect(Object.values(others)).toEqual([
    css(edit.titleColor),
    css(edit.background),
    ...edit.font.split(" "),
  ]);
  expect((await shown(visit, ".options .bar-button", ["color"])).color).toBe(
    css(appearance.navigationBarTint),
  );
  options.accessoryButtonTapped();
  const [, alert] = last("show") as [number, AlertShown];
  await page.getByRole("button", { name: edit.title }).click();
  const dialog = `.alert.show-${alert.style.show}.hide-${alert.style.hide}.${alert.style.background}`;
  const backdrop = await shown(visit, dialog, ["backdrop-filter"], "::backdrop");
  expect(backdrop["backdrop-filter"]).toContain(alert.style.background);
  expect((await shown(visit, dialog, ["--from"]))["--from"]).toBe("60vh");
  const badge = await shown(visit, `${dialog} .badge`, ["background-color", "color"]);
  expect(Object.values(badge)).toEqual([css(alert.color), css(alert.iconTint)]);
  await page.getByRole("button", { name: "Cancel" }).click();
  await page.getByRole("button", { name: "Close" }).click();
  await visit.settled();

  // The results.
  await visit.swipe("right");
  await page.getByRole("button", { name: "Edit" }).waitFor();
  await visit.settled();
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
  const corners = await shown(visit, ".chooser", ["border-radius"]);
  expect(corners["border-radius"]).toBe(`${look.chooserCornerRadius}px`);
  const dim = await shown(visit, ".dim", ["background-color"]);
  expect(dim["background-color"]).toBe(css(look.dimColor));
  expect((await shown(visit, ".label-row ion-icon", ["color"])).color).toBe(
    css(appearance.tableCellTint),
  );
  await page.getByRole("button", { name: "Close" }).last().click();
  const swipe = await shown(visit, "ion-item-option", ["--background"]);
  expect(swipe["--background"]).toBe(results.swipeAction().background);
  await page.getByRole("button", { name: "Edit" }).click();
  await page.locator(".result").click();
  results.tapEditButton();
  results.didSelectRow(0, 0);
  const [upward, shorter] = last("slideToolbar") as [number, number];
  await expect.poll(() => height(".results ion-content")).toBe(shorter);
  expect(await height(".results-toolbar")).toBe(upward);
  await page.getByRole("button", { name: "Done" }).click();
  await expect.poll(() => height(".results ion-content")).toBe(listHeight);

  // The charts.
  const charts = core.charts({
    display: listener(said),
    heartrate: listener(said),
    spo2: listener(said),
  });
  charts.viewDidLoad();
  charts.viewWillAppear();
  const [settings] = last("configure") as [ChartSettings];
  await page.getByRole("button", { name: "Chart" }).click();
  await page.locator(`.legend-mark.${settings.legendForm}`).first().waitFor();
  const indicator = "ion-segment-button [part=indicator-background]";
  expect((await shown(visit, indicator, ["border-color"]))["border-color"]).toBe(
    css(appearance.segmentedControlTint),
  );
});
