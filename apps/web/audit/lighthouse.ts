// Lighthouse's audit of the built page, as on a phone: the four scores into the terminal, and all that was found
// into build/lighthouse.json. Fails below 95.
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

import lighthouse, { type Flags } from "lighthouse";
import puppeteer from "puppeteer-core";
import { type Plugin, preview } from "vite";

const aim = 95;
const root = fileURLToPath(new URL("..", import.meta.url));
const report = fileURLToPath(new URL("../../../build/lighthouse.json", import.meta.url));

/** As hosts do: what bears its contents in its name lasts, and WebAssembly is compressed like all else. */
const asHosts: Plugin = {
  name: "as-hosts",
  configurePreviewServer({ config, middlewares }): void {
    middlewares.use(({ url = "" }, response, next) => {
      const lasts = url.startsWith("/assets/");
      response.setHeader("Cache-Control", lasts ? "max-age=31536000, immutable" : "no-cache");
      if (!url.endsWith(".wasm")) {
        next();
        return;
      }
      response.setHeader("Content-Type", "application/wasm");
      response.setHeader("Content-Encoding", "gzip");
      response.end(gzipSync(readFileSync(join(config.build.outDir, url))));
    });
  },
};

const server = await preview({
  root,
  configFile: join(root, "vite.config.ts"),
  preview: { host: "127.0.0.1", port: 0 },
  plugins: [asHosts],
  logLevel: "warn",
});
const browser = await puppeteer.launch({
  executablePath: process.env["CHROMIUM"] ?? "/usr/bin/chromium",
  args: ["--no-sandbox", "--disable-gpu"],
});
try {
  const page = await browser.newPage();
  const flags: Flags = { logLevel: "error" };
  const address = server.resolvedUrls?.local[0] ?? "";
  const result = await lighthouse(address, flags, undefined, page);
  if (!result) throw new Error("Lighthouse gives no result");
  writeFileSync(report, JSON.stringify(result.lhr));
  const scores = Object.values(result.lhr.categories).map(
    ({ title, score }) => [title, Math.round(100 * (score ?? 0))] as const,
  );
  for (const [title, score] of scores) console.info(`${title}: ${score}`);
  if (scores.some(([, score]) => score < aim)) process.exitCode = 1;
} finally {
  await browser.close();
  await server.close();
}
