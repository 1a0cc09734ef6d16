// SPDX-License-Identifier: MIT
// Documents of the terminal: PDF, pictures, and HTML that can do nothing.
import { button, fileUrl, make, pageUrl } from "./dom.js";
import { PdfView } from "./pdf_view.js";
import { t } from "./texts.js";

/** @import { Part } from "./types.js" */

const PICTURES = [".png", ".jpg", ".jpeg", ".bmp", ".gif"];

/** @param {string} path */
const nameOf = (path) => path.slice(path.lastIndexOf("/") + 1);

const failed = () => make("p.hint", {}, t("This document cannot be shown"));

/** @param {string} src */
export const frame = (src) =>
  make("iframe.page", { sandbox: "", src, title: t("Page shown by the bank"), referrerpolicy: "no-referrer" });

/** @param {string} path */
function picture(path) {
  const image = make("img", { src: fileUrl(path), alt: nameOf(path) });
  image.addEventListener("error", () => image.replaceWith(failed()));
  return make("div.paper.picture", { tabindex: "0" }, image);
}

/**
 * @param {string} path
 * @returns {Part}
 */
function documentView(path) {
  /** @param {string[]} endings */
  const isNamed = (...endings) => endings.some((ending) => path.toLowerCase().endsWith(ending));
  if (isNamed(".pdf")) return new PdfView(path, nameOf(path), failed);
  if (isNamed(".html", ".htm")) return { element: frame(pageUrl(path)) };
  return { element: isNamed(...PICTURES) ? picture(path) : failed() };
}

/**
 * All documents of a screen, one at a time.
 * @param {string[]} paths
 * @returns {Part}
 */
export function documentsView(paths) {
  const stage = make("div.stage", paths.length > 1 ? { role: "tabpanel" } : {});
  const tabs = paths.map((path) => button("tab", nameOf(path), () => show(path), { role: "tab" }));
  /** @type {Part | null} */
  let view = null;
  /** @param {string} path */
  const show = (path) => {
    view?.stop?.();
    view = documentView(path);
    tabs.forEach((tab, i) => tab.setAttribute("aria-selected", String(paths[i] === path)));
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
