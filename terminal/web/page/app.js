// SPDX-License-Identifier: MIT
// The page's connection to the terminal, and what is shown at the moment.
import { button, byId, make } from "./dom.js";
import { entryView } from "./pads.js";
import { Panel } from "./panel.js";
import { screenView } from "./screens.js";
import { currentLanguage, switchLanguage, t } from "./texts.js";

const state = {
  connected: false,
  ended: "",
  link: { plugged: true, pluggable: false, faults: "" },
  screen: null,
  entry: { number: 0 },
  files: [],
  away: false,
  canWalkAway: false,
};
const TOO_MANY = 1008;
let view = null;
let endsAt = 0;
let lasts = 0;

const socket = new WebSocket(new URL("socket", location.href.replace(/^http/, "ws")));
const send = (message) => socket.readyState === WebSocket.OPEN && socket.send(JSON.stringify(message));
const act = (kind, text = "", strokes = undefined) =>
  send({ type: "act", screen: state.screen.number, kind, text, strokes });
const panel = new Panel(send, () => setAway(true));

function setAway(away) {
  state.away = away;
  if (away && !state.entry.number) act("walk_away");
  drawVeil();
}

// While there is nothing for the customer to do, and why.
function drawVeil() {
  const why = !state.connected ? state.ended
    : !state.link.plugged ? "The cable is unplugged."
    : state.away ? "You walked away. The terminal waits for its time-out." : "";
  const veil = byId("veil");
  veil.hidden = !why;
  veil.replaceChildren(make("p", { role: "status" }, t(why)));
  if (state.away && state.connected && state.link.plugged)
    veil.append(button("plain", t("Come back"), () => setAway(false)));
  for (const part of [byId("screen"), byId("title").parentElement]) part.inert = Boolean(why);
  state.canWalkAway = !why && (state.entry.number > 0 || Boolean(state.screen?.keys.length));
  panel.draw(state);
}

function speak(text) {
  const caption = byId("caption");
  caption.hidden = !text;
  caption.textContent = text;
  if (!globalThis.speechSynthesis) return;
  speechSynthesis.cancel();
  if (!text) return;
  const words = new SpeechSynthesisUtterance(text);
  words.lang = /\p{Script=Han}/u.test(text) ? "zh-CN" : "en";
  speechSynthesis.speak(words);
}

function setClock(timeLeft) {
  lasts = timeLeft;
  endsAt = timeLeft > 0 ? performance.now() + timeLeft : 0;
  drawClock();
}

function drawClock() {
  const left = Math.max(endsAt - performance.now(), 0);
  const clock = byId("clock");
  clock.hidden = endsAt === 0;
  clock.textContent = Math.ceil(left / 1000);
  clock.setAttribute("aria-label", `${clock.textContent} ${t("seconds left")}`);
  byId("progress").firstElementChild.style.width = endsAt ? `${(100 * left) / lasts}%` : "0";
}

// An entry of the PIN pad lies over the screen.
function draw() {
  if (!state.screen) return;
  view?.stop?.();
  const entry = state.entry.number > 0;
  view = entry ? entryView(state.entry, send) : screenView(state.screen, act, state);
  document.body.dataset.kind = entry ? "entry" : state.screen.kind;
  document.title = byId("title").textContent = view.title;
  byId("spoken").textContent = view.title;
  byId("screen").replaceChildren(view.element);
  byId("language").textContent = currentLanguage() === "zh" ? "English" : "中文";
  if (!document.activeElement.closest(".corner, .panel")) byId("title").focus({ preventScroll: true });
  drawVeil();
}

const onMessage = {
  screen(message) {
    const known = state.screen?.number === message.number;
    state.screen = message;
    if (!state.entry.number) setClock(message.time_left_ms);
    if (known) return;
    state.away = false;
    speak(message.voice);
    if (!state.entry.number) draw();
  },
  entry(message) {
    const known = state.entry.number === message.number;
    state.entry = message;
    if (known && message.number) return view?.update(message);
    if (known) return;
    state.away = false;
    setClock(message.time_left_ms ?? 0);
    draw();
  },
  trace: (message) => panel.addLines(message.lines),
  files(message) {
    state.files = message.paths;
    if (state.screen?.kind === "idle" && !state.entry.number) draw();
    else panel.draw(state);
  },
  link(message) {
    state.link = message;
    drawVeil();
  },
};

socket.addEventListener("open", () => {
  state.connected = true;
  panel.setLines([]);
  draw();
});
socket.addEventListener("message", (event) => {
  const message = JSON.parse(event.data);
  onMessage[message.type]?.(message);
});
socket.addEventListener("close", ({ code }) => {
  state.connected = false;
  state.ended = code === TOO_MANY ? "Too many pages are open." : "The terminal has ended.";
  speak("");
  setClock(0);
  drawVeil();
});
document.addEventListener("keydown", (event) => {
  const free = !event.ctrlKey && !event.altKey && !event.metaKey && byId("veil").hidden;
  if (free && !event.target.closest("#panel")) view?.onkey?.(event);
});
byId("language").addEventListener("click", () => {
  switchLanguage();
  draw();
});
setInterval(drawClock, 250);
