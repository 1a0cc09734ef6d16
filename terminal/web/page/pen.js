// SPDX-License-Identifier: MIT
// The area to write on: of the unit's size in points, whatever its size on the page.
import { inkOf } from "./dom.js";

/** @import { Point, SignatureField } from "./types.js" */

const SAMPLES = 120;
const SAMPLE_MS = 8;

/**
 * @param {number} value
 * @param {number} min
 * @param {number} max
 */
const clamp = (value, min, max) => Math.min(Math.max(Math.round(value), min), max);

export class Pen {
  /** @type {Point[]} */
  points = [];
  #canvas;
  #field;
  #onchange;
  /** @type {CanvasRenderingContext2D} */
  #ink;
  /** @type {number | null} */
  #pointer = null;
  #started = 0;

  /**
   * @param {HTMLCanvasElement} canvas
   * @param {SignatureField} field
   * @param {() => void} onchange
   */
  constructor(canvas, field, onchange) {
    this.#canvas = canvas;
    this.#field = field;
    this.#onchange = onchange;
    this.#ink = inkOf(canvas);
    canvas.addEventListener("pointerdown", (event) => this.#down(event));
    canvas.addEventListener("pointermove", (event) => this.#move(event));
    canvas.addEventListener("pointerup", (event) => this.#up(event));
    canvas.addEventListener("pointercancel", (event) => this.#up(event));
    new ResizeObserver(() => this.#redraw()).observe(canvas);
  }

  get empty() {
    return this.points.length === 0;
  }

  clear() {
    this.#replace([]);
  }

  // For those who cannot write here: loops along a line.
  sample() {
    /** @type {Point[]} */
    const points = [];
    for (let i = 0; i <= SAMPLES; i++) {
      const part = i / SAMPLES;
      const angle = part * Math.PI * 10;
      const x = (7 + 33 * part + 1.4 * Math.sin(angle)) / 48;
      const y = (8.5 - 1.2 * part - 3.8 * Math.sin(angle) * (1 - part * 0.6)) / 16;
      const pressure = i === SAMPLES ? 0 : 0.508 + 0.313 * Math.cos(angle);
      points.push(this.#pointAt(x, y, pressure, i * SAMPLE_MS));
    }
    this.#replace(points);
  }

  /** @param {Point[]} points */
  #replace(points) {
    this.points = points;
    this.#pointer = null;
    this.#redraw();
    this.#onchange();
  }

  /** @param {PointerEvent} event */
  #down(event) {
    if (this.#pointer !== null || event.button > 0) return;
    this.#pointer = event.pointerId;
    this.#canvas.setPointerCapture(event.pointerId);
    if (this.empty) this.#started = event.timeStamp;
    this.#add(event);
    event.preventDefault();
  }

  /** @param {PointerEvent} event */
  #move(event) {
    if (event.pointerId !== this.#pointer) return;
    const events = event.getCoalescedEvents?.() ?? [];
    for (const one of events.length ? events : [event]) this.#add(one);
  }

  /**
   * A point without pressure ends each stroke.
   * @param {PointerEvent} event
   */
  #up(event) {
    if (event.pointerId !== this.#pointer) return;
    this.#pointer = null;
    const last = this.points.at(-1);
    if (last) this.points.push([last[0], last[1], 0, this.#timeOf(event)]);
    this.#onchange();
  }

  /** @param {PointerEvent} event */
  #timeOf(event) {
    return clamp(event.timeStamp - this.#started, 0, this.#field.max_time_ms);
  }

  /**
   * Place and pressure as parts of 1.
   * @param {number} x
   * @param {number} y
   * @param {number} pressure
   * @param {number} time
   * @returns {Point}
   */
  #pointAt(x, y, pressure, time) {
    const { width, height, max_pressure } = this.#field;
    return [
      clamp(x * width, 0, width - 1),
      clamp(y * height, 0, height - 1),
      pressure && clamp(pressure * max_pressure, 1, max_pressure),
      time,
    ];
  }

  /**
   * One point is left for the end of the stroke.
   * @param {PointerEvent} event
   */
  #add(event) {
    if (this.points.length >= this.#field.max_points - 1) return;
    const box = this.#canvas.getBoundingClientRect();
    const [x, y] = [(event.clientX - box.left) / box.width, (event.clientY - box.top) / box.height];
    this.points.push(this.#pointAt(x, y, event.pressure || 0.5, this.#timeOf(event)));
    this.#line(this.points.length - 1);
  }

  #redraw() {
    const scale = (this.#canvas.clientWidth / this.#field.width) * devicePixelRatio;
    this.#canvas.width = Math.round(this.#field.width * scale);
    this.#canvas.height = Math.round(this.#field.height * scale);
    this.#ink.scale(scale, scale);
    this.#ink.lineCap = this.#ink.lineJoin = "round";
    this.#ink.strokeStyle = "#10264d";
    for (let i = 0; i < this.points.length; i++) this.#line(i);
  }

  /** @param {number} index of the point where it ends */
  #line(index) {
    const [x, y, pressure] = this.points[index];
    const from = this.points[index - 1];
    this.#ink.lineWidth = 1 + (3.2 * (pressure || from?.[2] || 0)) / this.#field.max_pressure;
    this.#ink.beginPath();
    if (from?.[2]) this.#ink.moveTo(from[0], from[1]);
    else this.#ink.moveTo(x, y);
    this.#ink.lineTo(x, y);
    this.#ink.stroke();
  }
}
