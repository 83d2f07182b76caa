// Dates, regular expressions and identifiers by the browser's own means.

const millisecondsPerSecond = 1000;
const millisecondsPerMinute = 60_000;

const mediumDateShortTimeFormat = new Intl.DateTimeFormat(undefined, {
  dateStyle: "medium",
  timeStyle: "short",
});

/** Every kind of space as the ordinary one. */
function withPlainSpaces(text: string): string {
  return text.replace(/\s/gu, " ");
}

export const browserText = {
  mediumDateShortTime(seconds: number): string {
    return mediumDateShortTimeFormat.format(seconds * millisecondsPerSecond);
  },

  /** Seconds, or null for a text that `mediumDateShortTime` cannot have written here. */
  parseMediumDateShortTime(text: string): number | null {
    const milliseconds = dateWritten(text, mediumDateShortTimeFormat);
    return milliseconds === null ? null : milliseconds / millisecondsPerSecond;
  },

  matchesWholeIgnoringCase(pattern: string, text: string): boolean {
    try {
      return new RegExp(`^(?:${pattern})$`, "is").test(text);
    } catch {
      return false;
    }
  },

  randomUuid(): string {
    return crypto.randomUUID().toUpperCase();
  },
};

/**
 * The minute that `format` writes as `text`, in milliseconds; null for none since 1970.
 *
 * A browser writes dates and reads none back, so the day is looked for whose words and numbers are
 * all there, and then its minute that is written like this.
 */
function dateWritten(text: string, format: Intl.DateTimeFormat): number | null {
  const wanted = withPlainSpaces(text);
  for (let ago = -1; ; ++ago) {
    const today = new Date();
    const day = new Date(today.getFullYear(), today.getMonth(), today.getDate() - ago);
    if (day.getFullYear() < 1970) return null;
    if (!sharesDay(wanted, day, format)) continue;
    const end = new Date(day.getFullYear(), day.getMonth(), day.getDate() + 1).getTime();
    for (let minute = day.getTime(); minute < end; minute += millisecondsPerMinute) {
      if (withPlainSpaces(format.format(minute)) === wanted) return minute;
    }
  }
}

/** Whether all of the date's words and numbers stand in the text. */
function sharesDay(text: string, date: Date, format: Intl.DateTimeFormat): boolean {
  return format
    .formatToParts(date)
    .filter(({ type }) => ["year", "month", "day", "relatedYear", "era"].includes(type))
    .every(({ value }) => text.includes(withPlainSpaces(value)));
}
