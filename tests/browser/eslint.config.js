// SPDX-License-Identifier: MIT
// Run in the root of the sources, of which it names the parts.
import js from "@eslint/js";
import globals from "globals";

const page = ["terminal/web/page/*.js"];
const tests = ["tests/browser/*.js"];

export default [
  { files: [...page, ...tests], ...js.configs.recommended },
  { files: page, languageOptions: { globals: globals.browser } },
  // Parts of the tests run in the browser.
  { files: tests, languageOptions: { globals: { ...globals.node, ...globals.browser } } },
];
