// Dates, numbers, regular expressions, characters and identifiers by the browser's own means.

const millisecondsPerSecond = 1000;
const millisecondsPerMinute = 60_000;

const mediumDateShortTimeFormat = new Intl.DateTimeFormat(undefined, {
  dateStyle: "medium",
  timeStyle: "short",
});

const { calendar, numberingSystem, locale } = mediumDateShortTimeFormat.resolvedOptions();
const isGregorian = calendar === "gregory" || calendar === "iso8601";

/** The locale's ten digits. */
const digitFormat = new Intl.NumberFormat(locale, { numberingSystem });
const digits = [0, 1, 2, 3, 4, 5, 6, 7, 8, 9].map((digit) => digitFormat.format(digit));

/** In the locale's digits, with zeros in front. */
function padded(number: number, width: number): string {
  const text = String(number).padStart(width, "0");
  return digits[0] === "0" ? text : text.replace(/\d/g, (digit) => digits[Number(digit)] ?? digit);
}

/** The number that a text in the locale's digits tells. */
function numberOf(text: string): number {
  const plain = digits.reduce((told, digit, value) => told.replaceAll(digit, String(value)), text);
  return Number(plain);
}

type DateField = "year" | "month" | "day";

const fieldFormats = new Map<string, Intl.DateTimeFormat>();

/** One field of a date in the locale's calendar, written as it stands within a whole date. */
function field(date: Date, name: DateField, month: "2-digit" | "short" = "2-digit"): string {
  let format = fieldFormats.get(month);
  if (!format) {
    format = new Intl.DateTimeFormat(locale, { year: "numeric", month, day: "2-digit" });
    fieldFormats.set(month, format);
  }
  const isWanted = (type: string): boolean =>
    type === name || (name === "year" && type === "relatedYear");
  return format.formatToParts(date).find(({ type }) => isWanted(type))?.value ?? "";
}

const monthNames = new Map<number, string>();

/** The short name of a month, as it follows a day. */
function monthName(date: Date): string {
  if (!isGregorian) return field(date, "month", "short");
  const month = date.getMonth();
  let name = monthNames.get(month);
  if (name === undefined) {
    name = shortMonth(locale, date);
    monthNames.set(month, name);
  }
  return name;
}

/** As it stands in a date, or where that has numbers instead, a name as close to it as there is. */
export function shortMonth(language: string, date: Date): string {
  const month = (options: Intl.DateTimeFormatOptions): string | undefined =>
    new Intl.DateTimeFormat(language, options)
      .formatToParts(date)
      .find(({ type }) => type === "month")?.value;
  const names = [
    month({ year: "numeric", month: "short", day: "2-digit" }),
    month({ month: "short" }),
    // Such as "3月", where the name is a number with a word behind it.
    new Intl.DateTimeFormat(language, { month: "short" }).format(date),
    month({ month: "long", day: "numeric" }),
  ];
  return names.find((name) => name !== undefined && /\p{L}/u.test(name)) ?? names[0] ?? "";
}

function offsetFromUtc(date: Date): string {
  const minutes = -date.getTimezoneOffset();
  const size = Math.abs(minutes);
  const hours = String(Math.floor(size / 60)).padStart(2, "0");
  return `${minutes < 0 ? "-" : "+"}${hours}${String(size % 60).padStart(2, "0")}`;
}

/** The fields of Unicode's date patterns that the application uses. */
const fields: Readonly<Record<string, (date: Date) => string>> = {
  yyyy: (date) => (isGregorian ? padded(date.getFullYear(), 4) : field(date, "year")),
  MM: (date) => (isGregorian ? padded(date.getMonth() + 1, 2) : field(date, "month")),
  MMM: monthName,
  dd: (date) => (isGregorian ? padded(date.getDate(), 2) : field(date, "day")),
  HH: (date) => padded(date.getHours(), 2),
  mm: (date) => padded(date.getMinutes(), 2),
  ss: (date) => padded(date.getSeconds(), 2),
  Z: offsetFromUtc,
};

function formattedDate(date: Date, pattern: string): string {
  return pattern.replace(/([A-Za-z])\1*/g, (name) => fields[name]?.(date) ?? name);
}

/** Every kind of space as the ordinary one. */
function withPlainSpaces(text: string): string {
  return text.replace(/\s/gu, " ");
}

/** The days from tomorrow back to 1970, each at its beginning. */
function* daysBackwards(): Generator<Date> {
  const today = new Date();
  for (let ago = -1; ; ++ago) {
    const day = new Date(today.getFullYear(), today.getMonth(), today.getDate() - ago);
    if (day.getFullYear() < 1970) return;
    yield day;
  }
}

/**
 * The minute that the browser writes as `text` in medium and short style, in milliseconds.
 *
 * A browser writes dates and reads none back, so the day is looked for whose words and numbers are
 * all there, and then its minute that is written like this: the later one in an hour that comes twice.
 */
function minuteWritten(text: string): number | null {
  const wanted = withPlainSpaces(text);
  const dateParts = ["year", "relatedYear", "month", "day", "era"];
  for (const day of daysBackwards()) {
    const parts = mediumDateShortTimeFormat
      .formatToParts(day)
      .filter(({ type }) => dateParts.includes(type));
    if (!parts.every(({ value }) => wanted.includes(withPlainSpaces(value)))) continue;
    const end = new Date(day.getFullYear(), day.getMonth(), day.getDate() + 1).getTime();
    for (
      let minute = end - millisecondsPerMinute;
      minute >= day.getTime();
      minute -= millisecondsPerMinute
    ) {
      if (withPlainSpaces(mediumDateShortTimeFormat.format(minute)) === wanted) return minute;
    }
  }
  return null;
}

/** The beginning of the day that the pattern, of days alone, writes as `text`, in milliseconds. */
function dayWritten(text: string, pattern: string): number | null {
  if (isGregorian && pattern === "yyyy-MM-dd") {
    const [year = NaN, month = NaN, day = NaN] = text.split("-").map(numberOf);
    const date = new Date(year, month - 1, day);
    return formattedDate(date, pattern) === text ? date.getTime() : null;
  }
  for (const day of daysBackwards()) {
    if (formattedDate(day, pattern) === text) return day.getTime();
  }
  return null;
}

function inSeconds(milliseconds: number | null): number | null {
  return milliseconds === null ? null : milliseconds / millisecondsPerSecond;
}

const decimalFormats = new Map<number, Intl.NumberFormat>();

/** The operations of the core's text services. Dates are seconds since 1970; null for none. */
export const browserText = {
  /** Year, month, day, hour, minute and second. */
  localTime(seconds: number): number[] {
    const date = new Date(Math.floor(seconds) * millisecondsPerSecond);
    const day = [date.getFullYear(), date.getMonth() + 1, date.getDate()];
    return [...day, date.getHours(), date.getMinutes(), date.getSeconds()];
  },

  mediumDateShortTime(seconds: number): string {
    return mediumDateShortTimeFormat.format(seconds * millisecondsPerSecond);
  },

  parseMediumDateShortTime(text: string): number | null {
    return inSeconds(minuteWritten(text));
  },

  formatted(seconds: number, pattern: string): string {
    return formattedDate(new Date(seconds * millisecondsPerSecond), pattern);
  },

  parse(text: string, pattern: string): number | null {
    return inSeconds(dayWritten(text, pattern));
  },

  decimal(value: number, maximumFractionDigits: number): string {
    let format = decimalFormats.get(maximumFractionDigits);
    if (!format) {
      format = new Intl.NumberFormat(undefined, {
        maximumFractionDigits,
        roundingMode: "halfEven",
      });
      decimalFormats.set(maximumFractionDigits, format);
    }
    return format.format(value);
  },

  matchesWholeIgnoringCase(pattern: string, text: string): boolean {
    try {
      return new RegExp(`^(?:${pattern})$`, "i").test(text);
    } catch {
      return false;
    }
  },

  /** In the text's first `length` UTF-16 code units. */
  findsIgnoringCase(pattern: string, text: string, length: number): boolean {
    try {
      return new RegExp(pattern, "i").test(text.slice(0, length));
    } catch {
      return false;
    }
  },

  /** Of user-perceived characters. */
  count(text: string): number {
    // Without the browser's help code points come closest.
    if (!("Segmenter" in Intl)) return Array.from(text).length;
    return [...new Intl.Segmenter().segment(text)].length;
  },

  lowerCased(text: string): string {
    return text.toLowerCase();
  },

  randomUuid(): string {
    // Not `crypto.randomUUID`, which pages that did not come by HTTPS lack.
    const random = [...crypto.getRandomValues(new Uint8Array(16))];
    const hex = random.map((byte) => byte.toString(16).padStart(2, "0")).join("");
    const variant = "89ab".charAt((random[8] ?? 0) >> 6);
    return hex.replace(/^(.{8})(.{4}).(.{3}).(.{3})/, `$1-$2-4$3-${variant}$4-`).toUpperCase();
  },
};
