// The screen kept awake, by a browser whose answers a test gives.
import { expect, it, vi } from "vitest";

import { ScreenWaker } from "../../../platform/web/page_life";

it("holds one lock at most, and none when the answer comes too late", async () => {
  const answers: (() => void)[] = [];
  let held = 0;
  const request = (): Promise<object> =>
    new Promise((answer) => {
      answers.push(() => {
        ++held;
        answer({ release: () => Promise.resolve(--held) });
      });
    });
  vi.stubGlobal("navigator", { wakeLock: { request } });
  vi.stubGlobal("document", { visibilityState: "visible", addEventListener: vi.fn() });
  const waker = new ScreenWaker();
  for (const [wishes, holds] of [
    [[true, true], 1],
    [[false], 0],
    [[true, false], 0],
    [[true, false, true], 1],
  ] as const) {
    for (const wish of wishes) waker.setIdleTimerDisabled(wish);
    for (const answer of answers.splice(0)) answer();
    await vi.waitFor(() => {
      expect(held, wishes.join()).toBe(holds);
    });
  }
});
