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
  /** The camera is on, and no frame of it has come for a while; or one has come after all. */
  starved(isStarved: boolean): void;
  log(line: string): void;
  /** Milliseconds that one frame has taken. */
  frameTaken(milliseconds: number): void;
}

type ModeName = "exposureMode" | "whiteBalanceMode" | "focusMode";

// What TypeScript's own description of tracks lacks.
interface CameraCapabilities
  extends MediaTrackCapabilities, Partial<Record<ModeName, readonly string[]>> {
  /** Some browsers list what it can be. */
  torch?: boolean | readonly boolean[];
}
interface CameraSettings extends MediaTrackSettings, Partial<Record<ModeName, string>> {
  torch?: boolean;
  zoom?: number;
}

/** The low preset: about its size and rate, whatever the camera makes of it. */
const lowPreset: MediaTrackConstraints = {
  width: { ideal: 320 },
  height: { ideal: 240 },
  frameRate: { ideal: 30 },
};

/** Pictures beyond this width are drawn smaller before their pixels are read. */
const widestReading = 640;

/** Cameras that are tried for one with a torch. */
const mostCameras = 4;

/** Browsers silence a camera for a moment, too, in milliseconds; longer, and somebody else has it. */
const longestSilence = 1000;

/** Without a frame for so long, in milliseconds, something holds them back, such as battery saving. */
const longestWait = 2000;

/** Whether the browser hands a video's frames to pages. */
export const givesFrames = "requestVideoFrameCallback" in HTMLVideoElement.prototype;

/** Not every browser's constraint errors are instances of `Error`. */
function nameOf(error: unknown): string {
  return error instanceof Object && "name" in error ? String(error.name) : String(error);
}

function capabilitiesOf(track: MediaStreamTrack | undefined): CameraCapabilities {
  // Not every browser has it.
  return track && "getCapabilities" in track ? track.getCapabilities() : {};
}

function settingsOf(track: MediaStreamTrack | undefined): CameraSettings {
  return track?.getSettings() ?? {};
}

function hasTorch(track: MediaStreamTrack | undefined): boolean {
  const { torch } = capabilitiesOf(track);
  return torch === true || (Array.isArray(torch) && torch.includes(true));
}

/** Whether it looks at the user, where the browser tells: it knows cameras by where they look, in any language. */
function isFront(device: MediaDeviceInfo): boolean {
  if (!("getCapabilities" in device)) return false;
  const { facingMode } = (device as InputDeviceInfo).getCapabilities();
  return facingMode?.includes("user") === true;
}

function idOf(track: MediaStreamTrack | undefined): string {
  return settingsOf(track).deviceId ?? "";
}

function isLit(track: MediaStreamTrack | undefined): boolean {
  return settingsOf(track).torch === true;
}

function stop(stream: MediaStream | undefined): void {
  stream?.getTracks().forEach((track) => {
    track.stop();
  });
}

export class TrackCamera {
  private readonly video = document.createElement("video");
  private readonly canvas = document.createElement("canvas");
  private readonly pixels = this.canvas.getContext("2d", {
    willReadFrequently: true,
  });
  private state: PermissionState | "unknown" = "prompt";
  private error: string | undefined;
  private stream: MediaStream | undefined;
  /** Whoever opens the camera waits for the answer of a user who is being asked for it. */
  private asking: Promise<void> = Promise.resolve();
  /** What the user has granted, for the next measurement: see `keep`. */
  private kept: MediaStream | undefined;
  /** The cameras that do not look at the user, once one was opened; and the one that is in use, or was last. */
  private rear: readonly string[] = [];
  private current = "";
  /** Those that were found to have no torch. */
  private readonly dark = new Set<string>();
  /** Whether the user wants another than the current one, and then no other than that. */
  private wantsNext = false;
  private chosen: string | undefined;
  /** Whoever wants the camera while it is being opened waits for the same stream. */
  private opening: Promise<void> | undefined;
  private wanted = false;
  /** Where the browser tells the state without being asked for the camera. */
  private status: PermissionStatus | undefined;
  private playing = false;
  private awaited: number | undefined;
  private waiting: ReturnType<typeof setTimeout> | undefined;
  private isStarved = false;
  private last: { readonly mediaTime: number; readonly taken: number } | undefined;
  /** Of the recording so far. */
  private seconds = 0;
  private torchWanted = false;
  private asked: Promise<void> = Promise.resolve();

  constructor(private readonly listener: CameraListener) {
    // Some browsers play only what is part of the page.
    this.video.className = "camera";
    this.video.muted = true;
    this.video.playsInline = true;
    this.video.setAttribute("aria-hidden", "true");
    document.body.append(this.video);
    document.addEventListener("visibilitychange", () => {
      if (document.visibilityState === "hidden") this.dropKept();
    });
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
      this.status = status;
      this.state = status.state;
      status.onchange = (): void => {
        this.state = status.state;
        if (status.state === "granted") this.dropKept();
      };
    } catch {
      this.status = undefined;
      this.state = "prompt";
    }
  }

  authorization(): string {
    return this.state;
  }

  /** The name of the error that the last opening has ended with; undefined where it has opened. */
  failure(): string | undefined {
    return this.error;
  }

  request(pending: number): void {
    this.asking = this.firstStream().then((stream) => {
      this.keep(stream);
      this.listener.settle(pending, stream ? 1 : 0);
    });
  }

  open(pending: number): void {
    this.wanted = true;
    this.opening ??= this.asking
      .then(() => this.openWanted())
      .finally(() => {
        this.opening = undefined;
      });
    void this.opening.then(() => {
      this.listener.settle(pending, 0);
    });
  }

  close(): void {
    this.wanted = false;
    this.torchWanted = false;
    const { stream } = this;
    this.stream = undefined;
    this.video.srcObject = null;
    this.keep(stream);
  }

  isOpen(): boolean {
    return this.track() !== undefined;
  }

  hasNext(): boolean {
    return this.others().length > 0;
  }

  /** For as long as the page lives. */
  useNext(): void {
    this.wantsNext = this.hasNext();
  }

  hasTorch(): boolean {
    return hasTorch(this.track());
  }

  isTorchLit(): boolean {
    return isLit(this.track());
  }

  /** Over when the track has answered, as `setModes`. */
  setTorch(lit: boolean): Promise<void> {
    this.torchWanted = lit;
    return this.ask((track) => this.askForTorch(track));
  }

  supports(name: ModeName, mode: string): boolean {
    return capabilitiesOf(this.track())[name]?.includes(mode) === true;
  }

  mode(name: ModeName): string {
    return settingsOf(this.track())[name] ?? "";
  }

  /** In one set, for some browsers look at the first alone. Each call replaces the last one's. */
  setModes(modes: Readonly<Partial<Record<ModeName, string>>>): Promise<void> {
    return this.ask(async (track) => {
      await this.constrain(track, modes);
      // Where each call stands for all that is to hold, this has put the torch out.
      if (this.torchWanted) await this.askForTorch(track);
    });
  }

  zoom(): number {
    return settingsOf(this.track()).zoom ?? 1;
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
    clearTimeout(this.waiting);
    this.tellStarved(false);
  }

  private track(): MediaStreamTrack | undefined {
    return this.stream?.getVideoTracks().at(0);
  }

  /** Asks the track that is open now, after all that was asked before. */
  private ask(question: (track: MediaStreamTrack) => Promise<void>): Promise<void> {
    const track = this.track();
    if (track) this.asked = this.asked.then(() => question(track));
    return this.asked;
  }

  /**
   * Alone: a browser that cannot meet one constraint of a set leaves out all of it, and reports success.
   * So what the track says afterwards counts, and nothing else.
   */
  private async askForTorch(track: MediaStreamTrack): Promise<void> {
    const lit = this.torchWanted;
    if (isLit(track) !== lit) await this.constrain(track, { torch: lit });
    // A track that was closed meanwhile needs no light.
    if (lit && !isLit(track) && track === this.track()) this.listener.torchRefused();
  }

  private async constrain(
    track: MediaStreamTrack,
    set: Readonly<Record<string, string | boolean>>,
  ): Promise<void> {
    const before = track.getSettings();
    try {
      await track.applyConstraints({ advanced: [set] });
      const { width, height, frameRate } = track.getSettings();
      const kept =
        width === before.width && height === before.height && frameRate === before.frameRate;
      // Not beside it from the start: some browsers refuse to mix the two kinds.
      if (!kept) await track.applyConstraints({ ...lowPreset, advanced: [set] });
    } catch (error) {
      this.listener.log(`the camera refuses ${JSON.stringify(set)}: ${nameOf(error)}`);
    }
  }

  /**
   * Browsers that do not tell that they remember the user's answer may ask again for each track that is
   * opened, so that what was granted is left open between measurements: without light or pictures, which lets
   * some browsers switch the camera off, and until the page is out of sight, whose owner shall see no camera
   * in use that nobody uses. Whoever comes back is asked again. All others are asked once by themselves, and
   * the camera is free as soon as it is not needed.
   */
  private keep(stream: MediaStream | undefined): void {
    if (this.status?.state === "granted" || document.visibilityState === "hidden") {
      stop(stream);
      return;
    }
    this.dropKept();
    this.kept = stream;
    const track = stream?.getVideoTracks().at(0);
    if (track) track.enabled = false;
    void this.asked.then(() => {
      // Some lights go out with their track alone.
      if (stream === this.kept && isLit(track)) this.dropKept();
    });
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
    if (!("mediaDevices" in navigator) || !givesFrames) {
      this.error = "NotSupportedError";
      return undefined;
    }
    try {
      const stream = await navigator.mediaDevices.getUserMedia({
        audio: false,
        video,
      });
      this.state = "granted";
      this.error = undefined;
      this.watch(stream.getVideoTracks().at(0));
      return stream;
    } catch (error) {
      const name = nameOf(error);
      this.listener.log(`the camera does not open: ${name}`);
      this.error = name;
      if (name === "NotAllowedError") {
        await this.prepare();
        // A browser that does not tell has answered now.
        if (!this.status) this.state = "denied";
      } else if (name !== "SecurityError") {
        // It may be used, but there is none, or another program has it.
        this.state = "granted";
      }
      return undefined;
    }
  }

  private async openWanted(): Promise<void> {
    if (this.track()?.readyState === "live") return;
    const stream = await this.streamWithTorch();
    if (this.wanted) this.stream = stream;
    else this.keep(stream);
  }

  private async firstStream(): Promise<MediaStream | undefined> {
    const { kept, chosen } = this;
    this.kept = undefined;
    const track = kept?.getVideoTracks().at(0);
    if (track?.readyState === "live" && !track.muted) {
      track.enabled = true;
      return kept;
    }
    stop(kept);
    const own = chosen === undefined ? undefined : await this.openCamera(chosen);
    return own ?? this.openStream({ ...lowPreset, facingMode: { ideal: "environment" } });
  }

  private openCamera(deviceId: string): Promise<MediaStream | undefined> {
    return this.openStream({ ...lowPreset, deviceId: { exact: deviceId } });
  }

  /**
   * Of several cameras that may be rear ones the first with a torch, or the next after the current one;
   * without any, the browser's choice.
   */
  private async streamWithTorch(): Promise<MediaStream | undefined> {
    const isNext = this.wantsNext;
    this.wantsNext = false;
    // Two cameras at once are more than most phones have.
    if (isNext) this.dropKept();
    let stream = isNext ? undefined : await this.firstStream();
    const track = stream?.getVideoTracks().at(0);
    if (!isNext && !track) return stream;
    if (track) this.current = idOf(track);
    if (track && !hasTorch(track)) this.dark.add(this.current);
    await this.findRear();
    const others = isNext || !hasTorch(track) ? this.others() : [];
    if (others.length > 0) {
      stop(stream);
      stream = await this.firstWithTorch(others);
    }
    stream ??= await this.firstStream();
    this.current = idOf(stream?.getVideoTracks().at(0));
    if (isNext) this.chosen = this.current;
    return stream;
  }

  /** After the current one, around all of them. */
  private others(): string[] {
    const place = this.rear.indexOf(this.current);
    return [...this.rear.slice(place + 1), ...this.rear.slice(0, Math.max(0, place))];
  }

  private async firstWithTorch(cameras: readonly string[]): Promise<MediaStream | undefined> {
    for (const id of cameras.slice(0, mostCameras - 1)) {
      const stream = await this.openCamera(id);
      if (hasTorch(stream?.getVideoTracks().at(0))) return stream;
      if (stream) this.dark.add(id);
      stop(stream);
    }
    return undefined;
  }

  private async findRear(): Promise<void> {
    const devices = await navigator.mediaDevices.enumerateDevices().catch((error: unknown) => {
      this.listener.log(`the cameras are not told: ${nameOf(error)}`);
      return [];
    });
    this.rear = devices
      .filter((each) => each.kind === "videoinput" && !isFront(each))
      .map(({ deviceId }) => deviceId)
      .filter((id) => !this.dark.has(id));
  }

  private dropKept(): void {
    stop(this.kept);
    this.kept = undefined;
  }

  private tellStarved(isStarved: boolean): void {
    if (this.isStarved === isStarved) return;
    this.isStarved = isStarved;
    this.listener.starved(isStarved);
  }

  private awaitFrame(): void {
    clearTimeout(this.waiting);
    this.waiting = setTimeout(() => {
      this.tellStarved(this.track()?.readyState === "live");
    }, longestWait);
    this.awaited = this.video.requestVideoFrameCallback((now, frame) => {
      this.awaitFrame();
      this.tellStarved(false);
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
