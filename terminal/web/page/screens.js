// SPDX-License-Identifier: MIT
// What each kind of screen looks like.
import { documentsView, frame } from "./documents.js";
import { button, fileUrl, isIn, make, svg } from "./dom.js";
import { keypadView } from "./pads.js";
import { Pen } from "./pen.js";
import { t } from "./texts.js";

/** @import { Act, Part, ScreenKey, ScreenKind, ScreenMessage, Surroundings, TellerCard, View } from "./types.js" */
/** @typedef {(screen: ScreenMessage, around: Surroundings) => Part} ViewMaker */

const SLIDE_MS = 5000;

/** @param {boolean} on */
function star(on) {
  const shape = "M12 2l3 6.6 7.2.8-5.4 4.9 1.5 7.1L12 17.8 5.700 21.400l1.500-7.100L1.800 9.400 9 8.600z";
  return svg("0 0 24 24", [["path", { d: shape, class: on ? "star on" : "star" }]]);
}

/** @type {Record<string, string>} by the key's name */
const MOUTHS = { 1: "M15 34q9-10 18 0", 2: "M15 31h18", 3: "M14 29q10 12 20 0" };

/** @param {string} mouth */
function face(mouth) {
  return svg("0 0 48 48", [
    ["circle", { cx: 24, cy: 24, r: 21, class: "face" }],
    ["circle", { cx: 17, cy: 19, r: 2.6, class: "eye" }],
    ["circle", { cx: 31, cy: 19, r: 2.6, class: "eye" }],
    ["path", { d: mouth, class: "mouth" }],
  ]);
}

function person() {
  return svg("0 0 48 48", [
    ["circle", { cx: 24, cy: 17, r: 9, class: "silhouette" }],
    ["path", { d: "M6 46c0-12 8-18 18-18s18 6 18 18z", class: "silhouette" }],
  ]);
}

/**
 * @param {TellerCard} teller
 * @param {number} maxStars
 */
function tellerCard(teller, maxStars) {
  const photo = teller.photo
    ? make("img", { src: fileUrl(teller.photo), alt: t("Photo") })
    : person();
  const stars = make("div.stars", { role: "img", "aria-label": `${teller.stars} ${t("stars")}` });
  for (let i = 1; i <= maxStars; i++) stars.append(star(i <= teller.stars));
  return make("div.card", {},
    make("div.photo", {}, photo),
    make("div", {}, make("strong", {}, teller.name), make("p", {}, `${t("Teller number")} ${teller.number}`), stars));
}

const ROLE_KIND = { confirm: "confirm", sign: "confirm", cancel: "cancel", plain: "plain" };

/**
 * Shows the seconds on a button until none is left.
 * @param {HTMLElement} element
 * @param {string} label
 * @param {number} seconds
 */
function countDown(element, label, seconds) {
  let left = seconds;
  const draw = () => (element.textContent = left > 0 ? `${label} (${left})` : label);
  draw();
  const timer = setInterval(() => {
    left -= 1;
    draw();
    if (left <= 0 || !element.isConnected) clearInterval(timer);
  }, 1000);
}

/**
 * Buttons for the keys of a screen; the one that agrees has the count-down.
 * @param {ScreenMessage} screen
 * @param {Act} act
 */
function keysRow(screen, act) {
  const row = make("div.keys");
  for (const key of screen.keys) {
    const keyButton = button(ROLE_KIND[key.role], t(key.label), () => act("key", key.name));
    row.append(keyButton);
    if (key.role === "confirm" && screen.countdown > 0) countDown(keyButton, t(key.label), screen.countdown);
  }
  return row;
}

/**
 * @param {Act} act
 * @returns {(event: KeyboardEvent) => void}
 */
const confirmKeys = (act) => (event) => {
  if (isIn(event, "button")) return;
  if (event.key === "Enter") act("confirm");
  if (event.key === "Escape") act("cancel");
};

function welcome() {
  const time = make("time");
  const draw = () => (time.textContent = new Date().toLocaleTimeString([], { hour: "2-digit", minute: "2-digit" }));
  draw();
  const timer = setInterval(draw, 1000);
  const words = [make("p.big", {}, t("Welcome")), make("p", {}, t("Please wait to be called"))];
  return { element: make("div.idle", {}, time, ...words), stop: () => clearInterval(timer) };
}

/** @param {string[]} pictures at least one */
function slides(pictures) {
  let shown = 0;
  const image = make("img.slide", { src: fileUrl(pictures[0]), alt: t("Picture from the bank") });
  const timer = setInterval(() => {
    shown = (shown + 1) % pictures.length;
    if (pictures.length > 1) image.src = fileUrl(pictures[shown]);
  }, SLIDE_MS);
  return { element: make("div.idle.pictures", {}, image), stop: () => clearInterval(timer) };
}

/** @type {ViewMaker} */
function idle(_, { unit, files }) {
  const pictures = files.filter((path) => path.startsWith(`${unit.picture_directory}/`));
  return pictures.length ? slides(pictures) : welcome();
}

/** @type {ViewMaker} */
const teller = (screen, { unit }) =>
  ({ element: make("div.center", {}, screen.teller && tellerCard(screen.teller, unit.max_stars)) });

/**
 * @param {ScreenKey} key
 * @param {Act} act
 */
function rateButton(key, act) {
  const rate = button(`rate.rate${key.name}`, "", () => act("key", key.name));
  rate.append(face(MOUTHS[key.name]), make("span", {}, t(key.label)));
  return rate;
}

/** @type {ViewMaker} */
function evaluation(screen, { act, unit }) {
  const rates = screen.keys.filter((key) => key.role !== "cancel").map((key) => rateButton(key, act));
  const none = screen.keys.find((key) => key.role === "cancel");
  return {
    element: make("div.center", {}, screen.teller && tellerCard(screen.teller, unit.max_stars),
      make("div.rates", {}, ...rates), none && button("plain", t(none.label), () => act("key", none.name))),
    onkey: (event) => {
      if (screen.keys.some((key) => key.name === event.key)) act("key", event.key);
      if (event.key === "Escape") act("cancel");
    },
  };
}

/** @type {ViewMaker} */
const information = (screen, { act }) => ({
  element: make("div.column", {}, make("div.text", { tabindex: "0" }, screen.text), keysRow(screen, act)),
  onkey: confirmKeys(act),
});

/** @type {ViewMaker} */
function html(screen, { act }) {
  /** @type {Part} */
  const shown = screen.documents.length ? documentsView(screen.documents) : { element: frame(`screen/${screen.number}`) };
  return {
    element: make("div.column", {}, shown.element, screen.second_text && make("p.extra", {}, screen.second_text),
      screen.keys.length > 0 && keysRow(screen, act)),
    onkey: confirmKeys(act),
    stop: shown.stop,
  };
}

/** @type {ViewMaker} */
function documents(screen, { act }) {
  const shown = documentsView(screen.documents);
  return {
    element: make("div.column", {}, shown.element, screen.keys.length > 0 && keysRow(screen, act)),
    onkey: confirmKeys(act),
    stop: shown.stop,
  };
}

/** @type {ViewMaker} */
function signing(screen, { act, unit }) {
  const canvas = make("canvas.ink", { role: "img", "aria-label": t("Signature area: write with mouse, finger or pen") });
  const hint = make("p.here", { "aria-hidden": "true" }, t("Sign here"));
  const area = make("div.area", {}, hint, canvas);
  area.style.aspectRatio = `${unit.signature.width} / ${unit.signature.height}`;
  const sign = button("confirm", t("Sign"), () => act("sign", "", pen.points), { disabled: true });
  const clear = button("plain", t("Clear"), () => pen.clear(), { disabled: true });
  const pen = new Pen(canvas, unit.signature, () => {
    sign.disabled = clear.disabled = pen.empty;
    hint.hidden = !pen.empty;
  });
  canvas.addEventListener("pointerdown", () => (hint.hidden = true));
  const shown = documentsView(screen.documents);
  return {
    element: make("div.column.signing", {},
      shown.element,
      make("div.writing", {},
        screen.location && make("p.extra", {}, `${t("Place")}: ${screen.location}`),
        area,
        make("div.keys", {},
          button("quiet", t("Sample signature"), () => pen.sample()),
          make("span.room"),
          clear,
          button("cancel", t("Cancel"), () => act("cancel")),
          sign))),
    onkey: (event) => {
      if (event.key === "Escape") act("cancel");
    },
    stop: shown.stop,
  };
}

/** @type {ViewMaker} */
const checkout = (screen, { act }) => ({
  element: make("div.column", {},
    make("div.bill", { tabindex: "0" },
      make("div.slip", {}, make("p", {}, screen.text), screen.second_text && make("p", {}, screen.second_text))),
    keysRow(screen, act)),
  onkey: confirmKeys(act),
});

/** @type {Record<ScreenKind, ViewMaker>} */
const VIEWS = {
  idle, teller_card: teller, evaluation, information, html, keypad: keypadView, document: documents,
  confirm: documents, signing, hand_sign: signing, checkout,
};

/**
 * @param {ScreenMessage} screen
 * @param {Surroundings} around
 * @returns {View}
 */
export const screenView = (screen, around) => ({ title: t(screen.title), ...VIEWS[screen.kind](screen, around) });
