// One window of the page at a time: two that store would undo each other's changes.

const name = "veyla";
/** The state of a window that was left and loads itself again to take over. */
const takesOver = "veyla takes over";

/** Waits until no other window stores; `lost` is called when another one has taken over after all. */
export async function becomeTheOnlyWindow(
  ask: () => Promise<void>,
  lost: () => void,
): Promise<void> {
  // Pages that did not come by HTTPS cannot know of each other.
  if (!("locks" in navigator)) return;
  const hold = (options: LockOptions): Promise<boolean> =>
    new Promise((resolve) => {
      const held = navigator.locks.request(name, options, (lock) => {
        resolve(lock !== null);
        return lock ? new Promise<never>(() => undefined) : undefined;
      });
      held.catch((error: unknown) => {
        if (error instanceof DOMException && error.name === "AbortError") lost();
        // Where nothing may be stored, there is nothing to undo.
        else resolve(true);
      });
    });
  const isWanted = history.state === takesOver;
  if (isWanted) {
    history.replaceState(null, "");
  } else {
    if (await hold({ ifAvailable: true })) return;
    await ask();
  }
  await hold({ steal: true });
}

/** Begins anew with what the other window has stored. */
export function takeOverAgain(): void {
  history.replaceState(takesOver, "");
  window.location.reload();
}
