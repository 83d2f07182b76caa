// The browser's `localStorage` as the core's key-value store writes to it.

const prefix = "veyla/";

export type StoredChange = readonly [key: string, text: string | null];

/** Told what cannot be stored; `damagedKey` is empty where it is about no single item. */
export type StorageFailed = (damagedKey: string, line: string) => void;

const full =
  "This browser's storage for the page is full. The last change was not saved; everything saved " +
  "before is still there. Export and delete old results to make room.";
const refused =
  "This browser refuses to store the last change. Everything saved before is still there.";
const closed =
  "This browser does not give out what it stores for the page. Nothing is saved until it does; open " +
  "the page again, or in another browser.";
const halfWritten =
  "This browser took a part of the last change and gives nothing back. Look whether the last result " +
  "is there.";

function isFull(error: unknown): boolean {
  return error instanceof DOMException && error.name === "QuotaExceededError";
}

export class LocalStorage {
  /** Stands in where the browser gives a page no storage. */
  private readonly memory = new Map<string, string>();
  private readonly storage: Storage | undefined;
  private persistenceAsked = false;
  /** The browser does not give out what it stores: nothing may take the place of that. */
  private isClosed = false;

  constructor(readonly failed: StorageFailed) {
    try {
      // Null where an app that shows pages has switched it off.
      const { localStorage } = window as { readonly localStorage: Storage | null };
      this.storage = localStorage ?? undefined;
    } catch {
      this.storage = undefined;
    }
  }

  /** Whether anything outlasts the page. */
  get lasts(): boolean {
    return this.storage !== undefined;
  }

  read(key: string): string | null {
    if (!this.storage) return this.memory.get(key) ?? null;
    try {
      return this.storage.getItem(prefix + key);
    } catch {
      if (!this.isClosed) this.failed("", closed);
      this.isClosed = true;
      return null;
    }
  }

  /** Makes all changes or none; an empty text, or the reason for the user. */
  write(changes: readonly StoredChange[]): string {
    const before = changes.map(([key]): StoredChange => [key, this.read(key)]);
    if (this.isClosed) return closed;
    const sets = changes.filter(([, text]) => text !== null);
    const removals = changes.filter(([, text]) => text === null);
    // Whatever ends the page between two of them leaves the old beside the new, not neither.
    let error = this.tryToPut([...sets, ...removals], before);
    // The room may be what goes.
    if (isFull(error) && removals.length > 0) error = this.tryToPut([...removals, ...sets], before);
    if (error === undefined) this.askForPersistence();
    return error === undefined ? "" : isFull(error) ? full : refused;
  }

  /** What went wrong, with everything as it was before. */
  private tryToPut(changes: readonly StoredChange[], before: readonly StoredChange[]): unknown {
    try {
      this.put(changes);
      return undefined;
    } catch (error) {
      try {
        // Freeing room comes first: what was there before fits again.
        this.put(before.filter(([, text]) => text === null));
        this.put(before.filter(([, text]) => text !== null));
      } catch {
        this.failed("", halfWritten);
      }
      return error;
    }
  }

  private put(changes: readonly StoredChange[]): void {
    for (const [key, text] of changes) {
      if (!this.storage) {
        if (text === null) this.memory.delete(key);
        else this.memory.set(key, text);
      } else if (text === null) {
        this.storage.removeItem(prefix + key);
      } else {
        this.storage.setItem(prefix + key, text);
      }
    }
  }

  /** Once there is something to keep, and the user is there to be asked. */
  private askForPersistence(): void {
    if (this.persistenceAsked || !("storage" in navigator)) return;
    if (!("userActivation" in navigator) || !navigator.userActivation.hasBeenActive) return;
    this.persistenceAsked = true;
    void navigator.storage.persist().catch(() => false);
  }
}
