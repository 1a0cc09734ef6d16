// SPDX-License-Identifier: MIT
// The keys of the PIN pad and of the keypad.
import { button, make } from "./dom.js";
import { t } from "./texts.js";

const ROWS = ["1", "2", "3", "4", "5", "6", "7", "8", "9"];
const NAMES = { Enter: "enter", Backspace: "back", Delete: "clear", Escape: "cancel" };

// `press` gets "0" to "9", back, clear, enter or cancel. A key at the keyboard is one of these too.
function padKeys(press) {
  const digit = (name) => button("key", name, () => press(name));
  return make("div.pad", { role: "group" },
    ...ROWS.map(digit),
    button("key.dim", t("Clear"), () => press("clear")),
    digit("0"),
    button("key.dim", "⌫", () => press("back"), { "aria-label": t("Backspace") }),
    button("key.cancel", t("Cancel"), () => press("cancel")),
    button("key.confirm", t("Enter"), () => press("enter")));
}

function keyboard(press) {
  return (event) => {
    const name = /^[0-9]$/.test(event.key) ? event.key : NAMES[event.key];
    if (!name || (name === "enter" && event.target.matches("button"))) return;
    event.preventDefault();
    press(name);
  };
}

function dots(keyed, most) {
  const row = make("div.dots", { "aria-hidden": "true" });
  for (let i = 0; i < most; i++) row.append(make(i < keyed ? "i.on" : "i"));
  return row;
}

// An entry of the PIN pad: the page only learns how many digits there are.
export function entryView(entry, send) {
  const press = (key) => send({ type: "press", entry: entry.number, key });
  const shown = make("div.typed", { role: "status" });
  const update = (state) => {
    const count = make("span.spoken", {}, `${state.keyed} ${t("digits keyed")}`);
    if (state.display === "clear") shown.replaceChildren(make("b", {}, state.shown || " "));
    else if (state.display === "nothing") shown.replaceChildren();
    else shown.replaceChildren(dots(state.keyed, state.max), count);
  };
  update(entry);
  const ask = entry.again ? "Please key your PIN once more" : "Please key your PIN";
  return {
    title: t(entry.what === "pin" ? ask : "Please key a number"),
    element: make("div.entry", {}, entry.prompt && make("p.prompt", {}, entry.prompt), shown, padKeys(press)),
    onkey: keyboard(press),
    update,
  };
}

// The keypad is a screen: what was typed goes out when it is confirmed.
export function keypadView(screen, act) {
  const MOST = 32;
  let typed = "";
  const shown = make("div.typed", { role: "status" });
  const press = (key) => {
    if (key === "enter") return act("digits", typed);
    if (key === "cancel") return act("cancel");
    if (key === "clear") typed = "";
    else if (key === "back") typed = typed.slice(0, -1);
    else if (typed.length < MOST) typed += key;
    shown.replaceChildren(make("b", {}, (screen.hides_digits ? "•".repeat(typed.length) : typed) || " "));
  };
  press("clear");
  return { element: make("div.entry", {}, shown, padKeys(press)), onkey: keyboard(press) };
}
