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

function pdfView(path) {
  const canvas = make("canvas", { role: "img", "aria-label": nameOf(path), hidden: true });
  const place = make("output", {}, t("Loading"));
  const paper = make("div.paper", { tabindex: "0" }, canvas);
  const view = make("div.pdf", {}, paper);
  let pdf = null;
  let number = 1;
  let drawing = null;
  const draw = async () => {
    const wanted = number;
    const page = await pdf.getPage(wanted);
    drawing?.cancel();
    if (wanted !== number) return;
    const scale = (paper.clientWidth / page.getViewport({ scale: 1 }).width) * devicePixelRatio;
    const viewport = page.getViewport({ scale: Math.min(Math.max(scale, 0.2), 4) });
    canvas.hidden = false;
    [canvas.width, canvas.height] = [viewport.width, viewport.height];
    drawing = page.render({ canvasContext: canvas.getContext("2d"), viewport });
    const begun = drawing;
    await begun.promise.catch(() => {});
    if (begun !== drawing) return;
    canvas.setAttribute("aria-label", `${nameOf(path)}, ${number}`);
    place.value = `${number} / ${pdf.numPages}`;
    [back.disabled, next.disabled] = [number === 1, number === pdf.numPages];
  };
  const turn = (step) => {
    if (!pdf) return;
    number = Math.min(Math.max(number + step, 1), pdf.numPages);
    paper.scrollTop = 0;
    draw();
  };
  paper.addEventListener("keydown", (event) => turnByKey(event, paper, turn));
  const back = button("turn", "‹", () => turn(-1), { "aria-label": t("Previous page"), disabled: true });
  const next = button("turn", "›", () => turn(1), { "aria-label": t("Next page"), disabled: true });
  view.append(make("div.turns", {}, back, place, next));
  (async () => {
    try {
      const [library, response] = await Promise.all([pdfReader(), fetch(fileUrl(path))]);
      if (!response.ok) throw new Error(response.statusText);
      const data = await response.arrayBuffer();
      pdf = await library.getDocument({ data, isEvalSupported: false, enableXfa: false }).promise;
      new ResizeObserver(() => draw()).observe(paper);
    } catch {
      view.replaceChildren(failed());
    }
  })();
  return view;
}

function documentView(path) {
  if (isNamed(path, ".pdf")) return pdfView(path);
  if (isNamed(path, ".html", ".htm")) return frame(pageUrl(path));
  if (!isNamed(path, ".png", ".jpg", ".jpeg", ".bmp", ".gif")) return failed();
  const image = make("img", { src: fileUrl(path), alt: nameOf(path) });
  image.addEventListener("error", () => image.replaceWith(failed()));
  return make("div.paper.picture", { tabindex: "0" }, image);
}

// All documents of a screen, one at a time.
export function documentsView(paths) {
  const stage = make("div.stage", paths.length > 1 ? { role: "tabpanel" } : {});
  const tabs = paths.map((path) => button("tab", nameOf(path), () => show(path), { role: "tab" }));
  const show = (path) => {
    tabs.forEach((tab, i) => tab.setAttribute("aria-selected", paths[i] === path));
    stage.replaceChildren(documentView(path));
  };
  const list = paths.length > 1 && make("div.tabs", { role: "tablist", "aria-label": t("Documents") }, ...tabs);
  if (paths.length) requestAnimationFrame(() => show(paths[0]));
  return make("div.documents", {}, list, stage);
}
