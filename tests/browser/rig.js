// SPDX-License-Identifier: MIT
// A browser, and a counter: gwq-terminal with a teller application that does as it is told.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { copyFileSync, mkdirSync, mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";

const here = dirname(fileURLToPath(import.meta.url));
const source = join(here, "../..");
export const build = process.env.GWQ_BUILD ?? join(source, "build/release");
const pictures = join(build, "page-pictures");
const SIZES = { wide: { width: 1280, height: 800 }, tall: { width: 800, height: 1280 } };

export const limit = 10_000;

export async function openBrowser() {
  mkdirSync(pictures, { recursive: true });
  const quiet = ["disable-gpu", "disable-quic", "no-first-run", "disable-background-networking",
    "disable-component-update", "disable-sync"];
  return chromium.launch({
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    chromiumSandbox: process.getuid() !== 0,
    args: quiet.map((name) => `--${name}`),
  });
}

// Documents and pictures as a bank would have them, made by the browser.
export async function makeFiles(browser) {
  const directory = mkdtempSync(join(tmpdir(), "gwq-page-"));
  const page = await browser.newPage();
  const picture = async (name, width, height, body) => {
    await page.setViewportSize({ width, height });
    await page.setContent(`<body style="margin:0;font-family:sans-serif">${body}`);
    await page.screenshot({ path: join(directory, name) });
  };
  const offer = (colors, text) =>
    `<div style="height:100vh;display:grid;place-content:center;text-align:center;color:#fff;
      background:linear-gradient(120deg,${colors})"><b style="font-size:72px">${text}</b></div>`;
  await picture("offer-1.png", 800, 480, offer("#0b3d6e,#1f8a8a", "2.35 %<br>定期存款"));
  await picture("offer-2.png", 800, 480, offer("#5b2a86,#c0476d", "Travel card<br>旅行卡"));
  await picture("teller.png", 240, 300,
    `<svg viewBox="0 0 240 300" style="display:block"><rect width="240" height="300" fill="#cfe0f2"/>
     <path d="M20 300c0-74 42-104 100-104s100 30 100 104z" fill="#22406b"/><circle cx="120" cy="120" r="62" fill="#f1c9a5"/>
     <path d="M56 112c0-88 128-88 128 0-22-34-96-40-128 0z" fill="#2b2018"/></svg>`);
  const clause = (n) => `<h2>第${n}条\u3000Clause ${n}</h2>${"<p>银行为客户保管账户，并应客户要求告知余额。The bank keeps the account and tells the customer its balance on request.</p>".repeat(6)}`;
  await page.setContent(`<meta charset="utf-8"><body style="font:15px/1.7 sans-serif"><h1>账户协议 Account agreement</h1>
    ${[1, 2, 3].map((n) => `<section style="break-after:page">${clause(n)}</section>`).join("")}`);
  await page.pdf({ path: join(directory, "agreement-协议.pdf"), format: "A4", margin: { top: 60, left: 60, right: 60 } });
  await page.close();
  const at = (name) => join(directory, name);
  copyFileSync(at("agreement-协议.pdf"), at("terms.pdf"));
  return { at, remove: () => rmSync(directory, { recursive: true }) };
}

export class Counter {
  #process;
  #outcomes = [];
  #errors = "";

  static async open(...options) {
    const counter = new Counter();
    await counter.#start(options);
    return counter;
  }

  async #start(options) {
    this.directory = mkdtempSync(join(tmpdir(), "gwq-page-"));
    const environment = {
      ...process.env,
      PYTHONPATH: join(source, "python"),
      PYTHONDONTWRITEBYTECODE: "1",
      PYTHONUTF8: "1",
      GWQ_LIBRARY: join(build, "lib/libgwq.so"),
    };
    this.#process = spawn(join(build, "bin/gwq-terminal"),
      ["exec", "--ui", "0", `--trace=${this.path("trace.txt")}`, ...options, "--", "python3", join(here, "teller.py")],
      { env: environment, cwd: this.directory });
    this.ended = new Promise((resolve) => this.#process.once("exit", resolve));
    createInterface({ input: this.#process.stdout }).on("line", (line) => {
      if (line.startsWith("outcome ")) this.#outcomes.shift()(JSON.parse(line.slice(8)));
    });
    this.address = await new Promise((resolve, reject) => {
      createInterface({ input: this.#process.stderr }).on("line", (line) => {
        this.#errors += line + "\n";
        const found = line.match(/http:\/\/\S+/);
        if (found) resolve(found[0]);
      });
      this.ended.then(() => reject(new Error(this.#errors)));
    });
  }

  path(name) {
    return join(this.directory, name);
  }

  get trace() {
    return readFileSync(this.path("trace.txt"), "utf8");
  }

  get log() {
    return this.#errors;
  }

  // The host's call, whose outcome comes when the customer has acted.
  call(call, args = [], options = {}) {
    const outcome = new Promise((resolve) => this.#outcomes.push(resolve));
    this.#process.stdin.write(JSON.stringify({ call, args, options }) + "\n");
    return outcome;
  }

  async close() {
    this.#process.stdin.end();
    if (this.#outcomes.length) this.#process.kill();  // a test gave up
    const status = await this.ended;
    rmSync(this.directory, { recursive: true });
    if (!this.#outcomes.length) assert.equal(status, 0, this.#errors);
  }
}

// Each different message that any page heard or said.
export const messages = { heard: new Set(), said: new Set() };

// The customer at the page. What the page is told is kept, and nothing may go elsewhere or wrong.
export class Customer {
  heard = [];
  said = [];
  wrong = [];

  static async at(counter, browser, options = {}) {
    const customer = new Customer();
    customer.context = await browser.newContext({ viewport: SIZES.wide, locale: "en-US", ...options });
    await customer.context.addInitScript(() => {
      globalThis.spoken = [];
      const speak = SpeechSynthesis.prototype.speak;
      SpeechSynthesis.prototype.speak = function (words) {
        globalThis.spoken.push([words.lang, words.text]);
        return speak.call(this, words);
      };
    });
    customer.page = await customer.context.newPage();
    customer.page.setDefaultTimeout(limit);
    customer.#watch(counter);
    await customer.page.goto(counter.address);
    await customer.page.locator("h1").waitFor({ state: "attached" });
    return customer;
  }

  #watch(counter) {
    const own = [counter.address, counter.address.replace("http:", "ws:"), "data:", "blob:"];
    this.page.on("pageerror", (error) => this.wrong.push(String(error)));
    this.page.on("console", (message) => message.type() === "error" && this.wrong.push(message.text()));
    this.page.on("request", (request) => {
      if (!own.some((start) => request.url().startsWith(start))) this.wrong.push(request.url());
    });
    this.page.on("websocket", (socket) => {
      const keep = (kind) => ({ payload }) => {
        this[kind].push(String(payload));
        messages[kind].add(String(payload));
      };
      socket.on("framereceived", keep("heard"));
      socket.on("framesent", keep("said"));
    });
  }

  button(name) {
    return this.page.getByRole("button", { name, exact: true });
  }

  async sees(title) {
    await this.page.getByRole("heading", { level: 1, name: title, exact: true }).waitFor();
  }

  async waits() {
    await this.page.locator('body[data-kind="idle"]').waitFor();
  }

  async openPanel() {
    await this.button("Developer panel").click();
    await this.page.locator("#panel").waitFor();
  }

  // Pictures of the screen in both sizes, which it has to fit; what is on it must be legible and have a name.
  async shows(name) {
    for (const [size, viewport] of Object.entries(SIZES)) {
      await this.page.setViewportSize(viewport);
      await this.page.waitForTimeout(400);
      await this.page.screenshot({ path: join(pictures, `${name}-${size}.png`) });
      assert.deepEqual(await this.page.evaluate(faults), [], `${name}, ${size}`);
    }
    await this.page.setViewportSize(SIZES.wide);
  }

  async leaves() {
    await this.context.close();
    assert.deepEqual(this.wrong, []);
  }
}

// What is wrong with what the browser shows: outside its place, too small to touch, too faint to read (WCAG AA), or
// without a name for those who hear it. Runs in the browser.
function faults() {
  const found = [];
  const name = (element) => `${element.tagName}.${element.className?.baseVal ?? element.className} ${element.textContent.slice(0, 30)}`;
  const seen = (element) => element.checkVisibility({ checkOpacity: true, checkVisibilityCSS: true });
  const numbers = (color) => color.match(/[\d.]+/g).map(Number);
  const light = (color) => {
    const [r, g, b] = color.map((part) => (part / 255 <= 0.04045 ? part / 255 / 12.92 : ((part / 255 + 0.055) / 1.055) ** 2.4));
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const over = (top, below) => top.slice(0, 3).map((part, i) => part * (top[3] ?? 1) + below[i] * (1 - (top[3] ?? 1)));
  const ground = (element) => {
    const above = element.parentElement ? ground(element.parentElement) : [255, 255, 255];
    return over(numbers(getComputedStyle(element).backgroundColor), above);
  };
  if (document.scrollingElement.scrollWidth > innerWidth) found.push("the page is too wide");
  if (document.scrollingElement.scrollHeight > innerHeight) found.push("the page is too high");
  for (const element of document.querySelectorAll("body *")) {
    if (!seen(element) || element.closest(".spoken")) continue;
    const own = [...element.childNodes].some((node) => node.nodeType === Node.TEXT_NODE && node.data.trim());
    const style = getComputedStyle(element);
    if (own && element.matches("html *") && !element.closest(":disabled, svg, [inert]")) {
      const below = ground(element);
      const [a, b] = [light(over(numbers(style.color), below)), light(below)].sort((x, y) => y - x);
      const ratio = (a + 0.05) / (b + 0.05);
      const size = parseFloat(style.fontSize);
      const large = size >= 24 || (size >= 18.66 && style.fontWeight >= 700);
      if (ratio < (large ? 3 : 4.5)) found.push(`faint (${ratio.toFixed(2)}): ${name(element)}`);
    }
    const box = element.getBoundingClientRect();
    if (element.matches("button, canvas, iframe, h1, .card")) {
      if (!element.closest(".panel, .paper, .tabs") && (box.left < 0 || box.top < 0 || box.right > innerWidth + 1 || box.bottom > innerHeight + 1))
        found.push(`outside: ${name(element)}`);
      if (element.matches("button") && !element.closest(".panel") && Math.min(box.width, box.height) < 44)
        found.push(`small: ${name(element)}`);
    }
    const said = element.getAttribute("aria-label") ?? element.getAttribute("alt") ?? element.getAttribute("title") ?? "";
    if (element.matches("button, a") && !said && !element.textContent.trim()) found.push(`nameless: ${name(element)}`);
    if (element.matches("img, canvas, iframe, input, select") && !said && !element.closest("label")) found.push(`nameless: ${name(element)}`);
  }
  return found;
}

// The picture's pixels as seen by the browser: [width, height, ink at each of the points].
export async function inkOf(browser, file, points) {
  const page = await browser.newPage();
  const data = `data:image/png;base64,${readFileSync(file).toString("base64")}`;
  const ink = await page.evaluate(async ([source, wanted]) => {
    const image = new Image();
    image.src = source;
    await image.decode();
    const canvas = new OffscreenCanvas(image.width, image.height);
    const pen = canvas.getContext("2d", { willReadFrequently: true });
    pen.fillStyle = "#fff";
    pen.fillRect(0, 0, image.width, image.height);
    pen.drawImage(image, 0, 0);
    const dark = ([x, y]) => pen.getImageData(x - 3, y - 3, 7, 7).data.some((value, i) => i % 4 < 3 && value < 128);
    return { size: [image.width, image.height], ink: wanted.map(dark) };
  }, [data, points]);
  await page.close();
  return ink;
}
