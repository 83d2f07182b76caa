// The language that the page writes in where the browser's parts refuse the one that it names.
//
// To be loaded before whatever writes dates or numbers: libraries do so when they are loaded, in the browser's own
// language or in that of its `navigator`, and are not there if it is refused.

const writers = ["DateTimeFormat", "NumberFormat", "Segmenter"] as const;

/** Whether everything that writes takes it; without one, the browser's own. */
function isTaken(language?: string): boolean {
  try {
    new Intl.DateTimeFormat(language, { dateStyle: "medium", timeStyle: "short" });
    new Intl.NumberFormat(language);
    return true;
  } catch {
    return false;
  }
}

/** Has everything write in it that is not told a language. */
function writeIn(language: string): void {
  for (const name of writers) {
    if (!(name in Intl)) continue;
    const construct = (
      own: new (...given: unknown[]) => object,
      [wanted = language, ...options]: unknown[],
    ): object => new own(wanted, ...options);
    const writer = new Proxy<object>(Intl[name], { construct });
    Object.defineProperty(Intl, name, { value: writer });
  }
}

const own = isTaken() ? new Intl.NumberFormat().resolvedOptions().locale : undefined;
const tags = [navigator.language, ...navigator.languages];
const isNamed = isTaken(navigator.language);
const isRefused = own === undefined || !isNamed;
const instead = own ?? tags.find((tag) => isTaken(tag)) ?? "en";

if (own === undefined) writeIn(instead);
if (!isNamed) Object.defineProperty(navigator, "language", { value: instead });

/** The languages that are wanted and refused, and the one that is written in. */
export const refusedLanguages: Readonly<{ refused: readonly string[]; instead: string }> = {
  refused: isRefused ? [...new Set(tags)].filter((tag) => !isTaken(tag)) : [],
  instead,
};
