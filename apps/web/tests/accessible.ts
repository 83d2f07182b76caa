// What a screen reader and other helpers need, by axe-core's rules.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";

import type { AxeResults } from "axe-core";
import { expect } from "vitest";

import type { Visit } from "./browser";

const source = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

export async function expectAccessible(visit: Visit, screen: string): Promise<void> {
  await visit.page.evaluate(source);
  const results = await visit.page.evaluate(() =>
    (window as unknown as { axe: { run(): Promise<AxeResults> } }).axe.run(),
  );
  const serious = results.violations
    .filter(({ impact }) => impact === "serious" || impact === "critical")
    .map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(" ")}`);
  expect(serious, screen).toEqual([]);
}
