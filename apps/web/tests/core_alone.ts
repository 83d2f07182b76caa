// The core without a page: tells what it says to the views, for tests to compare the page with.
import { readFileSync } from "node:fs";
import { fileURLToPath, pathToFileURL } from "node:url";

import { browserText } from "../../../platform/web/text";
import type { WebApp } from "../src/core";
import type { ChartViews, DisplayViews, OptionsViews, ResultsViews } from "../src/page";

const built = fileURLToPath(new URL("../../../build/web/apps/web/", import.meta.url));

/** An operation of the page's that the core called. */
export interface Said {
  readonly name: string;
  readonly values: readonly unknown[];
}

type AnyViews = ResultsViews & OptionsViews & DisplayViews & ChartViews;
type Answers = Readonly<Record<string, (key: string) => unknown>>;

/** What stands in for views: it keeps what is said, and answers with `answers` or nothing. */
export function listener(said: Said[], answers: Answers = {}): AnyViews {
  const views = new Proxy(
    {},
    {
      get:
        (_target, name: string) =>
        (...values: unknown[]): unknown => {
          said.push({ name, values });
          return answers[name]?.(String(values[0]));
        },
    },
  );
  return views as AnyViews;
}

/** `stored` is what a browser stores, under its names. */
export async function coreAlone(
  said: Said[],
  stored: Readonly<Record<string, string>>,
): Promise<WebApp> {
  const wasm = readFileSync(`${built}veyla_app.wasm`);
  const headers = { "content-type": "application/wasm" };
  const before = globalThis.fetch;
  globalThis.fetch = (): Promise<Response> => Promise.resolve(new Response(wasm, { headers }));
  const { default: createVeyla } = (await import(pathToFileURL(`${built}veyla_app.mjs`).href)) as {
    default: () => Promise<{ WebApp: new (page: unknown) => WebApp }>;
  };
  const core = await createVeyla();
  globalThis.fetch = before;
  const views = (answers?: Answers): unknown => listener(said, answers);
  return new core.WebApp({
    log: { enabled: false, line: () => undefined },
    device: { hardwareModel: "", systemVersion: "" },
    storage: views({ read: (key) => stored[`veyla/${key}`] ?? null, write: () => "" }),
    text: browserText,
    camera: views({ authorization: () => "granted" }),
    canvas: views({ measureText: () => ({ width: 0, ascent: 0, descent: 0 }) }),
    ...Object.fromEntries(
      ["health", "screens", "alerts", "measuring", "intro", "actionSheet", "sharing"].map(
        (name) => [name, views()],
      ),
    ),
  });
}
