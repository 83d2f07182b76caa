// The built page in a real browser at a phone's size, with a recording as its camera.
import { mkdirSync } from "node:fs";
import { fileURLToPath } from "node:url";

import { type Browser, type BrowserContext, chromium, type Page } from "playwright-core";
import { preview, type PreviewServer } from "vite";
import { expect, onTestFinished } from "vitest";

const root = fileURLToPath(new URL("..", import.meta.url));
const build = fileURLToPath(new URL("../../../build/", import.meta.url));

/** A recording of a generated finger, made before the tests. */
export function recording(name: "72" | "96" | "low" | "dark-blue" | "absent"): {
  readonly shows: string;
} {
  return { shows: `${build}web-recordings/${name}.y4m` };
}

/** Where pictures of the screens are kept to be looked at. */
export const pictures = `${build}web-pictures/`;
mkdirSync(pictures, { recursive: true });

interface CameraSetup {
  /**
   * The recording in front of the camera, the browser's own generated picture, no camera at all, or one
   * that the user refuses.
   */
  readonly camera: { readonly shows: string } | "generated" | "none" | "refused";
}

/** How one visitor comes. */
export interface Visitor {
  /**
   * Refused: the camera has one, but does not switch it on. Ignored: nor does it say so. Literal: each call
   * stands for all that is to hold. Listed: told as a list of what it can be.
   */
  readonly torch?: boolean | "refused" | "ignored" | "literal" | "listed";
  readonly stored?: Readonly<Record<string, string>>;
  readonly colorScheme?: "light" | "dark";
  readonly viewport?: { readonly width: number; readonly height: number };
  readonly reducedMotion?: "reduce" | "no-preference";
  readonly userAgent?: string;
  readonly locale?: string;
  readonly timezoneId?: string;
  readonly query?: string;
  /** Whether the camera's video tells a time of its own; some browsers' stands still. */
  readonly videoTime?: "runs" | "stands";
  /** The host by whose name the page is opened; without HTTPS, browsers trust their own machine alone. */
  readonly host?: string;
  /** What the browser lacks or does badly. */
  readonly lacks?:
    "video frames" | "camera permission" | "list of cameras" | "the core" | undefined;
  /** The browser gives the page no storage, as some do in private windows. */
  readonly storageBlocked?: boolean;
}

/** Somebody who has seen the introduction and answered about health records. */
export const acquainted: Readonly<Record<string, string>> = {
  "veyla/pleaseNoteShown": "true",
  "veyla/healthPermissions": '{"heartRate":true,"oxygenSaturation":true}',
};

interface FramesTaken {
  /** How many the camera's video has handed to the page. */
  readonly handed: number;
  /** How many were measured. */
  readonly frames: number;
  /** When the camera took the last of its own. */
  readonly seconds: number;
  /** Seconds without a new one, on a machine too busy for a generated camera. */
  readonly stalled: number;
  /** From a frame to the next, where more ticks lie between them than are filled, in seconds. */
  readonly gaps: readonly number[];
}

export interface Place {
  readonly x: number;
  readonly y: number;
}

export class Visit {
  readonly log: string[] = [];
  /** What no visit may have: requests beyond the origin, errors, refusals by the page's policy. */
  readonly problems: string[] = [];

  constructor(
    readonly page: Page,
    readonly context: BrowserContext,
    private readonly origin: string,
  ) {
    context.on("request", (request) => {
      const url = new URL(request.url());
      const isOwn = url.origin === this.origin || ["data:", "blob:"].includes(url.protocol);
      if (!isOwn) this.problems.push(`a request beyond the origin: ${request.url()}`);
    });
    page.on("pageerror", (error) => this.problems.push(`an error in the page: ${error.message}`));
    page.on("console", (message) => {
      if (message.type() === "info") this.log.push(message.text());
      if (message.type() === "error") this.problems.push(`the console: ${message.text()}`);
    });
  }

  element(name: string): ReturnType<Page["locator"]> {
    return this.page.locator(`[data-element="${name}"]`);
  }

  alert(title: string): ReturnType<Page["locator"]> {
    return this.page.getByRole("alertdialog", { name: title, exact: true });
  }

  async start(): Promise<void> {
    await this.page.getByRole("button", { name: "START" }).click();
  }

  /** Through the countdown: what the status line says may still stand from the time before. */
  async startMeasuring(): Promise<void> {
    await this.start();
    await this.page.getByText("Will begin in a couple of seconds ...").waitFor();
    await this.page.getByText("Analyzing - hold steady ...").waitFor();
  }

  /** The report that the end of a recording logs. */
  async report(): Promise<{ seconds: number; frames: number; framedrops: number }> {
    const pattern = /^seconds: ([\d.]+), frames ([1-9]\d*), framedrops (\d+), fps: [\d.]+$/;
    await expect.poll(() => this.log.some((line) => pattern.test(line))).toBe(true);
    const found = this.log.map((line) => pattern.exec(line)).findLast((match) => match !== null);
    const [seconds = 0, frames = 0, framedrops = 0] = (found ?? []).slice(1).map(Number);
    return { seconds, frames, framedrops };
  }

  /** Measures to the end and tells how often: a stalled camera's finger is measured once more. */
  async measure(): Promise<number> {
    for (let measurements = 1; ; ++measurements) {
      const before = await this.framesTaken();
      await this.startMeasuring();
      await this.page.getByText("FINISHED").waitFor({ timeout: 60_000 });
      const stalled = (await this.framesTaken()).stalled - before.stalled;
      // Half a second less of the recording shows a finger that is too slow by two beats a minute.
      if (stalled < 0.4 || measurements === 4) return measurements;
      console.log(`the camera stalled for ${stalled.toFixed(1)} s; measuring once more`);
    }
  }

  /** The camera's frames so far. */
  framesTaken(): Promise<FramesTaken> {
    return this.page.evaluate(() => (window as unknown as { taken: FramesTaken }).taken);
  }

  async stop(): Promise<void> {
    await this.page.getByRole("button", { name: "STOP" }).click();
  }

  /** What the core has stored under a key, as text. */
  stored(key: string): Promise<string | null> {
    return this.page.evaluate((item) => localStorage.getItem(item), `veyla/${key}`);
  }

  /** What the torch has done, in its order: lit, and gone out. */
  torch(): Promise<boolean[]> {
    return this.page.evaluate(() => (window as unknown as { lights: boolean[] }).lights);
  }

  /** The addresses that the page handed on to the phone, in their order. */
  addresses(): Promise<string[]> {
    return this.page.evaluate(() => (window as unknown as { addresses: string[] }).addresses);
  }

  /** The page goes to the background or comes back, as a phone's switch between programs does it. */
  async setInFront(inFront: boolean): Promise<void> {
    await this.page.evaluate((visible) => {
      const state = visible ? "visible" : "hidden";
      Object.defineProperty(document, "visibilityState", { value: state, configurable: true });
      Object.defineProperty(document, "hidden", { value: !visible, configurable: true });
      document.dispatchEvent(new Event("visibilitychange"));
    }, inFront);
  }

  /** When the screen in front has come to rest; taps before that may be lost. */
  async settled(): Promise<void> {
    await this.page.waitForFunction(() => {
      const pages = [...document.querySelectorAll("ion-nav > .ion-page")];
      const front = pages.pop();
      return (
        front?.matches(":not(.ion-page-hidden, .ion-page-invisible)") === true &&
        pages.every((page) => page.classList.contains("ion-page-hidden"))
      );
    });
    await this.still();
  }

  /** When nothing moves but what moves for as long as it is shown. */
  async still(): Promise<void> {
    await this.page.evaluate(async () => {
      const moves = (): boolean =>
        document
          .getAnimations()
          .some(
            ({ playState, effect }) =>
              playState === "running" && effect?.getTiming().iterations !== Infinity,
          );
      // An animation may begin with one of the next frames of the screen.
      for (let frames = 0; frames < 4; frames = moves() ? 0 : frames + 1) {
        await new Promise(requestAnimationFrame);
      }
    });
  }

  /** A finger's swipe over the middle of the screen. */
  async swipe(direction: "left" | "right"): Promise<void> {
    const { width, height } = this.page.viewportSize() ?? { width: 0, height: 0 };
    const [from, to] = direction === "left" ? [0.75, 0.25] : [0.25, 0.75];
    await this.drag({ x: width * from, y: height / 2 }, { x: width * to, y: height / 2 });
  }

  /** A finger's way from one place to another. */
  drag(from: Place, to: Place): Promise<void> {
    return this.moveFingers([from], [to]);
  }

  /** Two fingers' ways at once. */
  pinch(from: readonly [Place, Place], to: readonly [Place, Place]): Promise<void> {
    return this.moveFingers(from, to);
  }

  private async moveFingers(from: readonly Place[], to: readonly Place[]): Promise<void> {
    const session = await this.context.newCDPSession(this.page);
    const touch = (
      type: "touchStart" | "touchMove" | "touchEnd",
      part?: number,
    ): Promise<unknown> =>
      session.send("Input.dispatchTouchEvent", {
        type,
        touchPoints:
          part === undefined
            ? []
            : from.map((start, id) => ({
                id,
                x: start.x + ((to[id]?.x ?? start.x) - start.x) * part,
                y: start.y + ((to[id]?.y ?? start.y) - start.y) * part,
              })),
      });
    const steps = 8;
    await touch("touchStart", 0);
    for (let step = 1; step <= steps; ++step) await touch("touchMove", step / steps);
    await touch("touchEnd");
    await session.detach();
  }

  async picture(name: string): Promise<void> {
    await this.still();
    await this.page.screenshot({ path: `${pictures}${name}.png` });
  }
}

/** Keeps addresses that belong to other programs and pages, which no test browser has. */
function keepAddresses(): void {
  const addresses: string[] = [];
  Object.assign(window, { addresses });
  const { click } = HTMLAnchorElement.prototype as { click: (this: HTMLAnchorElement) => void };
  HTMLAnchorElement.prototype.click = function (this: HTMLAnchorElement): void {
    if (this.protocol === "blob:") click.call(this);
    else addresses.push(this.href);
  };
}

/**
 * Stands in for what no generated camera has, at the edge of the track: a torch, and a mode beside it. As
 * browsers may, it looks at the first of the advanced sets alone, and leaves out one that names both,
 * as one that it cannot meet, without a word.
 */
function addTorch(kind: Exclude<NonNullable<Visitor["torch"]>, false>): void {
  const lights: boolean[] = [];
  Object.assign(window, { lights });
  const lit = new WeakSet<MediaStreamTrack>();
  const light = (track: MediaStreamTrack, on: boolean): void => {
    if (lit.has(track) === on) return;
    if (on) lit.add(track);
    else lit.delete(track);
    lights.push(on);
  };
  const tracks = MediaStreamTrack.prototype;
  const own = Object.getOwnPropertyDescriptors(tracks);
  tracks.getCapabilities = function (): MediaTrackCapabilities {
    const torch = kind === "listed" ? [false, true] : true;
    return {
      ...own.getCapabilities.value?.call(this),
      torch,
      exposureMode: ["continuous"],
    } as never;
  };
  tracks.getSettings = function (): MediaTrackSettings {
    return { ...own.getSettings.value?.call(this), torch: lit.has(this) };
  };
  tracks.applyConstraints = function (constraints): Promise<void> {
    const [{ torch, ...modes } = {}] = (constraints?.advanced ?? []) as Record<string, unknown>[];
    if (kind === "refused" && torch === true)
      return Promise.reject(new Error("the battery is low"));
    const isAlone = Object.keys(modes).length === 0;
    if (typeof torch === "boolean" && isAlone && kind !== "ignored" && this.readyState === "live")
      light(this, torch);
    if (kind !== "literal") return Promise.resolve();
    if (torch !== true) light(this, false);
    const size = { width: constraints?.width ?? 640, height: constraints?.height ?? 480 };
    return own.applyConstraints.value?.call(this, size) ?? Promise.resolve();
  };
  tracks.stop = function (): void {
    own.stop.value?.call(this);
    light(this, false);
  };
}

/** Counts the frames that are measured, by the line that is logged for each. */
function countFrames(videoTime: "runs" | "stands"): void {
  const taken = { handed: 0, frames: 0, seconds: 0, stalled: 0, gaps: [] as number[] };
  Object.assign(window, { taken });
  const info = console.info.bind(console);
  console.info = (line: string): void => {
    if (line.startsWith("red ")) ++taken.frames;
    info(line);
  };
  const videos = HTMLVideoElement.prototype;
  const { requestVideoFrameCallback: request } = videos as {
    requestVideoFrameCallback: (
      this: HTMLVideoElement,
      callback: VideoFrameRequestCallback,
    ) => number;
  };
  videos.requestVideoFrameCallback = function (callback): number {
    return request.call(this, (now, frame) => {
      const seconds = (frame.captureTime ?? now) / 1000;
      const gap = seconds - taken.seconds;
      // A longer one is the time between two recordings.
      if (gap > 0.1 && gap < 1) taken.stalled += gap;
      if (gap > 5 / 15 && taken.handed > 0) taken.gaps.push(gap);
      taken.seconds = seconds;
      ++taken.handed;
      callback(now, videoTime === "runs" ? frame : { ...frame, mediaTime: 0 });
    });
  };
}

/** Takes away what a browser lacks. */
function takeAway(what: string): void {
  const refuse = (): Promise<never> => Promise.reject(new TypeError("not told"));
  if (what === "video frames") {
    delete (HTMLVideoElement.prototype as { requestVideoFrameCallback?: unknown })
      .requestVideoFrameCallback;
  }
  if (what === "camera permission") navigator.permissions.query = refuse;
  if (what === "list of cameras") navigator.mediaDevices.enumerateDevices = refuse;
}

export class PhoneBrowser {
  private constructor(
    private readonly browser: Browser,
    private readonly server: PreviewServer,
    private readonly setup: CameraSetup,
  ) {}

  static async open(setup: CameraSetup): Promise<PhoneBrowser> {
    const args = [
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
      "--host-resolver-rules=MAP veyla.test 127.0.0.1",
    ];
    if (setup.camera !== "refused") args.push("--use-fake-ui-for-media-stream");
    if (setup.camera !== "none") args.push("--use-fake-device-for-media-stream");
    if (typeof setup.camera === "object")
      args.push(`--use-file-for-fake-video-capture=${setup.camera.shows}`);
    const [browser, server] = await Promise.all([
      chromium.launch({ executablePath: process.env["CHROMIUM"] ?? "/usr/bin/chromium", args }),
      preview({
        root,
        configFile: `${root}vite.config.ts`,
        preview: { host: "127.0.0.1", port: 0, allowedHosts: ["veyla.test"] },
        logLevel: "warn",
      }),
    ]);
    return new PhoneBrowser(browser, server, setup);
  }

  get url(): string {
    return this.server.resolvedUrls?.local[0] ?? "";
  }

  async visit(visitor: Visitor = {}): Promise<Visit> {
    const context = await this.browser.newContext({
      viewport: visitor.viewport ?? { width: 390, height: 844 },
      deviceScaleFactor: 2,
      hasTouch: true,
      isMobile: true,
      colorScheme: visitor.colorScheme ?? "light",
      reducedMotion: visitor.reducedMotion ?? "no-preference",
      ...(visitor.userAgent !== undefined && { userAgent: visitor.userAgent }),
      locale: visitor.locale ?? "en-US",
      timezoneId: visitor.timezoneId ?? "UTC",
      permissions: this.setup.camera === "refused" ? [] : ["camera"],
    });
    await context.addInitScript(keepAddresses);
    await context.addInitScript(countFrames, visitor.videoTime ?? "runs");
    if (visitor.torch !== false) await context.addInitScript(addTorch, visitor.torch ?? true);
    if (visitor.lacks === "the core") await context.route("**/*.wasm", (route) => route.abort());
    else if (visitor.lacks) await context.addInitScript(takeAway, visitor.lacks);
    if (visitor.storageBlocked) {
      await context.addInitScript(() => {
        Object.defineProperty(window, "localStorage", {
          get() {
            throw new DOMException("blocked", "SecurityError");
          },
        });
      });
    }
    await context.addInitScript(
      (stored) => {
        // Once, so that a reloaded page finds what it stored itself.
        if (Object.keys(stored).length === 0 || localStorage.length > 0) return;
        for (const [key, text] of Object.entries(stored)) localStorage.setItem(key, text);
      },
      visitor.storageBlocked ? {} : (visitor.stored ?? {}),
    );
    const url = new URL(this.url);
    if (visitor.host !== undefined) url.hostname = visitor.host;
    const visit = new Visit(await context.newPage(), context, url.origin);
    onTestFinished(async () => {
      await context.close();
      expect(visit.problems).toEqual([]);
    });
    await visit.page.goto(`${url.href}${visitor.query ?? "?log"}`);
    if (visitor.lacks !== "the core") await visit.page.locator(".measuring-grid").waitFor();
    return visit;
  }

  async close(): Promise<void> {
    await this.browser.close();
    await this.server.close();
  }
}
