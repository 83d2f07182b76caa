// The browser's text services, where they have to mean what those of Linux mean.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { browserText, shortMonth } from "../../../platform/web/text";

interface Table {
  readonly isEmail: string;
  readonly validateEmail: string;
  readonly addresses: readonly { text: string; isEmail: boolean; validateEmail: boolean }[];
}

it("judges addresses as the table of both bindings says", () => {
  const file = new URL("../../../tests/addresses.json", import.meta.url);
  const table = JSON.parse(readFileSync(file, "utf8")) as Table;
  const judged = table.addresses.map(({ text }) => ({
    text,
    isEmail: browserText.findsIgnoringCase(table.isEmail, text, browserText.count(text)),
    validateEmail: browserText.matchesWholeIgnoringCase(table.validateEmail, text),
  }));
  expect(judged).toEqual(table.addresses);
});

it.each([
  ["en-US", "Mar"],
  ["de", "März"],
  ["fi", "maalis"],
  ["ja", "3月"],
  ["bg", "март"],
])("names a month in %s as it stands in a date, and never by its number", (language, name) => {
  expect(shortMonth(language, new Date(2024, 2, 2))).toBe(name);
});

it("rounds a tie to the even digit", () => {
  expect([97.25, 97.35, 0.05].map((value) => browserText.decimal(value, 1))).toEqual([
    "97.2",
    "97.4",
    "0",
  ]);
});
