// The built page in the browser engines that phones have beside Chromium's, by the automation that each offers.
import { type ChildProcess, spawn } from "node:child_process";
import { once } from "node:events";
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";

import puppeteer from "puppeteer-core";
import type { PreviewServer } from "vite";
import type { TestContext } from "vitest";

import { addTorch, axe, build, serious, serveSite } from "./site";

export const engines = ["firefox", "webkit"] as const;

/** Who comes with which phone. */
export interface Visitor {
  readonly engine: (typeof engines)[number];
  /**
   * A painted finger before a camera with a torch, or without; one that the torch does not reach, beside one
   * that it does; one that the user refuses; or what the engine itself has, which is a camera with a torch in
   * WebKit, where it is asked for, and none else.
   */
  camera?: "lit" | "dark" | "unlit" | "refused" | "own" | "none";
  readonly stored?: Readonly<Record<string, string>>;
  /** Dark, and without what moves. */
  readonly night?: boolean;
}

/** One window of one engine. */
interface Window {
  open(address: string): Promise<void>;
  /** The value of a function's call in the page, awaited there. */
  ask(call: string): Promise<unknown>;
  tap(x: number, y: number): Promise<void>;
  resize(width: number, height: number): Promise<void>;
  picture(): Promise<Uint8Array>;
}

type End = TestContext["onTestFinished"];

async function openFirefox(look: Visitor, atEnd: End): Promise<Window> {
  const opened = await puppeteer.launch({
    browser: "firefox",
    executablePath: process.env["FIREFOX"] ?? "/usr/bin/firefox-esr",
    headless: true,
    extraPrefsFirefox: {
      "media.navigator.permission.disabled": true,
      "ui.systemUsesDarkTheme": look.night ? 1 : 0,
      "ui.prefersReducedMotion": look.night ? 1 : 0,
    },
  });
  atEnd(() => opened.close());
  const page = await opened.newPage();
  return {
    async open(address): Promise<void> {
      await page.goto(address);
    },
    ask: (call) => page.evaluate(call),
    tap: (x, y) => page.mouse.click(x, y),
    resize: (width, height) => page.setViewport({ width, height }),
    picture: () => page.screenshot(),
  };
}

/** The number of a port that nobody uses. */
async function freePort(): Promise<number> {
  const server = createServer().listen(0, "127.0.0.1");
  await once(server, "listening");
  const address = server.address();
  server.close();
  await once(server, "close");
  return typeof address === "object" && address ? address.port : 0;
}

/** By the W3C's protocol, which is all that this engine's driver speaks. */
async function openWebKit(look: Visitor, atEnd: End): Promise<Window> {
  const home = mkdtempSync(join(tmpdir(), "veyla-webkit-"));
  const children: ChildProcess[] = [];
  const run = (command: string, args: string[], env: Record<string, string>): ChildProcess => {
    const child = spawn(command, args, {
      env: { ...process.env, ...env },
      stdio: ["ignore", "ignore", "ignore", "pipe"],
    });
    children.push(child);
    return child;
  };
  atEnd(async () => {
    for (const child of children.reverse()) {
      if (child.exitCode !== null || child.signalCode !== null) continue;
      child.kill();
      await once(child, "exit");
    }
    // Its processes may still write for a moment, into folders that are being removed.
    for (let tries = 1; ; ++tries) {
      try {
        rmSync(home, { recursive: true, force: true });
        return;
      } catch (error) {
        if (tries === 100) throw error;
        await new Promise((resolve) => setTimeout(resolve, 100));
      }
    }
  });
  mkdirSync(join(home, "gtk-3.0"));
  const animates = look.night ? 0 : 1;
  const settings = `[Settings]\ngtk-enable-animations=${animates}\n`;
  writeFileSync(join(home, "gtk-3.0", "settings.ini"), settings);
  const server = run(
    "Xvfb",
    ["-displayfd", "3", "-screen", "0", "1024x1024x24", "-nolisten", "tcp"],
    {},
  );
  const [display] = (await once(server.stdio[3] as NodeJS.ReadableStream, "data")) as [Buffer];
  const port = await freePort();
  run("WebKitWebDriver", [`--port=${port}`], {
    DISPLAY: `:${display.toString().trim()}`,
    LC_ALL: "C",
    HOME: home,
    XDG_CONFIG_HOME: home,
    XDG_DATA_HOME: home,
    XDG_CACHE_HOME: home,
    // Without a graphics processor: shaders are compiled once for all runs, tiles are painted without them.
    MESA_SHADER_CACHE_DIR: `${build}webkit-shaders`,
    WEBKIT_SKIA_ENABLE_CPU_RENDERING: "1",
    LP_NUM_THREADS: "1",
    GTK_THEME: look.night ? "Adwaita:dark" : "Adwaita",
  });
  const send = async (method: string, path: string, body?: object): Promise<unknown> => {
    const answer = await fetch(`http://127.0.0.1:${port}${path}`, {
      method,
      ...(body ? { body: JSON.stringify(body) } : {}),
    });
    const { value } = (await answer.json()) as { value: unknown };
    if (!answer.ok) throw new Error(`WebKit ${method} ${path}: ${JSON.stringify(value)}`);
    return value;
  };
  const isThere = (): Promise<boolean> =>
    send("GET", "/status").then(
      () => true,
      () => false,
    );
  while (!(await isThere())) await new Promise((resolve) => setTimeout(resolve, 50));
  const args = ["--automation", "--full-screen", "--enable-2d-canvas-acceleration=false"];
  if (look.camera === "own") args.push("--enable-mock-capture-devices=true");
  const capabilities = { alwaysMatch: { "webkitgtk:browserOptions": { args } } };
  const { sessionId } = (await send("POST", "/session", { capabilities })) as { sessionId: string };
  const session = `/session/${sessionId}`;
  atEnd(async () => {
    await send("DELETE", session);
  });
  return {
    async open(url): Promise<void> {
      await send("POST", `${session}/url`, { url });
    },
    ask: (call) => send("POST", `${session}/execute/sync`, { script: `return ${call}`, args: [] }),
    async tap(x, y): Promise<void> {
      const move = { type: "pointerMove", x: Math.round(x), y: Math.round(y) };
      const press = [
        { type: "pointerDown", button: 0 },
        { type: "pointerUp", button: 0 },
      ];
      await send("POST", `${session}/actions`, {
        actions: [{ type: "pointer", id: "finger", actions: [move, ...press] }],
      });
    },
    async resize(width, height): Promise<void> {
      await send("POST", `${session}/window/rect`, { x: 0, y: 0, width, height });
    },
    picture: async () =>
      Buffer.from((await send("GET", `${session}/screenshot`)) as string, "base64"),
  };
}

/** Asked in the page: whether nothing moves but what moves for as long as it is shown. */
async function isAtRest(): Promise<boolean> {
  const moves = ({ playState, effect }: Animation): boolean =>
    playState === "running" && Number(effect?.getComputedTiming().endTime) < 5000;
  // An animation may begin with one of the next frames of the screen.
  for (let frames = 0; frames < 4; ++frames) {
    await new Promise(requestAnimationFrame);
    if (document.getAnimations().some(moves)) return false;
  }
  return true;
}

/** Runs in the page before all else: what it has stored, and the camera that no test machine has. */
function standIn({ camera = "lit", stored = {} }: Pick<Visitor, "camera" | "stored">): void {
  if (localStorage.length === 0) Object.assign(localStorage, stored);
  const lights: boolean[] = [];
  let asks = 0;
  Object.assign(window, { lights, asks: () => asks });
  if (camera === "own") {
    // Looked at, and left as it is.
    const { prototype } = MediaDevices;
    const open: typeof prototype.getUserMedia = Reflect.get(prototype, "getUserMedia");
    prototype.getUserMedia = function (asked): Promise<MediaStream> {
      ++asks;
      return open.call(this, asked);
    };
    const own = Object.getOwnPropertyDescriptors(MediaStreamTrack.prototype);
    const look = (track: MediaStreamTrack): void => {
      const { torch } = track.getSettings() as { torch?: boolean };
      const isLit = torch === true && track.readyState === "live";
      if (isLit !== (lights.at(-1) ?? false)) lights.push(isLit);
    };
    MediaStreamTrack.prototype.applyConstraints = async function (constraints): Promise<void> {
      await own.applyConstraints.value?.call(this, constraints);
      look(this);
    };
    MediaStreamTrack.prototype.stop = function (): void {
      own.stop.value?.call(this);
      look(this);
    };
  }
  if (camera === "own" || camera === "none") return;
  let levels = [180, 90, 25];
  /** As the phone's next lens sees the same finger. */
  Object.assign(window, { switchLens: () => (levels = levels.map((level) => 0.7 * level)) });
  const swings = [2, 10, 8];
  const canvas = document.createElement("canvas");
  canvas.width = 160;
  canvas.height = 120;
  const brush = canvas.getContext("2d");
  const place = canvas.height - 2;
  let lens = "second";
  // Of the finger, in seconds. Where the machine has no time for the page it waits: it is ahead of what the page has
  // seen of it by no more than a camera's picture or two.
  let time = 0;
  let seen = 0;
  let painted = performance.now();
  const bits = [...Array(20).keys()];
  const width = canvas.width / bits.length;
  const paint = (): void => {
    if (!brush) return;
    const now = performance.now();
    time = Math.min(time + (now - painted) / 1000, seen + 0.1);
    painted = now;
    const phase = time * 1.2 * 2 * Math.PI;
    const pulse = 0.5 + 0.35 * Math.sin(phase) + 0.15 * Math.sin(2 * phase);
    const means = levels.map((level, index) =>
      lens === "first" ? 2 : level + (swings[index] ?? 0) * pulse,
    );
    brush.globalCompositeOperation = "copy";
    brush.fillStyle = `rgb(${means.map(Math.floor).join()})`;
    brush.fillRect(0, 0, canvas.width, canvas.height);
    // The fractions of a step are so many rows of one step more.
    brush.globalCompositeOperation = "lighter";
    means.forEach((mean, index) => {
      brush.fillStyle = `rgb(${[0, 1, 2].map((each) => (each === index ? 1 : 0)).join()})`;
      brush.fillRect(0, 0, canvas.width, Math.round((mean % 1) * canvas.height));
    });
    // Below, its milliseconds: a black half and a white one for each bit, so that no picture is brighter for it.
    brush.globalCompositeOperation = "source-over";
    for (const bit of bits) {
      const isSet = (Math.round(1000 * time) >> bit) % 2 === 1;
      ["#000", "#fff"].forEach((color, half) => {
        brush.fillStyle = color;
        brush.fillRect(width * (bit + (isSet === (half === 1) ? 0 : 0.5)), place, width / 2, 2);
      });
    }
  };
  setInterval(paint, 33);
  const reader = document.createElement("canvas").getContext("2d", { willReadFrequently: true });
  const read = (video: HTMLVideoElement): number => {
    reader?.drawImage(video, 0, 0);
    const pixels = reader?.getImageData(0, place + 1, canvas.width, 1).data;
    const isSet = (bit: number): boolean =>
      (pixels?.[4 * Math.floor(width * (bit + 0.25))] ?? 0) > 127;
    return bits.reduce((sum, bit) => sum + (isSet(bit) ? 2 ** bit : 0), 0) / 1000;
  };
  const video = HTMLVideoElement.prototype;
  const request: typeof video.requestVideoFrameCallback = Reflect.get(
    video,
    "requestVideoFrameCallback",
  );
  HTMLVideoElement.prototype.requestVideoFrameCallback = function (take): number {
    return request.call(this, (now, frame) => {
      seen = Math.max(seen, read(this));
      take(now, { ...frame, mediaTime: seen, captureTime: 1000 * seen });
    });
  };
  // On the prototype: WebKit makes the object itself anew, and what was set on it is lost.
  if (camera === "unlit") {
    const own = Object.getOwnPropertyDescriptors(MediaStreamTrack.prototype);
    MediaStreamTrack.prototype.getSettings = function (): MediaTrackSettings {
      return { ...own.getSettings.value?.call(this), deviceId: lens };
    };
    MediaDevices.prototype.enumerateDevices = (): Promise<MediaDeviceInfo[]> =>
      Promise.resolve(
        ["first", "second"].map((deviceId) => ({ kind: "videoinput", deviceId })) as never,
      );
  }
  MediaDevices.prototype.getUserMedia = function (asked): Promise<MediaStream> {
    if (camera === "refused") return Promise.reject(new DOMException("", "NotAllowedError"));
    const { deviceId } = asked?.video as { deviceId?: { exact: string } };
    if (camera === "unlit") lens = deviceId?.exact ?? "first";
    return Promise.resolve(canvas.captureStream(30));
  };
}

/** The page's server, with the stand-in for what the visitor has now before all else of the page. */
function serve(visitor: Visitor): Promise<PreviewServer> {
  const page = readFileSync(`${build}site/index.html`, "utf8").replace(
    "<head>",
    '<head><script src="./stand-in.js"></script>',
  );
  return serveSite(undefined, [
    {
      name: "stand-in",
      configurePreviewServer({ middlewares }): void {
        middlewares.use((request, response, next) => {
          const path = request.url?.replace(/\?.*/, "");
          const { camera, stored } = visitor;
          const calls = [`(${standIn.toString()})(${JSON.stringify({ camera, stored })});`];
          // WebKit's own camera has a torch.
          if (camera !== "own") calls.push(`(${addTorch.toString()})(${camera !== "dark"});`);
          const files = { "/": page, "/stand-in.js": calls.join("\n"), "/axe.js": axe };
          const [, file] = Object.entries(files).find(([name]) => name === path) ?? [];
          if (file === undefined) {
            next();
            return;
          }
          response.setHeader("Content-Type", path === "/" ? "text/html" : "text/javascript");
          response.end(file);
        });
      },
    },
  ]);
}

export class EngineVisit {
  private readonly address: string;

  constructor(
    private readonly visitor: Visitor,
    private readonly window: Window,
    private readonly server: PreviewServer,
  ) {
    this.address = server.resolvedUrls?.local[0] ?? "";
  }

  ask<Value, Given extends unknown[]>(
    question: (...given: Given) => Value | Promise<Value>,
    ...given: Given
  ): Promise<Value> {
    const call = `(${question.toString()})(${given.map((each) => JSON.stringify(each)).join()})`;
    // What questions ask for comes with each: a page that is about to go would take it along.
    return this.window.ask(
      `(() => { ${isAtRest.toString()} return ${call}; })()`,
    ) as Promise<Value>;
  }

  /** Until the page answers with something true; in vain once all of its texts have stood still for a minute. */
  async until<Value, Given extends unknown[]>(
    question: (...given: Given) => Value | Promise<Value>,
    ...given: Given
  ): Promise<NonNullable<Value>> {
    let looked = Date.now();
    let texts: string | undefined;
    for (;;) {
      const answer = await this.ask(question, ...given).catch((error: unknown) => {
        // WebKit's driver loses an answer now and then.
        if (!String(error).includes("Could not parse script result")) throw error;
        return undefined;
      });
      if (answer) return answer;
      if (Date.now() - looked > 60_000) {
        const before = texts;
        texts = await this.ask(() => document.body.textContent);
        if (texts === before) {
          await this.picture("failed");
          throw new Error(`never true: ${question.toString()} of ${JSON.stringify(given)}`);
        }
        looked = Date.now();
      }
      await new Promise((resolve) => setTimeout(resolve, 50));
    }
  }

  /** When a text stands on the screen. */
  async sees(text: string): Promise<void> {
    await this.until((wanted) => {
      const all = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
      for (let node = all.nextNode(); node; node = all.nextNode()) {
        if (!node.nodeValue?.includes(wanted)) continue;
        const box = node.parentElement?.getBoundingClientRect();
        if (box && box.width > 0 && box.left < innerWidth && box.right > 0) return true;
      }
      return false;
    }, text);
  }

  /** A finger on the control of this name, or the first of this selector, once all has come to rest. */
  async tap(name: string): Promise<void> {
    const place = await this.until(async (wanted) => {
      if (!(await isAtRest())) return undefined;
      // Ionic hands labels on to the button within.
      const isWanted = (each: Element): boolean =>
        [each, each.shadowRoot?.querySelector("button")].some(
          (part) =>
            part?.getAttribute("aria-label") === wanted || part?.textContent.trim() === wanted,
        );
      const controls = "button, ion-button, ion-back-button, ion-item";
      for (const control of wanted.startsWith(".")
        ? [...document.querySelectorAll(wanted)]
        : [...document.querySelectorAll(controls)].filter(isWanted)) {
        control.scrollIntoView({ block: "nearest" });
        const { left, top, width, height } = control.getBoundingClientRect();
        const at = { x: left + width / 2, y: top + height / 2 };
        if (width > 0 && control.contains(document.elementFromPoint(at.x, at.y))) return at;
      }
      return undefined;
    }, name);
    await this.window.tap(place.x, place.y);
  }

  /** What the history holds, oldest first. */
  async values(): Promise<{ hr: number; spo2: number; labels: boolean[] }[]> {
    const stored = await this.ask(() => localStorage.getItem("veyla/values"));
    return JSON.parse(stored ?? "[]") as never;
  }

  /** What the stand-in's torch has done, in its order. */
  lights(): Promise<boolean[]> {
    return this.ask(() => window.lights);
  }

  /** The same visitor with another camera, at the page's beginning. */
  async bring(camera: NonNullable<Visitor["camera"]>): Promise<void> {
    this.visitor.camera = camera;
    await this.reload();
  }

  /** What of START and the page's width is beyond a window of this size. */
  async beyond(width: number, height: number): Promise<string[]> {
    await this.window.resize(width, height);
    // WebKit's window has 334 points at least.
    await this.until((wanted) => Math.abs(innerWidth - wanted) < 20, width);
    await this.until(isAtRest);
    return this.ask(() => {
      const start = [...document.querySelectorAll("button")].find(
        (each) => each.textContent.trim() === "START",
      );
      const box = start?.getBoundingClientRect();
      return [
        document.documentElement.scrollWidth > innerWidth ? "the page's width" : "",
        box && box.height > 0 && box.bottom <= innerHeight ? "" : "START",
      ].filter(Boolean);
    });
  }

  /** What keeps somebody from using the screen on which this text stands, its contrasts among it. */
  async faults(text: string): Promise<string[]> {
    await this.sees(text);
    await this.until(isAtRest);
    const { passes, violations } = await this.ask(async () => {
      if (!("axe" in window)) {
        const script = document.createElement("script");
        script.src = "./axe.js";
        document.head.append(script);
        await new Promise((load) => (script.onload = load));
      }
      return window.axe.run({ resultTypes: ["violations"] });
    });
    return passes.length > 0 ? serious(violations) : ["nothing was looked at"];
  }

  async reload(): Promise<void> {
    await this.window.open(this.address);
  }

  /** Once the page is kept for it. */
  async loseNetwork(): Promise<void> {
    await this.ask(async () => (await navigator.serviceWorker.ready).scope);
    if ("closeAllConnections" in this.server.httpServer)
      this.server.httpServer.closeAllConnections();
    await this.server.close();
  }

  async picture(screen: string): Promise<void> {
    mkdirSync(`${build}web-pictures`, { recursive: true });
    writeFileSync(
      `${build}web-pictures/${this.visitor.engine}-${screen}.png`,
      await this.window.picture(),
    );
  }
}

/** Opens the page; at the end of the test it is closed. */
export async function visitBy(
  visitor: Visitor,
  { onTestFinished }: TestContext,
): Promise<EngineVisit> {
  const server = await serve(visitor);
  onTestFinished(() => server.close());
  const { engine } = visitor;
  const open = engine === "webkit" ? openWebKit : openFirefox;
  const window = await open(visitor, onTestFinished);
  const visit = new EngineVisit(visitor, window, server);
  await window.resize(390, 844);
  await visit.reload();
  return visit;
}
