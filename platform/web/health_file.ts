// Health records, one line a sample, in the browser's database: there is no room for years of them
// in `localStorage`.

const databaseName = "veyla-health";
const storeName = "observations";

function finished<Result>(request: IDBRequest<Result>): Promise<Result> {
  return new Promise((resolve, reject) => {
    request.onsuccess = (): void => {
      resolve(request.result);
    };
    request.onerror = (): void => {
      reject(request.error ?? new Error("the database does not answer"));
    };
  });
}

function openDatabase(): Promise<IDBDatabase> {
  const request = indexedDB.open(databaseName, 1);
  request.onupgradeneeded = (): void => {
    request.result.createObjectStore(storeName, { autoIncrement: true });
  };
  return finished(request);
}

export const healthFile = {
  /** Whether the line is kept. */
  async append(line: string): Promise<boolean> {
    try {
      const database = await openDatabase();
      const transaction = database.transaction(storeName, "readwrite", {
        durability: "strict",
      });
      const written = new Promise<boolean>((resolve) => {
        transaction.oncomplete = (): void => {
          resolve(true);
        };
        transaction.onabort = (): void => {
          resolve(false);
        };
      });
      transaction.objectStore(storeName).add(line);
      const kept = await written;
      database.close();
      return kept;
    } catch {
      return false;
    }
  },

  /** All lines in the order of their saving. */
  async text(): Promise<string> {
    const database = await openDatabase();
    const store = database.transaction(storeName).objectStore(storeName);
    const lines: unknown[] = await finished(store.getAll());
    database.close();
    return lines.join("");
  },
};
