import { defineConfig } from "vitest/config";

export default defineConfig({
  test: {
    include: ["tests/**/*.test.ts"],
    // A measurement takes its time: half a minute, and a browser's start.
    testTimeout: 120_000,
    hookTimeout: 60_000,
    // Every file has browsers of its own.
    maxWorkers: 2,
    minWorkers: 1,
    reporters: ["default", "junit"],
    outputFile: { junit: "../../build/web-tests.xml" },
  },
});
