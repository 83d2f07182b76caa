import { fileURLToPath } from "node:url";

import { defineConfig } from "eslint/config";
import tseslint from "typescript-eslint";

export default defineConfig(
  // What is installed apart has no types here.
  { ignores: ["**/node_modules/", "**/public/", "**/audit/"] },
  {
    files: ["**/*.ts"],
    extends: [tseslint.configs.strictTypeChecked, tseslint.configs.stylisticTypeChecked],
    languageOptions: {
      parserOptions: {
        project: "./tsconfig.json",
        tsconfigRootDir: fileURLToPath(new URL(".", import.meta.url)),
      },
    },
    rules: {
      "@typescript-eslint/dot-notation": "off",
      "@typescript-eslint/explicit-function-return-type": [
        "error",
        { allowTypedFunctionExpressions: true },
      ],
      "@typescript-eslint/restrict-template-expressions": ["error", { allowNumber: true }],
    },
  },
);
