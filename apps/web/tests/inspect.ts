// Screens as they are seen and as they are read out.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";

import type { AxeResults } from "axe-core";
import { expect } from "vitest";

import type { Visit } from "./browser";

const source = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** Keeps a picture of the screen to be looked at, and asks axe-core whether everybody can use it. */
export async function inspect(visit: Visit, screen: string): Promise<void> {
  await visit.picture(screen);
  await visit.page.evaluate(source);
  const results = await visit.page.evaluate(() =>
    (window as unknown as { axe: { run(): Promise<AxeResults> } }).axe.run(),
  );
  expect(results.passes.length, screen).toBeGreaterThan(0);
  const serious = results.violations
    .filter(({ impact }) => impact === "serious" || impact === "critical")
    .map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(" ")}`);
  expect(serious, screen).toEqual([]);
}
