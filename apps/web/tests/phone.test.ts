// The page as the server for phones in the same network hands it out.
import { expect, it, vi } from "vitest";

import { visitPage } from "./browser";

it("a phone gets the page encrypted, and tells of its camera where it is asked to", async () => {
  const printed = vi.spyOn(console, "info").mockImplementation(() => undefined);
  const lines = (): string => printed.mock.calls.map(([line]) => String(line)).join("\n");
  const visit = await visitPage({ byPhone: true, query: "?log&" });
  expect(lines()).toMatch(/^ {2}https:[^ ]+\/$/m);
  const statusOf = (path: string): Promise<number> =>
    visit.page.evaluate(async (asked) => (await fetch(asked)).status, path);
  expect(await statusOf("./nowhere")).toBe(404);
  expect(visit.problems.splice(0).join()).toContain("404");
  await visit.startMeasuring();
  for (const told of [/light on, exposure .*, \d\d frames, /, / {2}finger: \w+$/m]) {
    await expect.poll(lines, { timeout: 20_000 }).toMatch(told);
  }
  await visit.tap("STOP");
  await expect.poll(lines).toMatch(/light off$/m);
  expect(lines()).not.toMatch(/skipping|Using/);

  const silent = await visitPage({ byPhone: true, query: "?quiet" });
  await silent.startMeasuring();
  expect(await silent.page.locator('script[src*="report"]').count()).toBe(0);
  printed.mockRestore();
});
