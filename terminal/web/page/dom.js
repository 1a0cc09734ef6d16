// SPDX-License-Identifier: MIT
// Small helpers for building the page.

export const byId = (id) => document.getElementById(id);

// make("button.big", {type: "button"}, "Label", otherElement)
export function make(kind, attributes = {}, ...children) {
  const [tag, ...classes] = kind.split(".");
  const element = document.createElement(tag);
  element.classList.add(...classes);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, "");
    else if (value !== false && value != null) element.setAttribute(name, value);
  }
  element.append(...children.filter((child) => child != null && child !== false && child !== ""));
  return element;
}

export const button = (kind, label, onclick, attributes = {}) =>
  make("button." + kind, { type: "button", onclick, ...attributes }, label);

export function svg(viewBox, paths) {
  const space = "http://www.w3.org/2000/svg";
  const image = document.createElementNS(space, "svg");
  image.setAttribute("viewBox", viewBox);
  image.setAttribute("aria-hidden", "true");
  for (const [tag, attributes] of paths) {
    const part = document.createElementNS(space, tag);
    for (const [name, value] of Object.entries(attributes)) part.setAttribute(name, value);
    image.append(part);
  }
  return image;
}

// A file of the terminal.
export const fileUrl = (path) => "file" + path.split("/").map(encodeURIComponent).join("/");
export const pageUrl = (path) => "page" + path.split("/").map(encodeURIComponent).join("/");
