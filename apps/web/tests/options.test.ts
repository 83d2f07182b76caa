// The options, the e-mail dialog, and the pages to read.
import { readFileSync } from "node:fs";

import { expect, it } from "vitest";

import { acquainted, type Visit, visitPage } from "./browser";

async function openOptions(): Promise<Visit> {
  const visit = await visitPage();
  await visit.open("options");
  return visit;
}

it("takes a valid e-mail address, refuses another, and sends feedback", async () => {
  const visit = await openOptions();
  const { page } = visit;
  const field = page.getByRole("textbox", { name: "Enter your email" });
  await visit.tap("EDIT");
  await field.fill("somebody@example.museum");
  await visit.tap("Save");
  await visit.alert("Whoops!").waitFor();
  await visit.inspect("email-refused");
  await visit.tap("OK");
  await expect.poll(() => field.evaluate((input) => input.matches(":focus"))).toBe(true);

  await field.fill("  Some.Body@Example.org ");
  await visit.tap("Save");
  await visit.alert("Email").waitFor({ state: "detached" });
  expect(await visit.stored("email")).toBe('"Some.Body@Example.org"');
  const row = page.locator("ion-item", { hasText: "Change your email" });
  await row.getByText("Some.Body@Example.org").waitFor();

  await page.getByText("Send feedback").click();
  await visit.tap("Open mail app");
  const mail = new URL((await visit.addresses()).at(-1) ?? "");
  expect(mail.pathname).toBe("support%40veyla.example");
  expect(mail.searchParams.get("subject")).toBe("Veyla Support");
});

it("asks for a rating, and tells what is new after an update", async () => {
  const visit = await visitPage({
    stored: {
      ...acquainted,
      "veyla/last_launched_version": '"0.0.1"',
      "veyla/rating_first_use": '{"$date":1700000000}',
      "veyla/rating_uses": "2",
      "veyla/rating_significant_events": "3",
    },
  });
  await visit.alert("What's new in 0.1.0").getByText("Done").click();
  await visit.button("Rate Veyla").waitFor();
  await visit.inspect("rating");
  await visit.tap("Rate Veyla");
  expect(await visit.addresses()).toEqual([expect.stringMatching(/^itms-apps:/)]);
  await expect.poll(() => visit.page.locator("dialog").count()).toBe(0);
});

it("a phone's Back leads back through the screens, and closes what is open over them", async () => {
  const visit = await openOptions();
  const { page } = visit;
  // How many more times Back stays in the application.
  const expectBacks = async (count: number): Promise<void> => {
    const depth = (): number => (history.state as { depth?: number } | null)?.depth ?? 0;
    await expect.poll(() => page.evaluate(depth)).toBe(count);
    await visit.settled();
  };
  await page.getByText("Terms", { exact: true }).click();
  await expectBacks(2);
  await page.goBack();
  await expectBacks(1);
  await visit.tap("EDIT");
  await visit.alert("Email").waitFor();
  await page.goBack();
  await visit.alert("Email").waitFor({ state: "detached" });
  await expectBacks(1);
  // The page's own ways back take the browser's history with them, and no way forward is left.
  await visit.tap("Close");
  await expectBacks(0);
  await page.goForward();
  await expectBacks(0);
  await visit.tap("Results");
  await expectBacks(1);
  // A page that is loaded again begins with the first screen.
  await page.reload();
  await visit.button("START").waitFor();
  await expectBacks(0);
});

it("keeps the decision about health records, and tells where there are none", async () => {
  const visit = await openOptions();
  const { page } = visit;
  await page.getByText("Health records", { exact: true }).click();
  await page.locator("ion-toggle").first().click();
  await expect.poll(() => visit.stored("healthPermissions")).toContain('"heartRate":false');
  await visit.tap("Save records as a file");
  await page.getByText("There are no records yet.").waitFor();
  await page.evaluate(() => {
    IDBFactory.prototype.open = (): never => {
      throw new DOMException("blocked", "SecurityError");
    };
  });
  await visit.tap("Save records as a file");
  await page.getByText("This browser does not give the page its records.").waitFor();
});

it("backs up to a file, and restores from one what is missing", async () => {
  const visit = await openOptions();
  const { page } = visit;
  const restore = async (buffer: Buffer): Promise<void> => {
    const [chooser] = await Promise.all([
      page.waitForEvent("filechooser"),
      page.getByText("Restore", { exact: true }).click(),
    ]);
    await chooser.setFiles({ name: "backup.json", mimeType: "application/json", buffer });
  };
  await restore(Buffer.from("{}"));
  await page.getByText("Nothing restored: no backup of Veyla's").waitFor();
  const entry = { date: 1.25, hr: 70.5, spo2: 97, labels: ["Resting"] };
  await restore(Buffer.from(JSON.stringify({ veyla: "backup", version: 1, entries: [entry] })));
  await page.getByText("Restored 1 measurement; 0 were there already.").waitFor();
  await visit.inspect("backup");
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByText("Back up", { exact: true }).click(),
  ]);
  const backup = readFileSync(await download.path(), "utf8");
  expect(JSON.parse(backup)).toMatchObject({ entries: [entry] });
  await restore(Buffer.from(backup));
  await page.getByText("Restored 0 measurements; 1 was there already.").waitFor();
});
