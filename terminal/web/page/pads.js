// SPDX-License-Identifier: MIT
// The keys of the PIN pad and of the keypad.
import { button, isIn, make } from "./dom.js";
import { t } from "./texts.js";

/** @import { Entry, PadKey, Part, ScreenMessage, Send, Surroundings, View } from "./types.js" */

/** @type {PadKey[]} */
const DIGITS = ["1", "2", "3", "4", "5", "6", "7", "8", "9"];
/** @type {Record<string, PadKey>} */
const NAMED_KEYS = { Enter: "enter", Backspace: "back", Delete: "clear", Escape: "cancel" };

/**
 * A key at the keyboard is one of these too.
 * @param {(key: PadKey) => void} press
 */
function padKeys(press) {
  /** @param {PadKey} digit */
  const digitKey = (digit) => button("key", digit, () => press(digit));
  return make("div.pad", { role: "group" },
    ...DIGITS.map(digitKey),
    button("key.dim", t("Clear"), () => press("clear")),
    digitKey("0"),
    button("key.dim", "⌫", () => press("back"), { "aria-label": t("Backspace") }),
    button("key.cancel", t("Cancel"), () => press("cancel")),
    button("key.confirm", t("Enter"), () => press("enter")));
}

/**
 * @param {string} key
 * @returns {PadKey | undefined}
 */
const padKeyOf = (key) => (/^[0-9]$/.test(key) ? /** @type {PadKey} */ (key) : NAMED_KEYS[key]);

/**
 * @param {(key: PadKey) => void} press
 * @returns {(event: KeyboardEvent) => void}
 */
function keyboard(press) {
  return (event) => {
    const key = padKeyOf(event.key);
    if (!key || (key === "enter" && isIn(event, "button"))) return;
    event.preventDefault();
    press(key);
  };
}

/**
 * @param {number} keyed
 * @param {number} max
 */
function dots(keyed, max) {
  const row = make("div.dots", { "aria-hidden": "true" });
  for (let i = 0; i < max; i++) row.append(make(i < keyed ? "i.on" : "i"));
  return row;
}

/**
 * An entry of the PIN pad: the page only learns how many digits there are.
 * @param {Entry} entry
 * @param {Send} send
 * @returns {View}
 */
export function entryView(entry, send) {
  /** @param {PadKey} key */
  const press = (key) => send({ type: "press", entry: entry.number, key });
  const shown = make("div.typed", { role: "status" });
  /** @param {Entry} now */
  const update = (now) => {
    const count = make("span.spoken", {}, `${now.keyed} ${t("digits keyed")}`);
    if (now.display === "clear") shown.replaceChildren(make("b", {}, now.shown || " "));
    else if (now.display === "nothing") shown.replaceChildren();
    else shown.replaceChildren(dots(now.keyed, now.max), count);
  };
  update(entry);
  const pinTitle = entry.again ? t("Please key your PIN once more") : t("Please key your PIN");
  return {
    title: entry.what === "pin" ? pinTitle : t("Please key a number"),
    element: make("div.entry", {}, entry.prompt && make("p.prompt", {}, entry.prompt), shown, padKeys(press)),
    onkey: keyboard(press),
    update,
  };
}

/**
 * The keypad is a screen: what was typed goes out when it is confirmed.
 * @param {ScreenMessage} screen
 * @param {Surroundings} around
 * @returns {Part}
 */
export function keypadView(screen, { act, unit }) {
  let typed = "";
  const shown = make("div.typed", { role: "status" });
  /** @param {PadKey} key */
  const press = (key) => {
    if (key === "enter") return act("digits", typed);
    if (key === "cancel") return act("cancel");
    if (key === "clear") typed = "";
    else if (key === "back") typed = typed.slice(0, -1);
    else if (typed.length < unit.max_digits) typed += key;
    shown.replaceChildren(make("b", {}, (screen.hides_digits ? "•".repeat(typed.length) : typed) || " "));
  };
  press("clear");
  return { element: make("div.entry", {}, shown, padKeys(press)), onkey: keyboard(press) };
}
