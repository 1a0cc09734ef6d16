// SPDX-License-Identifier: MIT
// The page in two languages. What the host sends is shown as it is.
import { chinese } from "./chinese.js";

/** @import { Text } from "./types.js" */

let language = sessionStorage.getItem("language") ?? (navigator.language.startsWith("zh") ? "zh" : "en");
const tellBrowser = () => (document.documentElement.lang = language === "zh" ? "zh-CN" : "en");
tellBrowser();

export const currentLanguage = () => language;
export function switchLanguage() {
  language = language === "zh" ? "en" : "zh";
  sessionStorage.setItem("language", language);
  tellBrowser();
}

/** @param {Text} text */
export const t = (text) => (language === "zh" && chinese[text]) || text;
