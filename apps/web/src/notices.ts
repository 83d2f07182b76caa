// Tells what the browser keeps from working, and what to do about it.
import type { refusedLanguages } from "../../../platform/web/language";
import type { WebApp } from "./core";
import { isIos, make, sheetButtons, sheetCard, showModal } from "./dom";
import { saveAsFile } from "./files";

interface Action {
  readonly title: string;
  /** Whether the notice has served its purpose after this. */
  readonly closes: boolean;
  readonly run: () => void;
}

let notices = 0;

const close: Action = { title: "Close", closes: true, run: () => undefined };

/** One that nothing but its actions ends has no `close` among them. */
function showNotice(
  title: string,
  line: string,
  actions: readonly Action[] = [close],
  look: "notice-sheet" | "notice-sheet.resting" = "notice-sheet",
): void {
  // Several changes that fail together have one reason.
  const shown = [...document.querySelectorAll("dialog.notice-sheet p")];
  if (shown.some(({ textContent }) => textContent === line)) return;
  const id = `notice-title-${++notices}`;
  const dialog = make(`dialog.sheet.${look}`, { role: "alertdialog", "aria-labelledby": id });
  const buttons = actions.map((action) => {
    const button = make("button", { type: "button" }, action.title);
    button.addEventListener("click", () => {
      action.run();
      if (action.closes) dialog.close();
    });
    return button;
  });
  dialog.append(
    sheetCard(make("h2", { id }, title), make("p", {}, line), sheetButtons(...buttons)),
  );
  dialog.addEventListener("cancel", (event) => {
    if (!actions.includes(close)) event.preventDefault();
  });
  dialog.addEventListener("close", () => {
    dialog.remove();
  });
  document.body.append(dialog);
  showModal(dialog);
}

/** `damagedKey` names an item that cannot be read; it is empty for anything else. */
export function showStorageProblem(core: () => WebApp, damagedKey: string, line: string): void {
  if (damagedKey === "") {
    showNotice("Not saved", line);
    return;
  }
  showNotice("Damaged data", line, [
    {
      title: "Save a copy",
      closes: false,
      run(): void {
        const text = core().rawStoredText(damagedKey) ?? "";
        saveAsFile(`veyla-${damagedKey}.txt`, "text/plain", text);
      },
    },
    {
      title: "Set it aside",
      closes: true,
      run(): void {
        core().setStoredTextAside(damagedKey);
      },
    },
    close,
  ]);
}

const loadAgain: Action = {
  title: "Load again",
  closes: false,
  run(): void {
    window.location.reload();
  },
};

export function showStartFailure(): void {
  showNotice(
    "Veyla does not start",
    "A part of it did not load, or this browser is too old for it. Check the connection and load the " +
      "page again. If that does not help, use a newer browser.",
    [loadAgain, close],
  );
}

export function showPageFailure(): void {
  showNotice(
    "This page does not open",
    "A part of it did not load. Check the connection and load it again.",
    [loadAgain, close],
  );
}

/** Resolves when this window is to take over from another. */
export function askToTakeOver(): Promise<void> {
  return new Promise((resolve) => {
    showNotice(
      "Open in another window",
      "Another window or tab of this browser has Veyla open. Two at once would undo each other's changes.",
      [{ title: "Use it here", closes: true, run: resolve }],
    );
  });
}

export function showTakenOver(takeOverAgain: () => void): void {
  showNotice(
    "Continued in another window",
    "Another window or tab of this browser measures and keeps the results now. This one is at rest.",
    [{ title: "Use it here", closes: false, run: takeOverAgain }],
    "notice-sheet.resting",
  );
}

const frameless =
  "It does not hand the camera's pictures to pages. Bring it up to date, or open this page in another one.";
const insecure =
  "Browsers give the camera to pages from HTTPS alone. Open this page by an address that begins " +
  "with https://.";

export function showRefusedLanguages({ refused, instead }: typeof refusedLanguages): void {
  if (refused.length === 0) return;
  const names = refused.map((name) => `"${name}"`).join(", ");
  showNotice(
    "Dates in another language",
    `This browser refuses to write in ${names}: dates and numbers are written as in "${instead}". ` +
      "Another language in its settings changes that.",
  );
}

export function showOldBrowser(): void {
  showNotice("This browser cannot measure", frameless);
}

export function showInsecureAddress(): void {
  showNotice("No camera at this address", insecure);
}

/** The core's alert names the Settings App of iOS, and an application that is not in there. */
function placeOfPermission(): string {
  const isInstalled = window.matchMedia("(display-mode: standalone)").matches;
  if (isIos()) {
    return (
      "Veyla is a page here, and not in that list: in the Settings App choose the browser's own name, and " +
      "allow it the camera." +
      (isInstalled ? "" : " The menu beside the page's address has Website Settings, too.")
    );
  }
  return (
    (isInstalled ? "For this app: open its page in the browser, tap " : "In this browser: tap ") +
    "the symbol beside the page's address, allow the camera in the site's permissions, and load the " +
    "page again."
  );
}

const held =
  "Another app or tab has the camera, or it hangs. Close what uses it, such as a video call, and tap START " +
  "again. If that does not help, restart the phone.";

/** By the names of the errors that openings end with. */
const waysToCamera: Readonly<Record<string, string>> = {
  NotReadableError: held,
  AbortError: held,
  NotFoundError:
    "This browser sees no camera. Look whether a switch of the phone turns its cameras off, or open this page " +
    "on a phone that has one.",
  OverconstrainedError:
    "The camera that was used is gone, or gives no pictures of the size that is needed. Load the page again, " +
    "or open it in another browser.",
};

/** What the user can do about a camera that did not open, with this browser; undefined where it has. */
export function wayToCamera(
  camera: Readonly<{ failure(): string | undefined; authorization(): string }>,
): string | undefined {
  const failure = camera.failure();
  if (failure === undefined) return undefined;
  if (!window.isSecureContext) return insecure;
  if (failure === "NotSupportedError") return `This browser cannot measure. ${frameless}`;
  if (failure === "SecurityError")
    return "The page around this one keeps the camera from it. Open this one by itself.";
  if (failure === "NotAllowedError") {
    switch (camera.authorization()) {
      case "denied":
        return placeOfPermission();
      case "granted":
        return (
          "The page has your permission, the browser has not: in the phone's settings choose the browser among " +
          "the apps, and allow it the camera."
        );
      default:
        return "Tap START once more, and allow the camera when the browser asks for it.";
    }
  }
  return (
    waysToCamera[failure] ??
    `The browser does not say why (${failure}). Load the page again, or open it in another browser.`
  );
}

export const noLight =
  "This browser gives pages no light beside this camera. Another browser on this phone may; a computer has none.";
export const refusedLight =
  "The light did not come on. Another app may use it, or the phone is too warm or its battery too low: wait a " +
  "moment, and tap START again.";
