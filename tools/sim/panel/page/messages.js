// SPDX-License-Identifier: MIT
// Texts for the messages of the conversation.
import { hexText } from "./dom.js";

const timeText = microseconds => new Date(microseconds / 1000).toTimeString().slice(0, 8) +
  `.${String(Math.floor(microseconds / 1000) % 1000).padStart(3, "0")}`;

export const latencyText = microseconds => microseconds < 1000 ? `${microseconds} µs`
  : microseconds < 1e6 ? `${(microseconds / 1000).toFixed(1)} ms` : `${(microseconds / 1e6).toFixed(2)} s`;

export const sizeText = bytes => bytes < 1000 ? `${bytes} B` : bytes < 1e6 ? `${(bytes / 1000).toFixed(1)} kB`
  : `${(bytes / 1e6).toFixed(1)} MB`;

/** Whether a pushed packet has no PID, without which an application cannot know its track. */
const isWithoutPid = ([, name, pid]) => name === "PESCB" && pid < 0;

/** Whether the message is a refusal, an error, or violates the protocol. */
export function isFailure({ kind, result, problems, isAbrupt, pushes }) {
  return kind === "error" || kind === "gap" || isAbrupt === true || result === false || (problems?.length ?? 0) > 0 ||
    (pushes?.some(isWithoutPid) ?? false);
}

/** "PESCB 0x0100 ×11, 0x0101 ×2, 0x0103 · 6.8 kB" */
function pushesText(pushes) {
  const counts = new Map(); // counts by function and PID
  let bytes = 0;
  for (const [, name, pid, , size] of pushes) {
    const pids = counts.get(name) ?? counts.set(name, new Map()).get(name);
    pids.set(pid, (pids.get(pid) ?? 0) + 1);
    bytes += size;
  }
  const pidText = (name, pid) => pid >= 0 ? ` ${hexText(pid)}` : name === "PESCB" ? " without PID" : "";
  const pidsText = (name, pids) => [...pids].sort(([one], [other]) => one - other)
    .map(([pid, count]) => pidText(name, pid) + (count > 1 ? ` ×${count}` : "")).join(",");
  return [...counts].map(([name, pids]) => name + pidsText(name, pids)).join(", ") + ` · ${sizeText(bytes)}`;
}

/** Without the first parts of the error's name: "org.freedesktop.DBus.Error.NoReply: ...". */
const shortError = text => text.replace(/^[\w.]+\.(?=\w+:)/, "");

function wordsOf(message, application) {
  const { kind, values, result, latency } = message;
  const after = latency === undefined ? "" : ` · ${latencyText(latency)}`;
  switch (kind) {
    case "gap":
      return `${message.missed} earlier messages have been discarded`;
    case "request":
      return message.function ? `${message.function} ${values}` : "checks that the application reads its messages";
    case "reply":
      return `${result === undefined ? "answer" : result ? "✓" : `✗ ${message.function} refused`} ${values}${after}`;
    case "error":
      return `✗ ${message.function || message.endpoint.toLowerCase()} failed: ${shortError(message.error)}${after}`;
    case "notification":
      return message.pushes ? pushesText(message.pushes) : `${message.function} ${values}`;
    case "announcement":
      return `${/(^| )add=n( |$)/.test(values) ? "withdraws" : "announces"} ${message.endpoint.toLowerCase()}`;
    case "answer":
      return `answer ${values}${after}`;
    case "loss":
      return message.application ? `${application} has left the bus${message.isAbrupt ? " without withdrawing its channels" : ""}` : "the service has left the bus";
    case "arrival":
      return "the service has arrived";
    default:
      return kind;
  }
}

/** The row for a message of this application. */
export function describe(message, application = message.application) {
  const problems = message.problems ? ` ⚠ ${message.problems.join("; ")}` : "";
  return {
    time: message.time ? timeText(message.time) : "",
    text: wordsOf(message, application).trim() + problems,
    className: `${message.kind}${isFailure(message) ? " failure" : ""}`,
  };
}
