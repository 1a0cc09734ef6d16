// SPDX-License-Identifier: MIT
// What the developer wants to know and to do, beside the terminal.
import { button, byId, fileUrl, make } from "./dom.js";
import { t } from "./texts.js";

const MOST_LINES = 300;
const FAULTS = {
  drop: "Lost answers", silence: "Silence", delay: "Late answers", repeat: "Answers twice",
  cut: "Cut answers", garbage: "Garbage", flip: "A wrong bit", length: "Wrong lengths",
  checksum: "Bad checksums", stall: "Stalled line", unplug: "A loose cable",
};
const OF_CABLES = ["stall", "unplug"];

function line({ time_ms, from, text }) {
  const time = (time_ms / 1000).toFixed(3);
  return make(`li.${from}`, {}, make("time", {}, time), make("b", {}, t(from)), make("span", {}, text));
}

function fileLink(path) {
  return make("li", {}, make("a", { href: fileUrl(path), target: "_blank", rel: "noopener noreferrer" }, path));
}

// Like "seed=7,drop=1", as at the command line.
const ratesIn = (text) => Object.fromEntries(text.split(",").map((item) => item.split("=")));

// Switches for what the line does to answers and transfers, and how often.
class Faults {
  constructor(send) {
    this.send = send;
    this.often = make("select", { onchange: () => this.tell() },
      ...[100, 50, 10, 1].map((percent) => make("option", { value: percent }, `${percent} %`)));
    this.switches = Object.keys(FAULTS).map((name) => make("input", { type: "checkbox", name, onchange: () => this.tell() }));
  }

  tell() {
    const rates = this.switches.map(({ name, checked }) => `${name}=${checked ? this.often.value : 0}`);
    this.send({ type: "faults", rates: rates.join(",") });
  }

  draw({ faults, pluggable }) {
    const rates = ratesIn(faults);
    const labels = this.switches.map((box) => {
      box.checked = Number(rates[box.name]) > 0;
      return make("label", { hidden: !pluggable && OF_CABLES.includes(box.name) }, box, t(FAULTS[box.name]));
    });
    const on = this.switches.filter(({ checked }) => checked).length;
    const summary = make("summary", {}, t("Faults of the line"), on > 0 && make("b", {}, String(on)));
    return [summary, make("label", {}, t("How often"), this.often), make("div.switches", {}, ...labels)];
  }
}

export class Panel {
  constructor(send, walkAway) {
    this.lines = make("ol.trace", { tabindex: "0", role: "log", "aria-live": "off" });
    this.status = make("dl");
    this.plug = button("small", "", () => send({ type: "plug", plugged: !this.plugged }));
    this.away = button("small", "", walkAway);
    this.faults = new Faults(send);
    this.faultsPart = make("details");
    this.files = make("ul.files");
    this.heads = ["Connection", "Commands and answers", "Stored files"].map((text) => [text, make("h2")]);
    const [connection, commands, stored] = this.heads.map(([, head]) => head);
    this.element = byId("panel");
    this.element.append(connection, this.status, make("div.actions", {}, this.plug, this.away), this.faultsPart,
      commands, this.lines, stored, this.files);
    this.toggle = byId("toggle");
    new ResizeObserver(() => (this.lines.scrollTop = this.lines.scrollHeight)).observe(this.lines);
    this.toggle.addEventListener("click", () => this.open(this.element.hidden));
    this.open(sessionStorage.getItem("panel") === "true");
  }

  open(open) {
    this.element.hidden = !open;
    this.toggle.setAttribute("aria-expanded", open);
    document.body.classList.toggle("with-panel", open);
    sessionStorage.setItem("panel", open);
    this.lines.scrollTop = this.lines.scrollHeight;
  }

  addLines(events) {
    const atEnd = this.lines.scrollHeight - this.lines.scrollTop - this.lines.clientHeight < 40;
    this.lines.append(...events.map(line));
    while (this.lines.childElementCount > MOST_LINES) this.lines.firstElementChild.remove();
    if (atEnd) this.lines.scrollTop = this.lines.scrollHeight;
  }

  setLines(events) {
    this.lines.replaceChildren();
    this.addLines(events);
  }

  draw(state) {
    const status = (on, text) => make(on ? "dd.on" : "dd.off", {}, t(text));
    for (const part of [this.toggle, this.element]) part.setAttribute("aria-label", t("Developer panel"));
    for (const [text, head] of this.heads) head.textContent = t(text);
    this.lines.setAttribute("aria-label", t("Commands and answers"));
    this.plugged = state.link.plugged;
    this.status.replaceChildren(
      make("dt", {}, t("Page")), status(state.connected, state.connected ? "connected" : "disconnected: the terminal has ended"),
      make("dt", {}, t("Cable")), status(this.plugged, this.plugged ? "plugged in" : "unplugged"));
    this.plug.textContent = t(this.plugged ? "Unplug" : "Plug in");
    this.plug.hidden = !state.link.pluggable;
    this.away.textContent = t("Walk away");
    this.away.disabled = !state.canWalkAway;
    this.#drawFaults(state.link);
    const files = state.files.map(fileLink);
    this.files.replaceChildren(...(files.length ? files : [make("li.hint", {}, t("none"))]));
  }

  // Not while they stay as they are, so that the one in use keeps the keyboard.
  #drawFaults(link) {
    const drawn = JSON.stringify([link, document.documentElement.lang]);
    if (drawn === this.drawn) return;
    this.drawn = drawn;
    const used = document.activeElement;
    this.faultsPart.replaceChildren(...this.faults.draw(link));
    if (this.faultsPart.contains(used)) used.focus();
  }
}
