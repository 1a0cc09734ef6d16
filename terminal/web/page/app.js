// SPDX-License-Identifier: MIT
import { Session } from "./session.js";

new Session(new WebSocket(new URL("socket", location.href.replace(/^http/, "ws"))));
