// In the page, and only where the phone's own server has put it: tells that server once a second what
// the camera does, and the core's lines beside it.

interface LightAndExposure extends MediaTrackSettings {
  torch?: boolean;
  exposureMode?: string;
  /** Units of 100 µs. */
  exposureTime?: number;
  iso?: number;
}

const lines: string[] = [];
let track: MediaStreamTrack | undefined;
/** Milliseconds: when each frame of this second came, and what the page did with it. */
let came: number[] = [];
let work: number[] = [];

const { info } = console;
console.info = (...what: unknown[]): void => {
  info(...what);
  const line = what.join(" ");
  // The core's lines for each frame and estimate would drown the others.
  if (/^(finger: |the camera|Tapped |Done )/.test(line)) lines.push(line);
};

const devices = MediaDevices.prototype;
const open: typeof devices.getUserMedia = Reflect.get(devices, "getUserMedia");
devices.getUserMedia = async function (constraints): Promise<MediaStream> {
  const stream = await open.call(this, constraints);
  track = stream.getVideoTracks()[0] ?? track;
  lines.push(`camera: ${track?.label ?? "none"}`);
  return stream;
};

const videos = HTMLVideoElement.prototype;
const onFrame = Reflect.get(videos, "requestVideoFrameCallback") as
  typeof videos.requestVideoFrameCallback | undefined;
if (onFrame) {
  videos.requestVideoFrameCallback = function (callback): number {
    return onFrame.call(this, (now, metadata) => {
      const began = performance.now();
      callback(now, metadata);
      came.push(now);
      work.push(performance.now() - began);
    });
  };
}

const milliseconds = (value: number): string => `${value.toFixed(1)} ms`;

function cameraNow(open: MediaStreamTrack): string {
  const { torch, exposureMode, exposureTime, iso, width, height } =
    open.getSettings() as LightAndExposure;
  const apart = came.slice(1).map((time, i) => time - (came[i] ?? time));
  const mean = work.reduce((sum, each) => sum + each, 0) / Math.max(work.length, 1);
  const parts = [
    `light ${torch === undefined ? "unknown" : torch ? "on" : "off"}`,
    `exposure ${exposureMode ?? "unknown"}`,
    ...(exposureTime === undefined ? [] : [milliseconds(exposureTime / 10)]),
    ...(iso === undefined ? [] : [`ISO ${iso}`]),
    `${width ?? "?"} x ${height ?? "?"}`,
    `${came.length} frames`,
    ...(apart.length === 0 ? [] : [`at most ${milliseconds(Math.max(...apart))} apart`]),
    `${milliseconds(mean)} of work each`,
  ];
  return parts.join(", ");
}

setInterval(() => {
  if (track?.readyState === "live") {
    lines.push(cameraNow(track));
  } else if (track) {
    lines.push("the camera is closed, its light off");
    track = undefined;
  }
  came = [];
  work = [];
  if (lines.length === 0) return;
  const body = lines.splice(0).join("\n");
  void fetch("./report", { method: "POST", body }).catch(() => {
    // The server has gone; the page measures on.
  });
}, 1000);

export {};
