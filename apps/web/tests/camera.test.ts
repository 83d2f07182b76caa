// The camera's track by itself, on the browser's own generated camera.
import { fileURLToPath } from "node:url";

import type { JSHandle } from "playwright-core";
import { build } from "vite";
import { expect, it } from "vitest";

import type { CameraListener, TrackCamera } from "../../../platform/web/camera";
import { type Visitor, visitPage } from "./browser";

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
  readonly camera: TrackCamera;
  readonly track: MediaStreamTrack;
  readonly told: { frames: number; refusals: number; lines: string[] };
}

/** Opens a camera in the page, beside the application's. */
async function open(torch: NonNullable<Visitor["torch"]>): Promise<JSHandle<Held>> {
  const { context, page } = await visitPage({ camera: "generated", torch });
  const body = await cameraScript();
  // Inline ones are refused by the page's policy.
  await context.route("**/tested.js", (route) =>
    route.fulfill({ contentType: "text/javascript", body }),
  );
  await page.addScriptTag({ url: "/tested.js" });
  return page.evaluateHandle(async () => {
    const { TrackCamera } = (window as unknown as Tested).tested;
    const told: Held["told"] = { frames: 0, refusals: 0, lines: [] };
    const camera = await new Promise<TrackCamera>((opened) => {
      const opening: TrackCamera = new TrackCamera({
        settle: (): void => {
          opening.play();
          opened(opening);
        },
        frameBuffer: (width, height) => new Uint8Array(width * height * 4),
        takeFrame: () => ++told.frames,
        torchRefused: () => ++told.refusals,
        lost: () => undefined,
        log: (line) => told.lines.push(line),
        frameTaken: () => undefined,
      });
      opening.open(0);
    });
    const streams = [...document.querySelectorAll("video")].map(({ srcObject }) => srcObject);
    const stream = streams.find((each) => each instanceof MediaStream);
    const [track] = stream?.getVideoTracks() ?? [];
    if (!track) throw new Error("no track");
    return { camera, track, told };
  });
}

it("keeps its light and its size through modes that are set later, and through a pause", async () => {
  const held = await open("literal");
  const seen = await held.evaluate(async ({ camera, track, told }) => {
    const witness = document.createElement("video");
    witness.srcObject = new MediaStream([track]);
    witness.muted = true;
    await witness.play();
    const states: string[] = [];
    /** Also counts those taken while the track itself shows ten. */
    const look = async (): Promise<void> => {
      const before = told.frames;
      for (let shown = 0; shown < 10; ++shown)
        await new Promise((next) => witness.requestVideoFrameCallback(next));
      const frames = told.frames - before > 2 ? "frames" : told.frames - before;
      const { width, height } = track.getSettings();
      const light = camera.isTorchLit() ? "lit" : "dark";
      states.push(`${track.readyState} ${light} ${width} ${height} ${frames}`);
    };
    await camera.setModes({ exposureMode: "continuous" });
    await look();
    await camera.setTorch(true);
    await look();
    await camera.setModes({ exposureMode: "continuous", focusMode: "manual" });
    await look();
    camera.pause();
    await look();
    camera.play();
    await look();
    return { states, refusals: told.refusals };
  });
  const lit = "live lit 320 240 frames";
  const states = ["live dark 320 240 frames", lit, lit, "live lit 320 240 0", lit];
  expect(seen).toEqual({ states, refusals: 0 });
});

it("names modes as the browser does, and tells of a torch that is not there", async () => {
  const held = await open(false);
  const seen = await held.evaluate(async ({ camera, track, told }) => {
    const names = ["manual", "single-shot", "continuous"];
    const supported = names.filter((name) => camera.supports("exposureMode", name));
    await camera.setModes({ exposureMode: "continuous", focusMode: "manual" });
    const { advanced } = track.getConstraints();
    const lines = [...told.lines];
    await camera.setTorch(true);
    return { supported, advanced, lines, focus: camera.mode("focusMode"), refusals: told.refusals };
  });
  expect(seen).toEqual({
    supported: ["manual", "continuous"],
    advanced: [{ exposureMode: "continuous", focusMode: "manual" }],
    lines: [],
    focus: "manual",
    refusals: 1,
  });
});
