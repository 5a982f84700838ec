// SPDX-License-Identifier: MIT
// The controls of the television.
import { byId, make, setChildren } from "./dom.js";
import { run } from "./link.js";
import { state, watch } from "./store.js";

function toggle(id, property, words) {
  const button = byId(id);
  watch([property], () => button.setAttribute("aria-pressed", String(state[property])));
  button.onclick = () => run(...words(!state[property]));
}

/** Splits a line into words like a shell: quotation marks enclose blanks. */
export function split(text) {
  return [...text.matchAll(/(?:[^\s"]|"(?:[^"\\]|\\.)*")+/g)].map(([word]) =>
    word.replace(/"((?:[^"\\]|\\.)*)"/g, (_, inner) => inner.replace(/\\(.)/g, "$1")));
}

function onSubmit(form, words) {
  form.onsubmit = async event => {
    event.preventDefault();
    await run(...words());
  };
}

async function offerVerbs() {
  const verbs = await (await fetch("api/verbs.json")).json();
  setChildren(byId("verbs"), ...verbs.map(verb => make("option", { value: verb.words, label: `${verb.synopsis}: ${verb.help}` })));
}

/** Keys of a remote control, ignored while the user types text. */
function onKey(event) {
  if (event.target.closest("input, select, textarea, [contenteditable]") || event.ctrlKey || event.altKey || event.metaKey) {
    return;
  }
  const key = event.key.toLowerCase();
  if (key === "k") {
    run(state.Paused ? "play" : "pause");
  } else if (key === "m") {
    byId("mute-audio").click();
  } else if (key === "s") {
    byId("sound").click();
  }
}

/** The controls of the stream, which a replay refuses. */
const streamControls = `#play, #speed, #mute-audio, #mute-video, #lock-programme, #lock-service,
  :is([data-verb], #time-form) :is(input, select, button)`;

export function startControls() {
  watch(["Replay", "Input"], () => {
    byId("replay-note").hidden = !state.Replay;
    document.querySelectorAll(streamControls).forEach(control => {
      control.disabled = Boolean(state.Replay);
    });
    byId("sound").disabled = Boolean(state.Replay) && !state.Input;
  });
  toggle("mute-audio", "AudioMuted", on => ["mute", "audio", on ? "on" : "off"]);
  toggle("mute-video", "VideoMuted", on => ["mute", "video", on ? "on" : "off"]);
  toggle("lock-programme", "ProgrammeLocked", on => [on ? "lock" : "unlock", "programme"]);
  toggle("lock-service", "ServiceLocked", on => [on ? "lock" : "unlock", "service"]);
  for (const form of document.querySelectorAll("form[data-verb]")) {
    onSubmit(form, () => [form.dataset.verb, form.elements.value.value]);
  }
  onSubmit(byId("time-form"), () => ["time", Math.floor(Date.parse(`${byId("time").value}Z`) / 1000)]);
  onSubmit(byId("die-form"), () => byId("die").value === "" ? ["die"] : ["die", "--for", byId("die").value]);
  onSubmit(byId("words-form"), () => split(byId("words").value));
  document.addEventListener("click", event => {
    const button = event.target.closest("[data-words]");
    if (button && (!button.dataset.ask || confirm(button.dataset.ask))) {
      run(...button.dataset.words.split(" "));
    }
  });
  document.addEventListener("keydown", onKey);
  watch(["Programmes", "Programme"], () => {
    setChildren(byId("programme"), ...state.Programmes.map(([number, name]) =>
      make("option", { value: number, selected: number === state.Programme }, name ? `${number} ${name}` : number)));
  });
  watch(["GuideTime"], () => {
    const field = byId("time");
    if (!field.value) {
      field.value = new Date(state.GuideTime * 1000).toISOString().slice(0, 19);
    }
  });
  offerVerbs();
}
