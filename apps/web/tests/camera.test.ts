// The camera's track by itself, on the browser's own generated camera.
import { fileURLToPath } from "node:url";

import { build } from "vite";
import { expect, it } from "vitest";

import type { CameraListener, TrackCamera } from "../../../platform/web/camera";
import { type Visit, type Visitor, visitPage } from "./browser";

/** The camera as a script that leaves it on the window, under the name of `tested`. */
async function cameraScript(): Promise<string> {
  const entry = fileURLToPath(new URL("../../../platform/web/camera.ts", import.meta.url));
  const built = await build({
    configFile: false,
    logLevel: "error",
    build: { write: false, lib: { entry, formats: ["iife"], name: "tested" } },
  });
  const [bundle] = [built].flat();
  return bundle && "output" in bundle ? bundle.output[0].code : "";
}

interface Tested {
  readonly tested: { readonly TrackCamera: new (listener: CameraListener) => TrackCamera };
}
interface Held {
  camera: TrackCamera;
  track: MediaStreamTrack;
  told: { frames: number; refusals: number; lines: string[] };
}

/** Opens a camera in the page, beside the application's, and keeps it there. */
async function open(torch: NonNullable<Visitor["torch"]>): Promise<Visit> {
  const visit = await visitPage({ camera: "generated", torch });
  const body = await cameraScript();
  // Inline ones are refused by the page's policy.
  await visit.context.route("**/tested.js", (route) =>
    route.fulfill({ contentType: "text/javascript", body }),
  );
  await visit.page.addScriptTag({ url: "/tested.js" });
  await visit.page.evaluate(async () => {
    const { TrackCamera } = (window as unknown as Tested).tested;
    const told: Held["told"] = { frames: 0, refusals: 0, lines: [] };
    await new Promise<void>((opened) => {
      const listener: CameraListener = {
        settle: () => {
          camera.play();
          opened();
        },
        frameBuffer: (width, height) => new Uint8Array(width * height * 4),
        takeFrame: () => ++told.frames,
        torchRefused: () => ++told.refusals,
        lost: () => undefined,
        log: (line) => told.lines.push(line),
        frameTaken: () => undefined,
      };
      const camera = new TrackCamera(listener);
      Object.assign(window, { held: { camera, told } });
      camera.open(0);
    });
    const videos = [...document.querySelectorAll("video")];
    const stream = videos.map((video) => video.srcObject).find((source) => source !== null);
    const [track] = (stream as MediaStream).getVideoTracks();
    Object.assign((window as unknown as { held: Held }).held, { track });
  });
  return visit;
}

it("keeps its light and its size through modes that are set later, and through a pause", async () => {
  const visit = await open("literal");
  const seen = await visit.page.evaluate(async () => {
    const { camera, track, told } = (window as unknown as { held: Held }).held;
    const witness = document.createElement("video");
    witness.srcObject = new MediaStream([track]);
    witness.muted = true;
    await witness.play();
    /** Those taken while the track itself shows ten. */
    const framesTaken = async (): Promise<number> => {
      const before = told.frames;
      for (let shown = 0; shown < 10; ++shown)
        await new Promise((next) => witness.requestVideoFrameCallback(next));
      return told.frames - before;
    };
    const state = (): string => {
      const { width, height } = track.getSettings();
      return [track.readyState, camera.isTorchLit() ? "lit" : "dark", width, height].join(" ");
    };
    const states: string[] = [];
    await camera.setModes({ exposureMode: "continuous" });
    states.push(state());
    await camera.setTorch(true);
    states.push(state());
    await camera.setModes({ exposureMode: "continuous", focusMode: "manual" });
    states.push(state());
    const frames = [await framesTaken()];
    camera.pause();
    frames.push(await framesTaken());
    camera.play();
    frames.push(await framesTaken());
    states.push(state());
    return { states, frames, told };
  });
  const lit = "live lit 320 240";
  expect(seen.states).toEqual(["live dark 320 240", lit, lit, lit]);
  const [before = 0, paused, again = 0] = seen.frames;
  expect(before).toBeGreaterThan(2);
  expect(paused).toBe(0);
  expect(again).toBeGreaterThan(2);
  expect(seen.told.refusals).toBe(0);
});

it("names modes as the browser does, and tells of a torch that is not there", async () => {
  const visit = await open(false);
  const seen = await visit.page.evaluate(async () => {
    const { camera, track, told } = (window as unknown as { held: Held }).held;
    const names = ["manual", "single-shot", "continuous"];
    const supported = names.filter((name) => camera.supports("exposureMode", name));
    await camera.setModes({ exposureMode: "continuous", focusMode: "manual" });
    const { advanced } = track.getConstraints();
    const refused = [...told.lines];
    await camera.setTorch(true);
    return { supported, advanced, refused, focus: camera.mode("focusMode"), told };
  });
  expect(seen.supported).toEqual(["manual", "continuous"]);
  expect(seen.refused).toEqual([]);
  expect(seen.advanced).toEqual([{ exposureMode: "continuous", focusMode: "manual" }]);
  expect(seen.focus).toBe("manual");
  expect(seen.told.refusals).toBe(1);
});
