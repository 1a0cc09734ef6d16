// SPDX-License-Identifier: MIT
// What each kind of screen looks like. A view has an element, and may have a title, a way to take
// keys of the keyboard, and something to stop when it goes.
import { documentsView, frame } from "./documents.js";
import { button, fileUrl, make, svg } from "./dom.js";
import { keypadView } from "./pads.js";
import { Pen } from "./pen.js";
import { t } from "./texts.js";

const PICTURES = "/mnt/internal_sd/media/picture/";

function star(on) {
  const shape = "M12 2l3 6.6 7.2.8-5.4 4.9 1.5 7.1L12 17.8 5.700 21.400l1.500-7.100L1.800 9.400 9 8.600z";
  return svg("0 0 24 24", [["path", { d: shape, class: on ? "star on" : "star" }]]);
}

function face(mood) {
  const mouths = { 1: "M15 34q9-10 18 0", 2: "M15 31h18", 3: "M14 29q10 12 20 0" };
  return svg("0 0 48 48", [
    ["circle", { cx: 24, cy: 24, r: 21, class: "face" }],
    ["circle", { cx: 17, cy: 19, r: 2.6, class: "eye" }],
    ["circle", { cx: 31, cy: 19, r: 2.6, class: "eye" }],
    ["path", { d: mouths[mood], class: "mouth" }],
  ]);
}

function person() {
  return svg("0 0 48 48", [
    ["circle", { cx: 24, cy: 17, r: 9, class: "silhouette" }],
    ["path", { d: "M6 46c0-12 8-18 18-18s18 6 18 18z", class: "silhouette" }],
  ]);
}

function tellerCard(teller) {
  const photo = teller.photo
    ? make("img", { src: fileUrl(teller.photo), alt: t("Photo") })
    : person();
  const stars = make("div.stars", { role: "img", "aria-label": `${teller.stars} ${t("stars")}` });
  for (let i = 1; i <= 6; i++) stars.append(star(i <= teller.stars));
  return make("div.card", {},
    make("div.photo", {}, photo),
    make("div", {}, make("strong", {}, teller.name), make("p", {}, `${t("Teller number")} ${teller.number}`), stars));
}

const ROLE_KIND = { confirm: "confirm", sign: "confirm", cancel: "cancel", plain: "plain" };

// Buttons for the keys of a screen; the count-down stands on the one that agrees.
function keysRow(screen, act) {
  let left = screen.countdown;
  const row = make("div.keys");
  for (const key of screen.keys) {
    const name = button(ROLE_KIND[key.role], t(key.label), () => act("key", key.name));
    row.append(name);
    if (key.role !== "confirm" || left <= 0) continue;
    const label = () => (name.textContent = left > 0 ? `${t(key.label)} (${left})` : t(key.label));
    label();
    const timer = setInterval(() => {
      left -= 1;
      label();
      if (left <= 0 || !name.isConnected) clearInterval(timer);
    }, 1000);
  }
  return row;
}

const confirmKeys = (act) => (event) => {
  if (event.target.matches("button")) return;
  if (event.key === "Enter") act("confirm");
  if (event.key === "Escape") act("cancel");
};

function timeOfDay() {
  const time = make("time");
  const draw = () => (time.textContent = new Date().toLocaleTimeString([], { hour: "2-digit", minute: "2-digit" }));
  draw();
  return { time, timer: setInterval(draw, 1000) };
}

function idle(screen, act, state) {
  const pictures = state.files.filter((path) => path.startsWith(PICTURES));
  if (!pictures.length) {
    const { time, timer } = timeOfDay();
    const words = [make("p.big", {}, t("Welcome")), make("p", {}, t("Please wait to be called"))];
    return { element: make("div.idle", {}, time, ...words), stop: () => clearInterval(timer) };
  }
  let shown = 0;
  const image = make("img.slide", { src: fileUrl(pictures[0]), alt: t("Picture from the bank") });
  const timer = setInterval(() => {
    shown = (shown + 1) % pictures.length;
    if (pictures.length > 1) image.src = fileUrl(pictures[shown]);
  }, 5000);
  return { element: make("div.idle.pictures", {}, image), stop: () => clearInterval(timer) };
}

const teller = (screen) => ({ element: make("div.center", {}, tellerCard(screen.teller)) });

function evaluation(screen, act) {
  const keys = screen.keys.map((key) => {
    if (key.role === "cancel") return null;
    const name = button(`rate.rate${key.name}`, face(key.name), () => act("key", key.name));
    name.append(make("span", {}, t(key.label)));
    return name;
  });
  const none = screen.keys.find((key) => key.role === "cancel");
  return {
    element: make("div.center", {}, screen.teller && tellerCard(screen.teller), make("div.rates", {}, ...keys),
      none && button("plain", t(none.label), () => act("key", none.name))),
    onkey: (event) => {
      if (screen.keys.some((key) => key.name === event.key)) act("key", event.key);
      if (event.key === "Escape") act("cancel");
    },
  };
}

const information = (screen, act) => ({
  element: make("div.column", {}, make("div.text", { tabindex: "0" }, screen.text), keysRow(screen, act)),
  onkey: confirmKeys(act),
});

function html(screen, act) {
  const shown = screen.documents.length ? documentsView(screen.documents) : { element: frame(`screen/${screen.number}`) };
  return {
    element: make("div.column", {}, shown.element, screen.second_text && make("p.extra", {}, screen.second_text),
      screen.keys.length ? keysRow(screen, act) : null),
    onkey: confirmKeys(act),
    stop: shown.stop,
  };
}

function documents(screen, act) {
  const shown = documentsView(screen.documents);
  return {
    element: make("div.column", {}, shown.element, screen.keys.length ? keysRow(screen, act) : null),
    onkey: confirmKeys(act),
    stop: shown.stop,
  };
}

function signing(screen, act) {
  const canvas = make("canvas.ink", { role: "img", "aria-label": t("Signature area: write with mouse, finger or pen") });
  const hint = make("p.here", { "aria-hidden": "true" }, t("Sign here"));
  const pen = new Pen(canvas, () => {
    sign.disabled = clear.disabled = pen.empty;
    hint.hidden = !pen.empty;
  });
  const sign = button("confirm", t("Sign"), () => act("sign", "", pen.points), { disabled: true });
  const clear = button("plain", t("Clear"), () => pen.clear(), { disabled: true });
  canvas.addEventListener("pointerdown", () => (hint.hidden = true));
  const shown = documentsView(screen.documents);
  return {
    element: make("div.column.signing", {},
      shown.element,
      make("div.writing", {},
        screen.location && make("p.extra", {}, `${t("Place")}: ${screen.location}`),
        make("div.area", {}, hint, canvas),
        make("div.keys", {},
          button("quiet", t("Sample signature"), () => pen.sample()),
          make("span.room"),
          clear,
          button("cancel", t("Cancel"), () => act("cancel")),
          sign))),
    onkey: (event) => event.key === "Escape" && act("cancel"),
    stop: shown.stop,
  };
}

const checkout = (screen, act) => ({
  element: make("div.column", {},
    make("div.bill", { tabindex: "0" },
      make("div.slip", {}, make("p", {}, screen.text), screen.second_text && make("p", {}, screen.second_text))),
    keysRow(screen, act)),
  onkey: confirmKeys(act),
});

const VIEWS = {
  idle, teller_card: teller, evaluation, information, html, keypad: keypadView, document: documents,
  confirm: documents, signing, hand_sign: signing, checkout,
};

export function screenView(screen, act, state) {
  const view = VIEWS[screen.kind](screen, act, state);
  return { title: t(screen.title), ...view };
}
