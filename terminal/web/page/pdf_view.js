// SPDX-License-Identifier: MIT
// A PDF document, page by page.
import { button, fileUrl, inkOf, make } from "./dom.js";
import { t } from "./texts.js";

/** @import { Part, PdfDocument, PdfDrawing, PdfLibrary, PdfLoading } from "./types.js" */

/** @type {Promise<PdfLibrary> | null} */
let library = null;
function pdfLibrary() {
  library ??= new Promise((resolve, reject) => {
    const script = make("script", { src: "pdf.js", onerror: reject });
    script.addEventListener("load", () => {
      globalThis.pdfjsLib.GlobalWorkerOptions.workerSrc = "pdf.worker.js";
      resolve(globalThis.pdfjsLib);
    });
    document.head.append(script);
  });
  return library;
}

/**
 * The keys scroll the paper, and turn its page at the end.
 * @param {KeyboardEvent} event
 * @param {HTMLElement} paper
 */
function stepOf(event, paper) {
  const atTop = paper.scrollTop < 2;
  const atEnd = paper.scrollTop + paper.clientHeight > paper.scrollHeight - 2;
  if (event.key === "ArrowRight" || (event.key === "PageDown" && atEnd)) return 1;
  if (event.key === "ArrowLeft" || (event.key === "PageUp" && atTop)) return -1;
  return 0;
}

/**
 * Worker and observer go with stop(). What is still under way then fails, and is of no interest.
 * @implements {Part}
 */
export class PdfView {
  #name;
  #canvas;
  #paper;
  #place = make("output", {}, t("Loading"));
  #back = button("turn", "‹", () => this.#turn(-1), { "aria-label": t("Previous page"), disabled: true });
  #next = button("turn", "›", () => this.#turn(1), { "aria-label": t("Next page"), disabled: true });
  #stopped = new AbortController();
  #resized = new ResizeObserver(() => this.#draw());
  /** @type {PdfLoading | null} */
  #loading = null;
  /** @type {PdfDocument | null} */
  #pdf = null;
  /** @type {PdfDrawing | null} */
  #drawing = null;
  #number = 1;

  /**
   * @param {string} path
   * @param {string} name
   * @param {() => HTMLElement} failed what is shown when there is no such document
   */
  constructor(path, name, failed) {
    this.#name = name;
    this.#canvas = make("canvas", { role: "img", "aria-label": name, hidden: true });
    this.#paper = make("div.paper", { tabindex: "0" }, this.#canvas);
    this.#paper.addEventListener("keydown", (event) => this.#onKey(event));
    const turns = make("div.turns", {}, this.#back, this.#place, this.#next);
    this.element = make("div.pdf", {}, this.#paper, turns);
    this.#load(path).catch(() => this.element.replaceChildren(failed()));
  }

  stop() {
    this.#stopped.abort();
    this.#resized.disconnect();
    this.#loading?.destroy();
  }

  /** @param {string} path */
  async #load(path) {
    const { signal } = this.#stopped;
    const [reader, response] = await Promise.all([pdfLibrary(), fetch(fileUrl(path), { signal })]);
    if (!response.ok) throw new Error(response.statusText);
    const data = await response.arrayBuffer();
    signal.throwIfAborted();
    this.#loading = reader.getDocument({ data, isEvalSupported: false, enableXfa: false });
    this.#pdf = await this.#loading.promise;
    signal.throwIfAborted();
    this.#resized.observe(this.#paper);
  }

  /** @param {KeyboardEvent} event */
  #onKey(event) {
    const step = stepOf(event, this.#paper);
    if (!step) return;
    event.preventDefault();
    this.#turn(step);
  }

  /** @param {number} step */
  #turn(step) {
    if (!this.#pdf) return;
    this.#number = Math.min(Math.max(this.#number + step, 1), this.#pdf.numPages);
    this.#paper.scrollTop = 0;
    this.#draw();
  }

  async #draw() {
    if (!this.#pdf) return;
    try {
      await this.#drawPage(this.#pdf, this.#number);
    } catch (error) {
      if (!this.#stopped.signal.aborted) throw error;
    }
  }

  /**
   * @param {PdfDocument} pdf
   * @param {number} number
   */
  async #drawPage(pdf, number) {
    const page = await pdf.getPage(number);
    this.#drawing?.cancel();
    if (number !== this.#number) return;
    const scale = (this.#paper.clientWidth / page.getViewport({ scale: 1 }).width) * devicePixelRatio;
    const viewport = page.getViewport({ scale: Math.min(Math.max(scale, 0.2), 4) });
    this.#canvas.hidden = false;
    [this.#canvas.width, this.#canvas.height] = [viewport.width, viewport.height];
    const drawing = page.render({ canvasContext: inkOf(this.#canvas), viewport });
    this.#drawing = drawing;
    await drawing.promise.catch(() => {});
    if (drawing === this.#drawing) this.#showPlace(number, pdf.numPages);
  }

  /**
   * @param {number} number
   * @param {number} pages
   */
  #showPlace(number, pages) {
    this.#canvas.setAttribute("aria-label", `${this.#name}, ${number}`);
    this.#place.value = `${number} / ${pages}`;
    [this.#back.disabled, this.#next.disabled] = [number === 1, number === pages];
  }
}
