import { defineConfig } from "vitest/config";

export default defineConfig({
  // The core is built beside the page.
  server: { fs: { allow: ["../.."] } },
  test: {
    include: ["tests/**/*.test.ts"],
    // A measurement takes its time: half a minute, and a browser's start.
    testTimeout: 120_000,
    hookTimeout: 60_000,
    // One browser at a time: a second one would take the first one's frames from it, as a finger is
    // measured in its own time.
    fileParallelism: false,
    reporters: ["default", "junit"],
    outputFile: { junit: "../../build/web-tests.xml" },
  },
});
