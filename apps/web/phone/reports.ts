// What phones tell of their cameras, into the terminal.
import { readFileSync } from "node:fs";
import type { IncomingMessage, ServerResponse } from "node:http";
import { join } from "node:path";

import { type Plugin, type PreviewServer, transformWithEsbuild } from "vite";

/** More than a second of lines. */
const longestReport = 20_000;

/** Anybody in the network may send one: it gets no hold of the terminal. */
function printable(line: string): string {
  return line.replace(/[^\P{C}\t]/gu, "?");
}

async function textOf(request: IncomingMessage): Promise<string> {
  let text = "";
  for await (const part of request.setEncoding("utf8")) {
    text += String(part);
    if (text.length > longestReport) break;
  }
  return text.slice(0, longestReport);
}

/** Puts the script of `report` into the page where `?log` asks for it, and prints what it sends. */
export function reportsFromPhones(report: string): Plugin {
  const answer = async (
    server: PreviewServer,
    request: IncomingMessage,
    response: ServerResponse,
  ): Promise<boolean> => {
    const { pathname, searchParams } = new URL(request.url ?? "/", "https://here");
    if (pathname === "/report" && request.method === "POST") {
      const time = new Date().toLocaleTimeString();
      for (const line of (await textOf(request)).split("\n")) {
        console.info(`${time}  ${printable(line)}`);
      }
      response.writeHead(204).end();
      return true;
    }
    if (pathname === "/report.js") {
      const { code } = await transformWithEsbuild(readFileSync(report, "utf8"), report);
      response.writeHead(200, { "Content-Type": "text/javascript" }).end(code);
      return true;
    }
    if (!["/", "/index.html"].includes(pathname) || !searchParams.has("log")) return false;
    const page = readFileSync(join(server.config.build.outDir, "index.html"), "utf8");
    const script = '<script type="module" src="./report.js"></script>';
    response
      .writeHead(200, { "Content-Type": "text/html", "Cache-Control": "no-store" })
      .end(page.replace("<head>", `<head>${script}`));
    return true;
  };
  return {
    name: "reports-from-phones",
    configurePreviewServer(server): void {
      server.middlewares.use((request, response, next) => {
        answer(server, request, response).then((isAnswered) => {
          if (!isAnswered) next();
        }, next);
      });
    },
  };
}
