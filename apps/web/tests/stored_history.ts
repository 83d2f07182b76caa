// Measurements that somebody has made before the test.
import { acquainted } from "./browser";

export interface Entry {
  readonly hr: number;
  readonly spo2: number;
  /** Seconds since 1970. */
  readonly date: number;
  readonly labels?: readonly number[];
}

/** What the browser stores for these entries, oldest first. */
export function storedHistory(history: readonly Entry[]): Readonly<Record<string, string>> {
  const values = history.map(({ hr, spo2, date, labels }) => ({
    hr,
    spo2,
    date: { $date: date },
    labels: Array.from({ length: 7 }, (_, label) => labels?.includes(label) ?? false),
  }));
  return { ...acquainted, "veyla/values": JSON.stringify(values) };
}
