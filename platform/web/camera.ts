// The rear camera as a video track: opening it, its torch and modes, and its frames' pixels.
//
// Needs `getUserMedia`, which browsers give to pages from HTTPS or localhost alone. Uses
// `requestVideoFrameCallback`, and the Permissions API where it knows cameras.

/** What the camera hands its frames and answers to. */
export interface CameraListener {
  settle(pending: number, answer: number): void;
  /** Room for the pixels of one frame, red, green, blue and alpha. */
  frameBuffer(width: number, height: number): Uint8Array;
  /** Seconds of the video's own time. */
  takeFrame(time: number): void;
  torchRefused(): void;
  /** The camera that is in use gives no more pictures. */
  lost(): void;
  log(line: string): void;
  /** Milliseconds that one frame has taken. */
  frameTaken(milliseconds: number): void;
}

// What TypeScript's own description of tracks lacks.
interface CameraCapabilities extends MediaTrackCapabilities {
  /** Some browsers list what it can be. */
  torch?: boolean | readonly boolean[];
  exposureMode?: string[];
  whiteBalanceMode?: string[];
  focusMode?: string[];
}

type ModeName = "exposureMode" | "whiteBalanceMode" | "focusMode";

/** The low preset: about its size and rate, whatever the camera makes of it. */
const lowPreset: MediaTrackConstraints = {
  width: { ideal: 320 },
  height: { ideal: 240 },
  frameRate: { ideal: 30 },
};

/** Pictures beyond this width are drawn smaller before their pixels are read. */
const widestReading = 640;

/** Rear cameras that are tried for one with a torch. */
const mostCameras = 4;

/** Browsers silence a camera for a moment, too, in milliseconds; longer, and somebody else has it. */
const longestSilence = 1000;

/** Whether the browser hands a video's frames to pages. */
export const givesFrames = "requestVideoFrameCallback" in HTMLVideoElement.prototype;

function nameOf(error: unknown): string {
  return error instanceof Error ? error.name : String(error);
}

export class TrackCamera {
  private readonly video = document.createElement("video");
  private readonly canvas = document.createElement("canvas");
  private readonly pixels = this.canvas.getContext("2d", {
    willReadFrequently: true,
  });
  private state: PermissionState | "unknown" = "prompt";
  private stream: MediaStream | undefined;
  /** Whether the browser tells the state without being asked for the camera. */
  private tellsState = false;
  private opening = 0;
  private playing = false;
  private awaited: number | undefined;
  private last: { readonly mediaTime: number; readonly taken: number } | undefined;
  /** Of the recording so far. */
  private seconds = 0;
  private torchRefusedBy: MediaStreamTrack | undefined;
  private applied: Promise<void> = Promise.resolve();

  constructor(private readonly listener: CameraListener) {
    // Some browsers play only what is part of the page.
    this.video.className = "camera";
    this.video.muted = true;
    this.video.playsInline = true;
    this.video.setAttribute("aria-hidden", "true");
    document.body.append(this.video);
  }

  /** Finds out whether the camera may be used; to be awaited before anything else. */
  async prepare(): Promise<void> {
    // `mediaDevices` is missing from pages that did not come by HTTPS.
    if (!("mediaDevices" in navigator)) {
      this.state = "unknown";
      return;
    }
    try {
      const status = await navigator.permissions.query({
        name: "camera",
      });
      this.tellsState = true;
      this.state = status.state;
      status.onchange = (): void => {
        this.state = status.state;
      };
    } catch {
      this.tellsState = false;
      this.state = "prompt";
    }
  }

  authorization(): string {
    return this.state;
  }

  request(pending: number): void {
    void this.firstStream().then((stream) => {
      stream?.getTracks().forEach((track) => {
        track.stop();
      });
      this.listener.settle(pending, stream ? 1 : 0);
    });
  }

  open(pending: number): void {
    this.close();
    const opening = this.opening;
    void this.streamWithTorch().then((stream) => {
      if (opening === this.opening) {
        this.stream = stream;
        this.watch(this.track());
      } else {
        stream?.getTracks().forEach((track) => {
          track.stop();
        });
      }
      this.listener.settle(pending, 0);
    });
  }

  close(): void {
    ++this.opening;
    this.stream?.getTracks().forEach((track) => {
      track.stop();
    });
    this.stream = undefined;
    this.video.srcObject = null;
  }

  hasTrack(): boolean {
    return this.track() !== undefined;
  }

  hasTorch(): boolean {
    return this.trackHasTorch(this.track());
  }

  /** Whether the torch was to be switched on, and stayed dark. */
  isTorchRefused(): boolean {
    return this.torchRefusedBy !== undefined && this.torchRefusedBy === this.track();
  }

  supports(name: ModeName, mode: string): boolean {
    return this.capabilities()[name]?.includes(mode) === true;
  }

  setting(name: ModeName | "zoom"): string | number | null {
    const settings = this.track()?.getSettings() as Record<string, string | number> | undefined;
    return settings?.[name] ?? null;
  }

  /** All constraints that are to hold; each call replaces the last one's. */
  apply(constraints: Record<string, string | boolean>): void {
    const track = this.track();
    // One set: some browsers look at the first alone. A copy: the caller goes on with its own.
    const all = { ...constraints };
    this.applied = this.applied.then(async () => {
      try {
        await track?.applyConstraints({ advanced: [all] });
      } catch (error) {
        this.listener.log(`the camera refuses ${JSON.stringify(all)}: ${nameOf(error)}`);
        // A track that has ended meanwhile takes nothing, and needs no light.
        if (all["torch"] !== true || track !== this.track()) return;
        this.torchRefusedBy = track;
        this.listener.torchRefused();
      }
    });
  }

  play(): void {
    // One frame is awaited at a time, however often this is called.
    this.pause();
    this.playing = true;
    this.last = undefined;
    this.seconds = 0;
    this.video.srcObject = this.stream ?? null;
    void this.video.play().catch((error: unknown) => {
      // The session may have stopped before the first frame.
      if (this.playing) this.listener.log(`the camera's video does not play: ${nameOf(error)}`);
    });
    this.awaitFrame();
  }

  pause(): void {
    this.playing = false;
    this.video.pause();
    // A callback left behind would fire with the next run's first frame.
    if (this.awaited !== undefined) this.video.cancelVideoFrameCallback(this.awaited);
    this.awaited = undefined;
  }

  private track(): MediaStreamTrack | undefined {
    return this.stream?.getVideoTracks().at(0);
  }

  private capabilities(track = this.track()): CameraCapabilities {
    // Not every browser has it.
    return track && "getCapabilities" in track ? track.getCapabilities() : {};
  }

  private trackHasTorch(track: MediaStreamTrack | undefined): boolean {
    const { torch } = this.capabilities(track);
    return torch === true || (Array.isArray(torch) && torch.includes(true));
  }

  /** Tells when the track ends or falls silent while it is in use. */
  private watch(track: MediaStreamTrack | undefined): void {
    let silence: ReturnType<typeof setTimeout> | undefined;
    const lost = (): void => {
      if (track !== undefined && track === this.track()) this.listener.lost();
    };
    track?.addEventListener("ended", lost);
    track?.addEventListener("mute", () => {
      clearTimeout(silence);
      silence = setTimeout(lost, longestSilence);
    });
    track?.addEventListener("unmute", () => {
      clearTimeout(silence);
    });
  }

  private async openStream(video: MediaTrackConstraints): Promise<MediaStream | undefined> {
    if (!("mediaDevices" in navigator) || !givesFrames) return undefined;
    try {
      const stream = await navigator.mediaDevices.getUserMedia({
        audio: false,
        video,
      });
      this.state = "granted";
      return stream;
    } catch (error) {
      this.listener.log(`the camera does not open: ${nameOf(error)}`);
      if (nameOf(error) === "NotAllowedError") {
        await this.prepare();
        // A browser that does not tell has answered now.
        if (!this.tellsState) this.state = "denied";
      } else if (nameOf(error) !== "SecurityError") {
        // It may be used, but there is none, or another program has it.
        this.state = "granted";
      }
      return undefined;
    }
  }

  private firstStream(): Promise<MediaStream | undefined> {
    return this.openStream({
      ...lowPreset,
      facingMode: { ideal: "environment" },
    });
  }

  /** Of several rear cameras the first with a torch; without any, the browser's choice. */
  private async streamWithTorch(): Promise<MediaStream | undefined> {
    const first = await this.firstStream();
    const track = first?.getVideoTracks().at(0);
    if (!first || !track || this.trackHasTorch(track)) return first;
    const devices = await navigator.mediaDevices.enumerateDevices().catch((error: unknown) => {
      this.listener.log(`the cameras are not told: ${nameOf(error)}`);
      return [];
    });
    const others = devices.filter(
      (device) =>
        device.kind === "videoinput" &&
        device.deviceId !== track.getSettings().deviceId &&
        /back|rear|environment/i.test(device.label),
    );
    for (const { deviceId } of others.slice(0, mostCameras - 1)) {
      track.stop();
      const other = await this.openStream({
        ...lowPreset,
        deviceId: { exact: deviceId },
      });
      if (other && this.trackHasTorch(other.getVideoTracks().at(0))) return other;
      other?.getTracks().forEach((each) => {
        each.stop();
      });
    }
    return track.readyState === "live" ? first : this.firstStream();
  }

  private awaitFrame(): void {
    this.awaited = this.video.requestVideoFrameCallback((now, frame) => {
      this.awaitFrame();
      this.takeFrame(now, frame);
    });
  }

  private takeFrame(now: number, frame: VideoFrameCallbackMetadata): void {
    const start = performance.now();
    const { mediaTime } = frame;
    const taken = (frame.captureTime ?? now) / 1000;
    if (this.last) {
      // Where a live video's own time stands still, the moments of the exposures or showings tell.
      const step =
        mediaTime > this.last.mediaTime ? mediaTime - this.last.mediaTime : taken - this.last.taken;
      this.seconds += Math.max(0, step);
    }
    this.last = { mediaTime, taken };

    const scale = Math.min(1, widestReading / frame.width);
    const width = Math.round(frame.width * scale);
    const height = Math.round(frame.height * scale);
    if (!this.pixels || width === 0 || height === 0) return;
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
      this.pixels.imageSmoothingQuality = "high";
    }
    this.pixels.drawImage(this.video, 0, 0, width, height);
    this.listener
      .frameBuffer(width, height)
      .set(this.pixels.getImageData(0, 0, width, height).data);
    this.listener.takeFrame(this.seconds);
    this.listener.frameTaken(performance.now() - start);
  }
}
