// SPDX-License-Identifier: MIT
// A customer at the terminal: what the terminal says is drawn, and what the customer does is said to it.
import { Clock } from "./clock.js";
import { button, byId, isIn, make } from "./dom.js";
import { entryView } from "./pads.js";
import { Panel } from "./panel.js";
import { screenView } from "./screens.js";
import { State } from "./state.js";
import { currentLanguage, switchLanguage, t } from "./texts.js";

/** @import { Act, FromTerminal, Send, View } from "./types.js" */

/** @param {string} text */
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

export class Session {
  #state = new State();
  #clock = new Clock();
  /** @type {View | null} */
  #view = null;
  #socket;
  #panel;

  /** @param {WebSocket} socket */
  constructor(socket) {
    this.#socket = socket;
    this.#panel = new Panel(this.#send, () => this.#setAway(true));
    socket.addEventListener("open", () => {
      this.#state.connected = true;
      this.#panel.clearLines();
    });
    socket.addEventListener("message", ({ data }) => this.#hear(JSON.parse(data)));
    socket.addEventListener("close", ({ code }) => this.#end(code));
    document.addEventListener("keydown", (event) => this.#onKey(event));
    byId("language").addEventListener("click", () => {
      switchLanguage();
      this.#draw();
    });
  }

  /** @type {Send} */
  #send = (message) => {
    if (this.#socket.readyState === WebSocket.OPEN) this.#socket.send(JSON.stringify(message));
  };

  /** @type {Act} */
  #act = (kind, text = "", strokes = undefined) => {
    const { screen } = this.#state;
    if (screen) this.#send({ type: "act", screen: screen.number, kind, text, strokes });
  };

  /** @param {FromTerminal} message */
  #hear(message) {
    switch (message.type) {
      case "unit":
        this.#state.unit = message;
        break;
      case "screen": {
        const isNew = this.#state.takeScreen(message);
        if (!this.#state.entry) this.#clock.set(message.time_left_ms);
        if (!isNew) return;
        speak(message.voice);
        if (!this.#state.entry) this.#draw();
        break;
      }
      case "entry":
        if (!this.#state.takeEntry(message)) {
          if (this.#state.entry) this.#view?.update?.(this.#state.entry);
          return;
        }
        this.#clock.set(this.#state.entry?.time_left_ms ?? 0);
        this.#draw();
        break;
      case "trace":
        this.#panel.addLines(message.lines, this.#state.unit?.max_lines ?? 0);
        break;
      case "files":
        this.#state.files = message.paths;
        if (this.#state.idles) this.#draw();
        else this.#panel.draw(this.#state);
        break;
      case "link":
        this.#state.link = message;
        this.#drawVeil();
    }
  }

  /** @param {number} code */
  #end(code) {
    this.#state.disconnect(code);
    speak("");
    this.#clock.set(0);
    this.#drawVeil();
  }

  /** @param {boolean} away */
  #setAway(away) {
    this.#state.away = away;
    if (away && !this.#state.entry) this.#act("walk_away");
    this.#drawVeil();
  }

  /** @param {KeyboardEvent} event */
  #onKey(event) {
    const plain = !event.ctrlKey && !event.altKey && !event.metaKey;
    if (plain && byId("veil").hidden && !isIn(event, "#panel")) this.#view?.onkey?.(event);
  }

  // An entry of the PIN pad lies over the screen.
  #draw() {
    const { entry, files, screen, unit } = this.#state;
    if (!screen || !unit) return;
    this.#view?.stop?.();
    this.#view = entry ? entryView(entry, this.#send) : screenView(screen, { act: this.#act, unit, files });
    document.body.dataset.kind = entry ? "entry" : screen.kind;
    document.title = byId("title").textContent = byId("spoken").textContent = this.#view.title;
    byId("screen").replaceChildren(this.#view.element);
    byId("language").textContent = currentLanguage() === "zh" ? "English" : "中文";
    if (!document.activeElement?.closest(".corner, .panel")) byId("title").focus({ preventScroll: true });
    this.#drawVeil();
  }

  // While there is nothing for the customer to do, and why.
  #drawVeil() {
    const { obstacle, canComeBack } = this.#state;
    const veil = byId("veil");
    veil.hidden = !obstacle;
    veil.replaceChildren(make("p", { role: "status" }, obstacle && t(obstacle)));
    if (canComeBack) veil.append(button("plain", t("Come back"), () => this.#setAway(false)));
    for (const part of document.querySelectorAll(".bar, .screen")) part.toggleAttribute("inert", obstacle !== null);
    this.#panel.draw(this.#state);
  }
}
