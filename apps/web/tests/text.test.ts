// The browser's text services, where they have to mean what those of Linux mean.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { browserText } from "../../../platform/web/text";

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
