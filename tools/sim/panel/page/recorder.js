// SPDX-License-Identifier: MIT
// Records the clicks of the user as a scenario.
import { byId, setText } from "./dom.js";
import { onVerb } from "./link.js";
import { state, watch } from "./store.js";

let isRecording = false;
let lines = [];
let seconds = 0; // time of the scenario, at the speed of the television's clock
let countedAt = 0;
let speed = 1; // since countedAt

function count(now) {
  seconds += Math.max(now - countedAt, 0) / 1000 * speed;
  countedAt = now;
  speed = state.Speed;
}

/** A word in the syntax of scenarios. */
export function quote(word) {
  return word === "" || /[\s"#\\]/.test(word) ? `"${word.replace(/["\\]/g, "\\$&")}"` : word;
}

function text() {
  return `# Recorded ${new Date().toISOString().slice(0, 16).replace("T", " ")} UTC on ${state.Input}.\n` +
    lines.map(line => `${line}\n`).join("");
}

function show() {
  const hasLines = lines.length > 0;
  byId("record").setAttribute("aria-pressed", String(isRecording));
  setText(byId("record"), isRecording ? "Stop recording" : "Record");
  const recording = byId("recording");
  recording.hidden = !isRecording && !hasLines;
  setText(recording, hasLines ? lines.join("\n") : "no clicks yet");
  recording.scrollTop = recording.scrollHeight;
  byId("forget").hidden = byId("download").hidden = !hasLines;
  if (hasLines) {
    byId("download").href = `data:text/plain;charset=utf-8,${encodeURIComponent(text())}`;
  }
}

export function startRecorder() {
  byId("record").onclick = () => {
    isRecording = !isRecording;
    if (isRecording) {
      lines = [];
      seconds = 0;
      countedAt = performance.now();
      speed = state.Speed;
    }
    show();
  };
  byId("forget").onclick = () => {
    lines = [];
    show();
  };
  watch(["Speed"], () => isRecording && count(performance.now()));
  onVerb((words, calledAt) => {
    if (isRecording) {
      count(calledAt);
      lines.push(`${seconds.toFixed(3)} ${words.map(quote).join(" ")}`);
      show();
    }
  });
}
