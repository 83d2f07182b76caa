// The page's life as an application's, and the screen kept awake.

export interface LifeListener {
  enterBackground(): void;
  enterForeground(): void;
  terminate(): void;
}

export function followLife(listener: LifeListener): void {
  let inFront = document.visibilityState === "visible";
  document.addEventListener("visibilitychange", () => {
    const isInFront = document.visibilityState === "visible";
    if (isInFront === inFront) return;
    inFront = isInFront;
    if (inFront) listener.enterForeground();
    else listener.enterBackground();
  });
  window.addEventListener("pagehide", (event) => {
    // A page that is kept for the way back has only gone to the background.
    if (!event.persisted) listener.terminate();
  });
}

/** Keeps the screen on while the page is in front. The browser lets go whenever it is not. */
export class ScreenWaker {
  private wanted = false;
  private lock: WakeLockSentinel | undefined;

  constructor() {
    document.addEventListener("visibilitychange", () => {
      void this.hold();
    });
  }

  setIdleTimerDisabled(disabled: boolean): void {
    this.wanted = disabled;
    if (disabled) {
      void this.hold();
    } else {
      void this.lock?.release();
      this.lock = undefined;
    }
  }

  private async hold(): Promise<void> {
    if (!this.wanted || document.visibilityState !== "visible" || !("wakeLock" in navigator))
      return;
    try {
      this.keep(await navigator.wakeLock.request("screen"));
    } catch {
      // Refused where the battery is low; the screen then dims as it does.
    }
  }

  /** Answered after it was given up, or beside another answer: each one that is kept has to be let go. */
  private keep(lock: WakeLockSentinel): void {
    const unneeded = this.wanted ? this.lock : lock;
    if (this.wanted) this.lock = lock;
    void unneeded?.release();
  }
}
