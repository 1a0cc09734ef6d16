// SPDX-License-Identifier: MIT
// Small helpers for building the page.

/** @import { Attributes, Child, ElementOf } from "./types.js" */

/**
 * An element of index.html.
 * @param {string} id
 */
export function byId(id) {
  const element = document.getElementById(id);
  if (!element) throw new Error(`no #${id}`);
  return element;
}

/**
 * make("button.big", {type: "button"}, "Label", otherElement)
 * @template {string} Kind
 * @param {Kind} kind
 * @param {Attributes} attributes
 * @param {...Child} children
 */
export function make(kind, attributes = {}, ...children) {
  const [tag, ...classes] = kind.split(".");
  const element = document.createElement(tag);
  element.classList.add(...classes);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, "");
    else if (value !== false && value != null) element.setAttribute(name, String(value));
  }
  for (const child of children) if (child) element.append(child);
  return /** @type {ElementOf<Kind>} */ (element);
}

/**
 * @param {string} kind
 * @param {string} label
 * @param {(event: Event) => void} onclick
 * @param {Attributes} attributes
 */
export const button = (kind, label, onclick, attributes = {}) =>
  make(`button.${kind}`, { type: "button", onclick, ...attributes }, label);

/**
 * @param {string} viewBox
 * @param {[tag: string, attributes: Record<string, string | number>][]} shapes
 */
export function svg(viewBox, shapes) {
  const space = "http://www.w3.org/2000/svg";
  const image = document.createElementNS(space, "svg");
  image.setAttribute("viewBox", viewBox);
  image.setAttribute("aria-hidden", "true");
  for (const [tag, attributes] of shapes) {
    const shape = document.createElementNS(space, tag);
    for (const [name, value] of Object.entries(attributes)) shape.setAttribute(name, String(value));
    image.append(shape);
  }
  return image;
}

/**
 * Whether an event happens at or in such an element.
 * @param {Event} event
 * @param {string} selector
 */
export const isIn = (event, selector) => event.target instanceof Element && event.target.closest(selector) !== null;

/** @param {HTMLCanvasElement} canvas */
export function inkOf(canvas) {
  const ink = canvas.getContext("2d");
  if (!ink) throw new Error("this browser cannot draw");
  return ink;
}

/** @param {string} path */
const encoded = (path) => path.split("/").map(encodeURIComponent).join("/");

/**
 * A file of the terminal.
 * @param {string} path
 */
export const fileUrl = (path) => "file" + encoded(path);
/**
 * The same as a page of HTML.
 * @param {string} path
 */
export const pageUrl = (path) => "page" + encoded(path);
