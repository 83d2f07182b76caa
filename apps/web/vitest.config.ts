import { defineConfig } from "vitest/config";

export default defineConfig({
  // The core is built beside the page.
  server: { fs: { allow: ["../.."] } },
  test: {
    include: ["tests/**/*.test.ts"],
    // A measurement takes its time, and longer beside others: where nothing goes on, a wait within it says so first.
    testTimeout: 300_000,
    hookTimeout: 60_000,
    // Most of a test is waiting: three browsers find the time beside each other.
    maxWorkers: 3,
    minWorkers: 1,
    // A finger that more engines paint at once comes too seldom to be measured.
    maxConcurrency: 3,
    reporters: ["default", "junit"],
    outputFile: { junit: "../../build/web-tests.xml" },
  },
});
