// The built page in a real browser at a phone's size, with a recording as its camera.
import { mkdirSync, writeFileSync } from "node:fs";

import type { AxeResults, RunOptions } from "axe-core";
import {
  type Browser,
  type BrowserContext,
  type BrowserContextOptions,
  type CDPSession,
  chromium,
  type Locator,
  type Page,
} from "playwright-core";
import type { PreviewServer } from "vite";
import { afterAll, expect, onTestFinished } from "vitest";

import { addTorch, axe, build, serious, serveSite } from "./site";

/** How one visitor comes. */
export interface Visitor extends Pick<
  BrowserContextOptions,
  "colorScheme" | "reducedMotion" | "serviceWorkers" | "userAgent" | "viewport"
> {
  /**
   * The recording of a generated finger before the camera, that of 72 beats per minute unless it is told; or
   * a camera that the user refuses.
   */
  readonly camera?: "72" | "absent" | "refused";
  /** Broken: the camera tells of one that stays dark. */
  readonly torch?: boolean | "broken";
  /** Somebody who has been here before, unless it is told. */
  readonly stored?: Readonly<Record<string, string>>;
  readonly query?: string;
  /** The host by whose name the page is opened; without HTTPS, browsers trust their own machine alone. */
  readonly host?: string;
  /** By the server for phones in the same network. */
  readonly byPhone?: boolean;
  /** By the browser with its dialogs and menus; the others come by its engine alone, which is half the work. */
  readonly isWhole?: boolean;
  /** What the browser lacks or does badly. */
  readonly lacks?: "video frames" | "the core" | "storage" | "languages";
}

/** Somebody who has seen the introduction and answered about health records. */
export const acquainted: Readonly<Record<string, string>> = {
  "veyla/pleaseNoteShown": "true",
  "veyla/healthPermissions": '{"heartRate":true,"oxygenSaturation":true}',
};

/** By whom what moves is seen; the others have asked for calm. */
export const moving = { reducedMotion: "no-preference" } as const;

/** A measurement that somebody has made before the test. */
export interface Entry {
  readonly hr: number;
  readonly spo2: number;
  /** Seconds since 1970. */
  readonly date: number;
  readonly labels?: readonly number[];
}

/** What the browser stores for these entries, oldest first. */
export function storedHistory(history: readonly Entry[]): Readonly<Record<string, string>> {
  const values = history.map(({ hr, spo2, date, labels }) => ({
    hr,
    spo2,
    date: { $date: date },
    labels: Array.from({ length: 7 }, (_, label) => labels?.includes(label) ?? false),
  }));
  return { ...acquainted, "veyla/values": JSON.stringify(values) };
}

declare global {
  interface Window {
    /** The addresses that the page handed on to the phone, in their order. */
    addresses: string[];
    /** What the torch has done, in its order: lit, and gone out. */
    lights: boolean[];
    /** What the phone was made to vibrate by, in its order. */
    shakes: unknown[];
    axe: { run(options: RunOptions): Promise<AxeResults> };
    setInFront(inFront: boolean): void;
  }
}

type Place = Readonly<Record<"x" | "y", number>>;

export class Visit {
  readonly log: string[] = [];
  /** What no visit may have: requests beyond the origin, errors, refusals by the page's policy. */
  readonly problems: string[] = [];

  constructor(
    readonly page: Page,
    readonly context: BrowserContext,
    /** What the browser itself is told beyond what its automation can say. */
    readonly session: CDPSession,
    origin: string,
  ) {
    context.on("request", (request) => {
      const url = new URL(request.url());
      const isOwn = url.origin === origin || ["data:", "blob:"].includes(url.protocol);
      if (!isOwn) this.problems.push(`a request beyond the origin: ${request.url()}`);
    });
    page.on("pageerror", (error) => this.problems.push(`an error in the page: ${error.message}`));
    page.on("console", (message) => {
      if (message.type() === "info") this.log.push(message.text());
      if (message.type() === "error") this.problems.push(`the console: ${message.text()}`);
    });
  }

  element(name: string): Locator {
    return this.page.locator(`[data-element="${name}"]`);
  }

  alert(title: string): Locator {
    return this.page.getByRole("alertdialog", { name: title, exact: true });
  }

  button(name: string | RegExp): Locator {
    return this.page.getByRole("button", { name, exact: true });
  }

  heading(name: string): Locator {
    return this.page.getByRole("heading", { name, exact: true });
  }

  async tap(name: string | RegExp): Promise<void> {
    await this.button(name).click();
  }

  /** The results, or the options, as a swipe to them shows them. */
  async open(screen: "results" | "options"): Promise<void> {
    // From the first page: one above it may be about to go.
    await this.page.waitForFunction(
      () => document.querySelectorAll("ion-nav > .ion-page").length === 1,
    );
    await this.settled();
    await this.swipe(screen === "results" ? "right" : "left");
    await this.page.locator(`.${screen}`).waitFor();
    await this.settled();
  }

  /** Through the countdown: what the status line says may still stand from the time before. */
  async startMeasuring(): Promise<void> {
    await this.tap("START");
    await this.page.getByText("Will begin in a couple of seconds ...").waitFor();
    await this.page.getByText("Analyzing - hold steady ...").waitFor();
  }

  /** The history as it is stored, oldest first. */
  async values(): Promise<{ hr: number; spo2: number; labels: boolean[] }[]> {
    return JSON.parse((await this.stored("values")) ?? "[]") as never;
  }

  /** What the core has stored under a key, as text. */
  stored(key: string): Promise<string | null> {
    return this.page.evaluate((item) => localStorage.getItem(item), `veyla/${key}`);
  }

  torch(): Promise<boolean[]> {
    return this.page.evaluate(() => window.lights);
  }

  addresses(): Promise<string[]> {
    return this.page.evaluate(() => window.addresses);
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

  /** When nothing moves but what moves for as long as it is shown, or shows a wait. */
  async still(): Promise<void> {
    await this.page.evaluate(async () => {
      const ends = (each: Animation): boolean =>
        Number(each.effect?.getComputedTiming().endTime) < 5000 &&
        !(each instanceof CSSAnimation && each.animationName === "close-ring");
      const moves = (): boolean =>
        document.getAnimations().some((each) => each.playState === "running" && ends(each));
      // An animation may begin with one of the next frames of the screen.
      for (let frames = 0; frames < 4; frames = moves() ? 0 : frames + 1) {
        await new Promise(requestAnimationFrame);
      }
    });
  }

  /** A finger's swipe over the middle of the screen. */
  async swipe(direction: "left" | "right"): Promise<void> {
    const { width, height } = this.page.viewportSize() ?? { width: 0, height: 0 };
    const left = { x: width / 4, y: height / 2 };
    const right = { x: width * 0.75, y: height / 2 };
    await this.moveFingers(direction === "left" ? [right, left] : [left, right]);
  }

  /** Each finger from one place to another, all at once. */
  async moveFingers(...ways: readonly (readonly [from: Place, to: Place])[]): Promise<void> {
    const steps = 8;
    for (let step = 0; step <= steps; ++step) {
      const touchPoints = ways.map(([from, to], id) => ({
        id,
        x: from.x + ((to.x - from.x) * step) / steps,
        y: from.y + ((to.y - from.y) * step) / steps,
      }));
      const type = step === 0 ? "touchStart" : "touchMove";
      await this.session.send("Input.dispatchTouchEvent", { type, touchPoints });
    }
    await this.session.send("Input.dispatchTouchEvent", { type: "touchEnd", touchPoints: [] });
  }

  /** Keeps a picture of the screen to be looked at, and has it judged. */
  async inspect(screen: string): Promise<void> {
    await this.still();
    // What goes on for as long as it is shown stands still for the picture, between two fades.
    await this.page.evaluate(() => {
      for (const each of document.getAnimations()) {
        each.pause();
        each.currentTime = 1000;
      }
    });
    await this.picture(screen);
    await this.judge(screen);
    await this.page.evaluate(() => {
      for (const each of document.getAnimations()) each.play();
    });
  }

  async picture(screen: string): Promise<void> {
    // As the browser gives it: what else the automation does for a picture takes five times as long.
    const { data } = await this.session.send("Page.captureScreenshot", { optimizeForSpeed: true });
    mkdirSync(`${build}web-pictures`, { recursive: true });
    writeFileSync(`${build}web-pictures/${screen}.png`, data, "base64");
  }

  /** Asks axe-core whether everybody can use the screen. */
  async judge(screen: string): Promise<void> {
    if (await this.page.evaluate(() => !("axe" in window))) await this.page.evaluate(axe);
    // What nobody is kept out by is counted, and not described.
    const { passes, violations } = await this.page.evaluate(() =>
      window.axe.run({ resultTypes: ["violations"] }),
    );
    expect(passes.length, screen).toBeGreaterThan(0);
    expect(serious(violations), screen).toEqual([]);
  }
}

/** Prepares the page to be followed, and to be told what no test browser has. */
function follow(): void {
  const setInFront = (inFront: boolean): void => {
    const state = inFront ? "visible" : "hidden";
    Object.defineProperty(document, "visibilityState", { value: state, configurable: true });
    document.dispatchEvent(new Event("visibilitychange"));
  };
  const shakes: unknown[] = [];
  Object.assign(window, { lights: [], addresses: [], shakes, setInFront });
  navigator.vibrate = (pattern): boolean => shakes.push(pattern) > 0;
  const links = HTMLAnchorElement.prototype as { click: (this: HTMLAnchorElement) => void };
  const { click } = links;
  links.click = function (): void {
    if (this.protocol === "blob:") click.call(this);
    else window.addresses.push(this.href);
  };
}

/** Takes away what a browser lacks. */
function takeAway(what: string): void {
  if (what === "video frames") {
    delete (HTMLVideoElement.prototype as { requestVideoFrameCallback?: unknown })
      .requestVideoFrameCallback;
  }
  if (what === "languages") {
    // Its own parts refuse its tags.
    Object.defineProperties(navigator, {
      language: { value: "c", configurable: true },
      languages: { value: ["en_US.utf8", "de-AT"] },
    });
    const { DateTimeFormat } = Intl;
    Intl.DateTimeFormat = function (tag = "c", options?: object): Intl.DateTimeFormat {
      return new DateTimeFormat(tag, options);
    } as typeof DateTimeFormat;
  }
  if (what === "storage") {
    Object.defineProperty(window, "localStorage", {
      get() {
        throw new DOMException("blocked", "SecurityError");
      },
    });
  }
}

/** The browsers of a file's tests, by their kinds and cameras. */
const browsers = new Map<string, Promise<Browser>>();
/** Those that the page comes from, by their settings. */
const servers = new Map<string, Promise<PreviewServer>>();
afterAll(async () => {
  for (const browser of browsers.values()) await (await browser).close();
  for (const server of servers.values()) await (await server).close();
});

function launch(camera: NonNullable<Visitor["camera"]>, isWhole: boolean): Promise<Browser> {
  const args = [
    "--disable-gpu",
    "--ignore-certificate-errors",
    "--host-resolver-rules=MAP veyla.test 127.0.0.1",
  ];
  args.push("--use-fake-device-for-media-stream");
  if (camera !== "refused") {
    args.push("--use-fake-ui-for-media-stream");
    args.push(`--use-file-for-fake-video-capture=${build}web-recordings/${camera}.y4m`);
  }
  const executablePath = isWhole
    ? (process.env["CHROMIUM"] ?? "/usr/bin/chromium")
    : (process.env["CHROMIUM_ENGINE"] ?? "/usr/bin/chromium-headless-shell");
  return chromium.launch({ executablePath, args });
}

/** Opens the page; at the end of the test it is closed, and must have had no problems. */
export async function visitPage(visitor: Visitor = {}): Promise<Visit> {
  const { camera = "72", isWhole = camera === "refused" } = visitor;
  const kind = `${camera} ${isWhole}`;
  const browser = browsers.get(kind) ?? launch(camera, isWhole);
  browsers.set(kind, browser);
  const config = `${visitor.byPhone ? "phone/" : ""}vite.config.ts`;
  const server = servers.get(config) ?? serveSite(config);
  servers.set(config, server);
  const context = await (
    await browser
  ).newContext({
    viewport: { width: 390, height: 844 },
    deviceScaleFactor: 2,
    hasTouch: true,
    isMobile: true,
    locale: "en-US",
    timezoneId: "UTC",
    permissions: camera === "refused" ? [] : ["camera"],
    // What keeps the page fetches all of it once more.
    serviceWorkers: "block",
    // What moves is drawn anew with each frame of the screen.
    reducedMotion: "reduce",
    ...visitor,
  });
  const { lacks, torch = true, stored = acquainted } = visitor;
  await context.addInitScript(follow);
  if (torch !== false) await context.addInitScript(addTorch, torch);
  if (lacks === "the core") await context.route("**/*.wasm", (route) => route.abort());
  else if (lacks) await context.addInitScript(takeAway, lacks);
  if (lacks !== "storage") {
    await context.addInitScript((items) => {
      // Once, so that a reloaded page finds what it stored itself.
      if (localStorage.length === 0) Object.assign(localStorage, items);
    }, stored);
  }
  const url = new URL((await server).resolvedUrls?.local[0] ?? "");
  if (visitor.host !== undefined) url.hostname = visitor.host;
  const page = await context.newPage();
  const visit = new Visit(page, context, await context.newCDPSession(page), url.origin);
  onTestFinished(async () => {
    await context.close();
    expect(visit.problems).toEqual([]);
  });
  await visit.page.goto(`${url.href}${visitor.query ?? "?log"}`);
  if (lacks !== "the core") await visit.page.locator(".measuring-grid").waitFor();
  return visit;
}
