// What is stored outlasts a full store, and a damaged one.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { LocalStorage } from "../../../platform/web/storage";
import { acquainted, visitPage } from "./browser";

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
  await visit.swipe("right");
  await visit.heading("Damaged data").waitFor();
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
      .map((key) => JSON.parse(localStorage.getItem(key) ?? "") as string),
  );
  expect(kept).toEqual([damaged]);
});

it("makes all changes that belong together, or none", () => {
  const items = new Map([["veyla/first", "before"]]);
  const localStorage = {
    getItem: (key: string): string | null => items.get(key) ?? null,
    setItem(key: string, text: string): void {
      if (text.length > 6) throw new Error("too large");
      items.set(key, text);
    },
    removeItem: (key: string): boolean => items.delete(key),
  };
  Object.assign(globalThis, { window: { localStorage } });
  const storage = new LocalStorage(() => undefined);
  const failure = storage.write([
    ["first", "after"],
    ["second", "new"],
    ["third", "too large"],
  ]);
  expect(failure).toContain("refuses");
  expect([...items]).toEqual([["veyla/first", "before"]]);
});
