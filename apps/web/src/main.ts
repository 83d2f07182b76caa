// Makes the page's objects, joins them with the core, and starts it.
import { refusedLanguages } from "../../../platform/web/language";
import "@ionic/core/css/core.css";
import "@ionic/core/css/normalize.css";
import "@ionic/core/css/structure.css";
import "@ionic/core/css/typography.css";
import "@ionic/core/css/palettes/dark.system.css";
import "./styles.css";

import { type CameraListener, givesFrames, TrackCamera } from "../../../platform/web/camera";
import { measureText } from "../../../platform/web/canvas";
import { healthFile } from "../../../platform/web/health_file";
import { followLife, ScreenWaker } from "../../../platform/web/page_life";
import { openAddress } from "../../../platform/web/sharing";
import { LocalStorage } from "../../../platform/web/storage";
import { browserText } from "../../../platform/web/text";
import { ActionSheets } from "./action_sheet";
import { AlertDialogs } from "./alerts";
import { setAppearance, setNavigationBarTint } from "./appearance";
import { defineComponents } from "./components";
import { loadCore, type WebApp } from "./core";
import { awaitInstallQuestion } from "./home_card";
import { IntroScreen } from "./intro";
import { MailComposer } from "./mail_composer";
import { MeasuringScreen } from "./measuring";
import { Navigator } from "./navigator";
import {
  askToTakeOver,
  noLight,
  refusedLight,
  showInsecureAddress,
  showOldBrowser,
  showPageFailure,
  showRefusedLanguages,
  showStartFailure,
  showStorageProblem,
  showTakenOver,
  wayToCamera,
} from "./notices";
import { becomeTheOnlyWindow, takeOverAgain } from "./one_window";
import type { Page, ScreenViews } from "./page";
import { startServiceWorker } from "./service_worker";
import { showRatingPrompt } from "./rating_prompt";
import { FrameTimes } from "./timing";

/** `?log` shows the core's diagnostic lines in the browser's console, `?timing` keeps times. */
const query = new URLSearchParams(window.location.search);

async function start(): Promise<void> {
  awaitInstallQuestion();
  defineComponents();
  const holder: { app?: WebApp } = {};
  const core = (): WebApp => {
    if (!holder.app) throw new Error("the core is asked before it is there");
    return holder.app;
  };

  const log = {
    enabled: query.has("log"),
    line(text: string): void {
      console.info(text);
    },
  };
  const times = query.has("timing") ? new FrameTimes() : undefined;
  const listener: CameraListener = {
    settle(pending, answer) {
      alerts.note = camera.isOpen() && !camera.hasTorch() ? noLight : wayToCamera(camera);
      core().settle(pending, answer);
      alerts.note = undefined;
    },
    frameBuffer: (width, height) => core().frameBuffer(width, height),
    takeFrame(time) {
      core().takeFrame(time);
    },
    torchRefused() {
      alerts.note = refusedLight;
      core().torchRefused();
      alerts.note = undefined;
    },
    lost() {
      core().cameraLost();
    },
    starved(isStarved) {
      measuring.showStarved(isStarved);
    },
    log(line) {
      if (log.enabled) log.line(line);
    },
    frameTaken(milliseconds) {
      times?.frameTaken(milliseconds);
    },
  };
  const camera = new TrackCamera(listener);
  const storage = new LocalStorage((damagedKey, line) => {
    showStorageProblem(core, damagedKey, line);
  });
  const navigator = new Navigator(showPageFailure);
  const waker = new ScreenWaker();
  const alerts = new AlertDialogs(core);
  const intro = new IntroScreen(core);
  const measuring = new MeasuringScreen(core);
  alerts.shown = (): void => {
    measuring.answered();
  };
  if (times) {
    measuring.drawn = (milliseconds): void => {
      times.drawn(milliseconds);
    };
  }

  // A screen has appeared when nothing covers it any more.
  let covers = 0;
  let uncovered = (): void => undefined;
  const uncover = (): void => {
    if (--covers === 0) uncovered();
  };
  measuring.page.addEventListener("ionViewWillEnter", () => {
    core().measuring().viewWillAppear();
  });
  measuring.page.addEventListener("ionViewDidEnter", () => {
    uncovered = (): void => {
      uncovered = (): void => undefined;
      core().measuring().viewDidAppear();
    };
    if (covers === 0) uncovered();
  });
  measuring.page.addEventListener("ionViewWillLeave", () => {
    uncovered = (): void => undefined;
    core().measuring().viewWillDisappear();
  });

  const actionSheets = new ActionSheets((action) => {
    core().chooseSheetAction(action);
  });
  const composer = new MailComposer((pending, answer) => {
    core().settle(pending, answer);
  });
  // Screens that are loaded when they are first opened.
  const transitions: Readonly<Record<string, () => Promise<HTMLElement>>> = {
    async results() {
      const { ResultsScreen } = await import("./results");
      return new ResultsScreen(core(), measuring.takeLabelWish()).page;
    },
    async chart() {
      const { ChartsScreen } = await import("./charts");
      return new ChartsScreen(core(), () => {
        navigator.popToFirst();
      }).page;
    },
    async settings() {
      const { OptionsScreen } = await import("./options");
      const { healthControls } = await import("./health_controls");
      const open = (page: HTMLElement): void => {
        navigator.push(page);
      };
      return new OptionsScreen(core(), open, () => healthControls(core())).page;
    },
  };

  const screens: ScreenViews = {
    performTransition(name) {
      const load = transitions[name];
      if (load) navigator.pushLoaded(load);
    },
    dismissScreen() {
      navigator.pop();
    },
    showIntro() {
      if (intro.isOpen) return;
      ++covers;
      intro.show();
    },
    dismissIntro(pending) {
      void intro.dismiss().then(() => {
        core().settle(pending, 1);
        uncover();
      });
    },
    showFaq() {
      navigator.pushLoaded(async () => {
        const { faqPage } = await import("./text_pages");
        return faqPage(core());
      });
    },
    showRatingPrompt() {
      showRatingPrompt(() => {
        core().rateMyApp();
      });
    },
    setTitle(title) {
      document.title = title;
      measuring.setTitle(title);
    },
    setBackSwipeEnabled(enabled) {
      navigator.setBackSwipeEnabled(enabled);
    },
    setIdleTimerDisabled(disabled) {
      waker.setIdleTimerDisabled(disabled);
    },
    setAppearance,
    setNavigationBarTint,
  };

  const page: Page = {
    log,
    // Browsers do not tell which phone they run on.
    device: { hardwareModel: "", systemVersion: window.navigator.userAgent },
    storage,
    text: browserText,
    health: {
      ask(names, pending) {
        ++covers;
        const answered = import("./health_sheet").then(({ askForHealthRecords }) =>
          askForHealthRecords(names),
        );
        // What cannot be loaded is not answered, and is asked again.
        void answered
          .catch(() => -1)
          .then((answer) => {
            core().settle(pending, answer);
            uncover();
          });
      },
      append(line, pending) {
        void healthFile.append(line).then((kept) => {
          core().settle(pending, kept ? 1 : 0);
        });
      },
    },
    camera,
    canvas: { measureText },
    screens,
    alerts,
    measuring: measuring.views,
    ending: measuring.ending,
    intro: intro.views,
    actionSheet: actionSheets,
    sharing: {
      composeMail(mail, pending) {
        composer.composeMail(mail, pending);
      },
      dismissMail() {
        composer.dismissMail();
      },
      mailFailure: () => composer.failure,
      composeMessage(body, pending) {
        composer.composeMessage(body, pending);
      },
      open: openAddress,
    },
  };

  await becomeTheOnlyWindow(askToTakeOver, () => {
    holder.app?.enterBackground();
    showTakenOver(takeOverAgain);
  });
  const [loaded] = await Promise.all([loadCore(page), camera.prepare()]);
  holder.app = loaded;
  measuring.showCaptions(loaded.captions());
  followLife(loaded);
  loaded.launch();
  const root = document.querySelector<HTMLElement>("ion-app");
  if (root) await navigator.start(measuring.page, root);
  for (const each of document.querySelectorAll(".first-paint")) each.remove();
  startServiceWorker();
  if (!storage.lasts) {
    const line = "This browser keeps nothing for this page. Results are gone when it is closed.";
    showStorageProblem(core, "", line);
  }
  showRefusedLanguages(refusedLanguages);
  if (!window.isSecureContext) showInsecureAddress();
  else if (!givesFrames) showOldBrowser();
}

start().catch((error: unknown) => {
  console.error("the page does not start", error);
  showStartFailure();
});
