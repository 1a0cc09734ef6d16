// SPDX-License-Identifier: MIT
// What follows from what the terminal told, without a browser.
import assert from "node:assert/strict";
import { test } from "node:test";
import { State } from "../../terminal/web/page/state.js";

const IDLE = { type: "screen", number: 1, kind: "idle", keys: [] };
const RATING = { type: "screen", number: 2, kind: "evaluation", keys: [{ role: "plain", name: "1", label: "Poor" }] };
const ENTRY = { type: "entry", number: 1, what: "pin", keyed: 0 };
const NO_ENTRY = { type: "entry", number: 0 };

function connectedState() {
  const state = new State();
  state.connected = true;
  return state;
}

test("a screen is new once, and may be told again", () => {
  const state = connectedState();
  assert.equal(state.takeScreen(IDLE), true);
  assert.equal(state.takeScreen({ ...IDLE, time_left_ms: 5 }), false);
  assert.equal(state.screen.time_left_ms, 5);
  assert.equal(state.takeScreen(RATING), true);
});

test("an entry is new when it begins and when it ends", () => {
  const state = connectedState();
  assert.equal(state.takeEntry(NO_ENTRY), false);
  assert.equal(state.takeEntry(ENTRY), true);
  assert.equal(state.takeEntry({ ...ENTRY, keyed: 1 }), false);
  assert.equal(state.entry.keyed, 1);
  assert.equal(state.takeEntry(NO_ENTRY), true);
  assert.equal(state.entry, null);
});

test("the terminal idles while no entry lies over the idle screen", () => {
  const state = connectedState();
  assert.equal(state.idles, false);
  state.takeScreen(IDLE);
  assert.equal(state.idles, true);
  state.takeEntry(ENTRY);
  assert.equal(state.idles, false);
});

test("who walked away is back at the next screen and at the next entry", () => {
  const state = connectedState();
  for (const next of [() => state.takeScreen(RATING), () => state.takeEntry(ENTRY)]) {
    state.away = true;
    assert.equal(state.obstacle, "You walked away. The terminal waits for its time-out.");
    assert.equal(state.canComeBack, true);
    next();
    assert.equal(state.obstacle, null);
    assert.equal(state.canComeBack, false);
  }
});

test("a customer can walk away from what asks, and from nothing else", () => {
  const state = connectedState();
  state.takeScreen(IDLE);
  assert.equal(state.canWalkAway, false);
  state.takeEntry(ENTRY);
  assert.equal(state.canWalkAway, true);
  state.takeEntry(NO_ENTRY);
  state.takeScreen(RATING);
  assert.equal(state.canWalkAway, true);
  state.link = { ...state.link, plugged: false };
  assert.equal(state.canWalkAway, false);
});

test("the worst obstacle is the one that is told", () => {
  const state = connectedState();
  state.away = true;
  state.link = { ...state.link, plugged: false };
  assert.equal(state.obstacle, "The cable is unplugged.");
  assert.equal(state.canComeBack, false);
  state.disconnect(1006);
  assert.equal(state.obstacle, "The terminal has ended.");
  state.disconnect(1008);
  assert.equal(state.obstacle, "Too many pages are open.");
});
