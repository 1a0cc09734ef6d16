// SPDX-License-Identifier: MIT
// The time that is left, in seconds and as a bar.
import { byId, make } from "./dom.js";
import { t } from "./texts.js";

export class Clock {
  #clock = byId("clock");
  #bar = make("i");
  #total = 0;
  #endsAt = 0;

  constructor() {
    byId("progress").replaceChildren(this.#bar);
    setInterval(() => this.#draw(), 250);
  }

  /** @param {number} timeLeft in milliseconds; 0: the screen stays */
  set(timeLeft) {
    this.#total = timeLeft;
    this.#endsAt = timeLeft > 0 ? performance.now() + timeLeft : 0;
    this.#draw();
  }

  #draw() {
    const left = Math.max(this.#endsAt - performance.now(), 0);
    const seconds = String(Math.ceil(left / 1000));
    this.#clock.hidden = this.#endsAt === 0;
    this.#clock.textContent = seconds;
    this.#clock.setAttribute("aria-label", `${seconds} ${t("seconds left")}`);
    this.#bar.style.width = this.#endsAt ? `${(100 * left) / this.#total}%` : "0";
  }
}
