// SPDX-License-Identifier: MIT
// What the terminal told this page, and what follows from it. It knows neither the connection nor the document.

/** @import { Entry, Link, NoEntry, ScreenMessage, Text, UnitMessage } from "./types.js" */

const TOO_MANY = 1008;

export class State {
  connected = false;
  /** @type {Text} */
  ended = "The terminal has ended.";
  /** @type {UnitMessage | null} */
  unit = null;
  /** @type {ScreenMessage | null} */
  screen = null;
  /** @type {Entry | null} */
  entry = null;
  /** @type {Link} */
  link = { plugged: true, pluggable: false, faults: "" };
  /** @type {string[]} */
  files = [];
  away = false;

  /** @param {number} code of the socket's end */
  disconnect(code) {
    this.connected = false;
    this.ended = code === TOO_MANY ? "Too many pages are open." : "The terminal has ended.";
  }

  /**
   * True when it is another screen, and not only told again.
   * @param {ScreenMessage} message
   */
  takeScreen(message) {
    const isNew = this.screen?.number !== message.number;
    this.screen = message;
    if (isNew) this.away = false;
    return isNew;
  }

  /**
   * True when another entry begins, or one ends.
   * @param {Entry | NoEntry} message
   */
  takeEntry(message) {
    const isNew = (this.entry?.number ?? 0) !== message.number;
    this.entry = "what" in message ? message : null;
    if (isNew) this.away = false;
    return isNew;
  }

  /**
   * Why there is nothing for the customer to do.
   * @returns {Text | null}
   */
  get obstacle() {
    if (!this.connected) return this.ended;
    if (!this.link.plugged) return "The cable is unplugged.";
    return this.away ? "You walked away. The terminal waits for its time-out." : null;
  }

  get canComeBack() {
    return this.away && this.connected && this.link.plugged;
  }

  get canWalkAway() {
    return !this.obstacle && (this.entry !== null || Boolean(this.screen?.keys.length));
  }

  get idles() {
    return this.screen?.kind === "idle" && !this.entry;
  }
}
