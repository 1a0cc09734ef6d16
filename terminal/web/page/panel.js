// What the developer wants to know and to do, beside the terminal.
import { button, byId, fileUrl, make } from "./dom.js";
import { t } from "./texts.js";

const MOST_LINES = 300;

function line({ time_ms, from, text }) {
  const time = (time_ms / 1000).toFixed(3);
  return make(`li.${from}`, {}, make("time", {}, time), make("b", {}, t(from)), make("span", {}, text));
}

function fileLink(path) {
  return make("li", {}, make("a", { href: fileUrl(path), target: "_blank", rel: "noopener noreferrer" }, path));
}

export class Panel {
  constructor(send, walkAway) {
    this.send = send;
    this.walkAway = walkAway;
    this.lines = make("ol.trace", { tabindex: "0", role: "log", "aria-label": "trace" });
    this.element = byId("panel");
    this.toggle = byId("toggle");
    new ResizeObserver(() => (this.lines.scrollTop = this.lines.scrollHeight)).observe(this.lines);
    this.toggle.addEventListener("click", () => this.open(this.element.hidden));
  }

  open(open) {
    this.element.hidden = !open;
    this.toggle.setAttribute("aria-expanded", open);
    document.body.classList.toggle("with-panel", open);
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
    const { plugged, pluggable } = state.link;
    const status = (on, text) => make(on ? "dd.on" : "dd.off", {}, t(text));
    this.toggle.textContent = "⚙";
    this.toggle.setAttribute("aria-label", t("Developer panel"));
    this.element.setAttribute("aria-label", t("Developer panel"));
    const files = state.files.map(fileLink);
    this.element.replaceChildren(
      make("h2", {}, t("Connection")),
      make("dl", {},
        make("dt", {}, t("Page")), status(state.connected, state.connected ? "connected" : "disconnected: the terminal has ended"),
        make("dt", {}, t("Cable")), status(plugged, plugged ? "plugged in" : "unplugged")),
      make("div.deeds", {},
        pluggable && button("small", t(plugged ? "Unplug" : "Plug in"), () => this.send({ type: "plug", plugged: !plugged })),
        button("small", t("Walk away"), this.walkAway, { disabled: !state.canWalkAway })),
      make("h2", {}, t("Commands and answers")), this.lines,
      make("h2", {}, t("Stored files")),
      files.length ? make("ul.files", {}, ...files) : make("p.hint", {}, t("none")));
    this.lines.scrollTop = this.lines.scrollHeight;
  }
}
