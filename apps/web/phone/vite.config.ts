// Serves the built page to phones in the same network: by HTTPS, since browsers give the camera to
// encrypted pages alone, under a certificate that is made on the spot and thrown away.
import { execFileSync } from "node:child_process";
import { createSocket } from "node:dgram";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { fileURLToPath } from "node:url";

import { renderUnicodeCompact } from "uqr";
import { defineConfig, mergeConfig, type Plugin } from "vite";

import site from "../vite.config";
import { reportsFromPhones } from "./reports";

const here = fileURLToPath(new URL(".", import.meta.url));

/** The machine's own address on the way out of it: bridges and containers have addresses, too, but lead nowhere. */
function networkAddress(): Promise<string> {
  return new Promise((resolve, reject) => {
    const socket = createSocket("udp4");
    const tell = (error?: Error | null): void => {
      const { address } = error ? { address: "" } : socket.address();
      socket.close();
      if (address !== "") resolve(address);
      else
        reject(new Error("this machine is in no network; connect it to the phone's and try again"));
    };
    socket.on("error", tell);
    // Nothing is sent: the system only picks the address that it would send from. The other end is one that
    // is kept for documents.
    socket.connect(9, "198.51.100.1", tell);
  });
}

/** A key and a certificate for the address, signed by nobody but itself. */
function makeCertificate(address: string): { key: string; cert: string } {
  const folder = mkdtempSync(join(tmpdir(), "veyla-phone-"));
  const [key, cert] = [join(folder, "key.pem"), join(folder, "cert.pem")];
  const request =
    `req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 30 -subj /CN=Veyla ` +
    `-addext subjectAltName=IP:${address} -addext extendedKeyUsage=serverAuth`;
  try {
    execFileSync("openssl", [...request.split(" "), "-keyout", key, "-out", cert], {
      stdio: "pipe",
    });
    return { key: readFileSync(key, "utf8"), cert: readFileSync(cert, "utf8") };
  } finally {
    rmSync(folder, { recursive: true });
  }
}

function whatToDo(address: string): string {
  return `
Open this address on a phone in the same network, or point its camera at the code:

  ${address}

${renderUnicodeCompact(address, { border: 2 })}

The phone will warn that the connection is not private, since nobody has vouched for the certificate: this
machine made it a moment ago. The page comes from here, and what is measured stays on the phone, so going on
is all right for this address ("Advanced" or "Show details", then "Proceed" or "Visit this website"). Keep
heeding the warning anywhere else.

${address}?log   tells this terminal what the phone's camera does: its light, exposure and frames, and
what is seen of the finger. Only this server takes that, and only with ?log; nothing of it is kept.

Does it not open: both must be in one network, port 8443 open in this machine's firewall, and the address the
one of that network; ADDRESS=… before make phone names another. Without a known certificate the browser does not
keep the page: it is there while this runs, and the results stay under this address (move them by Back up).

Ctrl-C ends it.
`;
}

const address = process.env["ADDRESS"] ?? (await networkAddress());

const tellWhatToDo: Plugin = {
  name: "tell-what-to-do",
  configurePreviewServer(server): void {
    server.httpServer.once("listening", () => {
      const bound = server.httpServer.address();
      const port = typeof bound === "object" ? bound?.port : undefined;
      process.once("SIGINT", () => {
        process.exit(0);
      });
      console.info(whatToDo(`https://${address}:${port ?? ""}/`));
    });
  },
};

export default mergeConfig(
  site,
  defineConfig({
    preview: { host: address, port: 8443, https: makeCertificate(address) },
    plugins: [reportsFromPhones(join(here, "report.ts")), tellWhatToDo],
  }),
);
