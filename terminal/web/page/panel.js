// SPDX-License-Identifier: MIT
// What the developer wants to know and to do, beside the terminal.
import { button, byId, fileUrl, make } from "./dom.js";
import { t } from "./texts.js";

/** @import { State } from "./state.js" */
/** @import { Link, Send, Text, TraceLine } from "./types.js" */

/** @type {[fault: string, label: Text][]} */
const FAULTS = [
  ["drop", "Lost answers"], ["silence", "Silence"], ["delay", "Late answers"], ["repeat", "Answers twice"],
  ["cut", "Cut answers"], ["garbage", "Garbage"], ["flip", "A wrong bit"], ["length", "Wrong lengths"],
  ["checksum", "Bad checksums"], ["stall", "Stalled line"], ["unplug", "A loose cable"],
];
const OF_CABLES = ["stall", "unplug"];

/** @param {TraceLine} line */
function traceLine({ time_ms, from, text }) {
  const time = (time_ms / 1000).toFixed(3);
  return make(`li.${from}`, {}, make("time", {}, time), make("b", {}, t(from)), make("span", {}, text));
}

/** @param {string} path */
function fileLink(path) {
  return make("li", {}, make("a", { href: fileUrl(path), target: "_blank", rel: "noopener noreferrer" }, path));
}

/**
 * Like "seed=7,drop=1", as at the command line.
 * @param {string} text
 * @returns {Record<string, string>}
 */
const ratesIn = (text) => Object.fromEntries(text.split(",").map((item) => item.split("=")));

// Switches for what the line does to answers and transfers, and how often.
class Faults {
  element = make("details");
  #send;
  #often;
  #switches;
  #drawn = "";

  /** @param {Send} send */
  constructor(send) {
    this.#send = send;
    const tell = () => this.#tell();
    this.#often = make("select", { onchange: tell },
      ...[100, 50, 10, 1].map((percent) => make("option", { value: percent }, `${percent} %`)));
    this.#switches = FAULTS.map(([name, label]) =>
      ({ name, label, box: make("input", { type: "checkbox", name, onchange: tell }) }));
  }

  #tell() {
    const rates = this.#switches.map(({ name, box }) => `${name}=${box.checked ? this.#often.value : 0}`);
    this.#send({ type: "faults", rates: rates.join(",") });
  }

  /**
   * Not while they stay as they are, so that the one in use keeps the keyboard.
   * @param {Link} link
   */
  draw(link) {
    const drawn = JSON.stringify([link, document.documentElement.lang]);
    if (drawn === this.#drawn) return;
    this.#drawn = drawn;
    const used = document.activeElement;
    this.element.replaceChildren(...this.#parts(link));
    if (used instanceof HTMLElement && this.element.contains(used)) used.focus();
  }

  /** @param {Link} link */
  #parts({ faults, pluggable }) {
    const rates = ratesIn(faults);
    const labels = this.#switches.map(({ name, label, box }) => {
      box.checked = Number(rates[name]) > 0;
      return make("label", { hidden: !pluggable && OF_CABLES.includes(name) }, box, t(label));
    });
    const on = this.#switches.filter(({ box }) => box.checked).length;
    const summary = make("summary", {}, t("Faults of the line"), on > 0 && make("b", {}, String(on)));
    return [summary, make("label", {}, t("How often"), this.#often), make("div.switches", {}, ...labels)];
  }
}

export class Panel {
  #element = byId("panel");
  #toggle = byId("toggle");
  #lines = make("ol.trace", { tabindex: "0", role: "log", "aria-live": "off" });
  #status = make("dl");
  #files = make("ul.files");
  #heads = { connection: make("h2"), commands: make("h2"), files: make("h2") };
  #plugged = true;
  #plug;
  #away;
  #faults;

  /**
   * @param {Send} send
   * @param {() => void} walkAway
   */
  constructor(send, walkAway) {
    this.#plug = button("small", "", () => send({ type: "plug", plugged: !this.#plugged }));
    this.#away = button("small", "", walkAway);
    this.#faults = new Faults(send);
    this.#element.append(this.#heads.connection, this.#status, make("div.actions", {}, this.#plug, this.#away),
      this.#faults.element, this.#heads.commands, this.#lines, this.#heads.files, this.#files);
    new ResizeObserver(() => this.#scrollToEnd()).observe(this.#lines);
    this.#toggle.addEventListener("click", () => this.#open(this.#element.hidden));
    this.#open(sessionStorage.getItem("panel") === "true");
  }

  /** @param {boolean} open */
  #open(open) {
    this.#element.hidden = !open;
    this.#toggle.setAttribute("aria-expanded", String(open));
    document.body.classList.toggle("with-panel", open);
    sessionStorage.setItem("panel", String(open));
    this.#scrollToEnd();
  }

  #scrollToEnd() {
    this.#lines.scrollTop = this.#lines.scrollHeight;
  }

  /**
   * @param {TraceLine[]} lines
   * @param {number} max
   */
  addLines(lines, max) {
    const atEnd = this.#lines.scrollHeight - this.#lines.scrollTop - this.#lines.clientHeight < 40;
    this.#lines.append(...lines.map(traceLine));
    while (this.#lines.childElementCount > max) this.#lines.firstElementChild?.remove();
    if (atEnd) this.#scrollToEnd();
  }

  clearLines() {
    this.#lines.replaceChildren();
  }

  /** @param {State} state */
  draw(state) {
    this.#plugged = state.link.plugged;
    this.#drawNames();
    this.#drawStatus(state.connected);
    this.#plug.textContent = this.#plugged ? t("Unplug") : t("Plug in");
    this.#plug.hidden = !state.link.pluggable;
    this.#away.textContent = t("Walk away");
    this.#away.disabled = !state.canWalkAway;
    this.#faults.draw(state.link);
    const files = state.files.map(fileLink);
    this.#files.replaceChildren(...(files.length ? files : [make("li.hint", {}, t("none"))]));
  }

  #drawNames() {
    for (const part of [this.#toggle, this.#element]) part.setAttribute("aria-label", t("Developer panel"));
    this.#heads.connection.textContent = t("Connection");
    this.#heads.commands.textContent = t("Commands and answers");
    this.#heads.files.textContent = t("Stored files");
    this.#lines.setAttribute("aria-label", t("Commands and answers"));
  }

  /** @param {boolean} connected */
  #drawStatus(connected) {
    /**
     * @param {boolean} on
     * @param {Text} text
     */
    const status = (on, text) => make(on ? "dd.on" : "dd.off", {}, t(text));
    this.#status.replaceChildren(
      make("dt", {}, t("Page")), status(connected, connected ? "connected" : "disconnected: the terminal has ended"),
      make("dt", {}, t("Cable")), status(this.#plugged, this.#plugged ? "plugged in" : "unplugged"));
  }
}
