// The browser's `localStorage` as the core's key-value store writes to it.

const prefix = "veyla/";

export type StoredChange = readonly [key: string, text: string | null];

/** Told what cannot be stored; `damagedKey` is empty where it is about no single item. */
export type StorageFailed = (damagedKey: string, line: string) => void;

export class LocalStorage {
  /** Stands in where the browser gives a page no storage. */
  private readonly memory = new Map<string, string>();
  private readonly storage: Storage | undefined;
  private persistenceAsked = false;

  constructor(readonly failed: StorageFailed) {
    try {
      this.storage = window.localStorage;
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
    return this.storage.getItem(prefix + key);
  }

  /** Makes all changes or none; an empty text, or the reason for the user. */
  write(changes: readonly StoredChange[]): string {
    const before = changes.map(([key]): StoredChange => [key, this.read(key)]);
    try {
      this.put(changes);
    } catch (error) {
      // Freeing room comes first: what was there before fits again.
      this.put(before.filter(([, text]) => text === null));
      this.put(before.filter(([, text]) => text !== null));
      const isFull = error instanceof DOMException && error.name === "QuotaExceededError";
      return isFull
        ? "This browser's storage for the page is full. The last change was not saved; everything " +
            "saved before is still there. Export and delete old results to make room."
        : "This browser refuses to store the last change. Everything saved before is still there.";
    }
    this.askForPersistence();
    return "";
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
