// Offers the home screen, where browsers keep what a page has stored.
import type { WebApp } from "./core";
import { isIos, make, textButton } from "./dom";

/** What some browsers ask when they are told to. */
interface InstallQuestion extends Event {
  prompt(): Promise<unknown>;
}

let question: InstallQuestion | undefined;

/** Keeps the browser's own question until it is wanted; to be called before the browser has it. */
export function awaitInstallQuestion(): void {
  window.addEventListener("beforeinstallprompt", (event) => {
    event.preventDefault();
    question = event as InstallQuestion;
  });
}

function isOnHomeScreen(): boolean {
  return (
    window.matchMedia("(display-mode: standalone)").matches ||
    ("standalone" in navigator && navigator.standalone === true)
  );
}

function steps(): string {
  return isIos()
    ? "Tap the browser's Share symbol, then “Add to Home Screen”."
    : "Open the browser's menu and choose “Install” or “Add to home screen”.";
}

/** For the top of the results, where somebody has some and has not answered yet. */
export function homeCard(app: WebApp): HTMLElement | undefined {
  if (isOnHomeScreen() || !app.offersHomeScreen()) return undefined;
  const why = make("p", {}, "It opens like an app there, and keeps what you measure.");
  if ("storage" in navigator) {
    void navigator.storage.persisted().then((isKept) => {
      if (isKept) return;
      why.textContent =
        "This browser may erase what you measure. The home screen keeps it, and “Back up” in the " +
        "options saves it as a file.";
    });
  }
  const card = make("section.home-card", { "aria-labelledby": "home-card" });
  const answer = (): void => {
    app.answerHomeScreen();
    card.remove();
  };
  const asked = question;
  const way = make("p", { role: "status" });
  const buttons = [textButton("button", "Not now", answer)];
  if (asked) {
    const add = textButton("button", "Add", () => {
      question = undefined;
      void asked.prompt();
      answer();
    });
    buttons.push(add);
  } else {
    const how = textButton("button", "How", () => {
      way.textContent = steps();
      // The focus stays in the card.
      buttons[0]?.focus();
      how.remove();
    });
    buttons.push(how);
  }
  card.append(make("h2", { id: "home-card" }, "Veyla on your home screen"), why, way);
  card.append(make("div.home-card-buttons", {}, ...buttons));
  return card;
}
