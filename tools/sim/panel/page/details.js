// SPDX-License-Identifier: MIT
// The complete message: decoded, and as bytes.
import { hexText, make, setChildren } from "./dom.js";
import { describe, latencyText, sizeText } from "./messages.js";

const bytesShown = 4096; // initial length of a dump

function hexDump(text, limit) {
  const bytes = Uint8Array.from(atob(text), letter => letter.charCodeAt(0));
  const lines = [];
  for (let at = 0; at < Math.min(bytes.length, limit); at += 16) {
    const part = [...bytes.subarray(at, at + 16)];
    const hex = part.map(byte => byte.toString(16).padStart(2, "0")).join(" ");
    const plain = part.map(byte => byte >= 32 && byte < 127 ? String.fromCharCode(byte) : ".").join("");
    lines.push(`${at.toString(16).padStart(6, "0")}  ${hex.padEnd(47)}  ${plain}`);
  }
  return { lines: lines.join("\n"), size: bytes.length };
}

function dump(raw) {
  const { lines, size } = hexDump(raw, bytesShown);
  const text = make("pre", { tabindex: 0, "aria-label": "Bytes of the message" }, lines);
  const more = size > bytesShown ? make("button", { type: "button", class: "small",
    onclick: event => {
      text.textContent = hexDump(raw, Infinity).lines;
      event.target.remove();
    } }, `Show all ${sizeText(size)}`) : null;
  return make("div", {}, make("h4", {}, `Raw, ${sizeText(size)}`), text, more);
}

const applicationText = ({ bus, name, program, process }) =>
  [name, bus, program && `${program}[${process}]`].filter(Boolean).join(" ");

const shapes = { application: applicationText, latency: latencyText, pid: value => hexText(value), size: sizeText,
  time: value => new Date(value / 1000).toISOString() };

function factText(name, value) {
  return shapes[name]?.(value) ?? (typeof value === "object" ? JSON.stringify(value, null, 1) : String(value));
}

function facts(object) {
  return make("dl", { class: "details-facts" }, ...Object.entries(object).map(([name, value]) =>
    make("div", {}, make("dt", {}, name), make("dd", {}, factText(name, value)))));
}

function valueFacts(title, values = {}) {
  return Object.keys(values).length ? [make("h4", {}, title), facts(values)] : [];
}

async function load(number) {
  const answer = await fetch(`api/message/${number}`);
  if (!answer.ok) {
    return [make("p", { class: "quiet" }, "The bytes of this message have been discarded.")];
  }
  const { event, raw } = await answer.json();
  const { values, ...rest } = event;
  const request = event.request ? await fetch(`api/message/${event.request}`) : null;
  return [facts(rest), ...(request?.ok ? valueFacts("Values of the request", (await request.json()).event.values) : []),
    ...valueFacts("Values", values), dump(raw)];
}

/** Successive notifications. A click opens one of them. */
function pushTable(element, message) {
  return make("table", {}, make("thead", {}, make("tr", {}, ...["", "PID", "PTS", "Size"].map(title => make("th", {}, title)))),
    make("tbody", {}, ...message.pushes.map(([number, name, pid, pts, size]) => make("tr", {},
      make("td", {}, make("button", { type: "button", class: "small",
        onclick: async () => setChildren(element, heading(element, name), ...await load(number)) }, name)),
      make("td", {}, pid >= 0 ? hexText(pid) : "–"), make("td", {}, pts >= 0 ? String(pts) : "–"),
      make("td", {}, sizeText(size))))));
}

function heading(element, title) {
  return make("header", {}, make("h3", {}, title), make("button", { type: "button", class: "small",
    onclick: () => { element.hidden = true; } }, "Close"));
}

let wanted = null;

export async function showDetails(element, message) {
  wanted = message;
  element.hidden = message === null || message.kind === "gap";
  if (element.hidden) {
    return;
  }
  delete element.dataset.look;
  const { text } = describe(message);
  const subject = message.function || message.kind;
  const head = heading(element, text.includes(subject) ? text : `${subject}: ${text}`);
  const parts = message.pushes ? [pushTable(element, message)] : await load(message.number);
  if (wanted === message) {
    element.replaceChildren(head, ...parts.filter(Boolean));
    element.scrollTop = 0;
  }
}
