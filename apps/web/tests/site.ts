// What the tests of every browser share: the built page's server, and a torch for cameras that have none.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { fileURLToPath } from "node:url";

import type { AxeResults } from "axe-core";
import { preview, type PreviewServer, type Plugin } from "vite";

const root = fileURLToPath(new URL("..", import.meta.url));
export const build = fileURLToPath(new URL("../../../build/", import.meta.url));

/** The script that looks whether everybody can use a screen. */
export const axe = readFileSync(
  createRequire(import.meta.url).resolve("axe-core/axe.min.js"),
  "utf8",
);

/** What of its findings keeps somebody out. */
export function serious(violations: AxeResults["violations"]): string[] {
  return violations
    .filter(({ impact }) => impact === "serious" || impact === "critical")
    .map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(" ")}`);
}

/** By the settings of one of the project's servers. */
export function serveSite(
  config = "vite.config.ts",
  plugins: Plugin[] = [],
): Promise<PreviewServer> {
  return preview({
    root,
    configFile: `${root}${config}`,
    preview: { host: "127.0.0.1", port: 0, allowedHosts: ["veyla.test"] },
    logLevel: "warn",
    plugins,
  });
}

/** Stands in for what no generated camera has, at the edge of the track: a torch, and a mode beside it. */
export function addTorch(kind: boolean | "broken"): void {
  const lit = new WeakSet<MediaStreamTrack>();
  const light = (track: MediaStreamTrack, on: boolean): void => {
    if (lit.has(track) === on || kind === "broken") return;
    if (on) lit.add(track);
    else lit.delete(track);
    window.lights.push(on);
  };
  const tracks = MediaStreamTrack.prototype;
  const own = Object.getOwnPropertyDescriptors(tracks);
  const capabilities: object = kind ? { torch: true, exposureMode: ["continuous"] } : {};
  tracks.getCapabilities = (): MediaTrackCapabilities => capabilities;
  tracks.getSettings = function (): MediaTrackSettings {
    return { ...own.getSettings.value?.call(this), torch: lit.has(this) };
  };
  tracks.applyConstraints = function (constraints): Promise<void> {
    const [{ torch } = {}] = (constraints?.advanced ?? []) as { torch?: boolean }[];
    if (torch !== undefined) light(this, torch);
    return Promise.resolve();
  };
  tracks.stop = function (): void {
    own.stop.value?.call(this);
    light(this, false);
  };
}
