import { createHash } from "node:crypto";
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { join, relative } from "node:path";
import { fileURLToPath } from "node:url";

import { defineConfig, type HtmlTagDescriptor, type Plugin } from "vite";

const root = fileURLToPath(new URL(".", import.meta.url));
const outDir = fileURLToPath(new URL("../../build/site", import.meta.url));

function filesIn(folder: string): string[] {
  return readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const path = join(folder, entry.name);
    return entry.isDirectory() ? filesIn(path) : [path];
  });
}

/** Tells the service worker what to keep for the time without a network, and under which name. */
function fileListForServiceWorker(): Plugin {
  return {
    name: "file-list-for-service-worker",
    apply: "build",
    closeBundle(): void {
      const worker = join(outDir, "service-worker.js");
      // Shown by whoever installs it, not by the application.
      const unwanted = [worker, join(outDir, "screenshots")];
      const files = filesIn(outDir).filter(
        (file) => !unwanted.some((each) => file.startsWith(each)),
      );
      const hash = createHash("sha256");
      for (const file of files) hash.update(readFileSync(file));
      const names = ["./", ...files.map((file) => relative(outDir, file).replaceAll("\\", "/"))];
      const source = readFileSync(worker, "utf8")
        .replace('"VERSION"', JSON.stringify(hash.digest("hex").slice(0, 16)))
        .replace('["FILES"]', JSON.stringify(names.filter((name) => name !== "index.html")));
      writeFileSync(worker, source);
    },
  };
}

/**
 * What the first screen waits for comes at once, and not only when the script that wants it is there: the core, and
 * what the library's navigation loads for its way back. The first paint waits for nothing but the page's own file:
 * what decides what it shows, and the style, stand in there.
 */
function firstScreen(): Plugin {
  return {
    name: "first-screen",
    apply: "build",
    transformIndexHtml(html, { bundle = {} }): { html: string; tags: HtmlTagDescriptor[] } {
      const core = Object.keys(bundle).filter((name) => name.endsWith(".wasm"));
      const chunks = Object.values(bundle).filter((each) => each.type === "chunk");
      const back = chunks.filter(({ exports }) => exports.includes("createSwipeBackGesture"));
      const isEntry = (name: string): boolean =>
        chunks.some((each) => each.fileName === name && each.isEntry);
      const scripts = back.flatMap(({ fileName, imports }) => [
        fileName,
        ...imports.filter((name) => !isEntry(name)),
      ]);
      if (core.length !== 1 || scripts.length === 0)
        throw new Error("what the first screen waits for is not found");
      const links = [
        ...core.map((name) => ({ rel: "preload", as: "fetch", href: `./${name}` })),
        ...scripts.map((name) => ({ rel: "modulepreload", href: `./${name}` })),
      ].map((attrs) => ({
        tag: "link",
        injectTo: "head",
        attrs: { ...attrs, crossorigin: "anonymous" },
      })) satisfies HtmlTagDescriptor[];
      const decision = readFileSync(join(root, "first_visit.js"), "utf8");
      const allowed = createHash("sha256").update(decision).digest("base64");
      const named = Object.values(bundle).flatMap((each) =>
        each.type === "asset" && html.includes(each.fileName) && each.fileName.endsWith(".css")
          ? [each]
          : [],
      );
      const [style] = named;
      const link = new RegExp(`<link [^>]*${style?.fileName}">`);
      if (!style || named.length !== 1 || !html.includes("script-src 'self'") || !link.test(html))
        throw new Error("the page's style is not found");
      Reflect.deleteProperty(bundle, style.fileName);
      return {
        html: html
          .replace(link, () => `<style>${String(style.source)}</style>`)
          .replace("script-src 'self'", `$& 'sha256-${allowed}'`),
        tags: [{ tag: "script", injectTo: "head", children: decision }, ...links],
      };
    },
  };
}

export default defineConfig({
  root,
  // The folder may be served from anywhere below a host.
  base: "./",
  // A path that does not exist is told so, and is not the page once more.
  appType: "mpa",
  resolve: {
    alias: {
      "veyla-core": fileURLToPath(
        new URL("../../build/web/apps/web/veyla_app.mjs", import.meta.url),
      ),
    },
  },
  build: {
    outDir,
    emptyOutDir: true,
    target: "es2022",
    assetsInlineLimit: 0,
    chunkSizeWarningLimit: 1000,
  },
  plugins: [firstScreen(), fileListForServiceWorker()],
});
