// SPDX-License-Identifier: MIT
// Documents of the terminal: PDF page by page, pictures, and HTML that can do nothing.
import { button, fileUrl, make, pageUrl } from "./dom.js";
import { t } from "./texts.js";

const isNamed = (path, ...endings) => endings.some((ending) => path.toLowerCase().endsWith(ending));
const nameOf = (path) => path.split("/").at(-1);

let reader = null;
function pdfReader() {
  reader ??= new Promise((resolve, reject) => {
    const script = make("script", { src: "pdf.js", onerror: reject });
    script.addEventListener("load", () => {
      globalThis.pdfjsLib.GlobalWorkerOptions.workerSrc = "pdf.worker.js";
      resolve(globalThis.pdfjsLib);
    });
    document.head.append(script);
  });
  return reader;
}

const failed = () => make("p.hint", {}, t("This document cannot be shown"));

export const frame = (src) =>
  make("iframe.page", { sandbox: "", src, title: t("Page shown by the bank"), referrerpolicy: "no-referrer" });

// The keys scroll the page, and turn it at its end.
function turnByKey(event, paper, turn) {
  const atEnd = paper.scrollTop + paper.clientHeight > paper.scrollHeight - 2;
  const step = { PageDown: atEnd && 1, PageUp: paper.scrollTop < 2 && -1, ArrowRight: 1, ArrowLeft: -1 }[event.key];
  if (!step) return;
  event.preventDefault();
  turn(step);
}

// One document, from which worker and observer go with stop(). What is still under way then fails, and is of no interest.
class PdfView {
  #gone = new AbortController();
  #resized = new ResizeObserver(() => this.#draw());
  #canvas;
  #place = make("output", {}, t("Loading"));
  #paper;
  #back = button("turn", "‹", () => this.#turn(-1), { "aria-label": t("Previous page"), disabled: true });
  #next = button("turn", "›", () => this.#turn(1), { "aria-label": t("Next page"), disabled: true });
  #name;
  #loading = null;
  #pdf = null;
  #number = 1;
  #drawing = null;

  constructor(path) {
    this.#name = nameOf(path);
    this.#canvas = make("canvas", { role: "img", "aria-label": this.#name, hidden: true });
    this.#paper = make("div.paper", { tabindex: "0" }, this.#canvas);
    this.#paper.addEventListener("keydown", (event) => turnByKey(event, this.#paper, (step) => this.#turn(step)));
    const turns = make("div.turns", {}, this.#back, this.#place, this.#next);
    this.element = make("div.pdf", {}, this.#paper, turns);
    this.#load(path).catch(() => this.element.replaceChildren(failed()));
  }

  stop() {
    this.#gone.abort();
    this.#resized.disconnect();
    this.#loading?.destroy();
  }

  async #load(path) {
    const { signal } = this.#gone;
    const [library, response] = await Promise.all([pdfReader(), fetch(fileUrl(path), { signal })]);
    if (!response.ok) throw new Error(response.statusText);
    const data = await response.arrayBuffer();
    signal.throwIfAborted();
    this.#loading = library.getDocument({ data, isEvalSupported: false, enableXfa: false });
    this.#pdf = await this.#loading.promise;
    signal.throwIfAborted();
    this.#resized.observe(this.#paper);
  }

  #turn(step) {
    if (!this.#pdf) return;
    this.#number = Math.min(Math.max(this.#number + step, 1), this.#pdf.numPages);
    this.#paper.scrollTop = 0;
    this.#draw();
  }

  async #draw() {
    try {
      await this.#drawPage(this.#number);
    } catch (error) {
      if (!this.#gone.signal.aborted) throw error;
    }
  }

  async #drawPage(number) {
    const page = await this.#pdf.getPage(number);
    this.#drawing?.cancel();
    if (number !== this.#number) return;
    const scale = (this.#paper.clientWidth / page.getViewport({ scale: 1 }).width) * devicePixelRatio;
    const viewport = page.getViewport({ scale: Math.min(Math.max(scale, 0.2), 4) });
    this.#canvas.hidden = false;
    [this.#canvas.width, this.#canvas.height] = [viewport.width, viewport.height];
    const drawing = page.render({ canvasContext: this.#canvas.getContext("2d"), viewport });
    this.#drawing = drawing;
    await drawing.promise.catch(() => {});
    if (drawing === this.#drawing) this.#showPlace(number);
  }

  #showPlace(number) {
    const pages = this.#pdf.numPages;
    this.#canvas.setAttribute("aria-label", `${this.#name}, ${number}`);
    this.#place.value = `${number} / ${pages}`;
    [this.#back.disabled, this.#next.disabled] = [number === 1, number === pages];
  }
}

function documentView(path) {
  if (isNamed(path, ".pdf")) return new PdfView(path);
  if (isNamed(path, ".html", ".htm")) return { element: frame(pageUrl(path)) };
  if (!isNamed(path, ".png", ".jpg", ".jpeg", ".bmp", ".gif")) return { element: failed() };
  const image = make("img", { src: fileUrl(path), alt: nameOf(path) });
  image.addEventListener("error", () => image.replaceWith(failed()));
  return { element: make("div.paper.picture", { tabindex: "0" }, image) };
}

// All documents of a screen, one at a time.
export function documentsView(paths) {
  const stage = make("div.stage", paths.length > 1 ? { role: "tabpanel" } : {});
  const tabs = paths.map((path) => button("tab", nameOf(path), () => show(path), { role: "tab" }));
  let view = null;
  const show = (path) => {
    view?.stop?.();
    view = documentView(path);
    tabs.forEach((tab, i) => tab.setAttribute("aria-selected", paths[i] === path));
    stage.replaceChildren(view.element);
  };
  const list = paths.length > 1 && make("div.tabs", { role: "tablist", "aria-label": t("Documents") }, ...tabs);
  const first = requestAnimationFrame(() => paths.length && show(paths[0]));
  return {
    element: make("div.documents", {}, list, stage),
    stop: () => {
      cancelAnimationFrame(first);
      view?.stop?.();
    },
  };
}
