// The options, the e-mail dialog, and the pages to read.
import { readFileSync } from "node:fs";

import { afterAll, beforeAll, expect, it } from "vitest";

import { acquainted, PhoneBrowser, recording, type Visit } from "./browser";
import { inspect } from "./inspect";

let phone: PhoneBrowser;
beforeAll(async () => {
  phone = await PhoneBrowser.open({ camera: recording("72") });
});
afterAll(() => phone.close());

async function openOptions(stored: Readonly<Record<string, string>> = {}): Promise<Visit> {
  const visit = await phone.visit({ stored: { ...acquainted, ...stored } });
  await visit.swipe("left");
  await visit.page.getByText("Send feedback").waitFor();
  await visit.settled();
  return visit;
}

it("takes a valid e-mail address, refuses another, and removes it", async () => {
  const visit = await openOptions();
  const { page } = visit;
  await inspect(visit, "options");
  const edit = page.getByRole("button", { name: "EDIT" });
  const field = page.getByRole("textbox", { name: "Enter your email" });

  await edit.click();
  await visit.alert("Email").waitFor();
  expect(await page.getByRole("button", { name: "Remove" }).count()).toBe(0);
  await field.fill("somebody@example.museum");
  await page.getByRole("button", { name: "Save" }).click();
  await visit.alert("Whoops!").waitFor();
  await inspect(visit, "email-refused");
  await page.getByRole("button", { name: "OK" }).click();
  await expect.poll(() => field.evaluate((input) => input.matches(":focus"))).toBe(true);

  await field.fill("  Some.Body@Example.org ");
  await page.getByRole("button", { name: "Save" }).click();
  await visit.alert("Email").waitFor({ state: "detached" });
  expect(await visit.stored("email")).toBe('"Some.Body@Example.org"');
  await page.getByText("Change your email").waitFor();
  await page.getByText("Some.Body@Example.org").waitFor();

  await edit.click();
  expect(await field.inputValue()).toBe("Some.Body@Example.org");
  await page.getByRole("button", { name: "Remove" }).click();
  await visit.alert("Removed!").waitFor();
  await page.getByRole("button", { name: "OK" }).click();
  expect(await visit.stored("email")).toBeNull();
  await page.getByText("Please provide us your email").waitFor();
});

it("sends feedback and invitations, and opens the rating", async () => {
  const visit = await openOptions();
  const { page } = visit;
  await page.getByText("Send feedback").click();
  await page.getByRole("heading", { name: "New mail" }).waitFor();
  await page.getByRole("button", { name: "Open mail app" }).click();
  const feedback = new URL((await visit.addresses()).at(-1) ?? "");
  expect(feedback.pathname).toBe("support%40veyla.example");
  expect(feedback.searchParams.get("subject")).toBe("Veyla Support");
  expect(feedback.searchParams.get("body")).toContain(
    "## Please type your feedback above this line ##",
  );

  await page.getByText("Invite friends").click();
  await page.getByRole("button", { name: "Open mail app" }).click();
  expect(new URL((await visit.addresses()).at(-1) ?? "").searchParams.get("subject")).toBe(
    "Check out Orvane Veyla app",
  );
  await page.getByText("Follow us").click();
  expect((await visit.addresses()).at(-1)).toBe("https://veyla.example/social");
  await page.getByText("Rate Veyla").click();
  await expect
    .poll(async () => (await visit.addresses()).at(-1))
    .toMatch(/^itms-apps:.*type=Purple\+Software$/);
});

it("asks for a rating once, and tells what is new after an update", async () => {
  const visit = await phone.visit({
    stored: {
      ...acquainted,
      "veyla/last_launched_version": '"0.0.1"',
      "veyla/rating_first_use": '{"$date":1700000000}',
      "veyla/rating_uses": "2",
      "veyla/rating_significant_events": "3",
    },
  });
  const { page } = visit;
  const question = page.getByRole("dialog", { name: "Do you like Veyla?" });
  await visit.alert("What's new in 0.1.0").waitFor();
  await page.getByRole("button", { name: "Done" }).click();
  await inspect(visit, "rating");
  await question.getByRole("button", { name: "Rate Veyla" }).click();
  expect(await visit.addresses()).toEqual([expect.stringMatching(/^itms-apps:/)]);

  await page.reload();
  await visit.settled();
  await page.waitForTimeout(700);
  expect(await page.locator("dialog").count()).toBe(0);
});

it("leads to every page to read", async () => {
  const visit = await openOptions();
  const { page } = visit;
  for (const [row, title] of [
    ["Terms", "terms"],
    ["About", "about"],
    ["Questions and answers", "questions"],
  ] as const) {
    await page.getByText(row, { exact: true }).first().click();
    await page.getByRole("button", { name: "Back", exact: true }).last().waitFor();
    await visit.settled();
    await inspect(visit, `page-${title}`);
    await page.getByRole("button", { name: "Back", exact: true }).last().click();
    await page.getByRole("button", { name: "Back", exact: true }).waitFor({ state: "detached" });
    await visit.settled();
  }
  await page.getByText("Release notes").click();
  await page.getByRole("alertdialog").waitFor();
  await inspect(visit, "release-notes");
  await page.getByRole("button", { name: "Done" }).click();

  // The introduction once more, without the notice.
  await page.getByText("Introduction").click();
  await page.getByRole("heading", { name: "Step 1: Calibrate" }).waitFor();
  await page.getByRole("button", { name: "Skip" }).click();
  await page.getByRole("heading", { name: "Step 1: Calibrate" }).waitFor({ state: "detached" });
  await page.getByRole("button", { name: "Close" }).click();
  await expect.poll(() => visit.element("labelGrey").isVisible()).toBe(true);
});

it("a phone's Back leads back through the screens, and closes what is open over them", async () => {
  const visit = await openOptions();
  const { page } = visit;
  // How many more times Back stays in the application.
  const backs = (): Promise<number> =>
    page.evaluate(() => (history.state as { depth?: number } | null)?.depth ?? 0);
  await page.getByText("Terms", { exact: true }).click();
  await page.getByRole("button", { name: "Back", exact: true }).waitFor();
  await visit.settled();
  await expect.poll(backs).toBe(2);
  await page.goBack();
  await page.getByRole("button", { name: "Back", exact: true }).waitFor({ state: "detached" });
  await page.getByRole("button", { name: "EDIT" }).click();
  await visit.alert("Email").waitFor();
  await page.goBack();
  await visit.alert("Email").waitFor({ state: "detached" });
  await expect.poll(backs).toBe(1);
  await page.goBack();
  await page.getByRole("button", { name: "START" }).waitFor();
  await visit.settled();
  expect(await backs()).toBe(0);

  // The page's own ways back take the browser's history with them, and no way forward is left.
  await page.getByRole("button", { name: "Options" }).click();
  await expect.poll(backs).toBe(1);
  await visit.settled();
  await page.getByRole("button", { name: "Close" }).click();
  await expect.poll(backs).toBe(0);
  await page.goForward();
  await expect.poll(backs).toBe(0);
  await page.getByRole("button", { name: "Results" }).click();
  await expect.poll(backs).toBe(1);
  await visit.settled();
  // A page that is loaded again begins with the first screen.
  await page.reload();
  await page.getByRole("button", { name: "START" }).waitFor();
  await expect.poll(backs).toBe(0);
});

it("keeps the decision about health records, and saves them as a file", async () => {
  const visit = await openOptions();
  const { page } = visit;
  await page.evaluate(
    () =>
      new Promise((done) => {
        const opening = indexedDB.open("veyla-health", 1);
        opening.onupgradeneeded = (): void => {
          opening.result.createObjectStore("observations", { autoIncrement: true });
        };
        opening.onsuccess = (): void => {
          const transaction = opening.result.transaction("observations", "readwrite");
          transaction.objectStore("observations").add('{"resourceType":"Observation"}\n');
          transaction.oncomplete = (): void => {
            opening.result.close();
            done(undefined);
          };
        };
      }),
  );
  await page.getByText("Health records", { exact: true }).first().click();
  await page.getByRole("button", { name: "Save records as a file" }).waitFor();
  await visit.settled();
  await inspect(visit, "page-health");
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("button", { name: "Save records as a file" }).click(),
  ]);
  expect(readFileSync(await download.path(), "utf8")).toBe('{"resourceType":"Observation"}\n');
  await page.locator("ion-toggle").first().click();
  await expect.poll(() => visit.stored("healthPermissions")).toContain('"heartRate":false');

  await page.evaluate(() => {
    IDBFactory.prototype.open = (): never => {
      throw new DOMException("blocked", "SecurityError");
    };
  });
  await page.getByRole("button", { name: "Save records as a file" }).click();
  await page.getByText("This browser does not give the page its records.").waitFor();
});
