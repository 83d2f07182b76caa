// What is stored outlasts a full store, and a damaged one.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { LocalStorage } from "../../../platform/web/storage";
import { acquainted, storedHistory, type Visit, visitPage } from "./browser";

it("a full store tells what was not saved and loses nothing", async () => {
  const stored = { ...acquainted, "veyla/email": '"a@b.de"' };
  const visit = await visitPage({ stored });
  const { page } = visit;
  await page.evaluate(() => {
    // All the room that there is, in ever smaller pieces.
    for (let size = 1 << 22; size > 0; size = Math.floor(size / 2)) {
      for (let piece = 0; ; ++piece) {
        try {
          localStorage.setItem(`filler ${size} ${piece}`, "x".repeat(size));
        } catch {
          break;
        }
      }
    }
  });
  await visit.open("options");
  await visit.tap("EDIT");
  await page.getByRole("textbox").fill("somebody.else@example.org");
  await visit.tap("Save");
  await visit.heading("Not saved").waitFor();
  await page.getByText("storage for the page is full").waitFor();
  await visit.inspect("storage-full");
  expect(await visit.stored("email")).toBe('"a@b.de"');
});

it("a damaged history is told, kept as it is, and can be saved and set aside", async () => {
  const damaged = '[{"hr":61.5,"spo2":97.25},{"hr":7';
  const visit = await visitPage({ stored: { ...acquainted, "veyla/values": damaged } });
  const { page } = visit;
  await visit.open("options");
  await page.getByText("Back up", { exact: true }).click();
  await visit.heading("Damaged data").waitFor();
  await page.getByText("Nothing backed up").waitFor();
  await visit.settled();
  await visit.inspect("storage-damaged");
  const [download] = await Promise.all([page.waitForEvent("download"), visit.tap("Save a copy")]);
  expect(readFileSync(await download.path(), "utf8")).toBe(damaged);
  expect(await visit.stored("values")).toBe(damaged);

  await visit.tap("Set it aside");
  await expect.poll(() => visit.stored("values")).toBeNull();
  const kept = await page.evaluate(() =>
    Object.keys(localStorage)
      .filter((key) => key.startsWith("veyla/damaged values"))
      .map((key) => localStorage.getItem(key)),
  );
  expect(kept).toEqual([damaged]);
});

it("makes all changes that belong together or none, and gives up nothing that it cannot read", () => {
  const items = new Map([["veyla/first", "before"]]);
  const room = 20;
  const done: string[] = [];
  let isClosed = false;
  const localStorage = {
    getItem(key: string): string | null {
      if (isClosed) throw new Error("closed");
      return items.get(key) ?? null;
    },
    setItem(key: string, text: string): void {
      const all = new Map(items).set(key, text);
      if ([...all.values()].join("").length > room)
        throw new DOMException("", "QuotaExceededError");
      items.set(key, text);
      done.push(`set ${key}`);
    },
    removeItem(key: string): void {
      items.delete(key);
      done.push(`remove ${key}`);
    },
  };
  const told: string[] = [];
  const opened = (kept: unknown): LocalStorage => {
    Object.assign(globalThis, { navigator: {}, window: { localStorage: kept } });
    return new LocalStorage((_key, line) => told.push(line));
  };
  const storage = opened(localStorage);
  const moved = (from: string, to: string, text: string): string =>
    storage.write(Object.entries({ [from]: null, [to]: text }));
  const long = "x".repeat(11);
  expect(moved("first", "second", long)).toBe("");
  expect(done).toEqual(["set veyla/second", "remove veyla/first"]);
  // There is room for one of them.
  expect(moved("second", "third", long)).toBe("");
  expect([...items]).toEqual([["veyla/third", long]]);
  // What was taken before the last one was refused is given back.
  const tooMuch = { third: "after", fourth: "new", fifth: "x".repeat(room) };
  expect(storage.write(Object.entries(tooMuch))).toContain("full");
  expect(moved("third", "fourth", "x".repeat(room + 1))).toContain("full");
  expect([...items]).toEqual([["veyla/third", long]]);

  isClosed = true;
  expect(storage.read("third")).toBeNull();
  expect(storage.write([["third", "new"]])).toContain("does not give out");
  expect(items.get("veyla/third")).toBe(long);
  expect(told).toHaveLength(1);

  expect(opened(null).lasts).toBe(false);
});

it("a second window takes over when it is told to, and the first one rests until it is", async () => {
  const first = await visitPage();
  await first.startMeasuring();
  const second = await first.context.newPage();
  const useIt = (page: typeof second): Promise<void> =>
    page.getByRole("button", { name: "Use it here" }).click();
  await second.goto(first.page.url());
  await second.getByText("Open in another window").waitFor();
  expect(await second.locator(".measuring-grid").count()).toBe(0);
  await useIt(second);
  await second.locator(".measuring-grid").waitFor();

  await first.heading("Continued in another window").waitFor();
  await expect.poll(() => first.torch()).toEqual([true, false]);
  await first.page.keyboard.press("Escape");
  // What lies below is of no account, and not seen.
  const cover = (sheet: Element): string => getComputedStyle(sheet, "::backdrop").backgroundColor;
  expect(await first.page.locator(".resting").evaluate(cover)).toBe("rgb(255, 255, 255)");
  await first.inspect("another-window");
  await useIt(first.page);
  await first.button("START").waitFor();
  await second.getByText("Continued in another window").waitFor();
  // Without being wanted again it asks.
  await first.page.reload();
  await first.button("START").waitFor();
  await second.reload();
  await second.getByText("Open in another window").waitFor();
});

it("offers the home screen from the second measurement on, until that is answered", async () => {
  const entries = [1, 2].map((hour) => ({
    hr: 60 + hour,
    spo2: 97,
    date: 1_700_000_000 + 3600 * hour,
  }));
  const opened = async (count: number, userAgent: string, isKept = false): Promise<Visit> => {
    const visit = await visitPage({ stored: storedHistory(entries.slice(0, count)), userAgent });
    await visit.page.evaluate((kept) => {
      StorageManager.prototype.persisted = (): Promise<boolean> => Promise.resolve(kept);
    }, isKept);
    await visit.open("results");
    return visit;
  };
  const offer = "Veyla on your home screen";
  const android = "Mozilla/5.0 (Linux; Android 14)";
  expect(await (await opened(1, android)).heading(offer).count()).toBe(0);
  for (const [userAgent, way, why, isKept] of [
    [android, "Open the browser's menu", "and keeps what you measure", true],
    [
      "Mozilla/5.0 (iPhone; CPU iPhone OS 17_5 like Mac OS X)",
      "Tap the browser's Share symbol",
      "This browser may erase what you measure",
      false,
    ],
  ] as const) {
    const visit = await opened(2, userAgent, isKept);
    await visit.heading(offer).waitFor();
    await visit.page.getByText(why).waitFor();
    await visit.tap("How");
    expect(await visit.button("Not now").evaluate((each) => each.matches(":focus"))).toBe(true);
    await visit.page.getByText(way).waitFor();
    await visit.inspect("home-card");
    // It makes way for what is being edited.
    await visit.tap("Edit");
    expect(await visit.heading(offer).isVisible()).toBe(false);
    await visit.tap("Done");
    await visit.tap("Not now");
    expect(await visit.heading(offer).count()).toBe(0);
    await visit.page.reload();
    await visit.button("START").waitFor();
    await visit.open("results");
    expect(await visit.heading(offer).count()).toBe(0);
  }
});
