// SPDX-License-Identifier: MIT
// The customer's page in Chromium, with the library and a teller application on the other side.
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { createDecipheriv } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { after, before, describe, test } from "node:test";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build, Counter, Customer, inkOf, limit, makeFiles, messages, openBrowser } from "./rig.js";

const TELLER = { name: "王芳", number: "0123", stars: 5 };
const htmlWith = (address) => `<h1>转账确认 Transfer</h1><p>收款人 Li Ming，金额 1,200.00 元</p>
  <img src="${address}x.png"><script>parent.document.title = document.title = "ran"</script>`;
const PLACE = "1,300,100";

let browser;
let files;
before(async () => {
  browser = await openBrowser();
  files = await makeFiles(browser);
});
after(async () => {
  files?.remove();
  await browser?.close();
});

const together = (name, tests) => describe(name, { concurrency: 2 }, tests);

// A test at a counter of its own.
function visit(name, play, { options = [], context = {} } = {}) {
  test(name, { timeout: 60_000 }, async () => {
    const counter = await Counter.open(...options);
    try {
      const customer = await Customer.at(counter, browser, context);
      await play({ counter, customer, page: customer.page });
      await customer.leaves();
    } finally {
      await counter.close();
    }
  });
}

// Another program's web server.
async function openServer() {
  const server = createServer((_, response) => {
    opened.visits += 1;
    response.setHeader("Content-Type", "text/html").end("<p>elsewhere");
  });
  await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
  server.unref();  // it keeps nobody waiting who gave up
  const opened = { address: `http://127.0.0.1:${server.address().port}/`, visits: 0, close: () => server.close() };
  return opened;
}

const sign = (counter, options = {}) =>
  counter.call("sign_documents", [files.at("agreement-协议.pdf"), counter.path("signature.png")],
    { place: PLACE, ...options });

async function write(page, strokes) {
  const box = await page.locator("canvas.ink").boundingBox();
  const at = ([x, y]) => [box.x + (x / 480) * box.width, box.y + (y / 160) * box.height];
  for (const [first, ...others] of strokes) {
    await page.mouse.move(...at(first));
    await page.mouse.down();
    for (const point of others) await page.mouse.move(...at(point), { steps: 12 });
    await page.mouse.up();
  }
}

const pointsOf = (strokes) => strokes.trim().split("\n").map((line) => line.split(",").map(Number));

async function pdfIsDrawn(page, number, pages) {
  await page.locator(".turns output").getByText(`${number} / ${pages}`).waitFor();
  return page.locator(".pdf canvas").evaluate((canvas) => {
    const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
    let sum = 0;
    for (let i = 0; i < data.length; i += 4) if (data[i] < 128) sum = (sum * 31 + i) % 1000003;
    return sum;
  });
}

// How many objects of a class, which an expression names, the page keeps once the browser has collected what nothing refers to.
async function aliveOf(page, kind) {
  const session = await page.context().newCDPSession(page);
  const { result } = await session.send("Runtime.evaluate", { expression: `(${kind}).prototype`, replMode: true });
  const { objects } = await session.send("Runtime.queryObjects", { prototypeObjectId: result.objectId });
  const count = await session.send("Runtime.callFunctionOn",
    { objectId: objects.objectId, functionDeclaration: "function () { return this.length; }" });
  await session.detach();
  return count.result.value;
}

// What was stopped a moment ago may still be there, or hold on to its objects.
async function becomes(wanted, count) {
  const deadline = performance.now() + limit;
  while ((await count()) !== wanted && performance.now() < deadline) await new Promise((resolve) => setTimeout(resolve, 100));
  assert.equal(await count(), wanted);
}

together("idle", () => {
  visit("welcomes the customer, and then shows the bank's pictures", async ({ counter, customer, page }) => {
    await page.getByText("Welcome", { exact: true }).last().waitFor();
    await customer.shows("idle-welcome");
    assert.deepEqual(await counter.call("add_pictures", [[files.at("offer-1.png"), files.at("offer-2.png")]]), { value: null });
    const slide = page.getByRole("img", { name: "Picture from the bank" });
    await slide.waitFor();
    const first = await slide.getAttribute("src");
    assert.equal(await slide.evaluate((image) => image.decode().then(() => image.naturalWidth)), 800);
    await customer.shows("idle-pictures");
    await page.waitForFunction((shown) => !document.querySelector(".slide").src.endsWith(shown), first);
  });
});

together("teller", () => {
  visit("shows card, photo and stars, and closes them when its time is up", async ({ counter, customer, page }) => {
    await counter.call("add_photo", [files.at("teller.png"), "0123.png"]);
    await counter.call("show_teller", [{ ...TELLER, photo: "0123.png" }], { seconds: 8 });
    await customer.sees("At your service");
    await page.getByText("王芳").waitFor();
    const photo = page.getByRole("img", { name: "Photo" });
    assert.equal(await photo.evaluate((image) => image.decode().then(() => image.naturalWidth)), 240);
    assert.equal(await page.getByRole("img", { name: "5 stars" }).locator(".star.on").count(), 5);
    await customer.shows("teller");
    const left = Number(await page.getByRole("timer").textContent());
    assert.ok(left >= 1 && left <= 8, String(left));
    await customer.waits();
  });

  for (const [button, value] of [["Poor", 1], ["Fair", 2], ["Good", 3], ["No rating", 4]]) {
    if (value === 2) continue;
    visit(`is rated ${button}`, async ({ counter, customer }) => {
      await counter.call("set_teller", [TELLER]);
      const rated = counter.call("rate");
      await customer.sees("Please rate our service");
      if (value === 3) await customer.shows("evaluation");
      await customer.button(button).click();
      assert.deepEqual(await rated, { value });
      await customer.waits();
    });
  }

  visit("is rated by keyboard alone, in Chinese", async ({ counter, customer, page }) => {
    const rated = counter.call("rate", [], { seconds: 30 });
    await customer.sees("请对我们的服务进行评价");
    await customer.shows("evaluation-chinese");
    for (let i = 0; i < 2; i++) await page.keyboard.press("Tab");
    assert.equal(await page.evaluate(() => document.activeElement.textContent), "一般");
    const outline = await page.evaluate(() => getComputedStyle(document.activeElement).outlineWidth);
    assert.ok(parseFloat(outline) >= 3, outline);
    await page.keyboard.press("Enter");
    assert.deepEqual(await rated, { value: 2 });
    await customer.waits();
    const again = counter.call("rate");
    await page.locator('body[data-kind="evaluation"]').waitFor();
    await page.keyboard.press("3");
    assert.deepEqual(await again, { value: 3 });
  }, { context: { locale: "zh-CN" } });
});

together("information", () => {
  visit("is confirmed with Enter, and refused with Escape", async ({ counter, customer, page }) => {
    const text = "尊敬的客户：\n请核对以下信息 Please check\n\n姓名 Name：李明 Li Ming\n账号 Account：6225 8801 2345 6789";
    const confirmed = counter.call("inform", [text]);
    await customer.sees("Information");
    assert.equal(await page.locator(".text").textContent(), text);
    await customer.shows("information");
    await page.keyboard.press("Enter");
    assert.deepEqual(await confirmed, { value: 0 });
    const refused = counter.call("inform", ["once more"]);
    await page.getByText("once more").waitFor();
    await page.keyboard.press("Escape");
    assert.deepEqual(await refused, { value: 1 });
  });

  visit("as HTML stands in a frame that can do nothing", async ({ counter, customer, page }) => {
    const elsewhere = await openServer();
    const answer = counter.call("ask_html", [htmlWith(elsewhere.address)], { countdown: 9 });
    const frame = page.frameLocator("iframe.page");
    await frame.getByRole("heading", { name: "转账确认 Transfer" }).waitFor();
    assert.equal(await page.locator("iframe.page").getAttribute("sandbox"), "");
    await customer.shows("html");
    await page.getByRole("button", { name: /^Confirm \(\d\)$/ }).click();
    assert.deepEqual(await answer, { value: 0 });
    await customer.waits();
    assert.equal(await page.title(), "Welcome");
    assert.equal(elsewhere.visits, 0);
    elsewhere.close();
    const [script, picture, ...others] = customer.wrong.sort();
    assert.match(script, /^Blocked script execution in '.*' because the document's frame is sandboxed/);
    assert.match(picture, /violates the following Content Security Policy directive: "img-src data:"/);
    assert.deepEqual(others, [`${elsewhere.address}x.png`], "the wish for it, which was refused");
    customer.wrong = [];
  });

  visit("of a checkout is confirmed", async ({ counter, customer }) => {
    const answer = counter.call("check_out", ["开户 Account opening\n卡号 6225 **** 6789", "工本费 Fee 5.00\n合计 Total 5.00"]);
    await customer.sees("Checkout");
    await customer.shows("checkout");
    await customer.button("Confirm").click();
    assert.deepEqual(await answer, { value: "ok" });
  });
});

together("documents", () => {
  visit("are read page by page and agreed to", async ({ counter, customer, page }) => {
    const agreed = counter.call("confirm_documents", [files.at("agreement-协议.pdf")]);
    await customer.sees("Please read and agree");
    const first = await pdfIsDrawn(page, 1, 3);
    assert.notEqual(first, 0);
    await customer.shows("document");
    assert.ok(await customer.button("Previous page").isDisabled());
    await customer.button("Next page").click();
    assert.notEqual(await pdfIsDrawn(page, 2, 3), first);
    await page.locator(".paper").focus();
    await page.keyboard.press("End");
    await page.waitForFunction(() => {
      const paper = document.querySelector(".paper");
      return paper.scrollTop + paper.clientHeight > paper.scrollHeight - 2;
    });
    await page.keyboard.press("PageDown");
    await pdfIsDrawn(page, 3, 3);
    assert.ok(await customer.button("Next page").isDisabled());
    await customer.button("Agree").click();
    assert.deepEqual(await agreed, { value: 0 });
  });

  visit("only shown ask nothing and go with the next screen", async ({ counter, customer, page }) => {
    assert.deepEqual(await counter.call("show_documents", [files.at("agreement-协议.pdf")]), { value: null });
    await customer.sees("Document");
    await pdfIsDrawn(page, 1, 3);
    assert.equal(await page.locator(".keys button").count(), 0);
    await customer.shows("document-shown");
    const informed = counter.call("inform", ["the next screen"]);
    await page.getByText("the next screen").waitFor();
    await customer.button("Confirm").click();
    assert.deepEqual(await informed, { value: 0 });
  });

  visit("of several kinds stand beside each other; the customer refuses them", async ({ counter, customer, page }) => {
    const agreed = counter.call("confirm_documents", [[files.at("agreement-协议.pdf"), files.at("offer-1.png")]]);
    await customer.sees("Please read and agree");
    await pdfIsDrawn(page, 1, 3);
    await page.getByRole("tab", { name: "offer-1.png" }).click();
    const picture = page.getByRole("img", { name: "offer-1.png" });
    assert.equal(await picture.evaluate((image) => image.decode().then(() => image.naturalWidth)), 800);
    await customer.shows("documents");
    await customer.button("Refuse").click();
    assert.deepEqual(await agreed, { value: 1 });
  });

  const DOCUMENTS = '(await import("./pdf_view.js")).PdfView';
  visit("leave nothing behind, a hundred of them", async ({ counter, customer, page }) => {
    const before = await aliveOf(page, "ResizeObserver");
    const agreed = counter.call("confirm_documents", [[files.at("agreement-协议.pdf"), files.at("terms.pdf")]]);
    await customer.sees("Please read and agree");
    await pdfIsDrawn(page, 1, 3);
    await page.evaluate(async () => {
      const tabs = document.querySelectorAll(".tab");
      for (let shown = 1; shown <= 100; shown++) {
        tabs[shown % 2].click();
        const wanted = shown % 10 === 0 ? "1 / 3" : "";  // the others go while they load
        do await new Promise(requestAnimationFrame);
        while (!document.querySelector(".turns output").value.startsWith(wanted));
      }
    });
    await pdfIsDrawn(page, 1, 3);
    await becomes(1, () => page.workers().length);
    await becomes(before + 1, () => aliveOf(page, "ResizeObserver"));
    await becomes(1, () => aliveOf(page, DOCUMENTS));
    // Not by Playwright's click, which keeps hold of what it clicked.
    await customer.button("Agree").evaluate((agree) => agree.click());
    assert.deepEqual(await agreed, { value: 0 });
    await customer.waits();
    await becomes(0, () => page.workers().length);
    await becomes(0, () => aliveOf(page, DOCUMENTS));
  });
});

together("signing", () => {
  const STROKES = [[[60, 40], [60, 120], [140, 120]], [[200, 130], [260, 30], [320, 130]]];

  visit("with the mouse gives the host a picture of the strokes", async ({ counter, customer, page }) => {
    const signed = sign(counter, { voice: "请在屏幕上签名" });
    await customer.sees("Please sign");
    await pdfIsDrawn(page, 1, 3);
    await customer.shows("signing-empty");
    assert.ok(await customer.button("Sign").isDisabled());
    await write(page, STROKES);
    await customer.shows("signing");
    assert.deepEqual(await page.evaluate(() => globalThis.spoken), [["zh-CN", "请在屏幕上签名"]]);
    await page.locator("#caption").getByText("请在屏幕上签名").waitFor();
    await customer.button("Sign").click();
    const { value } = await signed;
    const points = pointsOf(value.strokes);
    assert.deepEqual(points.filter(([, , pressure]) => pressure === 0).length, 2);
    const ends = points.filter(([, , pressure], i) => pressure === 0 || points[i - 1]?.[2] === 0 || i === 0);
    [[60, 40], [140, 120], [200, 130], [320, 130]].forEach(([x, y], i) =>
      assert.ok(Math.hypot(ends[i][0] - x, ends[i][1] - y) < 2, `${ends[i]}, not ${x},${y}`));
    const { size, ink } = await inkOf(browser, value.picture, [[60, 80], [100, 120], [230, 80], [290, 80], [400, 80], [20, 20]]);
    assert.deepEqual(size, [480, 160]);
    assert.deepEqual(ink, [true, true, true, true, false, false]);
  });

  visit("with a pen tells its pressure; with a finger it works too", async ({ counter, customer, page }) => {
    const signed = sign(counter);
    await customer.sees("Please sign");
    const box = await page.locator("canvas.ink").boundingBox();
    const at = (part) => ({ x: box.x + box.width * part, y: box.y + box.height / 2 });
    const browserSession = await customer.context.newCDPSession(page);
    const pen = (type, part, force) => browserSession.send("Input.dispatchMouseEvent",
      { type, ...at(part), force, button: "left", buttons: type === "mouseReleased" ? 0 : 1, clickCount: 1, pointerType: "pen" });
    await pen("mousePressed", 0.1, 0.9);
    await pen("mouseMoved", 0.3, 0.2);
    await pen("mouseReleased", 0.3, 0);
    const touch = (type, part) =>
      browserSession.send("Input.dispatchTouchEvent", { type, touchPoints: part ? [at(part)] : [] });
    await touch("touchStart", 0.6);
    await touch("touchMove", 0.8);
    await touch("touchEnd");
    await customer.button("Sign").click();
    const points = pointsOf((await signed).value.strokes);
    const pressures = points.map(([, , pressure]) => pressure);
    assert.ok(Math.abs(pressures[0] - 0.9 * 1023) < 2, String(pressures));
    assert.ok(pressures.some((pressure) => Math.abs(pressure - 0.2 * 1023) < 2), String(pressures));
    assert.ok(points.some(([x, , pressure]) => x > 470 * 0.6 && pressure > 0), String(points));
  });

  visit("by hand stands under a picture, and is taken too", async ({ counter, customer, page }) => {
    const paper = counter.path("paper.jpg");
    writeFileSync(paper, readFileSync(files.at("offer-1.png")));
    const [picture, data] = [counter.path("hand.png"), counter.path("hand.txt")];
    const signed = counter.call("library", ["GWQ_StartSign", 0, 115200, 30, paper, picture, data]);
    await page.locator('body[data-kind="hand_sign"]').waitFor();
    await page.getByRole("img", { name: /\.jpg$/ }).waitFor();
    await write(page, STROKES);
    await customer.shows("hand-sign");
    await customer.button("Sign").click();
    assert.deepEqual(await signed, { value: 0 });
    const { ink } = await inkOf(browser, picture, [[60, 80], [230, 80], [400, 80]]);
    assert.deepEqual(ink, [true, true, false]);
    assert.ok(pointsOf(readFileSync(data, "utf8")).length > 20);
  });

  visit("is cleared, and cancelled with Escape", async ({ counter, customer, page }) => {
    const signed = sign(counter);
    await customer.sees("Please sign");
    await write(page, STROKES);
    await customer.button("Clear").click();
    assert.ok(await customer.button("Sign").isDisabled());
    await page.keyboard.press("Escape");
    assert.deepEqual(await signed, { failed: "Cancelled", status: -23 });
    await customer.waits();
  });

  visit("ends when its time is up", async ({ counter, customer, page }) => {
    const signed = sign(counter, { seconds: 4 });
    await customer.sees("Please sign");
    const first = Number(await page.getByRole("timer").textContent());
    await page.waitForFunction((left) => Number(document.querySelector("#clock").textContent) < left, first);
    await customer.waits();
    assert.deepEqual(await signed, { failed: "TimedOut", status: -2 });
  });

  visit("outlives a reload of the page", async ({ counter, customer, page }) => {
    const signed = sign(counter, { seconds: 90 });
    await customer.sees("Please sign");
    await customer.button("中文").click();
    await customer.sees("请签名");
    const before = Number(await page.getByRole("timer").textContent());
    await page.waitForTimeout(1200);
    await page.reload();
    await customer.sees("请签名");
    const after = Number(await page.getByRole("timer").textContent());
    assert.ok(after < before && after > 60, `${before} ${after}`);
    await pdfIsDrawn(page, 1, 3);
    await customer.button("示例签名").click();
    await customer.shows("signing-chinese");
    await customer.button("签名确认").click();
    assert.ok(pointsOf((await signed).value.strokes).length > 100);
  });
});

together("PIN pad", () => {
  const PIN = "739154";
  const ACCOUNT = "6225880123456789";
  const ENCIPHERED = "7ABD7E083CCCB5C4DF133F577FA1BAED";  // the working key, under the factory's master key
  const VERIFY = "A3CEBD6AB1EDF262";

  function decipher(key, hex) {
    const cipher = createDecipheriv("des-ede-ecb", key, null).setAutoPadding(false);
    return Buffer.concat([cipher.update(Buffer.from(hex, "hex")), cipher.final()]);
  }

  // As the bank would: ISO 9564 format 0.
  function pinIn(block) {
    const clear = decipher(decipher(Buffer.alloc(16, 0x31), ENCIPHERED), block);
    const account = Buffer.from(`0000${ACCOUNT.slice(-13, -1)}`, "hex");
    const text = clear.map((byte, i) => byte ^ account[i]).toString("hex");
    return text.slice(2, 2 + parseInt(text[1], 16));
  }

  const everything = (page) => page.evaluate(() => {
    const values = [...document.querySelectorAll("input")].map((input) => input.value);
    return document.documentElement.outerHTML + values + JSON.stringify({ ...localStorage, ...sessionStorage });
  });

  visit("keys a PIN that only the bank learns", async ({ counter, customer, page }) => {
    await customer.openPanel();
    assert.deepEqual(await counter.call("set_pin_entry", [0, 6]), { value: null });
    assert.deepEqual(await counter.call("load_working_key", [ENCIPHERED, VERIFY]), { value: null });
    const block = counter.call("pin_block", [ACCOUNT], { algorithm: 0, digits: 6, prompt: "请输入密码 PIN" });
    await customer.sees("Please key your PIN");
    const seen = [];
    for (const digit of "99") await customer.button(digit).click();
    await customer.button("Backspace").click();
    await customer.button("Clear").click();
    for (const [i, digit] of [...PIN].entries()) {
      if (i < 3) await customer.button(digit).click();
      else await page.keyboard.press(digit);
      await page.locator(".dots .on").nth(i).waitFor();
      assert.equal(await page.locator(".dots .on").count(), i + 1);
      seen.push(await everything(page));
      if (i === 3) {
        await page.reload();
        await page.locator(".dots .on").nth(3).waitFor();
      }
    }
    await page.getByRole("status").getByText("6 digits keyed").waitFor({ state: "attached" });
    await customer.shows("pin");
    await page.keyboard.press("Enter");
    const { value } = await block;
    assert.equal(pinIn(value), PIN);
    await customer.waits();
    seen.push(await everything(page), counter.trace, counter.log, ...customer.heard);
    for (const text of seen) for (const size of [6, 5, 4, 3]) assert.ok(!text.includes(PIN.slice(0, size)) || size < 4, text);
    const said = customer.said.map((text) => JSON.parse(text)).filter(({ type }) => type === "press");
    assert.ok(said.every(({ key }) => key.length === 1 || ["back", "clear", "enter"].includes(key)));
  });

  visit("counts what it is told, never what", async ({ counter, customer, page }) => {
    const number = counter.call("ask_number", ["请输入手机号码 Phone"], { most_digits: 11, display: 1 });
    await customer.sees("Please key a number");
    await page.keyboard.type("13800138000");
    await page.locator(".dots .on").nth(10).waitFor();
    assert.ok(!(await everything(page)).includes("138"));
    await page.keyboard.press("Enter");
    assert.deepEqual(await number, { value: "13800138000" });
    assert.ok(!counter.trace.includes("138001") && !customer.heard.join().includes("138001"));
  });

  visit("shows a number that the host lets it show; Cancel ends it", async ({ counter, customer, page }) => {
    const number = counter.call("ask_number", ["请输入手机号码 Phone"], { most_digits: 11 });
    await customer.sees("Please key a number");
    for (const digit of "13800138000") await customer.button(digit).click();
    await page.locator(".typed").getByText("13800138000").waitFor();
    await customer.shows("number");
    await customer.button("Cancel").click();
    assert.deepEqual(await number, { failed: "Cancelled", status: -23 });
  });

  visit("is also on the screen, as a keypad", async ({ counter, customer, page }) => {
    const digits = counter.call("ask_digits");
    await customer.sees("Please key a number");
    for (const digit of "4207") await customer.button(digit).click();
    await customer.button("Backspace").click();
    await page.locator(".typed").getByText("420", { exact: true }).waitFor();
    await customer.shows("keypad");
    await customer.button("Enter").click();
    assert.deepEqual(await digits, { value: "420" });
  });
});

together("access", () => {
  visit("needs the token", async ({ counter, customer, page }) => {
    const { origin } = new URL(counter.address);
    for (const path of ["/", `/${"0".repeat(32)}/`, `/${"0".repeat(32)}/app.js`]) {
      const response = await customer.context.request.get(origin + path);
      assert.equal(response.status(), 403, path);
      assert.ok(!(await response.text()).includes("<html"), path);
    }
    const opened = await page.evaluate((address) => new Promise((resolve) => {
      const socket = new WebSocket(address);
      socket.onopen = () => resolve("open");
      socket.onerror = () => resolve("refused");
    }), `${origin.replace("http", "ws")}/${"0".repeat(32)}/socket`);
    assert.equal(opened, "refused");
    customer.wrong = customer.wrong.filter((text) => !text.includes("0".repeat(32)) && !text.includes("socket"));
  });

  visit("is for no other page in the same browser, though it knew the token", async ({ counter, customer }) => {
    const elsewhere = await openServer();
    const page = await customer.context.newPage();
    await page.goto(elsewhere.address);
    const outcome = await page.evaluate(async (address) => {
      const socket = await new Promise((resolve) => {
        const opening = new WebSocket(address.replace("http:", "ws:") + "socket");
        opening.onopen = () => resolve("open");
        opening.onerror = () => resolve("refused");
      });
      const fetched = await fetch(address + "file/tmp/hw.png").then(() => "read", () => "refused");
      const image = await new Promise((resolve) => {
        const element = new Image();
        element.onload = () => resolve("shown");
        element.onerror = () => resolve("refused");
        element.src = address + "file/tmp/hw.png";
      });
      const frame = document.body.appendChild(document.createElement("iframe"));
      await new Promise((resolve) => {
        frame.onload = resolve;
        frame.src = address;
      });
      return { socket, fetched, image };
    }, counter.address);
    assert.deepEqual(outcome, { socket: "refused", fetched: "refused", image: "refused" });
    assert.equal(await page.frames()[1].evaluate(() => document.querySelector("#unit")).catch(() => null), null);
    elsewhere.close();
  });
});

together("developer's panel", () => {
  visit("tells commands and answers, and lists the files", async ({ counter, customer, page }) => {
    await customer.openPanel();
    const rated = counter.call("rate");
    await customer.button("Good").click();
    await rated;
    const log = page.getByRole("log");
    await log.getByText("EVAL").first().waitFor();
    assert.ok(await log.locator("li.host").count() >= 1 && await log.locator("li.terminal").count() >= 1);
    await log.locator("li.customer").first().waitFor();
    await counter.call("push", [files.at("agreement-协议.pdf")]);
    await page.getByRole("link", { name: "/tmp/agreement-协议.pdf" }).waitFor();
    const signed = sign(counter, { seconds: 20 });
    await customer.sees("Please sign");
    await pdfIsDrawn(page, 1, 3);
    await customer.shows("panel");
    await customer.button("Cancel").click();
    await signed;
  });

  visit("pulls the cable and plugs it in again", async ({ counter, customer, page }) => {
    await customer.openPanel();
    const rated = counter.call("rate", [], { seconds: 8 });
    await customer.sees("Please rate our service");
    await customer.button("Unplug").click();
    await page.getByText("The cable is unplugged.").waitFor();
    await customer.shows("unplugged");
    const { failed, status } = await rated;
    assert.ok(failed && status < 0, `${failed} ${status}`);
    await customer.button("Plug in").click();
    await page.locator("#veil").waitFor({ state: "hidden" });
    await customer.waits();
    const again = counter.call("rate");
    await customer.button("Fair").click();
    assert.deepEqual(await again, { value: 2 });
  });

  visit("switches faults of the line on and off", async ({ counter, customer, page }) => {
    await customer.openPanel();
    await page.getByText("Faults of the line").click();
    await customer.shows("panel-faults");
    await page.getByRole("checkbox", { name: "Lost answers" }).check();
    await page.locator("summary b").getByText("1").waitFor();
    const { faults } = JSON.parse(customer.heard.findLast((text) => JSON.parse(text).type === "link"));
    const named = faults.split(",").map((rate) => rate.split("=")[0]).filter((name) => name !== "seed");
    const switches = await page.locator(".switches input").evaluateAll((inputs) => inputs.map(({ name }) => name));
    assert.deepEqual(switches.sort(), named.sort(), "a switch for every fault");
    await page.reload();
    await page.locator("summary b").getByText("1").waitFor();
    const { failed } = await counter.call("build_date");
    assert.ok(failed, "no answer came");
    await page.getByText("Faults of the line").click();
    await page.getByRole("checkbox", { name: "Lost answers" }).uncheck();
    await page.locator("summary b").waitFor({ state: "detached" });
    assert.deepEqual(await counter.call("build_date"), { value: "20240615" });
  });

  visit("lets the customer walk away and come back", async ({ counter, customer, page }) => {
    await customer.openPanel();
    const rated = counter.call("rate", [], { seconds: 30 });
    await customer.sees("Please rate our service");
    await customer.button("Walk away").click();
    await page.getByText("You walked away.").waitFor();
    assert.ok(!(await customer.button("Good").isVisible().catch(() => false)) || await page.locator("#screen").evaluate((screen) => screen.inert));
    await customer.button("Come back").click();
    await customer.button("Good").click();
    assert.deepEqual(await rated, { value: 3 });
  });

  test("is left behind when the terminal ends", async () => {
    const counter = await Counter.open();
    const customer = await Customer.at(counter, browser);
    await counter.close();
    await customer.page.getByText("The terminal has ended.").waitFor();
    await customer.leaves();
  });
});

// The compiler reads the messages of all the tests above as values of the types that the page takes them for.
test("messages are as types.d.ts says", () => {
  const here = dirname(fileURLToPath(import.meta.url));
  const types = join(here, "../../terminal/web/page/types.d.ts");
  const file = join(build, "page-messages.ts");
  const list = (name, type, texts) => `export const ${name}: ${type}[] = [\n${[...texts].join(",\n")}\n];\n`;
  writeFileSync(file, `import type { FromTerminal, ToTerminal } from ${JSON.stringify(types.replace(/\.d\.ts$/, ".js"))};\n` +
    list("heard", "FromTerminal", messages.heard) + list("said", "ToTerminal", messages.said));
  const typesOf = (texts) => [...new Set([...texts].map((text) => JSON.parse(text).type))].sort();
  assert.deepEqual(typesOf(messages.heard), ["entry", "files", "link", "screen", "trace", "unit"]);
  assert.deepEqual(typesOf(messages.said), ["act", "faults", "plug", "press"]);
  const { status, stdout } = spawnSync(join(here, "node_modules/.bin/tsc"),
    ["--strict", "--noEmit", "--target", "ES2022", "--module", "ES2022", "--moduleResolution", "bundler", "--allowJs", file],
    { encoding: "utf8" });
  assert.equal(status, 0, stdout);
});
