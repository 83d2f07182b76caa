// The camera's track by itself, with a browser's parts that a test drives.
import { beforeEach, expect, it, vi } from "vitest";

import type { TrackCamera } from "../../../platform/web/camera";

type FrameCallback = (now: number, frame: object) => void;

/**
 * A track that takes each call for all that is to hold, and leaves out, without a word, a set that names the
 * torch beside something else.
 */
class LiteralTrack extends EventTarget {
  torch: boolean | readonly boolean[] = true;
  /** What becomes of a light that is asked for. */
  light: "comes" | "stays out" | "is refused" = "comes";
  settings: Record<string, unknown> = { width: 320, height: 240, frameRate: 30 };
  readyState = "live";
  enabled = true;

  getCapabilities(): object {
    return { torch: this.torch, exposureMode: ["manual", "continuous"] };
  }
  getSettings(): object {
    return { ...this.settings };
  }
  applyConstraints(asked: { width?: { ideal: number }; advanced: object[] }): Promise<void> {
    const [set = {}] = asked.advanced;
    if ("torch" in set && this.light === "is refused") return Promise.reject(new Error("heat"));
    const isMet = !("torch" in set) || (Object.keys(set).length === 1 && this.light === "comes");
    const [width, height] = asked.width ? [asked.width.ideal, 240] : [640, 480];
    this.settings = { width, height, frameRate: 30, ...(isMet ? set : {}) };
    return Promise.resolve();
  }
  stop(): void {
    this.readyState = "ended";
  }
}

let track: LiteralTrack;
/** What waits for the video's next frame. */
let awaited: Map<number, FrameCallback>;
let camera: TrackCamera;
/** Whether the browser tells that it remembers what the user has granted. */
let status: { state: string; onchange?(): void };
let sight: Record<string, unknown> & { visibilityState: string; change(): void };
const devices = { getUserMedia: vi.fn(), enumerateDevices: vi.fn() };
const answers = new Map<number, () => void>();
const listener = {
  settle: (pending: number): void => answers.get(pending)?.(),
  frameBuffer: (): Uint8Array => new Uint8Array(),
  takeFrame: vi.fn<(time: number) => void>(),
  torchRefused: vi.fn(),
  lost: vi.fn(),
  starved: vi.fn(),
  log: vi.fn(),
  frameTaken: vi.fn(),
};

beforeEach(async () => {
  vi.resetAllMocks();
  track = new LiteralTrack();
  awaited = new Map();
  let last = 0;
  const video = {
    setAttribute: vi.fn(),
    play: vi.fn(() => Promise.resolve()),
    pause: vi.fn(),
    requestVideoFrameCallback(callback: FrameCallback): number {
      awaited.set(++last, callback);
      return last;
    },
    cancelVideoFrameCallback: (which: number): boolean => awaited.delete(which),
    getContext: vi.fn(() => ({ drawImage: vi.fn(), getImageData: vi.fn(() => ({ data: [] })) })),
  };
  devices.getUserMedia.mockResolvedValue(streamOf(track));
  devices.enumerateDevices.mockRejectedValue(new TypeError("not told"));
  sight = {
    visibilityState: "visible",
    change: vi.fn(),
    createElement: vi.fn(() => video),
    body: { append: vi.fn() },
    addEventListener(_: string, changed: () => void): void {
      sight.change = changed;
    },
  };
  status = { state: "granted" };
  vi.stubGlobal("document", sight);
  vi.stubGlobal("HTMLVideoElement", { prototype: video });
  vi.stubGlobal("navigator", { mediaDevices: devices, permissions: { query: () => status } });
  camera = new (await import("../../../platform/web/camera")).TrackCamera(listener);
  await camera.prepare();
});

function streamOf(only: LiteralTrack): object {
  return {
    getVideoTracks: vi.fn(() => [only]),
    getTracks: vi.fn(() => [only]),
    get active(): boolean {
      return only.readyState === "live";
    },
  };
}

function open(): Promise<void> {
  track.readyState = "live";
  return new Promise((done) => {
    const pending = answers.size + 1;
    answers.set(pending, done);
    camera.open(pending);
  });
}

it("is opened once for all who want it, and closed with the last", async () => {
  await Promise.all([open(), open()]);
  await open();
  expect(devices.getUserMedia).toHaveBeenCalledTimes(1);
  expect(camera.isOpen()).toBe(true);
  camera.close();
  expect([camera.isOpen(), track.readyState]).toEqual([false, "ended"]);
  // Nor does one stay open that comes when nobody waits for it any more.
  const opened = open();
  camera.close();
  await opened;
  expect([camera.isOpen(), track.readyState]).toEqual([false, "ended"]);
});

it.each([
  { state: "prompt", asks: 1 },
  { state: "not told", asks: 1 },
  { state: "granted", asks: 3 },
])("asks the user once a visit, and holds no camera otherwise: %o", async ({ state, asks }) => {
  if (state === "not told") vi.stubGlobal("navigator", { mediaDevices: devices });
  else status.state = "prompt";
  await camera.prepare();
  vi.useFakeTimers();
  const isFree = async (): Promise<boolean> => {
    await vi.advanceTimersByTimeAsync(600_000);
    const isAtRest = !track.enabled && track.settings["torch"] !== true;
    expect(isAtRest || track.readyState === "ended").toBe(true);
    return track.readyState === "ended";
  };
  camera.request(0);
  await vi.advanceTimersByTimeAsync(1);
  status.state = state;
  status.onchange?.();
  expect(await isFree()).toBe(asks > 1);
  for (let measurements = 0; measurements < 2; ++measurements) {
    await open();
    await camera.setTorch(true);
    expect([camera.isTorchLit(), track.enabled || asks > 1]).toEqual([true, true]);
    void camera.setTorch(false);
    camera.close();
    expect(await isFree()).toBe(asks > 1);
  }
  expect(devices.getUserMedia).toHaveBeenCalledTimes(asks);
  sight.visibilityState = "hidden";
  sight.change();
  expect(track.readyState).toBe("ended");
  await open();
  camera.close();
  expect(track.readyState).toBe("ended");
  sight.visibilityState = "visible";
  await open();
  await camera.setTorch(true);
  track.light = "is refused";
  void camera.setTorch(false);
  camera.close();
  // A light that stays on goes out with its track.
  expect(await isFree()).toBe(true);
  vi.useRealTimers();
});

it("keeps its light and its size through modes that are set later", async () => {
  const kept = { width: 320, height: 240, frameRate: 30 };
  await open();
  await camera.setModes({ exposureMode: "continuous", focusMode: "manual" });
  expect(track.settings).toEqual({ ...kept, exposureMode: "continuous", focusMode: "manual" });
  expect(camera.mode("focusMode")).toBe("manual");
  await camera.setTorch(true);
  await camera.setModes({ exposureMode: "continuous" });
  expect(track.settings).toEqual({ ...kept, torch: true });
  expect(listener.torchRefused).not.toHaveBeenCalled();
  // The next one begins in the dark.
  camera.close();
  await open();
  await camera.setModes({ exposureMode: "continuous" });
  expect(track.settings).toEqual({ ...kept, exposureMode: "continuous" });
  const names = ["manual", "single-shot", "continuous"];
  const supported = names.filter((name) => camera.supports("exposureMode", name));
  expect(supported).toEqual(["manual", "continuous"]);
});

it("believes in a light when the track tells of it", async () => {
  for (const torch of [true, [false, true], false, [false]]) {
    track.torch = torch;
    await open();
    expect([camera.isOpen(), camera.hasTorch()]).toEqual([true, [torch].flat().includes(true)]);
    camera.close();
  }
  track.torch = true;
  await open();
  for (const light of ["stays out", "is refused"] as const) {
    track.light = light;
    listener.torchRefused.mockClear();
    await camera.setTorch(true);
    expect(listener.torchRefused, light).toHaveBeenCalledTimes(1);
  }
});

it("is the first rear camera with a torch, and the next one where that is asked for", async () => {
  status.state = "prompt";
  const facing = ["user", "", "environment", "environment", "environment"];
  const tracks = facing.map((_, number) => {
    const each = new LiteralTrack();
    each.torch = number === 2 || number === 4;
    each.settings["deviceId"] = `camera ${number}`;
    return each;
  });
  devices.enumerateDevices.mockResolvedValue(
    facing.map((mode, number) => ({
      kind: "videoinput",
      deviceId: `camera ${number}`,
      getCapabilities: (): object => ({ facingMode: [mode] }),
    })),
  );
  let asked = "";
  devices.getUserMedia.mockImplementation(
    ({ video }: { video: { deviceId?: { exact: string } } }) => {
      const number = Number(video.deviceId?.exact.slice(-1) ?? 1);
      asked += String(number);
      const each = tracks[number] ?? track;
      each.readyState = "live";
      return Promise.resolve(streamOf(each));
    },
  );
  const live = (): number[] =>
    tracks.flatMap(({ readyState }, number) => (readyState === "live" ? [number] : []));
  for (const each of tracks) each.stop();
  expect(camera.hasNext()).toBe(false);
  await open();
  expect([asked, live(), camera.hasNext()]).toEqual(["12", [2], true]);
  for (const [path, next] of [
    ["34", 4],
    // Those without a torch are known by now, and the one that was chosen stays so.
    ["2", 2],
    ["4", 4],
  ] as const) {
    camera.close();
    camera.useNext();
    asked = "";
    await open();
    expect([asked, live()]).toEqual([path, [next]]);
    camera.close();
    await open();
    expect(live()).toEqual([next]);
  }
});

it.each([
  ["its own time", [5, 5.5, 6, 8]],
  ["its exposures, where that stands still", [0, 0, 0, 0]],
])("takes each frame once, by %s", async (_clock, mediaTimes) => {
  await open();
  const show = (now: number, mediaTime: number, captureTime: number): void => {
    const callbacks = [...awaited.values()];
    awaited.clear();
    for (const each of callbacks) each(now, { mediaTime, captureTime, width: 4, height: 4 });
  };
  for (let starts = 0; starts < 2; ++starts) {
    camera.play();
    camera.play();
    // Some are shown later than others; the camera tells when each was exposed.
    [0, 500, 1000, 3000].forEach((exposed, index) => {
      show(exposed + 100 * index, mediaTimes[index] ?? NaN, exposed);
    });
    expect(listener.takeFrame.mock.calls.flat()).toEqual([0, 0.5, 1, 3]);
    listener.takeFrame.mockClear();
    camera.pause();
    show(4000, 9, 4000);
    expect(listener.takeFrame).not.toHaveBeenCalled();
  }
});

it("tells when it is on and no frame comes, until one does or none is wanted", async () => {
  await open();
  vi.useFakeTimers();
  const told = (): unknown[] => listener.starved.mock.calls.flat();
  const show = (): void => {
    const [[, take] = []] = awaited;
    awaited.clear();
    take?.(0, { mediaTime: 0, width: 4, height: 4 });
  };
  camera.play();
  for (let frame = 0; frame < 3; ++frame) {
    vi.advanceTimersByTime(1900);
    show();
  }
  expect(told()).toEqual([]);
  vi.advanceTimersByTime(60_000);
  show();
  expect(told()).toEqual([true, false]);
  vi.advanceTimersByTime(2000);
  camera.pause();
  vi.advanceTimersByTime(60_000);
  expect(told()).toEqual([true, false, true, false]);
  vi.useRealTimers();
});

it("is lost when its track ends, or is silent for more than a moment", async () => {
  await open();
  vi.useFakeTimers();
  const tell = (...events: string[]): void => {
    for (const type of events) track.dispatchEvent(new Event(type));
  };
  tell("mute", "unmute", "mute", "mute", "unmute");
  vi.advanceTimersByTime(60_000);
  tell("mute");
  vi.advanceTimersByTime(500);
  expect(listener.lost).not.toHaveBeenCalled();
  vi.advanceTimersByTime(60_000);
  expect(listener.lost).toHaveBeenCalledTimes(1);
  tell("ended");
  expect(listener.lost).toHaveBeenCalledTimes(2);
  camera.close();
  tell("ended");
  expect(listener.lost).toHaveBeenCalledTimes(2);
  vi.useRealTimers();
});

it.each([
  { error: "NotAllowedError", state: undefined, told: "denied" },
  { error: "NotAllowedError", state: "prompt", told: "prompt" },
  { error: "NotFoundError", state: "prompt", told: "granted" },
  { error: "SecurityError", state: "prompt", told: "prompt" },
])("tells how it is permitted: $error, $state", async ({ error, state, told }) => {
  vi.stubGlobal("navigator", {
    mediaDevices: devices,
    permissions: state && { query: (): object => ({ state }) },
  });
  await camera.prepare();
  devices.getUserMedia.mockRejectedValue(Object.assign(new Error(), { name: error }));
  await open();
  expect(camera.authorization()).toBe(told);
});
