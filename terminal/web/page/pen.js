// SPDX-License-Identifier: MIT
// The area to write on: 480 by 160 points, whatever its size on the page.

const WIDTH = 480;
const HEIGHT = 160;
const MOST_PRESSURE = 1023;
const MOST_POINTS = 10000;

const clamp = (value, least, most) => Math.min(Math.max(Math.round(value), least), most);

export class Pen {
  constructor(canvas, onchange) {
    this.canvas = canvas;
    this.onchange = onchange;
    this.points = [];
    this.pointer = null;
    canvas.addEventListener("pointerdown", (event) => this.down(event));
    canvas.addEventListener("pointermove", (event) => this.move(event));
    for (const end of ["pointerup", "pointercancel"]) canvas.addEventListener(end, (event) => this.up(event));
    new ResizeObserver(() => this.redraw()).observe(canvas);
  }

  get empty() {
    return this.points.length === 0;
  }

  clear() {
    this.points = [];
    this.pointer = null;
    this.redraw();
    this.onchange();
  }

  // For those who cannot write here.
  sample() {
    this.points = [];
    for (let i = 0; i <= 120; i++) {
      const part = i / 120;
      const angle = part * Math.PI * 10;
      this.points.push([
        clamp(70 + 330 * part + 14 * Math.sin(angle), 0, WIDTH - 1),
        clamp(85 - 12 * part - 38 * Math.sin(angle) * (1 - part * 0.6), 0, HEIGHT - 1),
        i === 120 ? 0 : clamp(520 + 320 * Math.cos(angle), 1, MOST_PRESSURE),
        i * 8,
      ]);
    }
    this.redraw();
    this.onchange();
  }

  down(event) {
    if (this.pointer !== null || event.button > 0) return;
    this.pointer = event.pointerId;
    this.canvas.setPointerCapture(event.pointerId);
    this.started ??= event.timeStamp;
    if (this.empty) this.started = event.timeStamp;
    this.add(event);
    event.preventDefault();
  }

  move(event) {
    if (event.pointerId !== this.pointer) return;
    const events = event.getCoalescedEvents?.() ?? [];
    for (const one of events.length ? events : [event]) this.add(one);
  }

  // A point without pressure ends each stroke.
  up(event) {
    if (event.pointerId !== this.pointer) return;
    this.pointer = null;
    const last = this.points.at(-1);
    if (last) this.points.push([last[0], last[1], 0, this.timeOf(event)]);
    this.onchange();
  }

  timeOf(event) {
    return clamp(event.timeStamp - this.started, 0, 3600000);
  }

  add(event) {
    if (this.points.length >= MOST_POINTS - 1) return;
    const box = this.canvas.getBoundingClientRect();
    this.points.push([
      clamp(((event.clientX - box.left) / box.width) * WIDTH, 0, WIDTH - 1),
      clamp(((event.clientY - box.top) / box.height) * HEIGHT, 0, HEIGHT - 1),
      clamp((event.pressure || 0.5) * MOST_PRESSURE, 1, MOST_PRESSURE),
      this.timeOf(event),
    ]);
    this.line(this.points.length - 1);
  }

  redraw() {
    const scale = (this.canvas.clientWidth / WIDTH) * devicePixelRatio;
    this.canvas.width = Math.round(WIDTH * scale);
    this.canvas.height = Math.round(HEIGHT * scale);
    this.ink = this.canvas.getContext("2d");
    this.ink.scale(scale, scale);
    this.ink.lineCap = this.ink.lineJoin = "round";
    this.ink.strokeStyle = "#10264d";
    for (let i = 0; i < this.points.length; i++) this.line(i);
  }

  line(index) {
    const to = this.points[index];
    const from = this.points[index - 1];
    const begins = !from || from[2] === 0;
    this.ink.lineWidth = 1 + (to[2] || from?.[2] || 0) / 320;
    this.ink.beginPath();
    this.ink.moveTo(...(begins ? to : from).slice(0, 2));
    this.ink.lineTo(to[0], to[1]);
    this.ink.stroke();
  }
}
