// The elements of a screen by themselves, with a browser's parts that a test drives.
import { expect, it, vi } from "vitest";

vi.stubGlobal("window", { matchMedia: vi.fn(() => ({ matches: false })) });
const { ElementViews } = await import("../src/element_views");

it("what comes or goes ends once, or not when something else happens to it", () => {
  const playing: { onfinish: () => void; cancel: () => void }[] = [];
  const view = {
    style: { opacity: "" },
    inert: false,
    ariaBusy: "true",
    animate: vi.fn(() => {
      playing.push({ onfinish: vi.fn(), cancel: vi.fn() });
      return playing.at(-1);
    }),
  };
  const settled: [pending: number, answer: number][] = [];
  const elements = new Map([["stop", view as unknown as HTMLElement]]);
  const views = new ElementViews(elements, (...answer) => settled.push(answer));
  const expectView = (opacity: string, answers: typeof settled): void => {
    // What cannot be seen takes no taps.
    expect([view.style.opacity, view.inert]).toEqual([opacity, opacity === "0"]);
    expect(settled.splice(0)).toEqual(answers);
  };
  const pose = { opacity: 0.5, scale: 2, x: 3, y: 4 };
  views.animate("stop", 0.3, [pose], false, 1);
  const keyframe = { opacity: 0.5, transform: "translate(3px, 4px) scale(2)" };
  expect(view.animate).toHaveBeenLastCalledWith([keyframe], { duration: 300 });
  expectView("0", []);
  playing[0]?.onfinish();
  expectView("0", [[1, 1]]);
  // Already gone: it is not shown once more to go.
  views.animate("stop", 0.3, [pose], false, 2);
  expect(view.animate).toHaveBeenLastCalledWith([], { duration: 300 });
  views.animate("stop", 0.3, [pose], true, 3);
  expect(playing[1]?.cancel).toHaveBeenCalled();
  expectView("1", [[2, 0]]);
  views.setOpacity("stop", 0);
  expectView("0", [[3, 0]]);
  // Their ends were on the way already.
  for (const { onfinish } of playing) onfinish();
  expectView("0", []);
  expect(view.ariaBusy).toBeNull();
  views.animate("elsewhere", 0.3, [], true, 4);
  expectView("0", [[4, 1]]);
});
